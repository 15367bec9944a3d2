// The live path end to end: a feeder thread writes the simulated demo device
// into a pseudo-terminal, the window (offscreen, demo layout) reads it as a
// user's would, and the figures say how much it drains, what it costs, how
// often it paints and how late a value reaches the screen.
#include "BenchDemo.h"
#include "Dashboard.h"
#include "DashboardItem.h"
#include "DashboardWidget.h"
#include "DesignScene.h"
#include "FrameClock.h"
#include "LiveFeeder.h"
#include "Ombrix.h"
#include "SerialManager.h"
#include "SignalDefinitions.h"

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QSerialPort>
#include <QStandardPaths>
#include <QNetworkDatagram>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <QUdpSocket>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>
#include <vector>


namespace {

constexpr int PhaseMs = 3000;
constexpr int WarmUpMs = 500;
// The probe signal: the feeder's clock (µs) when it wrote the line.
const QByteArray ProbeSignal = QByteArrayLiteral("BENCH_T");

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
            lagsMs.push_back((LiveFeeder::monotonicUs() - lastValueUs) / 1000.0);
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

struct Figures
{
    double linesPerSecond = 0.0;
    double cpuPercent = 0.0;
    double framesPerSecond = 0.0;
    double lagMedianMs = 0.0;
    double lagP99Ms = 0.0;
};

// NaN without values: a probe that never painted has measured nothing.
double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return std::numeric_limits<double>::quiet_NaN();
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(fraction * values.size()))];
}

Figures measure(LiveFeeder &feeder, double rate, LagProbe *probe, Dashboard *dashboard = nullptr)
{
    // Each phase starts from empty plots, not from the history of the last.
    if (dashboard)
        dashboard->clearPlots();
    feeder.start(rate);
    BenchDemo::runFor(WarmUpMs);
    if (probe) {
        probe->lagsMs.clear();
        probe->m_collecting = true;
    }
    const qint64 linesBefore = feeder.lines();
    const double cpuBefore = BenchDemo::processCpuSeconds();
    const double feederCpuBefore = feeder.cpu();
    const qint64 framesBefore = FrameClock::instance().framesPainted();
    QElapsedTimer wall;
    wall.start();
    BenchDemo::runFor(PhaseMs);
    const double seconds = wall.nsecsElapsed() / 1e9;
    const qint64 lines = feeder.lines() - linesBefore;
    const qint64 frames = FrameClock::instance().framesPainted() - framesBefore;
    const double cpuAfter = BenchDemo::processCpuSeconds();
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
    BenchDemo::runFor(300); // drain what is left before the next phase
    return figures;
}

// A reader that takes every byte and does nothing with it: what the
// pseudo-terminal delivers at most.
double plainReaderLinesPerSecond(LiveFeeder &feeder)
{
    QSerialPort port(feeder.path());
    if (!port.open(QIODevice::ReadOnly))
        qFatal("bench_live: cannot open %s", qPrintable(feeder.path()));
    QObject::connect(&port, &QSerialPort::readyRead, &port, [&port] { port.readAll(); });
    const Figures figures = measure(feeder, 0.0, nullptr);
    port.close();
    return figures.linesPerSecond;
}

const char *verdict(bool met)
{
    return met ? "(met)" : "(MISSED)";
}

// Lines per second that received() counts while the feeder writes as fast as
// it is read. Counted at the reader: datagrams a slow reader misses are lost.
double drainLinesPerSecond(LiveFeeder &feeder, const std::function<qint64()> &received)
{
    feeder.start(0.0);
    BenchDemo::runFor(WarmUpMs);
    const qint64 before = received();
    QElapsedTimer wall;
    wall.start();
    BenchDemo::runFor(PhaseMs);
    const double seconds = wall.nsecsElapsed() / 1e9;
    const qint64 lines = received() - before;
    feeder.stop();
    BenchDemo::runFor(300);
    return lines / seconds;
}

// A reader that takes every byte of the socket and only counts its lines.
double plainSocketLinesPerSecond(LiveFeeder &feeder, LiveFeeder::Transport transport)
{
    qint64 received = 0;
    QTcpSocket tcp;
    QUdpSocket udp;
    if (transport == LiveFeeder::Transport::Tcp) {
        tcp.connectToHost(QHostAddress::LocalHost, feeder.port());
        QObject::connect(&tcp, &QTcpSocket::readyRead, &tcp, [&] { received += tcp.readAll().count('\n'); });
    } else {
        if (!udp.bind(QHostAddress::LocalHost, feeder.port()))
            qFatal("bench_live: cannot bind UDP port %d", feeder.port());
        QObject::connect(&udp, &QUdpSocket::readyRead, &udp, [&] {
            while (udp.hasPendingDatagrams())
                received += udp.receiveDatagram().data().count('\n');
        });
    }
    return drainLinesPerSecond(feeder, [&received] { return received; });
}

// The window drains a network source against a plain reader of the same kind.
void printNetworkRows(Ombrix &window, const SignalDefinitions &defs)
{
    for (const auto transport : {LiveFeeder::Transport::Tcp, LiveFeeder::Transport::Udp}) {
        LiveFeeder feeder(defs, ProbeSignal, transport);
        const double plain = plainSocketLinesPerSecond(feeder, transport);
        qint64 parsed = 0;
        const auto counting =
            QObject::connect(window.serialManager(), &SerialManager::lineParsed, [&parsed] { ++parsed; });
        if (!window.connectPort(feeder.address(), 115200))
            qFatal("bench_live: the window cannot open %s", qPrintable(feeder.address()));
        const double drained = drainLinesPerSecond(feeder, [&parsed] { return parsed; });
        QObject::disconnect(counting);
        window.disconnectPort();
        std::printf("| Lines drained per second from %s: window / plain socket reader | %.0f / %.0f = %.2f | >= 200,000 and >= 0.80 %s |\n",
                    qPrintable(feeder.address().section(QLatin1Char(':'), 0, 0).toUpper()), drained, plain,
                    drained / plain, verdict(drained >= 200000 && drained >= 0.8 * plain));
        std::fflush(stdout);
    }
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
    if (!BenchDemo::copyDemo(project))
        qFatal("bench_live: cannot copy the demo project");
    SignalDefinitions defs;
    defs.load(QDir(project).filePath(QStringLiteral("dashboard_signals.def")));
    LiveFeeder feeder(defs, ProbeSignal);

    const double plain = plainReaderLinesPerSecond(feeder);

    Ombrix window;
    window.setProjectDir(project);
    window.loadLayoutFrom(QDir(project).filePath(QStringLiteral("layouts/demo.json")));
    window.resize(1440, 900);
    window.show();
    auto *display = new ProbeDisplay;
    display->setSignalNames({QString::fromLatin1(ProbeSignal)});
    auto *item = new DashboardItem(display);
    // Beside the demo's widgets and inside the view, so that it is painted.
    item->setPos(1150, 60);
    window.dashboard()->scene()->addItem(item);
    LagProbe probe(display);
    display->probe = &probe;
    BenchDemo::runFor(500);
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
                    rate.linesPerSecond, f.lagMedianMs, f.lagP99Ms, verdict(f.lagP99Ms < 100.0)); // false for NaN
        std::fflush(stdout);
    }
    const Figures drained = measure(feeder, 0.0, &probe, window.dashboard());
    std::printf("| Lines drained per second: window / plain reader of the same pseudo-terminal | %.0f / %.0f = %.2f | >= 200,000 and >= 0.80 %s |\n",
                drained.linesPerSecond, plain, drained.linesPerSecond / plain,
                verdict(drained.linesPerSecond >= 200000 && drained.linesPerSecond >= 0.8 * plain));
    std::printf("| Frames painted per second, draining at full speed | %.1f | <= 60 %s |\n", drained.framesPerSecond,
                verdict(drained.framesPerSecond <= 61));
    std::fflush(stdout);

    window.disconnectPort();
    printNetworkRows(window, defs);
    return 0;
}
