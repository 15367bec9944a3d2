#pragma once

#include <QString>

QT_BEGIN_NAMESPACE
class QFileDevice;
QT_END_NAMESPACE

// Pushes a file's written data past the operating system's cache to the disk.
namespace FileSync {

// False with *error set only for a failure that means data is lost (an I/O
// error, a full disk or quota); a volume that cannot sync at all is no failure.
bool syncData(QFileDevice &file, QString *error);

} // namespace FileSync
