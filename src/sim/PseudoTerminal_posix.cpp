#include "PseudoTerminal.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

PseudoTerminal::~PseudoTerminal()
{
    if (!m_link.isEmpty())
        QFile::remove(m_link);
    if (m_fd >= 0)
        ::close(m_fd);
}

bool PseudoTerminal::open(QString &error)
{
    m_fd = posix_openpt(O_RDWR | O_NOCTTY);
    if (m_fd < 0 || grantpt(m_fd) != 0 || unlockpt(m_fd) != 0) {
        error = QStringLiteral("cannot open a pseudo-terminal: ") + QString::fromLocal8Bit(strerror(errno));
        return false;
    }
    const char *name = ptsname(m_fd);
    m_slavePath = name ? QString::fromLocal8Bit(name) : QString();
    termios raw = {};
    if (tcgetattr(m_fd, &raw) == 0) {
        cfmakeraw(&raw);
        tcsetattr(m_fd, TCSANOW, &raw);
    }
    fcntl(m_fd, F_SETFL, fcntl(m_fd, F_GETFL) | O_NONBLOCK);
    // The master reports a hang-up only once a slave was opened and closed.
    const int slave = ::open(QFile::encodeName(m_slavePath).constData(), O_RDWR | O_NOCTTY);
    if (slave >= 0)
        ::close(slave);
    return true;
}

bool PseudoTerminal::link(const QString &path, QString &error)
{
    QFileInfo existing(path);
    if ((existing.exists() || existing.isSymLink()) && !QFile::remove(path)) {
        error = QStringLiteral("cannot replace ") + path;
        return false;
    }
    if (::symlink(QFile::encodeName(m_slavePath).constData(), QFile::encodeName(path).constData()) != 0) {
        error = QStringLiteral("cannot create link ") + path + QStringLiteral(": ")
            + QString::fromLocal8Bit(strerror(errno));
        return false;
    }
    m_link = path;
    return true;
}

bool PseudoTerminal::readerAttached() const
{
    pollfd p = {m_fd, 0, 0};
    return ::poll(&p, 1, 0) >= 0 && !(p.revents & (POLLHUP | POLLERR));
}

bool PseudoTerminal::writeSome(QByteArray &pending)
{
    qsizetype done = 0;
    bool alive = true;
    while (done < pending.size()) {
        const ssize_t n = ::write(m_fd, pending.constData() + done, size_t(pending.size() - done));
        if (n > 0) {
            done += n;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        alive = n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        break;
    }
    pending.remove(0, done);
    return alive;
}

void PseudoTerminal::discardStale() const
{
    tcflush(m_fd, TCIOFLUSH);
    const int slave = ::open(QFile::encodeName(m_slavePath).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (slave >= 0) {
        tcflush(slave, TCIFLUSH);
        ::close(slave);
    }
}

void PseudoTerminal::waitWritable(int timeoutMs) const
{
    pollfd p = {m_fd, POLLOUT, 0};
    ::poll(&p, 1, timeoutMs);
}
