#include "DevicePaths.h"

#include <QFileInfo>

QString DevicePaths::platformLocation(const QString &portName)
{
    return QLatin1String("/dev/") + portName;
}

bool DevicePaths::isPresent(const QString &portName)
{
    // Through a symbolic link, the device it points to.
    return QFileInfo::exists(systemLocation(portName));
}
