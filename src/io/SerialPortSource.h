#pragma once

#include "LineSource.h"
#include "SerialSettings.h"

#include <QSerialPort>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

// A serial port, or any device path that behaves like one (a
// pseudo-terminal, a symbolic link to either).
//
// The port is opened for reading and writing, so that commands can go to the
// device; a port the user may only read is opened read-only instead, and
// then refuses commands with that reason.
//
// Any error while the port is open means the stream is broken (a hung-up
// device may report a read error rather than a resource error): the port is
// closed and lost() says why. A hung-up terminal that only reads end-of-file
// is caught by watching its device file, which goes with it.
class SerialPortSource : public LineSource
{
    Q_OBJECT

public:
    static constexpr int DeviceWatchMs = 250;

    explicit SerialPortSource(const SerialSettings &settings, QObject *parent = nullptr);

    bool open() override;
    void close() override;
    qint64 read(char *data, qint64 maxSize) override;
    bool hasPendingData() const override;
    bool write(QByteArrayView bytes) override;
    qint64 bytesToWrite() const override;
    Presence presence() const override;

    bool isReadOnly() const { return m_readOnly; }

private:
    bool openPort(QIODevice::OpenMode mode);
    void onPortError(QSerialPort::SerialPortError error);
    void checkDevicePresent();
    QString lossReason() const;

    QSerialPort *m_port = nullptr;
    QTimer *m_deviceWatch = nullptr;
    QString m_devicePath;
    bool m_opening = false;
    bool m_readOnly = false;
};
