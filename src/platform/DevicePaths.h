#pragma once

#include <QString>

// Where a serial port lives in the file system.
namespace DevicePaths {

// A path ("/dev/ttyUSB0", "./link") stays as it is; a bare port name
// ("ttyUSB0", "COM3") becomes the system location the port is opened at.
QString systemLocation(const QString &portName);
// The platform's own prefix for a port that is not present right now.
QString platformLocation(const QString &portName);
// Whether the port's device is there to be opened (plugged in, created).
bool isPresent(const QString &portName);

} // namespace DevicePaths
