#include "PlaybackSession.h"

#include "PlaybackScrubber.h"
#include "ProgressRunner.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"

#include <QDebug>
#include <QFileInfo>

PlaybackSession::PlaybackSession(QSlider *slider, QObject *parent)
    : QObject(parent)
    , m_engine(new SignalPlaybackEngine(this))
    , m_scrubber(new PlaybackScrubber(slider, m_engine, this))
{
}

PlaybackSession::~PlaybackSession() = default;

void PlaybackSession::setFilePath(const QString &path)
{
    m_filePath = path;
    m_loadedPath.clear();
}

void PlaybackSession::applyRecordingDefinitions(bool use)
{
    const QString companion = Recording::companionPathFor(m_filePath);
    if (!use || m_filePath.isEmpty() || !QFileInfo(companion).isFile()) {
        dropRecordingDefinitions();
        return;
    }
    auto defs = std::make_unique<SignalDefinitions>();
    if (!defs->load(companion)) {
        qDebug().noquote() << "Recording definitions not loaded:" << defs->lastError();
        dropRecordingDefinitions();
        return;
    }
    m_recordingDefinitions = std::move(defs);
}

void PlaybackSession::dropRecordingDefinitions()
{
    m_recordingDefinitions.reset();
}

bool PlaybackSession::ensureLoaded(QWidget *progressParent, QString *error)
{
    if (m_filePath.isEmpty())
        return false;
    if (m_loadedPath == m_filePath)
        return true;
    const QString path = m_filePath;
    ProgressRunner progress(tr("Loading recording…"), progressParent);
    if (!m_engine->load(path, progress.callback())) {
        // Cancelling is the user's own choice, not an error to report.
        if (error && !progress.wasCancelled())
            *error = m_engine->errorString();
        return false;
    }
    m_loadedPath = path;
    // The event loop ran behind the progress dialog: when another recording
    // was selected meanwhile (a recording that stopped), the engine must
    // hold that one, not the one this call started with.
    return m_filePath == path || ensureLoaded(progressParent, error);
}
