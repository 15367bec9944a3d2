#include "MqttBridge.h"

#include "LivePipeline.h"
#include "MqttClient.h"
#include "SerialManager.h"

#include <QStringEncoder>
#include <QTimer>

namespace {

// Room a batch starts with, so that lines are added without growing it.
constexpr qsizetype BatchReserveBytes = 32 * 1024;

void appendUtf8(QByteArray &out, const QString &text)
{
    static QStringEncoder encoder(QStringEncoder::Utf8);
    const qsizetype used = out.size();
    out.resize(used + encoder.requiredSpace(text.size()));
    char *end = encoder.appendToBuffer(out.data() + used, text);
    out.resize(end - out.constData());
}

} // namespace

MqttBridge::MqttBridge(LivePipeline *pipeline, const MqttAddress &to, qint64 queueLimit, QObject *parent)
    : QObject(parent)
    , m_pipeline(pipeline)
    , m_client(new MqttClient(this))
    , m_batchTimer(new QTimer(this))
    , m_retryTimer(new QTimer(this))
    , m_to(to)
    , m_queueLimit(qMax<qint64>(queueLimit, MaxBatchLines))
{
    m_batch.reserve(BatchReserveBytes);
    m_batchTimer->setSingleShot(true);
    m_batchTimer->setInterval(BatchMs);
    m_batchTimer->setTimerType(Qt::PreciseTimer);
    connect(m_batchTimer, &QTimer::timeout, this, &MqttBridge::closeBatch);
    m_retryTimer->setSingleShot(true);
    connect(m_retryTimer, &QTimer::timeout, this, [this] {
        QString error;
        if (!m_client->connectToBroker(m_to.broker, &error))
            retryLater(error);
    });
    connect(m_client, &MqttClient::connected, this, &MqttBridge::onConnected);
    connect(m_client, &MqttClient::connectFailed, this, &MqttBridge::onConnectFailed);
    connect(m_client, &MqttClient::disconnected, this, &MqttBridge::onDisconnected);
    connect(m_client, &MqttClient::published, this, &MqttBridge::onPublished);
    connect(m_client, &MqttClient::messageReceived, this, &MqttBridge::onCommand);
    connect(pipeline->serial(), &SerialManager::rawLineReceived, this, &MqttBridge::onLine);
}

bool MqttBridge::start(QString *error)
{
    return m_client->connectToBroker(m_to.broker, error);
}

bool MqttBridge::isConnected() const
{
    return m_client->state() == MqttClient::Connected;
}

void MqttBridge::flush()
{
    m_flushing = true;
    closeBatch();
    checkDrained();
}

void MqttBridge::stop()
{
    m_retryTimer->stop();
    m_batchTimer->stop();
    m_client->disconnectFromBroker();
}

void MqttBridge::onLine(double, const QString &raw)
{
    appendUtf8(m_batch, raw);
    m_batch.append('\n');
    if (++m_batchLines >= MaxBatchLines)
        closeBatch();
    else if (!m_batchTimer->isActive())
        m_batchTimer->start();
}

void MqttBridge::closeBatch()
{
    m_batchTimer->stop();
    if (m_batchLines == 0)
        return;
    if (m_queuedLines + m_batchLines > m_queueLimit) {
        m_dropped += m_batchLines;
        if (!m_dropping)
            Q_EMIT queueFull(m_queueLimit);
        m_dropping = true;
    } else {
        m_dropping = false;
        m_queue.push_back(Batch{std::move(m_batch), m_batchLines, 0});
        m_queuedLines += m_batchLines;
    }
    m_batch = QByteArray();
    m_batch.reserve(BatchReserveBytes);
    m_batchLines = 0;
    publishQueued();
}

void MqttBridge::publishQueued()
{
    while (isConnected() && !m_queue.empty() && int(m_inFlight.size()) < MaxInFlight) {
        Batch &batch = m_queue.front();
        QString error;
        batch.messageId = m_client->publish(m_to.topic, batch.payload, Qos, &error);
        if (batch.messageId < 0)
            return; // a lost connection was reported on its way
        m_inFlight.push_back(std::move(batch));
        m_queue.pop_front();
    }
}

void MqttBridge::onConnected()
{
    m_everConnected = true;
    m_retryMs = FirstRetryMs;
    QString error;
    if (!m_to.commandTopic.isEmpty())
        m_client->subscribe(m_to.commandTopic, Qos, &error);
    Q_EMIT connected();
    publishQueued();
}

void MqttBridge::onConnectFailed(const QString &reason)
{
    if (!m_everConnected) {
        Q_EMIT brokerFailed(reason);
        return;
    }
    retryLater(reason);
}

// What the broker had not acknowledged goes again, first and in order: a
// fresh connection remembers nothing of the old one.
void MqttBridge::onDisconnected(const QString &reason)
{
    while (!m_inFlight.empty()) {
        m_queue.push_front(std::move(m_inFlight.back()));
        m_inFlight.pop_back();
    }
    retryLater(reason);
}

void MqttBridge::retryLater(const QString &reason)
{
    Q_EMIT brokerLost(reason, m_retryMs);
    m_retryTimer->start(m_retryMs);
    m_retryMs = qMin(m_retryMs * 2, MaxRetryMs);
}

void MqttBridge::onPublished(int messageId)
{
    for (auto it = m_inFlight.begin(); it != m_inFlight.end(); ++it) {
        if (it->messageId == messageId) {
            m_forwarded += it->lines;
            m_queuedLines -= it->lines;
            m_inFlight.erase(it);
            break;
        }
    }
    publishQueued();
    checkDrained();
}

void MqttBridge::checkDrained()
{
    if (m_flushing && m_batchLines == 0 && m_queue.empty() && m_inFlight.empty()) {
        m_flushing = false;
        Q_EMIT drained();
    }
}

// A command as it came; one without a line ending gets a line feed, as a
// device reading lines needs it.
void MqttBridge::onCommand(QByteArrayView, QByteArrayView payload)
{
    if (payload.isEmpty())
        return;
    QByteArray line = payload.toByteArray();
    if (!line.endsWith('\n') && !line.endsWith('\r'))
        line.append('\n');
    QString error;
    if (m_pipeline->serial()->write(line, &error))
        ++m_commands;
    else
        Q_EMIT commandFailed(QStringLiteral("command not written to %1: %2")
                                 .arg(m_pipeline->serial()->portName(), error));
}
