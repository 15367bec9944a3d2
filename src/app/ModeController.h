#pragma once

#include <QObject>
#include <QString>

class Dashboard;
class LiveInput;
class PlaybackSession;
class Project;
class SignalRouter;

/**
 * The window's operating modes and what switching between them starts and
 * stops: designing, recording, playing and pausing a recording, idling.
 *
 * Entering Record starts a recording first and leaves the mode as it was
 * when that fails; leaving Record hands the new recording to playback.
 * Play replays the selected recording from where it paused (from the start
 * when the slider stands at its end); the end of the data returns to Idle.
 */
class ModeController : public QObject
{
    Q_OBJECT

public:
    enum OperatingMode { Design = 0, Record = 1, Play = 2, Pause = 3, Idle = 4 };
    Q_ENUM(OperatingMode)

    ModeController(Project *project, Dashboard *dashboard, SignalRouter *router, LiveInput *live,
                   PlaybackSession *playback, QObject *parent = nullptr);

    OperatingMode mode() const { return m_mode; }
    void setMode(OperatingMode mode);
    // Play and Pause show the recording; live values stay off the widgets.
    bool playbackOwnsWidgets() const { return m_mode == Play || m_mode == Pause; }

    // The status bar's permanent text for a mode ("Design Mode", "Idle", ...).
    static QString modeText(OperatingMode mode);

public Q_SLOTS:
    // Design becomes Idle, any other mode Design.
    void designButton();
    void recordButton();
    void playButton();
    // Play becomes Pause, any other mode Idle.
    void stopButton();
    // One key for both: Play becomes Pause, any other mode Play.
    void playPauseButton();

    // A recording ends when its device goes away or the user closes the
    // port: a port opened again restarts its clock, and the times would run
    // backwards in one file.
    void onPortLost(const QString &portName);
    void onPortClosed();
    // The recording file refused a write: the recording has ended; the user
    // learns which file, why, and how much of it is safe.
    void onRecordingWriteFailed(const QString &message);

Q_SIGNALS:
    void modeChanged(ModeController::OperatingMode mode);
    // A transient confirmation for the status bar; 0 keeps it until replaced.
    void statusMessage(const QString &text, int timeoutMs);

private:
    void leaveMode(OperatingMode mode);
    void enterMode(OperatingMode mode);
    bool startRecording();
    void stopRecording();
    void startPlayback();

    Project *m_project = nullptr;
    Dashboard *m_dashboard = nullptr;
    SignalRouter *m_router = nullptr;
    LiveInput *m_live = nullptr;
    PlaybackSession *m_playback = nullptr;
    OperatingMode m_mode = Idle;
};
