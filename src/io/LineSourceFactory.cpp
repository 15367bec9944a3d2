#include "LineSourceFactory.h"

#include "SerialPortSource.h"
#include "TcpLineSource.h"
#include "UdpLineSource.h"

#include <map>

namespace {

struct Scheme
{
    QString form;
    LineSourceFactory::Creator creator;
};

std::map<QString, Scheme> &schemes()
{
    static std::map<QString, Scheme> table = {
        {QStringLiteral("tcp"), {TcpLineSource::Form, &TcpLineSource::create}},
        {QStringLiteral("udp"), {UdpLineSource::Form, &UdpLineSource::create}},
    };
    return table;
}

} // namespace

void LineSourceFactory::registerScheme(const QString &scheme, const QString &form, const Creator &creator)
{
    schemes()[scheme.toLower()] = Scheme{form, creator};
}

bool LineSourceFactory::hasScheme(const QString &scheme)
{
    return schemes().count(scheme.toLower()) > 0;
}

LineSource *LineSourceFactory::create(const Request &request, QObject *parent, QString *error)
{
    SourceAddress address;
    if (!SourceAddress::parse(request.settings.portName, &address, error))
        return nullptr;
    if (address.scheme.isEmpty())
        return new SerialPortSource(request.settings, parent);
    const auto it = schemes().find(address.scheme);
    if (it == schemes().end()) {
        *error = QStringLiteral("unknown kind of source \"%1:\"; expected %2")
                     .arg(address.scheme, forms().join(QStringLiteral(", ")));
        return nullptr;
    }
    return it->second.creator(address, request, parent, error);
}

QStringList LineSourceFactory::forms()
{
    QStringList list{QStringLiteral("a serial port")};
    for (const auto &entry : schemes())
        list.append(entry.second.form);
    return list;
}
