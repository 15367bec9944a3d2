#pragma once

#include <QMainWindow>
#include <QMap>
#include <QString>

#include <memory>

class Dashboard;
class FileActions;
class LiveInput;
class MainToolBars;
class PlaybackSession;
class RecordingWriter;
class SerialControls;
class SerialManager;
class SignalDefinitions;
class SignalPlaybackEngine;
class SignalRouter;
class UserPrompts;
class WidgetPalette;
struct SignalsExportOptions;

QT_BEGIN_NAMESPACE
class QLabel;
QT_END_NAMESPACE

// The main window: owns the project folder and its signal catalogue, the
// design surface, the serial link, recording and playback, and wires them
// together. Every modal question goes through prompts(); every operation
// behind a file dialog has a twin that takes the path.
class Ombrix : public QMainWindow
{
    Q_OBJECT

public:
    enum OperatingMode { Design = 0, Record = 1, Play = 2, Pause = 3, Idle = 4 };
    Q_ENUM(OperatingMode)

    explicit Ombrix(QWidget *parent = nullptr);
    ~Ombrix() override;

    // True when the folder holds a dashboard_signals.def.
    bool isValidProjectDir(const QString &path) const;
    // Makes the folder current and loads its definitions. False with nothing
    // changed when the folder is not a project; false with the folder taken
    // but the old catalogue kept when its definitions cannot be loaded.
    bool setProjectDir(const QString &dir);
    // Replaces the current catalogue; on failure warns and keeps the old one.
    bool loadDefinitions(const QString &path);
    void ensureProjectSubfolders();
    // Opens the folder remembered from an earlier prompt, else prompts.
    void restoreProjectOrPrompt();
    // Intro dialog then folder chooser, until a project or a cancel (which
    // schedules close()).
    void promptForProject();

    QString projectDir() const { return m_projectDir; }
    // The project's catalogue; null until the first successful load.
    const SignalDefinitions *definitions() const { return m_definitions.get(); }
    // The catalogue routing uses: the recording's own while set, else the project's.
    const SignalDefinitions *definitionsInForce() const;
    OperatingMode mode() const { return m_mode; }
    void setMode(OperatingMode mode);

    // Opens a port (any device path) at a baud rate, as the connect button does.
    bool connectPort(const QString &portName, int baudRate);
    void disconnectPort();

    // The twins of the file dialogs; each warns like its dialog does.
    bool saveLayoutTo(const QString &path);
    bool loadLayoutFrom(const QString &path);
    void setPlaybackFile(const QString &path);
    QString playbackFile() const;
    bool exportSignalsTo(const QString &path, const SignalsExportOptions &options);
    bool exportEventsTo(const QString &path);

    UserPrompts &prompts() const { return *m_prompts; }
    // Replaces the prompts (tests answer dialogs through this); takes ownership.
    void setPrompts(std::unique_ptr<UserPrompts> prompts);

    MainToolBars *toolBars() const { return m_toolBars; }
    WidgetPalette *palette() const { return m_palette; }
    Dashboard *dashboard() const { return m_dashboard; }
    SerialManager *serialManager() const { return m_serial; }
    SignalPlaybackEngine *engine() const;
    RecordingWriter *recordingWriter() const { return m_recorder; }
    SignalRouter *router() const { return m_router; }
    QLabel *modeLabel() const { return m_modeLabel; }
    // The latest raw live value of every signal seen.
    const QMap<QString, double> &latestValues() const;

public Q_SLOTS:
    void saveLayout();
    void loadLayout();
    void designButton();
    void recordButton();
    void stopButton();
    void playButton();
    void saveButton();
    void loadButton();
    void exportButton();
    void exportEventsButton();
    void selectPlaybackFile();
    void updatePlaybackFileDisplay();

    void onPlaybackValuesAt(double timeSec, const QMap<QString, double> &values);
    void onPlaybackStateEvent(const QString &group, const QString &state);
    void onPlaybackErrorEvent(const QString &errId);
    void onPlaybackErrorReset();
    void onPlaybackMessageEvent(const QString &text);
    void onPlaybackMessageReset();

Q_SIGNALS:
    // Emitted after every successful definition load, with the absolute path.
    void signalsDefChanged(const QString &defPath);

private:
    void buildCentralArea();
    void connectPlayback();
    // Ends a recording whose device went away.
    void onPortLost(const QString &portName);
    // Ends a recording whose port the user closed: a port opened again
    // restarts its clock, and the times would run backwards in one file.
    void onPortClosed();
    // Tells the user at once that lines are not reaching the recording file.
    void onRecordingWriteFailed(const QString &message);
    void onWidgetRequested(const QString &typeName);

    // Play and Pause show the recording; live values stay off the widgets.
    bool playbackOwnsWidgets() const;

    void leaveMode(OperatingMode mode);
    void enterMode(OperatingMode mode);
    bool startRecording();
    void stopRecording();
    void startPlayback();
    bool loadPlaybackIntoEngine();
    void applyRecordingDefinitions();
    void refreshModeDisplay();

    void showTransientMessage(const QString &text, int timeoutMs = 3000);
    void scheduleClose();
    // Redraws names and units on the dashboard from the new catalogue.
    void onDefinitionsReplaced();
    void updateRouterDefinitions();

    std::unique_ptr<UserPrompts> m_prompts;
    std::unique_ptr<SignalDefinitions> m_definitions;
    QString m_projectDir;
    OperatingMode m_mode = Idle;
    // Live lines are ignored during Play and Pause while this is set.
    bool m_muteLiveInputDuringPlayback = true;
    double m_playbackEventTime = 0.0;

    MainToolBars *m_toolBars = nullptr;
    WidgetPalette *m_palette = nullptr;
    Dashboard *m_dashboard = nullptr;
    SignalRouter *m_router = nullptr;
    LiveInput *m_live = nullptr;
    FileActions *m_files = nullptr;
    SerialManager *m_serial = nullptr;
    SerialControls *m_serialControls = nullptr;
    RecordingWriter *m_recorder = nullptr;
    PlaybackSession *m_playback = nullptr;
    QLabel *m_modeLabel = nullptr;
};
