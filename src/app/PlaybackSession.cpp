#include "PlaybackSession.h"

#include "Dashboard.h"
#include "PlaybackScrubber.h"
#include "ProgressRunner.h"
#include "Project.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"
#include "SignalRouter.h"
#include "UserPrompts.h"

#include <QDebug>
#include <QFileInfo>

PlaybackSession::PlaybackSession(Project *project, QSlider *slider, QObject *parent)
    : QObject(parent)
    , m_project(project)
    , m_engine(new SignalPlaybackEngine(this))
    , m_scrubber(new PlaybackScrubber(slider, m_engine, this))
{
}

PlaybackSession::~PlaybackSession() = default;

void PlaybackSession::routeTo(SignalRouter *router, Dashboard *dashboard)
{
    SignalPlaybackEngine *engine = m_engine;
    connect(engine, &SignalPlaybackEngine::signalValuesUpdatedAt, router,
            [router](double t, const QMap<QString, double> &values) { router->routeValues(values, t); });
    connect(engine, &SignalPlaybackEngine::signalValuesUpdated, router, [engine, router](const QMap<QString, double> &values) {
        // A running tick also sends every frame time-stamped; this one only
        // matters from a seek, to show the values in force at the position.
        if (engine->isSeeking())
            router->routeValues(values, engine->frames().timeAt(qMax(0, engine->index() - 1)));
    });
    connect(engine, &SignalPlaybackEngine::stateEvent, router,
            [router](double, const QString &group, const QString &state) { router->routeState(group, state); });
    connect(engine, &SignalPlaybackEngine::errorEvent, router, &SignalRouter::routeError);
    connect(engine, &SignalPlaybackEngine::messageEvent, router, &SignalRouter::routeMessage);
    connect(engine, &SignalPlaybackEngine::errorReset, router, &SignalRouter::clearErrors);
    connect(engine, &SignalPlaybackEngine::messageReset, router, &SignalRouter::clearMessages);
    connect(engine, &SignalPlaybackEngine::dataReset, dashboard, &Dashboard::clearPlots);

    m_scrubber->setTimeWindowProvider([dashboard] { return dashboard->largestTrendWindowMs(); });
    connect(m_scrubber, &PlaybackScrubber::scrubStarted, dashboard, [dashboard] { dashboard->setTrendPlotsTimeDriven(true); });
    connect(m_scrubber, &PlaybackScrubber::positionScrubbed, dashboard, &Dashboard::moveTrendPlotsTo);

    const auto followDefinitions = [this, router] {
        const SignalDefinitions *defs = definitionsInForce();
        router->setDefinitions(defs);
        m_engine->setKnownGroups(defs ? defs->stateGroupIds() : QStringList());
    };
    connect(this, &PlaybackSession::definitionsInForceChanged, router, followDefinitions);
    connect(m_project, &Project::definitionsLoaded, router, followDefinitions);
    followDefinitions();
}

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
    Q_EMIT definitionsInForceChanged();
}

void PlaybackSession::dropRecordingDefinitions()
{
    m_recordingDefinitions.reset();
    Q_EMIT definitionsInForceChanged();
}

const SignalDefinitions *PlaybackSession::definitionsInForce() const
{
    return m_recordingDefinitions ? m_recordingDefinitions.get() : m_project->definitions();
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
