#include "MqttLineSource.h"

#include "LineFramer.h"
#include "MqttClient.h"


MqttLineSource::MqttLineSource(const QString &name, const MqttAddress &address, QObject *parent)
    : LineSource(name, parent)
    , m_client(new MqttClient(this))
    , m_address(address)
{
    connect(m_client, &MqttClient::connected, this, &MqttLineSource::onConnected);
    connect(m_client, &MqttClient::connectFailed, this,
            [this](const QString &reason) { fail(brokerReason(reason)); });
    connect(m_client, &MqttClient::disconnected, this, [this](const QString &reason) { fail(brokerReason(reason)); });
    connect(m_client, &MqttClient::messageReceived, this, &MqttLineSource::onMessage);
    connect(m_client, &MqttClient::published, this, &MqttLineSource::onPublished);
}

LineSource *MqttLineSource::create(const SourceAddress &address, const LineSourceFactory::Request &, QObject *parent,
                                   QString *error)
{
    MqttAddress mqtt;
    if (!MqttAddress::parse(address, &mqtt, error))
        return nullptr;
    return new MqttLineSource(SourceAddress::displayName(address.text), mqtt, parent);
}

QString MqttLineSource::brokerReason(const QString &reason) const
{
    return QStringLiteral("broker %1: %2").arg(m_address.broker.name(), reason);
}

bool MqttLineSource::open()
{
    m_pending.clear();
    m_unacked.clear();
    m_unackedBytes = 0;
    QString error;
    if (!m_client->connectToBroker(m_address.broker, &error)) {
        setErrorString(brokerReason(error));
        return false;
    }
    setState(Opening);
    return true;
}

void MqttLineSource::close()
{
    m_client->disconnectFromBroker();
    setState(Closed);
}

void MqttLineSource::onConnected()
{
    QString error;
    if (!m_client->subscribe(m_address.topic, SubscribeQos, &error)) {
        fail(brokerReason(error));
        return;
    }
    setState(Open);
    Q_EMIT opened();
}

void MqttLineSource::onMessage(QByteArrayView, QByteArrayView payload)
{
    if (payload.size() > LineFramer::MaxLineBytes) {
        ++m_dropped;
        Q_EMIT readyRead(); // the reader reports the count
        return;
    }
    if (payload.isEmpty())
        return;
    QByteArray &pending = m_pending.tail();
    pending.append(payload.data(), payload.size());
    if (!payload.endsWith('\n'))
        pending.append('\n');
    Q_EMIT readyRead();
}

qint64 MqttLineSource::read(char *data, qint64 maxSize)
{
    return m_pending.read(data, maxSize);
}

bool MqttLineSource::hasPendingData() const
{
    return !m_pending.isEmpty();
}

qint64 MqttLineSource::maxInputBytes() const
{
    return LineFramer::MaxLineBytes;
}

bool MqttLineSource::canWrite(QString *reason) const
{
    QByteArray topic;
    return m_address.commandTopicFor(&topic, reason);
}

bool MqttLineSource::write(QByteArrayView bytes)
{
    QByteArray topic;
    QString error;
    if (!m_address.commandTopicFor(&topic, &error)) {
        setErrorString(error);
        return false;
    }
    const int messageId = m_client->publish(topic, bytes, CommandQos, &error);
    if (messageId < 0) {
        setErrorString(brokerReason(error));
        return false;
    }
    m_unacked.insert(messageId, bytes.size());
    m_unackedBytes += bytes.size();
    return true;
}

void MqttLineSource::onPublished(int messageId)
{
    const auto it = m_unacked.constFind(messageId);
    if (it == m_unacked.constEnd())
        return;
    m_unackedBytes -= it.value();
    m_unacked.erase(it);
    Q_EMIT bytesWritten();
}
