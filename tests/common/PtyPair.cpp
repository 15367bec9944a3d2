#include "PtyPair.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

PtyPair::PtyPair()
{
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (m_master < 0)
        return;
    if (::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0) {
        close();
        return;
    }
    // Raw mode: no echo, no CR/LF translation, no line editing.
    termios tio{};
    if (::tcgetattr(m_master, &tio) == 0) {
        ::cfmakeraw(&tio);
        ::tcsetattr(m_master, TCSANOW, &tio);
    }
    m_slavePath = QString::fromLocal8Bit(::ptsname(m_master));
}

PtyPair::~PtyPair()
{
    close();
}

bool PtyPair::write(const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(m_master, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0) {
            if (errno == EINTR || errno == EAGAIN)
                continue;
            return false;
        }
        done += n;
    }
    return true;
}

QByteArray PtyPair::read(int timeoutMs)
{
    QByteArray result;
    pollfd pfd{m_master, POLLIN, 0};
    while (::poll(&pfd, 1, result.isEmpty() ? timeoutMs : 50) > 0 && (pfd.revents & POLLIN)) {
        char buffer[4096];
        const ssize_t n = ::read(m_master, buffer, sizeof buffer);
        if (n <= 0)
            break;
        result.append(buffer, n);
    }
    return result;
}

void PtyPair::close()
{
    if (m_master >= 0)
        ::close(m_master);
    m_master = -1;
}
