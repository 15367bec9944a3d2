#pragma once

#include "MqttClient.h"

#include <QByteArray>
#include <QString>

struct SourceAddress;

// "mqtt://[USER[:PASSWORD]@]HOST[:PORT]/TOPIC[?cmd=TOPIC]", or "mqtts://"
// for TLS with the system's certificate store or "?cafile=PATH". The topic
// may hold wildcards ("rig/+/telemetry", "rigs/#"): the "#" needs no
// escaping. Commands go to ?cmd=TOPIC, else to TOPIC/cmd.
struct MqttAddress
{
    static inline const QString Form =
        QStringLiteral("mqtt[s]://[USER[:PASSWORD]@]HOST[:PORT]/TOPIC[?cmd=TOPIC&cafile=PATH]");
    static constexpr int DefaultPort = 1883;
    static constexpr int DefaultTlsPort = 8883;

    MqttBroker broker;
    QByteArray topic;
    QByteArray commandTopic; // empty for a wildcard topic without ?cmd=

    // False with *error set, naming what is wrong and the form expected.
    static bool parse(const SourceAddress &address, MqttAddress *out, QString *error);

    // Where commands go, or false with *error saying why they cannot.
    bool commandTopicFor(QByteArray *topic, QString *error) const;
};
