#include "LiveInput.h"

#include "RecordingWriter.h"
#include "SerialManager.h"
#include "SignalRouter.h"

#include <QDateTime>

LiveInput::LiveInput(SignalRouter *router, QObject *parent)
    : QObject(parent)
    , m_router(router)
    , m_serial(new SerialManager(this))
    , m_recorder(new RecordingWriter(this))
{
    connect(m_serial, &SerialManager::lineParsed, this, &LiveInput::onLineParsed);
    connect(m_serial, &SerialManager::errorParsed, this, &LiveInput::onErrorParsed);
    connect(m_serial, &SerialManager::stateParsed, this, &LiveInput::onStateParsed);
    connect(m_serial, &SerialManager::unrecognizedParsed, this, &LiveInput::onUnrecognizedParsed);
    // The lines of one read reach value widgets as one update.
    connect(m_serial, &SerialManager::burstStarted, m_router, &SignalRouter::beginBurst);
    connect(m_serial, &SerialManager::burstFinished, m_router, &SignalRouter::endBurst);
}

bool LiveInput::recording() const
{
    return m_recorder->isRecording();
}

void LiveInput::onLineParsed(double timestamp, const QMap<QString, double> &values)
{
    if (m_valuesMuted && m_valuesMuted())
        return;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        m_latestValues.insert(it.key(), it.value());
    // Widgets are stamped with the wall clock, the recording with the line's own time.
    if (!m_routingSuspended || !m_routingSuspended())
        m_router->routeValues(values, QDateTime::currentMSecsSinceEpoch() / 1000.0);
    if (recording())
        m_recorder->appendValues(timestamp, values);
}

void LiveInput::onErrorParsed(double timestamp, const QString &errorId)
{
    if (recording())
        m_recorder->appendError(timestamp, errorId);
    m_router->routeError(timestamp, errorId);
}

void LiveInput::onStateParsed(double timestamp, const QString &group, const QString &state)
{
    if (recording())
        m_recorder->appendState(timestamp, group, state);
    m_router->routeState(group, state);
}

void LiveInput::onUnrecognizedParsed(double timestamp, const QString &text)
{
    m_router->routeMessage(timestamp, text);
    if (recording())
        m_recorder->appendMessage(timestamp, text);
}
