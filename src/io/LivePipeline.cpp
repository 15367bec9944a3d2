#include "LivePipeline.h"

#include "PortReconnector.h"
#include "RecordingWriter.h"
#include "SerialManager.h"

LivePipeline::LivePipeline(QObject *parent)
    : CommandSink(parent)
    , m_serial(new SerialManager(this))
    , m_recorder(new RecordingWriter(this))
    , m_reconnector(new PortReconnector(m_serial, this))
{
    // Each kind of event in the form the recording keeps it; the writer
    // ignores them while no recording runs.
    connect(m_serial, &SerialManager::stateParsed, m_recorder, &RecordingWriter::appendState);
    connect(m_serial, &SerialManager::errorParsed, m_recorder, &RecordingWriter::appendError);
    connect(m_serial, &SerialManager::lineParsed, m_recorder, &RecordingWriter::appendValues);
    connect(m_serial, &SerialManager::unrecognizedParsed, m_recorder, &RecordingWriter::appendMessage);

    connect(m_serial, &SerialManager::portLost, this, &LivePipeline::onLost);
    connect(m_reconnector, &PortReconnector::reconnected, this, &LivePipeline::onReconnected);
    connect(m_serial, &SerialManager::sourceOpened, this, &LivePipeline::updateAvailability);
    connect(m_serial, &SerialManager::openFailed, this, &LivePipeline::updateAvailability);
}

void LivePipeline::setDefinitionsPath(const QString &path)
{
    m_serial->setDefinitionsPath(path);
}

bool LivePipeline::open(const SerialSettings &settings)
{
    m_reconnector->stop(); // the user's choice replaces the lost source
    m_lost.portName.clear();
    const bool opened = m_serial->open(settings);
    updateAvailability();
    return opened;
}

void LivePipeline::close()
{
    const bool wasActive = m_serial->isOpen() || m_serial->isOpening();
    m_reconnector->stop();
    m_lost.portName.clear();
    m_serial->close();
    updateAvailability();
    if (wasActive)
        Q_EMIT sourceClosed(m_serial->portName());
}

bool LivePipeline::isOpen() const
{
    return m_serial->isOpen();
}

bool LivePipeline::isOpening() const
{
    return m_serial->isOpening();
}

void LivePipeline::setReconnect(bool on)
{
    m_reconnect = on;
    if (!on)
        m_reconnector->stop();
    else if (!m_lost.portName.isEmpty() && !m_serial->isOpen() && !m_serial->isOpening())
        m_reconnector->start(m_lost);
}

bool LivePipeline::isWaitingToReconnect() const
{
    return m_reconnector->isWaiting();
}

void LivePipeline::onLost(const QString &name, const QString &reason)
{
    m_lost = m_serial->settings();
    if (m_reconnect)
        m_reconnector->start(m_lost);
    updateAvailability();
    Q_EMIT sourceLost(name, reason);
}

void LivePipeline::onReconnected(const QString &name)
{
    m_lost.portName.clear();
    updateAvailability();
    Q_EMIT reconnected(name);
}

bool LivePipeline::canSendCommands(QString *reason) const
{
    QString why;
    const QString name = m_serial->portName();
    if (m_serial->isOpen())
        return true;
    if (m_serial->isOpening())
        why = QStringLiteral("%1 is still connecting").arg(name);
    else if (!m_lost.portName.isEmpty())
        why = QStringLiteral("%1 was lost").arg(m_lost.portName);
    else
        why = QStringLiteral("no source is open");
    if (reason)
        *reason = why;
    return false;
}

bool LivePipeline::sendCommand(const QString &text, LineEnding ending, QString *error)
{
    if (text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'))) {
        *error = QStringLiteral("a command is one line and holds no line break");
        return false;
    }
    if (!canSendCommands(error))
        return false;
    QString why;
    const QByteArray line = text.toUtf8() + LineEndings::bytes(ending);
    if (!m_serial->write(line, &why)) {
        *error = QStringLiteral("cannot write to %1: %2").arg(m_serial->portName(), why);
        return false;
    }
    // In the time base of the lines around it, so playback shows it between them.
    if (m_recorder->isRecording())
        m_recorder->appendMessage(m_serial->currentTimestamp(), CommandPrefix + text);
    Q_EMIT commandSent(text);
    return true;
}

void LivePipeline::updateAvailability()
{
    const bool available = m_serial->isOpen();
    if (available == m_available)
        return;
    m_available = available;
    Q_EMIT commandsAvailableChanged(available);
}
