#include "SerialManager.h"

#include "PortReader.h"

#include <QSerialPortInfo>

SerialManager::SerialManager(QObject *parent)
    : QObject(parent)
    , m_port(new QSerialPort(this))
{
    connect(m_port, &QSerialPort::readyRead, this, &SerialManager::onReadyRead);
    connect(m_port, &QSerialPort::errorOccurred, this, &SerialManager::onError);
}

bool SerialManager::open(const SerialSettings &settings)
{
    if (m_port->isOpen())
        close();
    m_settings = settings;
    m_port->setPortName(settings.portName);
    m_port->setBaudRate(settings.baudRate, QSerialPort::AllDirections);
    m_port->setDataBits(QSerialPort::DataBits(settings.dataBits));
    m_port->setParity(QSerialPort::Parity(settings.parity));
    m_port->setStopBits(QSerialPort::StopBits(settings.stopBits));
    m_port->setFlowControl(QSerialPort::FlowControl(settings.flowControl));
    m_buffer.clear();
    m_elapsedRunning = false;
    ++m_generation;
    m_opening = true;
    const bool opened = m_port->open(QIODevice::ReadOnly);
    m_opening = false;
    if (!opened) {
        Q_EMIT errorOccurred(m_port->errorString());
        return false;
    }
    m_elapsed.start();
    m_elapsedRunning = true;
    return true;
}

void SerialManager::close()
{
    ++m_generation;
    if (m_port->isOpen())
        m_port->close();
}

bool SerialManager::isOpen() const
{
    return m_port->isOpen();
}

QString SerialManager::portName() const
{
    return m_port->portName();
}

QStringList SerialManager::availablePorts() const
{
    QStringList names;
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : ports)
        names.append(info.portName());
    return names;
}

void SerialManager::refreshPorts()
{
    Q_EMIT portsChanged(availablePorts());
}

void SerialManager::onReadyRead()
{
    Q_EMIT burstStarted();
    const quint64 generation = m_generation;
    frameBytes(m_port->readAll());
    // What else waits is taken now, up to a bound that keeps the window
    // painting while a device sends faster than it can be read.
    if (m_drain.isEmpty())
        m_drain.resize(DrainChunkBytes);
    for (int chunk = 0; chunk < MaxDrainChunks && generation == m_generation && m_port->isOpen(); ++chunk) {
        const qint64 n = PortReader::readWaiting(m_port->handle(), m_drain.data(), m_drain.size());
        if (n <= 0)
            break;
        frameBytes(QByteArrayView(m_drain.constData(), n));
    }
    Q_EMIT burstFinished();
}

void SerialManager::onError(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::NoError || m_opening)
        return; // open() reports its own failure
    Q_EMIT errorOccurred(m_port->errorString());
    // A vanished device fails on every read; close so the owner can offer to reconnect.
    const bool lost = error == QSerialPort::ResourceError || error == QSerialPort::ReadError;
    if (lost && m_port->isOpen()) {
        const QString name = m_port->portName();
        close();
        Q_EMIT portLost(name);
    }
}

void SerialManager::processBytes(QByteArrayView bytes)
{
    Q_EMIT burstStarted();
    frameBytes(bytes);
    Q_EMIT burstFinished();
}

void SerialManager::frameBytes(QByteArrayView bytes)
{
    m_buffer.append(bytes);
    // Lines that arrive together arrive at the same moment.
    const double defaultTime = defaultTimestamp();
    const quint64 generation = m_generation;
    QByteArrayView line;
    while (generation == m_generation) {
        const bool taken = m_buffer.takeLine(line);
        reportOverlongLines(defaultTime);
        // A receiver of the report may have closed or reopened the port.
        if (!taken || generation != m_generation)
            return;
        processLine(line, defaultTime);
    }
}

void SerialManager::reportOverlongLines(double timestamp)
{
    while (m_overlongReported < m_buffer.overlongLines()) {
        ++m_overlongReported;
        Q_EMIT overlongLineDropped(timestamp, LineFramer::MaxLineBytes);
    }
}

double SerialManager::defaultTimestamp() const
{
    return m_elapsedRunning ? double(m_elapsed.elapsed()) / 1000.0 : 0.0;
}

void SerialManager::processLine(QByteArrayView bytes, double defaultTime)
{
    if (bytes.isEmpty())
        return;
    const QString text = QString::fromUtf8(bytes).trimmed();
    // A receiver that spins the event loop may bring the next bytes in while
    // this line is still being emitted: those lines get a result of their own.
    if (m_emitting) {
        ParsedLine nested;
        if (LineParser::parse(text, defaultTime, nested))
            emitLine(nested);
        return;
    }
    if (!LineParser::parse(text, defaultTime, m_parsed))
        return;
    m_emitting = true;
    emitLine(m_parsed);
    m_emitting = false;
}

void SerialManager::emitLine(const ParsedLine &parsed)
{
    const double t = parsed.timestamp;
    Q_EMIT rawLineReceived(t, parsed.line);
    for (const LineEvent &event : parsed.events) {
        if (event.kind == LineEvent::State)
            Q_EMIT stateParsed(t, event.groupId, event.id);
        else
            Q_EMIT errorParsed(t, event.id);
    }
    if (!parsed.values.isEmpty())
        Q_EMIT lineParsed(t, parsed.values);
    if (!parsed.unrecognized.isEmpty())
        Q_EMIT unrecognizedParsed(t, parsed.unrecognizedText());
}
