#include "FileSync.h"

#include <QFileDevice>

#include <cerrno>
#include <cstring>
#include <unistd.h>

bool FileSync::syncData(QFileDevice &file, QString *error)
{
    const int fd = file.handle();
    if (fd < 0 || ::fdatasync(fd) == 0)
        return true;
    // Write-back errors surface only here.
    if (errno != EIO && errno != ENOSPC && errno != EDQUOT)
        return true;
    if (error)
        *error = QString::fromLocal8Bit(std::strerror(errno));
    return false;
}
