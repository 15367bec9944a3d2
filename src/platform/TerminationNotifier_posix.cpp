#include "TerminationNotifier.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int s_fds[2] = {-1, -1};
volatile std::sig_atomic_t s_requested = 0;
struct sigaction s_oldInt;
struct sigaction s_oldTerm;
struct sigaction s_oldHup;
bool s_hupInstalled = false;

void onSignal(int signalNumber)
{
    s_requested = 1;
    const unsigned char byte = static_cast<unsigned char>(signalNumber);
    [[maybe_unused]] const ssize_t written = ::write(s_fds[0], &byte, 1);
}

void install(int signalNumber, struct sigaction *old)
{
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(signalNumber, &action, old);
}

} // namespace

TerminationNotifier::TerminationNotifier(QObject *parent)
    : QObject(parent)
{
    s_requested = 0;
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, s_fds) != 0)
        return;
    for (const int fd : s_fds)
        ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    ::fcntl(s_fds[0], F_SETFL, O_NONBLOCK);
    m_notifier = new QSocketNotifier(s_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationNotifier::onReadable);
    install(SIGINT, &s_oldInt);
    install(SIGTERM, &s_oldTerm);
    // A closed terminal ends the work like Ctrl+C, unless hang-ups are
    // ignored on purpose (nohup).
    ::sigaction(SIGHUP, nullptr, &s_oldHup);
    s_hupInstalled = s_oldHup.sa_handler != SIG_IGN;
    if (s_hupInstalled)
        install(SIGHUP, &s_oldHup);
}

TerminationNotifier::~TerminationNotifier()
{
    if (!m_notifier)
        return;
    ::sigaction(SIGINT, &s_oldInt, nullptr);
    ::sigaction(SIGTERM, &s_oldTerm, nullptr);
    if (s_hupInstalled)
        ::sigaction(SIGHUP, &s_oldHup, nullptr);
    m_notifier->setEnabled(false);
    ::close(s_fds[0]);
    ::close(s_fds[1]);
    s_fds[0] = s_fds[1] = -1;
}

bool TerminationNotifier::requested()
{
    return s_requested != 0;
}

void TerminationNotifier::onReadable()
{
    unsigned char byte = 0;
    if (::read(s_fds[1], &byte, 1) == 1)
        Q_EMIT terminationRequested(int(byte));
}
