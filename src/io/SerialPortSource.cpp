#include "SerialPortSource.h"

#include "DevicePaths.h"
#include "PortReader.h"

#include <QFileInfo>
#include <QTimer>

SerialPortSource::SerialPortSource(const SerialSettings &settings, QObject *parent)
    : LineSource(settings.portName, parent)
    , m_port(new QSerialPort(this))
    , m_deviceWatch(new QTimer(this))
{
    m_port->setPortName(settings.portName);
    m_port->setBaudRate(settings.baudRate, QSerialPort::AllDirections);
    m_port->setDataBits(QSerialPort::DataBits(settings.dataBits));
    m_port->setParity(QSerialPort::Parity(settings.parity));
    m_port->setStopBits(QSerialPort::StopBits(settings.stopBits));
    m_port->setFlowControl(QSerialPort::FlowControl(settings.flowControl));
    m_deviceWatch->setInterval(DeviceWatchMs);
    connect(m_deviceWatch, &QTimer::timeout, this, &SerialPortSource::checkDevicePresent);
    connect(m_port, &QSerialPort::readyRead, this, &LineSource::readyRead);
    connect(m_port, &QSerialPort::bytesWritten, this, &LineSource::bytesWritten);
    connect(m_port, &QSerialPort::errorOccurred, this, &SerialPortSource::onPortError);
}

bool SerialPortSource::open()
{
    if (!openPort(QIODevice::ReadWrite)) {
        // Without the right to write, the device is still worth reading.
        m_readOnly = m_port->error() == QSerialPort::PermissionError && openPort(QIODevice::ReadOnly);
        if (!m_readOnly) {
            setErrorString(m_port->errorString());
            return false;
        }
    }
    m_devicePath = DevicePaths::systemLocation(m_port->portName());
    if (QFileInfo::exists(m_devicePath))
        m_deviceWatch->start();
    setState(Open);
    Q_EMIT opened();
    return true;
}

bool SerialPortSource::openPort(QIODevice::OpenMode mode)
{
    m_opening = true; // open() reports its own failure
    const bool opened = m_port->open(mode);
    m_opening = false;
    return opened;
}

void SerialPortSource::close()
{
    m_deviceWatch->stop();
    if (m_port->isOpen())
        m_port->close();
    setState(Closed);
}

qint64 SerialPortSource::read(char *data, qint64 maxSize)
{
    if (!m_port->isOpen())
        return 0;
    const qint64 buffered = m_port->read(data, maxSize);
    if (buffered != 0)
        return qMax<qint64>(buffered, 0);
    // Past the port's own buffer: what a fast device left waiting since.
    return qMax<qint64>(PortReader::readWaiting(m_port->handle(), data, maxSize), 0);
}

bool SerialPortSource::hasPendingData() const
{
    return m_port->bytesAvailable() > 0;
}

bool SerialPortSource::write(QByteArrayView bytes)
{
    if (m_readOnly) {
        setErrorString(QStringLiteral("the port could only be opened for reading (no permission to write)"));
        return false;
    }
    return writeAll(m_port, bytes);
}

qint64 SerialPortSource::bytesToWrite() const
{
    return m_port->bytesToWrite();
}

LineSource::Presence SerialPortSource::presence() const
{
    return DevicePaths::isPresent(name()) ? Present : Absent;
}

void SerialPortSource::onPortError(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::NoError || m_opening)
        return;
    if (state() != Open) {
        Q_EMIT errorOccurred(m_port->errorString());
        return;
    }
    fail(lossReason(), m_port->errorString());
}

// A hung-up terminal (a closed pseudo-terminal, some adapters) only reads
// end-of-file and never reports an error; its device file is gone though.
void SerialPortSource::checkDevicePresent()
{
    if (!QFileInfo::exists(m_devicePath))
        fail(lossReason());
}

// The port's own text for a vanished device is often beside the point (a
// hung-up terminal reads as "Permission denied"): a device file that is gone
// says more.
QString SerialPortSource::lossReason() const
{
    if (!m_devicePath.isEmpty() && !QFileInfo::exists(m_devicePath))
        return QStringLiteral("the device disappeared: %1 no longer exists").arg(m_devicePath);
    return QStringLiteral("the device stopped answering: %1").arg(m_port->errorString());
}
