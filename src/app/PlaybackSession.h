#pragma once

#include <QObject>
#include <QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QSlider;
class QWidget;
QT_END_NAMESPACE

class PlaybackScrubber;
class SignalDefinitions;
class SignalPlaybackEngine;

// The playback side of the main window: the selected recording, the engine
// that replays it, the slider scrubbing, and the definitions saved with the
// recording, which take precedence over the project's while they are set.
class PlaybackSession : public QObject
{
    Q_OBJECT

public:
    PlaybackSession(QSlider *slider, QObject *parent = nullptr);
    ~PlaybackSession() override;

    SignalPlaybackEngine *engine() const { return m_engine; }
    PlaybackScrubber *scrubber() const { return m_scrubber; }

    QString filePath() const { return m_filePath; }
    // Selects a recording; it is read at the next ensureLoaded().
    void setFilePath(const QString &path);

    // With `use` set, reads the recording's companion "<base>.signals.h"
    // into the recording-specific catalogue; otherwise, or when the
    // companion is missing or unreadable, drops that catalogue.
    void applyRecordingDefinitions(bool use);
    void dropRecordingDefinitions();
    // Null unless the recording's own definitions are in force.
    const SignalDefinitions *recordingDefinitions() const { return m_recordingDefinitions.get(); }

    // Reads the selected recording into the engine unless it holds it
    // already (reloading would rewind, and Play after Pause resumes); a
    // progress dialog appears when that takes a while. False with *error
    // left empty when the user cancelled it.
    bool ensureLoaded(QWidget *progressParent, QString *error);

private:
    SignalPlaybackEngine *m_engine = nullptr;
    PlaybackScrubber *m_scrubber = nullptr;
    QString m_filePath;
    QString m_loadedPath;
    std::unique_ptr<SignalDefinitions> m_recordingDefinitions;
};
