// The live path end to end: a feeder thread writes the simulated demo device
// into a pseudo-terminal, the window (offscreen, demo layout) reads it as a
// user's would, and the figures say how much it drains, what it costs, how
// often it paints and how late a value reaches the screen.
#include "Dashboard.h"
#include "DashboardItem.h"
#include "DashboardWidget.h"
#include "DesignScene.h"
#include "DeviceSimulator.h"
#include "FrameClock.h"
#include "Ombrix.h"
#include "PseudoTerminal.h"
#include "SignalDefinitions.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QSerialPort>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sys/resource.h>
#include <time.h>

namespace {

constexpr int PhaseMs = 3000;
constexpr int WarmUpMs = 500;
// The probe signal: the feeder's clock (µs) when it wrote the line.
const QByteArray ProbeSignal = QByteArrayLiteral("BENCH_T");

qint64 monotonicUs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

double cpuSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Writes demo device lines into the pseudo-terminal on a thread of its own,
// as fast as the reader takes them (rate 0) or at a fixed rate, each line
// carrying the time it was written as BENCH_T.
class Feeder
{
public:
    explicit Feeder(const SignalDefinitions &defs)
        : m_simulator(defs, 7)
    {
        QString error;
        if (!m_terminal.open(error))
            qFatal("bench_live: no pseudo-terminal: %s", qPrintable(error));
        m_simulator.setTimestamps(true);
    }
    ~Feeder() { stop(); }

    QString path() const { return m_terminal.slavePath(); }

    void start(double rate)
    {
        stop();
        m_rate = rate;
        m_lines = 0;
        m_running = true;
        m_simulator.setLineInterval(rate > 0 ? 1.0 / rate : 0.0001);
        m_thread = std::thread([this] {
            pthread_setname_np(pthread_self(), "feeder");
            run();
        });
    }
    void stop()
    {
        m_running = false;
        if (m_thread.joinable())
            m_thread.join();
    }
    qint64 lines() const { return m_lines; }
    // CPU seconds the running feeder thread has used.
    double cpu() const
    {
        clockid_t clock{};
        timespec used{};
        if (!m_thread.joinable() || pthread_getcpuclockid(const_cast<std::thread &>(m_thread).native_handle(), &clock) != 0
            || clock_gettime(clock, &used) != 0)
            return 0.0;
        return double(used.tv_sec) + used.tv_nsec / 1e9;
    }

private:
    void appendLine(QByteArray &out)
    {
        m_simulator.appendLine(out);
        out.chop(1);
        out += ' ' + ProbeSignal + '=' + QByteArray::number(monotonicUs()) + '\n';
    }

    void run()
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

    PseudoTerminal m_terminal;
    DeviceSimulator m_simulator;
    std::thread m_thread;
    std::atomic<bool> m_running{false};
    std::atomic<qint64> m_lines{0};
    double m_rate = 0.0;
};

// Notes, for every paint of the probe display, how long ago its value was written.
class LagProbe : public QObject
{
public:
    explicit LagProbe(DashboardWidget *display)
        : m_display(display)
    {
        display->installEventFilter(this);
    }
    std::vector<double> lagsMs;
    qint64 lastValueUs = 0;

    void setValue(double us) { lastValueUs = qint64(us); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_display && event->type() == QEvent::Paint && m_collecting && lastValueUs > 0
            && lastValueUs != m_lastPaintedUs) {
            lagsMs.push_back((monotonicUs() - lastValueUs) / 1000.0);
            m_lastPaintedUs = lastValueUs;
        }
        return false;
    }

public:
    bool m_collecting = false;

private:
    DashboardWidget *m_display = nullptr;
    qint64 m_lastPaintedUs = 0;
};

// A display of the probe signal that remembers the last value it was given.
class ProbeDisplay : public DashboardWidget
{
public:
    LagProbe *probe = nullptr;
    void setValue(double value) override
    {
        if (probe)
            probe->setValue(value);
        markDirty();
    }
    QString typeName() const override { return QStringLiteral("BenchProbe"); }
};

void runFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

struct Figures
{
    double linesPerSecond = 0.0;
    double cpuPercent = 0.0;
    double framesPerSecond = 0.0;
    double lagMedianMs = 0.0;
    double lagP99Ms = 0.0;
};

double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(fraction * values.size()))];
}

Figures measure(Feeder &feeder, double rate, LagProbe *probe, Dashboard *dashboard = nullptr)
{
    // Each phase starts from empty plots, not from the history of the last.
    if (dashboard)
        dashboard->clearPlots();
    feeder.start(rate);
    runFor(WarmUpMs);
    if (probe) {
        probe->lagsMs.clear();
        probe->m_collecting = true;
    }
    const qint64 linesBefore = feeder.lines();
    const double cpuBefore = cpuSeconds(RUSAGE_SELF);
    const double feederCpuBefore = feeder.cpu();
    const qint64 framesBefore = FrameClock::instance().framesPainted();
    QElapsedTimer wall;
    wall.start();
    runFor(PhaseMs);
    const double seconds = wall.nsecsElapsed() / 1e9;
    const qint64 lines = feeder.lines() - linesBefore;
    const qint64 frames = FrameClock::instance().framesPainted() - framesBefore;
    const double cpuAfter = cpuSeconds(RUSAGE_SELF);
    const double feederCpu = feeder.cpu() - feederCpuBefore;
    feeder.stop();
    Figures figures;
    figures.linesPerSecond = lines / seconds;
    // The feeder's own thread is not the window's work.
    figures.cpuPercent = 100.0 * (cpuAfter - cpuBefore - feederCpu) / seconds;
    figures.framesPerSecond = frames / seconds;
    if (probe) {
        probe->m_collecting = false;
        figures.lagMedianMs = percentile(probe->lagsMs, 0.5);
        figures.lagP99Ms = percentile(probe->lagsMs, 0.99);
    }
    runFor(300); // drain what is left before the next phase
    return figures;
}

// A reader that takes every byte and does nothing with it: what the
// pseudo-terminal delivers at most.
double plainReaderLinesPerSecond(Feeder &feeder)
{
    QSerialPort port(feeder.path());
    if (!port.open(QIODevice::ReadOnly))
        qFatal("bench_live: cannot open %s", qPrintable(feeder.path()));
    QObject::connect(&port, &QSerialPort::readyRead, &port, [&port] { port.readAll(); });
    const Figures figures = measure(feeder, 0.0, nullptr);
    port.close();
    return figures.linesPerSecond;
}

bool copyDemo(const QString &from, const QString &to)
{
    QDir source(from);
    QDir().mkpath(to);
    for (const QString &entry : source.entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString path = source.filePath(entry);
        if (QFileInfo(path).isDir()) {
            if (!copyDemo(path, QDir(to).filePath(entry)))
                return false;
        } else if (!QFile::copy(path, QDir(to).filePath(entry))) {
            return false;
        }
    }
    return true;
}

const char *verdict(bool met)
{
    return met ? "(met)" : "(MISSED)";
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication app(argc, argv);

    QTemporaryDir root;
    const QString project = root.filePath(QStringLiteral("demo"));
    if (!copyDemo(QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo"), project))
        qFatal("bench_live: cannot copy the demo project");
    SignalDefinitions defs;
    defs.load(QDir(project).filePath(QStringLiteral("dashboard_signals.def")));
    Feeder feeder(defs);

    const double plain = plainReaderLinesPerSecond(feeder);

    Ombrix window;
    window.setProjectDir(project);
    window.loadLayoutFrom(QDir(project).filePath(QStringLiteral("layouts/demo.json")));
    window.resize(1280, 800);
    window.show();
    auto *display = new ProbeDisplay;
    display->setSignalNames({QString::fromLatin1(ProbeSignal)});
    auto *item = new DashboardItem(display);
    item->setPos(1000, 700);
    window.dashboard()->scene()->addItem(item);
    LagProbe probe(display);
    display->probe = &probe;
    runFor(500);
    if (!window.connectPort(feeder.path(), 115200))
        qFatal("bench_live: the window cannot open %s", qPrintable(feeder.path()));

    // "bench_live RATE" runs that one phase, for a profiler.
    if (argc > 1) {
        if (argc > 2)
            FrameClock::instance().setFramesPerSecond(QByteArray(argv[2]).toInt());
        const Figures f = measure(feeder, QByteArray(argv[1]).toDouble(), &probe, window.dashboard());
        std::printf("%.0f lines/s, %.1f%% CPU, %.1f frames/s, lag %.1f / %.1f ms\n", f.linesPerSecond, f.cpuPercent,
                    f.framesPerSecond, f.lagMedianMs, f.lagP99Ms);
        return 0;
    }

    struct Rate
    {
        double linesPerSecond;
        double cpuTarget; // percent of one core; 0: none
    };
    const Rate rates[] = {{100, 3}, {1000, 10}, {10000, 0}, {100000, 0}};
    for (const Rate &rate : rates) {
        const Figures f = measure(feeder, rate.linesPerSecond, &probe, window.dashboard());
        char target[64] = "-";
        if (rate.cpuTarget > 0)
            std::snprintf(target, sizeof target, "<= %.0f%% %s", rate.cpuTarget, verdict(f.cpuPercent <= rate.cpuTarget));
        std::printf("| %.0f lines/s: CPU of one core | %.1f%% | %s |\n", rate.linesPerSecond, f.cpuPercent, target);
        std::printf("| %.0f lines/s: frames per second | %.1f | <= 60 %s |\n", rate.linesPerSecond, f.framesPerSecond,
                    verdict(f.framesPerSecond <= 61));
        std::printf("| %.0f lines/s: lag from writing to painting, median / 99th percentile | %.1f / %.1f ms | p99 < 100 ms %s |\n",
                    rate.linesPerSecond, f.lagMedianMs, f.lagP99Ms, verdict(f.lagP99Ms < 100.0));
        std::fflush(stdout);
    }
    const Figures drained = measure(feeder, 0.0, &probe, window.dashboard());
    std::printf("| Lines drained per second: window / plain reader of the same pseudo-terminal | %.0f / %.0f = %.2f | >= 200,000 and >= 0.80 %s |\n",
                drained.linesPerSecond, plain, drained.linesPerSecond / plain,
                verdict(drained.linesPerSecond >= 200000 && drained.linesPerSecond >= 0.8 * plain));
    std::printf("| Frames painted per second, draining at full speed | %.1f | <= 60 %s |\n", drained.framesPerSecond,
                verdict(drained.framesPerSecond <= 61));

    window.disconnectPort();
    return 0;
}
