#include "FileSync.h"

#include <QFileDevice>

#include <io.h>
#include <windows.h>

bool FileSync::syncData(QFileDevice &file, QString *error)
{
    const int fd = file.handle();
    if (fd < 0)
        return true;
    const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(fd));
    if (handle == INVALID_HANDLE_VALUE || FlushFileBuffers(handle))
        return true;
    const DWORD code = GetLastError();
    if (code != ERROR_DISK_FULL && code != ERROR_HANDLE_DISK_FULL && code != ERROR_WRITE_FAULT)
        return true;
    if (error)
        *error = QStringLiteral("Windows error %1").arg(code);
    return false;
}
