#include "ConsoleIo.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace {

volatile std::sig_atomic_t s_stopRequested = 0;

void requestStop(int)
{
    s_stopRequested = 1;
}

} // namespace

void ConsoleIo::installStopHandlers()
{
    s_stopRequested = 0;
    // Without SA_RESTART, so that a blocked poll or write returns at once.
    struct sigaction action = {};
    action.sa_handler = requestStop;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

bool ConsoleIo::stopRequested()
{
    return s_stopRequested != 0;
}

bool ConsoleIo::writeStdout(const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(STDOUT_FILENO, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0) {
            if (errno == EINTR && !s_stopRequested)
                continue;
            return false;
        }
        done += n;
    }
    return true;
}
