#include "PlaybackSession.h"

#include "Dashboard.h"
#include "DashboardCore.h"
#include "PlaybackScrubber.h"
#include "ProgressRunner.h"
#include "Project.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"
#include "UserPrompts.h"

#include <QDebug>
#include <QFileInfo>

PlaybackSession::PlaybackSession(Project *project, DashboardCore *core, QSlider *slider, QObject *parent)
    : QObject(parent)
    , m_project(project)
    , m_core(core)
    , m_engine(core->engine())
    , m_scrubber(new PlaybackScrubber(slider, m_engine, this))
{
    Dashboard *dashboard = core->dashboard();
    m_scrubber->setTimeWindowProvider([dashboard] { return dashboard->largestTrendWindowMs(); });
    connect(m_scrubber, &PlaybackScrubber::scrubStarted, dashboard, [dashboard] { dashboard->setTrendPlotsTimeDriven(true); });
    connect(m_scrubber, &PlaybackScrubber::positionScrubbed, dashboard, &Dashboard::moveTrendPlotsTo);
}

PlaybackSession::~PlaybackSession() = default;

void PlaybackSession::setFile(const QString &path)
{
    const bool otherFile = path != m_filePath;
    m_filePath = path;
    m_loadedPath.clear();
    Q_EMIT fileChanged(path);
    applyRecordingDefinitions();
    if (!path.isEmpty())
        loadIntoEngine();
    // Play after Pause would resume at the old frame index.
    if (otherFile)
        m_engine->reset();
}

void PlaybackSession::selectFile()
{
    const QString path = m_project->prompts().openFileName(m_project->dialogParent(), tr("Select Playback File"),
                                                           m_project->subfolder(QStringLiteral("recordings")),
                                                           tr("Recordings (*.rec);;All files (*)"));
    if (!path.isEmpty())
        setFile(path);
}

void PlaybackSession::setUseRecordingDefinitions(bool use)
{
    m_useRecordingDefinitions = use;
    applyRecordingDefinitions();
}

void PlaybackSession::applyRecordingDefinitions()
{
    const QString companion = Recording::companionPathFor(m_filePath);
    if (!m_useRecordingDefinitions || m_filePath.isEmpty() || !QFileInfo(companion).isFile()) {
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
    m_core->setRecordingDefinitions(m_recordingDefinitions.get());
}

void PlaybackSession::dropRecordingDefinitions()
{
    m_core->setRecordingDefinitions(nullptr);
    m_recordingDefinitions.reset();
}

const SignalDefinitions *PlaybackSession::definitionsInForce() const
{
    return m_core->definitionsInForce();
}

bool PlaybackSession::loadIntoEngine()
{
    QString error;
    if (ensureLoaded(&error))
        return true;
    if (!error.isEmpty())
        m_project->prompts().warning(m_project->dialogParent(), tr("Error"),
                                     tr("Could not load recording:\n%1").arg(error));
    return false;
}

bool PlaybackSession::ensureLoaded(QString *error)
{
    if (m_filePath.isEmpty())
        return false;
    if (m_loadedPath == m_filePath)
        return true;
    const QString path = m_filePath;
    ProgressRunner progress(tr("Loading recording…"), m_project->dialogParent());
    if (!m_engine->load(path, progress.callback())) {
        // Cancelling is the user's own choice, not an error to report.
        if (!progress.wasCancelled())
            *error = m_engine->errorString();
        return false;
    }
    m_loadedPath = path;
    // The event loop ran behind the progress dialog: when another recording
    // was selected meanwhile (a recording that stopped), the engine must
    // hold that one, not the one this call started with.
    return m_filePath == path || ensureLoaded(error);
}
