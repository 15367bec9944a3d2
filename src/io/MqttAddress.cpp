#include "MqttAddress.h"

#include "SourceAddress.h"

#include <QUrl>
#include <QUrlQuery>

namespace {

bool malformed(const QString &what, QString *error)
{
    *error = QStringLiteral("malformed address: %1 (expected %2)").arg(what, MqttAddress::Form);
    return false;
}

} // namespace

bool MqttAddress::parse(const SourceAddress &address, MqttAddress *out, QString *error)
{
    // A "#" in a topic is a wildcard, not the start of a fragment.
    QString text = address.text.trimmed();
    text.replace(QLatin1Char('#'), QLatin1String("%23"));
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid())
        return malformed(url.errorString().section(QLatin1Char(';'), 0, 0), error);
    const bool tls = address.scheme == QLatin1String("mqtts");
    MqttBroker &broker = out->broker;
    broker.host = url.host();
    broker.port = url.port(tls ? DefaultTlsPort : DefaultPort);
    broker.user = url.userName(QUrl::FullyDecoded);
    broker.password = url.password(QUrl::FullyDecoded);
    broker.tls = tls;
    if (broker.host.isEmpty() || broker.port < 1)
        return malformed(QStringLiteral("no broker host"), error);

    const QUrlQuery query(url);
    const auto items = query.queryItems();
    for (const auto &item : items) {
        if (item.first != QLatin1String("cmd") && item.first != QLatin1String("cafile"))
            return malformed(QStringLiteral("unknown option \"%1\"").arg(item.first), error);
    }
    broker.caFile = query.queryItemValue(QStringLiteral("cafile"), QUrl::FullyDecoded);
    if (!broker.caFile.isEmpty() && !tls)
        return malformed(QStringLiteral("cafile needs mqtts://"), error);

    out->topic = url.path(QUrl::FullyDecoded).mid(1).toUtf8();
    if (out->topic.isEmpty())
        return malformed(QStringLiteral("no topic"), error);
    if (!MqttClient::isValidFilter(out->topic))
        return malformed(QStringLiteral("\"%1\" is no topic (a wildcard \"+\" or \"#\" stands for a whole level, "
                                        "\"#\" only at the end)")
                             .arg(QString::fromUtf8(out->topic)),
                         error);
    const QString command = query.queryItemValue(QStringLiteral("cmd"), QUrl::FullyDecoded);
    if (query.hasQueryItem(QStringLiteral("cmd"))) {
        out->commandTopic = command.toUtf8();
        if (!MqttClient::isValidTopic(out->commandTopic))
            return malformed(QStringLiteral("cmd must be a topic without wildcards"), error);
    } else {
        out->commandTopic = out->topic + "/cmd";
        if (!MqttClient::isValidTopic(out->commandTopic))
            out->commandTopic.clear();
    }
    return true;
}

bool MqttAddress::commandTopicFor(QByteArray *topic, QString *error) const
{
    if (commandTopic.isEmpty()) {
        *error = QStringLiteral("commands cannot go to the wildcard topic %1; name their topic with ?cmd=TOPIC")
                     .arg(QString::fromUtf8(this->topic));
        return false;
    }
    *topic = commandTopic;
    return true;
}
