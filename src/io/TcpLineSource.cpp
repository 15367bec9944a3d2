#include "TcpLineSource.h"

#include <QTcpSocket>
#include <QTimer>

TcpLineSource::TcpLineSource(const QString &name, const QString &host, quint16 port, QObject *parent)
    : LineSource(name, parent)
    , m_socket(new QTcpSocket(this))
    , m_connectTimeout(new QTimer(this))
    , m_host(host)
    , m_port(port)
{
    m_socket->setReadBufferSize(ReadBufferBytes);
    m_connectTimeout->setSingleShot(true);
    m_connectTimeout->setInterval(ConnectTimeoutMs);
    connect(m_connectTimeout, &QTimer::timeout, this, [this] {
        fail(QStringLiteral("no answer from %1:%2 within %3 seconds").arg(m_host).arg(m_port).arg(ConnectTimeoutMs / 1000));
    });
    connect(m_socket, &QTcpSocket::connected, this, &TcpLineSource::onConnected);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &TcpLineSource::onSocketError);
    connect(m_socket, &QTcpSocket::disconnected, this, &TcpLineSource::onDisconnected);
    connect(m_socket, &QTcpSocket::readyRead, this, &LineSource::readyRead);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &LineSource::bytesWritten);
}

LineSource *TcpLineSource::create(const SourceAddress &address, const LineSourceFactory::Request &,
                                  QObject *parent, QString *error)
{
    if (!address.requireHostAndPort(Form, false, 1, error) || !address.allowOnlyOptions({}, Form, error))
        return nullptr;
    return new TcpLineSource(address.text, address.host, quint16(address.port), parent);
}

bool TcpLineSource::open()
{
    setState(Opening);
    m_connectTimeout->start();
    m_socket->connectToHost(m_host, m_port);
    return true;
}

void TcpLineSource::close()
{
    m_connectTimeout->stop();
    setState(Closed);
    // What was written still goes out before the connection ends.
    if (m_socket->state() == QAbstractSocket::ConnectedState)
        m_socket->disconnectFromHost();
    else
        m_socket->abort();
}

void TcpLineSource::onConnected()
{
    m_connectTimeout->stop();
    // Commands are short and wanted at once; a broken link is noticed even when the device is quiet.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    setState(Open);
    Q_EMIT opened();
}

void TcpLineSource::onSocketError(QAbstractSocket::SocketError)
{
    if (state() == Closed)
        return;
    deliverRest();
    fail(m_socket->errorString());
}

// An end that closes without an error first (a clean shutdown) is lost as well.
void TcpLineSource::onDisconnected()
{
    if (state() != Open)
        return;
    deliverRest();
    fail(QStringLiteral("The remote host closed the connection"));
}

// What the device sent before it went is read before the connection is dropped.
void TcpLineSource::deliverRest()
{
    qint64 left = m_socket->bytesAvailable();
    while (state() == Open && left > 0) {
        Q_EMIT readyRead();
        const qint64 now = m_socket->bytesAvailable();
        if (now >= left)
            return; // nobody reads
        left = now;
    }
}

qint64 TcpLineSource::read(char *data, qint64 maxSize)
{
    return qMax<qint64>(m_socket->read(data, maxSize), 0);
}

bool TcpLineSource::hasPendingData() const
{
    return m_socket->bytesAvailable() > 0;
}

bool TcpLineSource::write(QByteArrayView bytes)
{
    return writeAll(m_socket, bytes);
}

qint64 TcpLineSource::bytesToWrite() const
{
    return m_socket->bytesToWrite();
}
