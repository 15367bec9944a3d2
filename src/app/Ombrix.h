#pragma once

#include "ModeController.h"

#include <QMainWindow>
#include <QMap>
#include <QString>

#include <memory>

class CommandBar;
class Dashboard;
class DashboardCore;
class DashboardView;
class FileActions;
class LiveInput;
class MainMenus;
class MainToolBars;
class PlaybackSession;
class Project;
class RecentFiles;
class RecordingWriter;
class SerialControls;
class SerialManager;
class SignalDefinitions;
class SignalPlaybackEngine;
class UserPrompts;
class WidgetPalette;
struct SignalsExportOptions;

QT_BEGIN_NAMESPACE
class QLabel;
QT_END_NAMESPACE

// The main window. It owns the dashboard core (scene, router, playback
// engine, catalogue), shows its scene beside the widget palette under the
// tool bars, and wires them to the objects that do the window's work: the
// project (folder, questions, settings), the live input (serial link,
// recording), the playback session, the operating modes and the file
// actions. Its own slots and operations hand over to those objects.
class Ombrix : public QMainWindow
{
    Q_OBJECT

public:
    using OperatingMode = ModeController::OperatingMode;
    static constexpr OperatingMode Design = ModeController::Design;
    static constexpr OperatingMode Record = ModeController::Record;
    static constexpr OperatingMode Play = ModeController::Play;
    static constexpr OperatingMode Pause = ModeController::Pause;
    static constexpr OperatingMode Idle = ModeController::Idle;

    explicit Ombrix(QWidget *parent = nullptr);
    ~Ombrix() override;

    // The project: see Project for each operation.
    bool isValidProjectDir(const QString &path) const;
    bool setProjectDir(const QString &dir);
    bool loadDefinitions(const QString &path);
    void ensureProjectSubfolders();
    void restoreProjectOrPrompt();
    void promptForProject();
    QString projectDir() const;
    // The project's catalogue; null until the first successful load.
    const SignalDefinitions *definitions() const;
    // The catalogue routing uses: the recording's own while set, else the project's.
    const SignalDefinitions *definitionsInForce() const;

    OperatingMode mode() const { return m_modes->mode(); }
    void setMode(OperatingMode mode) { m_modes->setMode(mode); }

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

    UserPrompts &prompts() const;
    // Replaces the prompts (tests answer dialogs through this); takes ownership.
    void setPrompts(std::unique_ptr<UserPrompts> prompts);

    Project *project() const { return m_project; }
    MainToolBars *toolBars() const { return m_toolBars; }
    MainMenus *menus() const { return m_menus; }
    // The projects opened and recordings played, newest first, kept in the settings.
    RecentFiles &recentProjects() const { return *m_recentProjects; }
    RecentFiles &recentRecordings() const { return *m_recentRecordings; }
    // The sources opened, newest first, without passwords.
    RecentFiles &recentSources() const { return *m_recentSources; }
    CommandBar *commandBar() const { return m_commandBar; }
    WidgetPalette *palette() const { return m_palette; }
    DashboardCore *core() const { return m_core; }
    Dashboard *dashboard() const;
    DashboardView *view() const { return m_view; }
    SerialManager *serialManager() const;
    SignalPlaybackEngine *engine() const;
    RecordingWriter *recordingWriter() const;
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
    void connectProject();
    void connectModes();
    void connectToolBars();
    void connectMenus();
    void connectRecentFiles();
    void connectCommands();
    void connectSources();
    // Opens source instead of whatever is open.
    void switchSource(const QString &source);
    void showMode(OperatingMode mode);
    void setFullScreen(bool on);
    void showShortcuts();
    void showAbout();

protected:
    void changeEvent(QEvent *event) override;

private:
    // Live lines are ignored during Play and Pause while this is set.
    bool m_muteLiveInputDuringPlayback = true;

    DashboardCore *m_core = nullptr;
    Project *m_project = nullptr;
    MainToolBars *m_toolBars = nullptr;
    MainMenus *m_menus = nullptr;
    std::unique_ptr<RecentFiles> m_recentProjects;
    std::unique_ptr<RecentFiles> m_recentRecordings;
    std::unique_ptr<RecentFiles> m_recentSources;
    CommandBar *m_commandBar = nullptr;
    WidgetPalette *m_palette = nullptr;
    DashboardView *m_view = nullptr;
    LiveInput *m_live = nullptr;
    PlaybackSession *m_playback = nullptr;
    ModeController *m_modes = nullptr;
    SerialControls *m_serialControls = nullptr;
    FileActions *m_files = nullptr;
    QLabel *m_modeLabel = nullptr;
};
