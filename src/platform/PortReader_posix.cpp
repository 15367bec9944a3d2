#include "PortReader.h"

#include <cerrno>
#include <unistd.h>

qint64 PortReader::readWaiting(qintptr handle, char *buffer, qint64 size)
{
    if (handle < 0)
        return -1;
    // The port is opened non-blocking: an empty terminal answers EAGAIN.
    for (;;) {
        const ssize_t n = ::read(int(handle), buffer, size_t(size));
        if (n >= 0)
            return n;
        if (errno == EINTR)
            continue;
        return errno == EAGAIN || errno == EWOULDBLOCK ? 0 : -1;
    }
}
