#include "LiveFeeder.h"

#include <QThread>

#include <algorithm>
#include <pthread.h>
#include <time.h>

LiveFeeder::LiveFeeder(const SignalDefinitions &defs, const QByteArray &probeSignal)
    : m_simulator(defs, 7)
    , m_probe(probeSignal)
{
    QString error;
    if (!m_terminal.open(error))
        qFatal("no pseudo-terminal: %s", qPrintable(error));
    m_simulator.setTimestamps(true);
}

LiveFeeder::~LiveFeeder()
{
    stop();
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
            const qsizetype before = pending.size();
            m_terminal.writeSome(pending);
            if (before == pending.size())
                m_terminal.waitWritable(5);
        } else {
            QThread::usleep(500);
        }
        // Lines count once the terminal took them.
        m_lines = produced - std::count(pending.cbegin(), pending.cend(), '\n');
    }
}
