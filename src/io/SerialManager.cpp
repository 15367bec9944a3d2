#include "SerialManager.h"

#include "LineSource.h"
#include "LineSourceFactory.h"

#include <QSerialPortInfo>

SerialManager::SerialManager(QObject *parent)
    : QObject(parent)
{
}

bool SerialManager::open(const SerialSettings &settings)
{
    if (m_source)
        close();
    m_settings = settings;
    m_buffer.clear();
    m_elapsedRunning = false;
    m_haveLine = false;
    m_oversizedReported = 0;
    ++m_generation;

    QString error;
    LineSourceFactory::Request request{settings, m_definitionsPath};
    m_source = LineSourceFactory::create(request, this, &error);
    if (!m_source) {
        Q_EMIT errorOccurred(error);
        Q_EMIT openFailed(settings.portName, error);
        return false;
    }
    connect(m_source, &LineSource::opened, this, &SerialManager::onSourceOpened);
    connect(m_source, &LineSource::openFailed, this, &SerialManager::onSourceOpenFailed);
    connect(m_source, &LineSource::lost, this, &SerialManager::onSourceLost);
    connect(m_source, &LineSource::readyRead, this, &SerialManager::onReadyRead);
    connect(m_source, &LineSource::errorOccurred, this, &SerialManager::errorOccurred);
    connect(m_source, &LineSource::bytesWritten, this, &SerialManager::bytesWritten);

    m_opening = true;
    const bool started = m_source->open();
    m_opening = false;
    if (!started) {
        const QString reason = m_source->errorString();
        dropSource();
        Q_EMIT errorOccurred(reason);
        Q_EMIT openFailed(settings.portName, reason);
        return false;
    }
    // A connection refused at once was reported on its way.
    return m_source && m_source->state() != LineSource::Closed;
}

void SerialManager::close()
{
    ++m_generation;
    dropSource();
}

// A source is made per open; the old one may be in the middle of emitting.
void SerialManager::dropSource()
{
    if (!m_source)
        return;
    LineSource *source = m_source;
    m_source = nullptr;
    source->disconnect(this);
    source->close();
    source->deleteLater();
}

bool SerialManager::isOpen() const
{
    return m_source && m_source->isOpen();
}

bool SerialManager::isOpening() const
{
    return m_source && m_source->state() == LineSource::Opening;
}

QString SerialManager::portName() const
{
    return m_settings.portName;
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

void SerialManager::onSourceOpened()
{
    m_elapsed.start();
    m_elapsedRunning = true;
    Q_EMIT sourceOpened(m_settings.portName);
}

void SerialManager::onSourceOpenFailed(const QString &reason)
{
    dropSource();
    Q_EMIT errorOccurred(reason);
    Q_EMIT openFailed(m_settings.portName, reason);
}

void SerialManager::onSourceLost(const QString &reason)
{
    const QString message = m_source->errorString();
    ++m_generation;
    dropSource();
    Q_EMIT errorOccurred(message);
    Q_EMIT portLost(m_settings.portName, reason);
}

void SerialManager::onReadyRead()
{
    m_continuationPosted = false;
    if (!m_source)
        return;
    Q_EMIT burstStarted();
    const quint64 generation = m_generation;
    if (m_drain.isEmpty())
        m_drain.resize(DrainChunkBytes);
    // What waits is taken now, up to a bound that keeps the window painting
    // while a device sends faster than it can be read.
    for (int chunk = 0; chunk < MaxDrainChunks && generation == m_generation && m_source; ++chunk) {
        const qint64 n = m_source->read(m_drain.data(), m_drain.size());
        reportOversizedInput();
        if (n <= 0)
            break;
        frameBytes(QByteArrayView(m_drain.constData(), n));
    }
    // What a source holds itself is announced by nothing else.
    if (generation == m_generation && m_source && m_source->hasPendingData() && !m_continuationPosted) {
        m_continuationPosted = true;
        QMetaObject::invokeMethod(this, &SerialManager::onReadyRead, Qt::QueuedConnection);
    }
    Q_EMIT burstFinished();
}

void SerialManager::onError(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::NoError || m_opening)
        return;
    Q_EMIT errorOccurred(m_source ? m_source->errorString() : QString());
}

bool SerialManager::write(QByteArrayView bytes, QString *error)
{
    if (!isOpen()) {
        *error = isOpening() ? QStringLiteral("still connecting") : QStringLiteral("not open");
        return false;
    }
    if (!m_source->write(bytes)) {
        *error = m_source->errorString();
        return false;
    }
    return true;
}

qint64 SerialManager::bytesToWrite() const
{
    return m_source ? m_source->bytesToWrite() : 0;
}

double SerialManager::currentTimestamp() const
{
    const double now = defaultTimestamp();
    return m_haveLine ? m_lastLineTime + (now - m_lastLineDefault) : now;
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

void SerialManager::reportOversizedInput()
{
    const qint64 dropped = m_source ? m_source->oversizedDropped() : 0;
    if (dropped > m_oversizedReported) {
        m_oversizedReported = dropped;
        Q_EMIT oversizedInputDropped(m_source->maxInputBytes(), dropped);
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
    m_lastLineTime = m_parsed.timestamp;
    m_lastLineDefault = defaultTime;
    m_haveLine = true;
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
