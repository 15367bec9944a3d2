#include "LiveFeeder.h"

#include <QThread>

#include <algorithm>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

namespace {

// Datagrams stay below the loopback MTU, so none is fragmented.
constexpr qsizetype MaxDatagramBytes = 8192;

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

} // namespace

LiveFeeder::LiveFeeder(const SignalDefinitions &defs, const QByteArray &probeSignal, Transport transport)
    : m_simulator(defs, 7)
    , m_probe(probeSignal)
    , m_transport(transport)
{
    QString error;
    if (!m_terminal.open(error))
        qFatal("no pseudo-terminal: %s", qPrintable(error));
    m_simulator.setTimestamps(true);
    if (m_transport != Transport::PseudoTerminal)
        openSocket();
}

LiveFeeder::~LiveFeeder()
{
    stop();
    if (m_socket >= 0)
        ::close(m_socket);
}

void LiveFeeder::openSocket()
{
    const bool tcp = m_transport == Transport::Tcp;
    m_socket = ::socket(AF_INET, tcp ? SOCK_STREAM : SOCK_DGRAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    // UDP: a free port found by binding a probe socket, then sent to.
    const int bound = tcp ? m_socket : ::socket(AF_INET, SOCK_DGRAM, 0);
    if (m_socket < 0 || ::bind(bound, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0
        || ::getsockname(bound, reinterpret_cast<sockaddr *>(&address), &length) != 0)
        qFatal("bench feeder: no socket on 127.0.0.1");
    m_port = ntohs(address.sin_port);
    if (tcp) {
        ::listen(m_socket, 4);
        return;
    }
    ::close(bound);
    const sockaddr_in target = loopback(m_port);
    ::connect(m_socket, reinterpret_cast<const sockaddr *>(&target), sizeof target);
}

QString LiveFeeder::address() const
{
    return QStringLiteral("%1://127.0.0.1:%2")
        .arg(m_transport == Transport::Tcp ? QStringLiteral("tcp") : QStringLiteral("udp"))
        .arg(m_port);
}

bool LiveFeeder::acceptClient()
{
    pollfd listening{m_socket, POLLIN, 0};
    while (m_running) {
        if (::poll(&listening, 1, 50) > 0) {
            m_client = ::accept(m_socket, nullptr, nullptr);
            return m_client >= 0;
        }
    }
    return false;
}

void LiveFeeder::closeClient()
{
    if (m_client >= 0)
        ::close(m_client);
    m_client = -1;
}

bool LiveFeeder::writeSome(QByteArray &pending)
{
    if (m_transport == Transport::PseudoTerminal) {
        const qsizetype before = pending.size();
        m_terminal.writeSome(pending);
        return pending.size() != before;
    }
    qsizetype length = pending.size();
    if (m_transport == Transport::Udp && length > MaxDatagramBytes)
        length = pending.lastIndexOf('\n', MaxDatagramBytes - 1) + 1;
    const int fd = m_transport == Transport::Tcp ? m_client : m_socket;
    const ssize_t sent = ::send(fd, pending.constData(), size_t(length), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent <= 0)
        return false;
    pending.remove(0, sent);
    return true;
}

void LiveFeeder::waitWritable(int ms)
{
    if (m_transport == Transport::PseudoTerminal) {
        m_terminal.waitWritable(ms);
        return;
    }
    pollfd writable{m_transport == Transport::Tcp ? m_client : m_socket, POLLOUT, 0};
    ::poll(&writable, 1, ms);
}

qint64 LiveFeeder::monotonicUs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

void LiveFeeder::start(double linesPerSecond)
{
    stop();
    m_rate = linesPerSecond;
    m_lines = 0;
    m_running = true;
    m_simulator.setLineInterval(linesPerSecond > 0 ? 1.0 / linesPerSecond : 0.0001);
    m_thread = std::thread([this] {
        pthread_setname_np(pthread_self(), "feeder");
        run();
    });
}

void LiveFeeder::stop()
{
    m_running = false;
    if (m_thread.joinable())
        m_thread.join();
    closeClient();
}

double LiveFeeder::cpu() const
{
    clockid_t clock{};
    timespec used{};
    if (!m_thread.joinable()
        || pthread_getcpuclockid(const_cast<std::thread &>(m_thread).native_handle(), &clock) != 0
        || clock_gettime(clock, &used) != 0)
        return 0.0;
    return double(used.tv_sec) + used.tv_nsec / 1e9;
}

void LiveFeeder::appendLine(QByteArray &out)
{
    m_simulator.appendLine(out);
    if (m_probe.isEmpty())
        return;
    out.chop(1);
    out += ' ' + m_probe + '=' + QByteArray::number(monotonicUs()) + '\n';
}

void LiveFeeder::run()
{
    if (m_transport == Transport::Tcp && !acceptClient())
        return;
    QByteArray pending;
    pending.reserve(1 << 20);
    const qint64 startUs = monotonicUs();
    qint64 produced = 0;
    while (m_running) {
        qint64 due = 0;
        if (m_rate > 0)
            due = qint64((monotonicUs() - startUs) * m_rate / 1e6) - produced;
        else if (pending.size() < 16 * 1024)
            due = 256;
        for (qint64 i = 0; i < due; ++i)
            appendLine(pending);
        produced += due;
        if (!pending.isEmpty()) {
            if (!writeSome(pending))
                waitWritable(5);
        } else {
            QThread::usleep(500);
        }
        // Lines count once the terminal took them.
        m_lines = produced - std::count(pending.cbegin(), pending.cend(), '\n');
    }
}
