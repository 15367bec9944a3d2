#include "DevicePaths.h"

#include <QDir>
#include <QSerialPortInfo>

QString DevicePaths::systemLocation(const QString &portName)
{
    if (portName.isEmpty() || QDir::isAbsolutePath(portName) || portName.startsWith(QLatin1String("./"))
        || portName.startsWith(QLatin1String("../")))
        return portName;
    const QString known = QSerialPortInfo(portName).systemLocation();
    return known.isEmpty() ? platformLocation(portName) : known;
}
