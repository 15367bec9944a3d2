#include "DevicePaths.h"

#include <QSerialPortInfo>

QString DevicePaths::platformLocation(const QString &portName)
{
    return QLatin1String("\\\\.\\") + portName;
}

bool DevicePaths::isPresent(const QString &portName)
{
    // COM ports have no file to look for; the system's list has them.
    const QString location = systemLocation(portName);
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : ports) {
        if (info.portName().compare(portName, Qt::CaseInsensitive) == 0
            || info.systemLocation().compare(location, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}
