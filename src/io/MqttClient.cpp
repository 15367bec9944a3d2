#include "MqttClient.h"

#include <QFile>
#include <QHostAddress>
#include <QHostInfo>
#include <QSocketNotifier>
#include <QTimer>

#include <mosquitto.h>

#include <cerrno>
#include <cstring>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace {

// The library's global state, set up once for the whole program.
void initLibrary()
{
    static const bool initialised = [] {
        mosquitto_lib_init();
        return true;
    }();
    Q_UNUSED(initialised);
}

// Packets read in one go before the event loop gets a turn.
constexpr int MaxPacketsPerRead = 256;
constexpr int KeepAliveStepMs = 1000;

} // namespace

QString MqttBroker::name() const
{
    return host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]:%2").arg(host).arg(port)
                                           : QStringLiteral("%1:%2").arg(host).arg(port);
}

MqttClient::MqttClient(QObject *parent)
    : QObject(parent)
    , m_keepAlive(new QTimer(this))
    , m_connectTimeout(new QTimer(this))
{
    initLibrary();
    m_keepAlive->setInterval(KeepAliveStepMs);
    connect(m_keepAlive, &QTimer::timeout, this, &MqttClient::onKeepAlive);
    m_connectTimeout->setSingleShot(true);
    m_connectTimeout->setInterval(ConnectTimeoutMs);
    connect(m_connectTimeout, &QTimer::timeout, this, [this] {
        endConnection(QStringLiteral("no answer within %1 seconds").arg(ConnectTimeoutMs / 1000));
    });
}

MqttClient::~MqttClient()
{
    m_inLibrary = 0;
    release();
}

bool MqttClient::connectToBroker(const MqttBroker &broker, QString *error)
{
    disconnectFromBroker();
    m_brokerName = broker.name();
    m_host = broker.host;
    m_port = broker.port;
    m_lastError.clear();
    m_tls = broker.tls;
    m_reached = false;
    m_answered = false;
    if (!setUp(broker, error))
        return false;
    // The library would look a name up on this thread, stalling the window
    // for as long as a name server takes: Qt looks it up aside first.
    if (QHostAddress(broker.host).isNull()) {
        m_state = Connecting;
        m_connectTimeout->start();
        m_lookupId = QHostInfo::lookupHost(broker.host, this, &MqttClient::onHostFound);
        return true;
    }
    return startConnecting(broker.host, error);
}

bool MqttClient::setUp(const MqttBroker &broker, QString *error)
{
    // A clean session under a name the library makes up: nothing is left
    // at the broker from one connection to the next.
    m_mosq = mosquitto_new(nullptr, true, this);
    if (!m_mosq) {
        *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    mosquitto_int_option(m_mosq, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V311);
    // The owner decides how much is under way.
    mosquitto_max_inflight_messages_set(m_mosq, 0);
    mosquitto_connect_callback_set(m_mosq, &MqttClient::onConnectCallback);
    mosquitto_disconnect_callback_set(m_mosq, &MqttClient::onDisconnectCallback);
    mosquitto_message_callback_set(m_mosq, &MqttClient::onMessageCallback);
    mosquitto_publish_callback_set(m_mosq, &MqttClient::onPublishCallback);
    mosquitto_log_callback_set(m_mosq, &MqttClient::onLogCallback);

    if (!broker.user.isEmpty()) {
        mosquitto_username_pw_set(m_mosq, broker.user.toUtf8().constData(),
                                  broker.password.isEmpty() ? nullptr : broker.password.toUtf8().constData());
    }
    if (broker.tls && broker.caFile.isEmpty()) {
        mosquitto_int_option(m_mosq, MOSQ_OPT_TLS_USE_OS_CERTS, 1);
    } else if (broker.tls && mosquitto_tls_set(m_mosq, QFile::encodeName(broker.caFile).constData(), nullptr, nullptr,
                                               nullptr, nullptr)
                   != MOSQ_ERR_SUCCESS) {
        *error = QStringLiteral("cannot read the certificate file %1").arg(broker.caFile);
        release();
        return false;
    }
    return true;
}

void MqttClient::onHostFound(const QHostInfo &info)
{
    if (m_state != Connecting || info.lookupId() != m_lookupId)
        return;
    m_lookupId = -1;
    if (info.error() != QHostInfo::NoError || info.addresses().isEmpty()) {
        endConnection(QStringLiteral("cannot find the host %1 (%2)").arg(m_host, info.errorString()));
        return;
    }
    // TLS checks the broker's certificate against the name: it goes along.
    QString error;
    if (!startConnecting(m_tls ? m_host : info.addresses().constFirst().toString(), &error))
        endConnection(error);
}

bool MqttClient::startConnecting(const QString &host, QString *error)
{
    errno = 0;
    const int rc = mosquitto_connect_async(m_mosq, host.toUtf8().constData(), m_port, KeepAliveSeconds);
    if (rc != MOSQ_ERR_SUCCESS && rc != MOSQ_ERR_CONN_PENDING) {
        *error = describe(rc);
        release();
        return false;
    }
    m_state = Connecting;
    const int socket = mosquitto_socket(m_mosq);
    m_readNotifier = new QSocketNotifier(socket, QSocketNotifier::Read, this);
    m_writeNotifier = new QSocketNotifier(socket, QSocketNotifier::Write, this);
    connect(m_readNotifier, &QSocketNotifier::activated, this, &MqttClient::onReadable);
    connect(m_writeNotifier, &QSocketNotifier::activated, this, &MqttClient::onWritable);
    m_keepAlive->start();
    if (!m_connectTimeout->isActive())
        m_connectTimeout->start();
    return true;
}

void MqttClient::disconnectFromBroker()
{
    if (!m_mosq)
        return;
    if (m_state == Connected) {
        ++m_inLibrary;
        mosquitto_disconnect(m_mosq);
        // What is queued leaves now, while the socket is still there.
        for (int i = 0; i < 100 && mosquitto_want_write(m_mosq); ++i) {
            if (mosquitto_loop_write(m_mosq, 1) != MOSQ_ERR_SUCCESS)
                break;
        }
        --m_inLibrary;
    }
    m_state = Disconnected;
    release();
}

bool MqttClient::subscribe(const QByteArray &topic, int qos, QString *error)
{
    if (!m_mosq || m_state != Connected) {
        *error = QStringLiteral("not connected");
        return false;
    }
    const int rc = mosquitto_subscribe(m_mosq, nullptr, topic.constData(), qos);
    if (rc != MOSQ_ERR_SUCCESS) {
        *error = describe(rc);
        return false;
    }
    updateWriteInterest();
    return true;
}

int MqttClient::publish(const QByteArray &topic, QByteArrayView payload, int qos, QString *error)
{
    if (!m_mosq || m_state != Connected) {
        *error = QStringLiteral("not connected to the broker at %1").arg(m_brokerName);
        return -1;
    }
    int messageId = 0;
    ++m_inLibrary;
    const int rc =
        mosquitto_publish(m_mosq, &messageId, topic.constData(), int(payload.size()), payload.data(), qos, false);
    --m_inLibrary;
    if (rc != MOSQ_ERR_SUCCESS) {
        *error = describe(rc);
        // A write that found the connection gone ends it.
        if (rc == MOSQ_ERR_NO_CONN || rc == MOSQ_ERR_CONN_LOST || rc == MOSQ_ERR_ERRNO)
            endConnection(*error);
        else if (m_releaseLater)
            release();
        return -1;
    }
    if (m_releaseLater)
        release();
    else
        updateWriteInterest();
    return messageId;
}

bool MqttClient::isValidFilter(const QByteArray &topic)
{
    return !topic.isEmpty() && mosquitto_sub_topic_check(topic.constData()) == MOSQ_ERR_SUCCESS;
}

bool MqttClient::isValidTopic(const QByteArray &topic)
{
    return !topic.isEmpty() && mosquitto_pub_topic_check(topic.constData()) == MOSQ_ERR_SUCCESS;
}

void MqttClient::onReadable()
{
    if (!m_mosq)
        return;
    ++m_inLibrary;
    int rc = MOSQ_ERR_SUCCESS;
    // Everything that waits, up to a bound that keeps the window painting.
    for (int i = 0; i < MaxPacketsPerRead && m_mosq && !m_releaseLater; ++i) {
        rc = mosquitto_loop_read(m_mosq, 1);
        int waiting = 0;
        if (rc != MOSQ_ERR_SUCCESS || ::ioctl(mosquitto_socket(m_mosq), FIONREAD, &waiting) != 0 || waiting <= 0)
            break;
    }
    --m_inLibrary;
    handleResult(rc);
}

void MqttClient::onWritable()
{
    if (!m_mosq)
        return;
    if (m_state == Connecting && !m_reached) {
        // A connection still being made that failed says why only here.
        int socketError = 0;
        socklen_t length = sizeof socketError;
        if (::getsockopt(mosquitto_socket(m_mosq), SOL_SOCKET, SO_ERROR, &socketError, &length) == 0
            && socketError != 0) {
            endConnection(QString::fromLocal8Bit(std::strerror(socketError)),
                          duringHandshake(MOSQ_ERR_ERRNO, socketError));
            return;
        }
        m_reached = true;
    }
    ++m_inLibrary;
    const int rc = mosquitto_loop_write(m_mosq, 1);
    --m_inLibrary;
    handleResult(rc);
}

void MqttClient::onKeepAlive()
{
    if (!m_mosq)
        return;
    ++m_inLibrary;
    const int rc = mosquitto_loop_misc(m_mosq);
    --m_inLibrary;
    handleResult(rc);
}

void MqttClient::handleResult(int rc)
{
    if (m_releaseLater) {
        release();
        return;
    }
    if (!m_mosq)
        return;
    if (rc != MOSQ_ERR_SUCCESS && rc != MOSQ_ERR_CONN_PENDING) {
        endConnection(describe(rc), duringHandshake(rc, errno));
        return;
    }
    updateWriteInterest();
}

void MqttClient::updateWriteInterest()
{
    // Until the connection is made, writable means made (or failed).
    const bool unreached = m_state == Connecting && !m_reached;
    if (m_mosq && m_writeNotifier)
        m_writeNotifier->setEnabled(unreached || mosquitto_want_write(m_mosq));
}

void MqttClient::endConnection(const QString &text, bool handshake)
{
    const State was = m_state;
    const QString reason = handshake && was == Connecting && !text.startsWith(QLatin1String("TLS"))
        ? QStringLiteral("TLS failure: %1").arg(text)
        : text;
    m_state = Disconnected;
    release();
    if (was == Connecting)
        Q_EMIT connectFailed(reason);
    else if (was == Connected)
        Q_EMIT disconnected(reason);
}

// The library's object may be in the middle of a call that emitted: it goes
// once that call has returned.
void MqttClient::release()
{
    m_state = Disconnected;
    if (m_lookupId >= 0)
        QHostInfo::abortHostLookup(m_lookupId);
    m_lookupId = -1;
    m_keepAlive->stop();
    m_connectTimeout->stop();
    for (QSocketNotifier *notifier : {m_readNotifier, m_writeNotifier}) {
        if (notifier) {
            notifier->setEnabled(false);
            notifier->deleteLater();
        }
    }
    m_readNotifier = nullptr;
    m_writeNotifier = nullptr;
    if (!m_mosq)
        return;
    if (m_inLibrary > 0) {
        m_releaseLater = true;
        return;
    }
    m_releaseLater = false;
    mosquitto_destroy(m_mosq);
    m_mosq = nullptr;
}

bool MqttClient::duringHandshake(int rc, int error) const
{
    if (!m_tls || m_answered || m_state != Connecting)
        return false;
    // These say the port was never reached; anything else broke a handshake.
    const bool unreachable = rc == MOSQ_ERR_ERRNO
        && (error == ECONNREFUSED || error == EHOSTUNREACH || error == ENETUNREACH || error == ETIMEDOUT);
    return !unreachable && rc != MOSQ_ERR_EAI;
}

QString MqttClient::describe(int rc) const
{
    if (rc == MOSQ_ERR_ERRNO && errno != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    if (rc == MOSQ_ERR_TLS || rc == MOSQ_ERR_TLS_HANDSHAKE) {
        return m_lastError.isEmpty() ? QStringLiteral("TLS failure")
                                     : QStringLiteral("TLS failure: %1").arg(m_lastError);
    }
    if (rc == MOSQ_ERR_EAI)
        return QStringLiteral("the broker's host name is unknown");
    if (rc == MOSQ_ERR_CONN_LOST)
        return QStringLiteral("the broker closed the connection");
    return QString::fromUtf8(mosquitto_strerror(rc));
}

void MqttClient::onConnectCallback(mosquitto *, void *self, int rc)
{
    auto *client = static_cast<MqttClient *>(self);
    if (client->m_state != Connecting)
        return;
    client->m_answered = true;
    if (rc != 0) {
        client->endConnection(QStringLiteral("the broker refused the connection (%1)")
                                  .arg(QString::fromUtf8(mosquitto_connack_string(rc))));
        return;
    }
    client->m_connectTimeout->stop();
    client->m_state = Connected;
    Q_EMIT client->connected();
}

void MqttClient::onDisconnectCallback(mosquitto *, void *self, int rc)
{
    auto *client = static_cast<MqttClient *>(self);
    if (rc != 0 && client->m_state != Disconnected)
        client->endConnection(client->describe(rc), client->duringHandshake(rc, errno));
}

void MqttClient::onMessageCallback(mosquitto *, void *self, const mosquitto_message *message)
{
    auto *client = static_cast<MqttClient *>(self);
    if (client->m_state != Connected)
        return;
    Q_EMIT client->messageReceived(QByteArrayView(message->topic, qstrlen(message->topic)),
                                   QByteArrayView(static_cast<const char *>(message->payload), message->payloadlen));
}

void MqttClient::onPublishCallback(mosquitto *, void *self, int messageId)
{
    Q_EMIT static_cast<MqttClient *>(self)->published(messageId);
}

void MqttClient::onLogCallback(mosquitto *, void *self, int level, const char *text)
{
    if (level & MOSQ_LOG_ERR)
        static_cast<MqttClient *>(self)->m_lastError = QString::fromUtf8(text);
}
