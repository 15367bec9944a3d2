#pragma once

#include "LineSource.h"
#include "LineSourceFactory.h"
#include "MqttAddress.h"
#include "PendingBytes.h"

#include <QByteArray>
#include <QHash>

class MqttClient;

// "mqtt://HOST/TOPIC" (see MqttAddress): listens to a topic of an MQTT
// broker, wildcards allowed. Each message carries one or more lines; one
// without a final line feed ends its line there. A message larger than the
// line bound is dropped whole and counted.
//
// Commands are published with QoS 1 to the command topic; they count as
// written once the broker has taken them.
class MqttLineSource : public LineSource
{
    Q_OBJECT

public:
    static constexpr int SubscribeQos = 1;
    static constexpr int CommandQos = 1;

    MqttLineSource(const QString &name, const MqttAddress &address, QObject *parent = nullptr);
    // The source of an mqtt:// or mqtts:// address, or nullptr with *error set.
    static LineSource *create(const SourceAddress &address, const LineSourceFactory::Request &request,
                              QObject *parent, QString *error);

    bool open() override;
    void close() override;
    qint64 read(char *data, qint64 maxSize) override;
    bool hasPendingData() const override;
    bool write(QByteArrayView bytes) override;
    bool canWrite(QString *reason) const override;
    qint64 bytesToWrite() const override { return m_unackedBytes; }
    qint64 oversizedDropped() const override { return m_dropped; }
    qint64 maxInputBytes() const override;
    QString inputUnitName() const override { return QStringLiteral("message"); }

private:
    void onConnected();
    void onMessage(QByteArrayView topic, QByteArrayView payload);
    void onPublished(int messageId);
    // The broker and why, for a failure's message.
    QString brokerReason(const QString &reason) const;

    MqttClient *m_client = nullptr;
    MqttAddress m_address;
    PendingBytes m_pending; // messages not yet read, each ending in a line feed
    qint64 m_dropped = 0;
    QHash<int, qint64> m_unacked; // message id to its size
    qint64 m_unackedBytes = 0;
};
