#pragma once

#include <QObject>
#include <QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QSlider;
QT_END_NAMESPACE

class DashboardCore;
class PlaybackScrubber;
class Project;
class SignalDefinitions;
class SignalPlaybackEngine;

/**
 * The playback side of the window: the selected recording, the core's
 * engine that replays it, the slider scrubbing (the dashboard's plots are
 * frozen and moved with the slider), and the definitions saved with the
 * recording, which take precedence over the project's while they are in
 * force ("Use recording's definitions").
 */
class PlaybackSession : public QObject
{
    Q_OBJECT

public:
    // Neither the project nor the core is owned.
    PlaybackSession(Project *project, DashboardCore *core, QSlider *slider, QObject *parent = nullptr);
    ~PlaybackSession() override;

    SignalPlaybackEngine *engine() const { return m_engine; }
    PlaybackScrubber *scrubber() const { return m_scrubber; }

    QString filePath() const { return m_filePath; }
    // Selects a recording and reads it into the engine (warning when it
    // cannot be read); another file than before rewinds, since a position
    // in one recording means nothing in another.
    void setFile(const QString &path);
    // Asks for a recording in the project's "recordings" folder.
    void selectFile();

    bool usesRecordingDefinitions() const { return m_useRecordingDefinitions; }
    void setUseRecordingDefinitions(bool use);
    // Reads the recording's companion "<base>.signals.h" into the recording
    // catalogue when it is wanted and readable; drops it otherwise.
    void applyRecordingDefinitions();
    void dropRecordingDefinitions();
    // Null unless the recording's own definitions are in force.
    const SignalDefinitions *recordingDefinitions() const { return m_recordingDefinitions.get(); }
    // The recording's definitions while in force, else the project's.
    const SignalDefinitions *definitionsInForce() const;

    // Reads the selected recording into the engine unless it holds it
    // already (reloading would rewind, and Play after Pause resumes); a
    // progress dialog appears when that takes a while. Warns when the file
    // cannot be read; false without a word when cancelled or none selected.
    bool loadIntoEngine();

Q_SIGNALS:
    void fileChanged(const QString &path);

private:
    bool ensureLoaded(QString *error);

    Project *m_project = nullptr;
    DashboardCore *m_core = nullptr;
    SignalPlaybackEngine *m_engine = nullptr;
    PlaybackScrubber *m_scrubber = nullptr;
    QString m_filePath;
    QString m_loadedPath;
    bool m_useRecordingDefinitions = false;
    std::unique_ptr<SignalDefinitions> m_recordingDefinitions;
};
