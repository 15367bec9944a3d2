#include "UdpLineSource.h"

#include <QUdpSocket>
#include <QVariant>

namespace {

// An address of this machine, or of a device, written as an address:
// looking a name up would stall the window.
bool literalAddress(const QString &host, QHostAddress *address)
{
    if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0) {
        *address = QHostAddress(QHostAddress::LocalHost);
        return true;
    }
    return address->setAddress(host);
}

} // namespace

UdpLineSource::UdpLineSource(const QString &name, const QHostAddress &bindAddress, quint16 port, QObject *parent)
    : LineSource(name, parent)
    , m_socket(new QUdpSocket(this))
    , m_bindAddress(bindAddress)
    , m_port(port)
{
    connect(m_socket, &QUdpSocket::readyRead, this, &LineSource::readyRead);
    connect(m_socket, &QUdpSocket::errorOccurred, this, [this] {
        // Datagrams have no connection to lose: the socket listens on.
        if (isOpen())
            Q_EMIT errorOccurred(m_socket->errorString());
    });
}

LineSource *UdpLineSource::create(const SourceAddress &address, const LineSourceFactory::Request &,
                                  QObject *parent, QString *error)
{
    if (!address.requireHostAndPort(Form, true, 0, error)
        || !address.allowOnlyOptions({QStringLiteral("reply")}, Form, error))
        return nullptr;
    QHostAddress bindAddress(QHostAddress::Any);
    if (!address.host.isEmpty() && !literalAddress(address.host, &bindAddress)) {
        *error = QStringLiteral("malformed address: %1 is no address of this machine (such as 127.0.0.1 or 0.0.0.0)")
                     .arg(address.host);
        return nullptr;
    }
    QString replyHost;
    int replyPort = -1;
    QHostAddress replyAddress;
    if (!address.hostPortOption(QStringLiteral("reply"), &replyHost, &replyPort, error))
        return nullptr;
    if (!replyHost.isEmpty() && !literalAddress(replyHost, &replyAddress)) {
        *error = QStringLiteral("malformed address: reply needs an address (such as 192.168.1.20:5000), not %1")
                     .arg(replyHost);
        return nullptr;
    }
    auto *source = new UdpLineSource(address.text, bindAddress, quint16(address.port), parent);
    if (!replyAddress.isNull())
        source->setReplyAddress(replyAddress, quint16(replyPort));
    return source;
}

void UdpLineSource::setReplyAddress(const QHostAddress &address, quint16 port)
{
    m_replyAddress = address;
    m_replyPort = port;
}

quint16 UdpLineSource::localPort() const
{
    return m_socket->localPort();
}

bool UdpLineSource::open()
{
    // Not shared: a port another program listens on is reported as in use.
    if (!m_socket->bind(m_bindAddress, m_port, QAbstractSocket::DontShareAddress)) {
        setErrorString(m_socket->errorString());
        return false;
    }
    m_socket->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, QVariant(ReceiveBufferBytes));
    setState(Open);
    Q_EMIT opened();
    return true;
}

void UdpLineSource::close()
{
    m_socket->close();
    setState(Closed);
}

qint64 UdpLineSource::read(char *data, qint64 maxSize)
{
    qint64 taken = 0;
    while (isOpen() && m_socket->hasPendingDatagrams()) {
        const qint64 size = m_socket->pendingDatagramSize();
        if (size > MaxDatagramBytes || size <= 0) {
            char discard = 0;
            if (m_socket->readDatagram(&discard, 1) < 0) // the rest of it goes with it
                break;
            m_dropped += size > 0 ? 1 : 0;
            continue;
        }
        // Room for the datagram and the line feed that may end it.
        if (taken + size + 1 > maxSize)
            break;
        const qint64 n = m_socket->readDatagram(data + taken, size, &m_sender, &m_senderPort);
        if (n < 0)
            break;
        taken += n;
        if (n > 0 && data[taken - 1] != '\n')
            data[taken++] = '\n';
    }
    return taken;
}

bool UdpLineSource::hasPendingData() const
{
    return isOpen() && m_socket->hasPendingDatagrams();
}

bool UdpLineSource::write(QByteArrayView bytes)
{
    const bool toReply = !m_replyAddress.isNull();
    if (!toReply && m_sender.isNull()) {
        setErrorString(QStringLiteral("no device to send to yet: no datagram has arrived and no "
                                      "?reply=HOST:PORT was given"));
        return false;
    }
    const qint64 sent = m_socket->writeDatagram(bytes.data(), bytes.size(), toReply ? m_replyAddress : m_sender,
                                                toReply ? m_replyPort : m_senderPort);
    if (sent != bytes.size()) {
        setErrorString(m_socket->errorString());
        return false;
    }
    return true;
}
