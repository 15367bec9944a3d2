#pragma once

#include "LineSource.h"
#include "LineSourceFactory.h"

#include <QAbstractSocket>
#include <QHostAddress>

QT_BEGIN_NAMESPACE
class QUdpSocket;
QT_END_NAMESPACE

// "udp://[HOST]:PORT": listens on a UDP port of this machine, on every
// address or only on HOST. A datagram carries one or more lines; one without
// a final line feed ends its line there, so that a line never spans two
// datagrams. A datagram larger than MaxDatagramBytes is dropped whole and
// counted: it is no device's telemetry.
//
// Commands go to the sender of the last datagram, or to "?reply=HOST:PORT"
// when given.
class UdpLineSource : public LineSource
{
    Q_OBJECT

public:
    static inline const QString Form = QStringLiteral("udp://[HOST]:PORT[?reply=HOST:PORT]");
    static constexpr qint64 MaxDatagramBytes = 60 * 1024;
    // Asked of the system, so that a burst of datagrams waits instead of
    // being dropped while the window paints; the system may grant less.
    static constexpr int ReceiveBufferBytes = 4 * 1024 * 1024;

    UdpLineSource(const QString &name, const QHostAddress &bindAddress, quint16 port, QObject *parent = nullptr);
    // The source of a udp:// address, or nullptr with *error set.
    static LineSource *create(const SourceAddress &address, const LineSourceFactory::Request &request,
                              QObject *parent, QString *error);

    void setReplyAddress(const QHostAddress &address, quint16 port);
    // The port listened on (the one the system chose for port 0).
    quint16 localPort() const;

    bool open() override;
    void close() override;
    qint64 read(char *data, qint64 maxSize) override;
    bool hasPendingData() const override;
    bool write(QByteArrayView bytes) override;
    qint64 oversizedDropped() const override { return m_dropped; }
    qint64 maxInputBytes() const override { return MaxDatagramBytes; }

private:
    QUdpSocket *m_socket = nullptr;
    QHostAddress m_bindAddress;
    quint16 m_port = 0;
    QHostAddress m_replyAddress; // null: to the last sender
    quint16 m_replyPort = 0;
    QHostAddress m_sender;
    quint16 m_senderPort = 0;
    qint64 m_dropped = 0;
};
