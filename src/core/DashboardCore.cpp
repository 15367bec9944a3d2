#include "DashboardCore.h"

#include "Dashboard.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"
#include "FileErrors.h"
#include "LayoutFile.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"
#include "SignalRouter.h"

#include <QFileInfo>

#include <cmath>

DashboardCore::DashboardCore(QObject *parent)
    : QObject(parent)
    , m_dashboard(new Dashboard(this))
    , m_router(new SignalRouter(m_dashboard->scene(), this))
    , m_engine(new SignalPlaybackEngine(this))
    , m_layout(std::make_unique<LayoutFile>(m_dashboard->scene()))
{
    DashboardWidgetFactory::instance().registerBuiltInTypes();
    connectEngine();
    applyDefinitionsInForce();
}

DashboardCore::~DashboardCore()
{
    if (SignalDefinitions::current() == m_definitions.get())
        SignalDefinitions::setCurrent(nullptr);
}

DesignScene *DashboardCore::scene() const
{
    return m_dashboard->scene();
}

void DashboardCore::connectEngine()
{
    SignalPlaybackEngine *engine = m_engine;
    SignalRouter *router = m_router;
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
    connect(engine, &SignalPlaybackEngine::dataReset, m_dashboard, &Dashboard::clearPlots);
}

bool DashboardCore::loadDefinitions(const QString &path, QString *error)
{
    auto loaded = std::make_unique<SignalDefinitions>();
    if (!loaded->load(path)) {
        *error = FileErrors::describe(path, FileErrors::whyUnreadable(path));
        return false;
    }
    // The previous catalogue lives until everyone has moved to the new one.
    const std::unique_ptr<SignalDefinitions> previous = std::move(m_definitions);
    m_definitions = std::move(loaded);
    SignalDefinitions::setCurrent(m_definitions.get());
    applyDefinitionsInForce();
    Q_EMIT definitionsLoaded(QFileInfo(path).absoluteFilePath());
    return true;
}

void DashboardCore::setRecordingDefinitions(const SignalDefinitions *defs)
{
    m_recordingDefinitions = defs;
    applyDefinitionsInForce();
}

const SignalDefinitions *DashboardCore::definitionsInForce() const
{
    return m_recordingDefinitions ? m_recordingDefinitions : m_definitions.get();
}

void DashboardCore::applyDefinitionsInForce()
{
    const SignalDefinitions *defs = definitionsInForce();
    m_router->setDefinitions(defs);
    m_engine->setKnownGroups(defs ? defs->stateGroupIds() : QStringList());
}

void DashboardCore::showMoment(double seconds)
{
    m_dashboard->setTrendPlotsTimeDriven(true);
    m_engine->setPreviewWindow(m_dashboard->previewWindowSeconds());
    m_engine->seek(seconds);
    m_dashboard->moveTrendPlotsTo(qint64(std::llround(seconds * 1000.0)));
}
