#include "LiveInput.h"

#include "LivePipeline.h"
#include "SerialManager.h"
#include "SignalRouter.h"
#include "SimulatedLineSource.h"

#include <QDateTime>

LiveInput::LiveInput(SignalRouter *router, QObject *parent)
    : QObject(parent)
    , m_router(router)
    , m_pipeline(new LivePipeline(this))
{
    SimulatedLineSource::registerScheme();
    SerialManager *serial = m_pipeline->serial();
    connect(serial, &SerialManager::lineParsed, this, &LiveInput::onLineParsed);
    connect(serial, &SerialManager::errorParsed, this, &LiveInput::onErrorParsed);
    connect(serial, &SerialManager::stateParsed, this, &LiveInput::onStateParsed);
    connect(serial, &SerialManager::unrecognizedParsed, this, &LiveInput::onUnrecognizedParsed);
    // The lines of one read reach value widgets as one update.
    connect(serial, &SerialManager::burstStarted, m_router, &SignalRouter::beginBurst);
    connect(serial, &SerialManager::burstFinished, m_router, &SignalRouter::endBurst);
}

SerialManager *LiveInput::serial() const
{
    return m_pipeline->serial();
}

RecordingWriter *LiveInput::recorder() const
{
    return m_pipeline->recorder();
}

void LiveInput::onLineParsed(double, const QMap<QString, double> &values)
{
    if (m_valuesMuted && m_valuesMuted())
        return;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        m_latestValues.insert(it.key(), it.value());
    // Widgets are stamped with the wall clock, the recording with the line's own time.
    if (!m_routingSuspended || !m_routingSuspended())
        m_router->routeValues(values, QDateTime::currentMSecsSinceEpoch() / 1000.0);
}

void LiveInput::onErrorParsed(double timestamp, const QString &errorId)
{
    m_router->routeError(timestamp, errorId);
}

void LiveInput::onStateParsed(double, const QString &group, const QString &state)
{
    m_router->routeState(group, state);
}

void LiveInput::onUnrecognizedParsed(double timestamp, const QString &text)
{
    m_router->routeMessage(timestamp, text);
}
