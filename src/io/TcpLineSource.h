#pragma once

#include "LineSource.h"
#include "LineSourceFactory.h"

#include <QAbstractSocket>

QT_BEGIN_NAMESPACE
class QTcpSocket;
class QTimer;
QT_END_NAMESPACE

// "tcp://HOST:PORT": a TCP client of a device, or of a gateway that puts a
// serial device on the network, streaming lines. Commands are written to
// the connection. A connection the other end closes or that breaks is lost.
class TcpLineSource : public LineSource
{
    Q_OBJECT

public:
    static inline const QString Form = QStringLiteral("tcp://HOST:PORT");
    // A host that never answers is given up after this long.
    static constexpr int ConnectTimeoutMs = 10000;
    // What waits unread before the device is slowed down by TCP itself.
    static constexpr qint64 ReadBufferBytes = 4 * 1024 * 1024;

    TcpLineSource(const QString &name, const QString &host, quint16 port, QObject *parent = nullptr);
    // The source of a tcp:// address, or nullptr with *error set.
    static LineSource *create(const SourceAddress &address, const LineSourceFactory::Request &request,
                              QObject *parent, QString *error);

    bool open() override;
    void close() override;
    qint64 read(char *data, qint64 maxSize) override;
    bool hasPendingData() const override;
    bool write(QByteArrayView bytes) override;
    qint64 bytesToWrite() const override;

private:
    void onConnected();
    void onSocketError(QAbstractSocket::SocketError error);
    void onDisconnected();
    void deliverRest();

    QTcpSocket *m_socket = nullptr;
    QTimer *m_connectTimeout = nullptr;
    QString m_host;
    quint16 m_port = 0;
};
