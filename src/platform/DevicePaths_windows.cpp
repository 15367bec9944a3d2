#include "DevicePaths.h"

QString DevicePaths::platformLocation(const QString &portName)
{
    return QLatin1String("\\\\.\\") + portName;
}
