// A device's lines through the network: a feeder thread writes the
// simulated demo device into a pseudo-terminal, `ombrix-cli bridge` (its own
// process) forwards them to a local mosquitto broker, and the window
// (offscreen, demo layout) reads them back from the broker as a user's
// would. The same device read by the window straight from the
// pseudo-terminal is the reference.
#include "BenchDemo.h"
#include "LiveFeeder.h"
#include "Ombrix.h"
#include "SerialManager.h"
#include "SignalDefinitions.h"
#include "TestBroker.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <vector>

#include <unistd.h>

namespace {

constexpr int PhaseMs = 4000;
constexpr int WarmUpMs = 1000;
// The probe signal: the feeder's clock (µs) when it wrote the line.
const QByteArray ProbeSignal = QByteArrayLiteral("BENCH_T");

struct Figures
{
    double writtenPerSecond = 0.0;  // lines the terminal took
    double receivedPerSecond = 0.0; // lines the window parsed
    double lagMedianMs = 0.0;
    double lagP99Ms = 0.0;
    double bridgeCpuPercent = 0.0;
};

double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return std::numeric_limits<double>::quiet_NaN();
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(fraction * values.size()))];
}

// User + system CPU seconds of another process, from /proc.
double processCpuSeconds(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (pid <= 0 || !stat.open(QIODevice::ReadOnly))
        return 0.0;
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 12 ? (fields.at(11).toDouble() + fields.at(12).toDouble()) / double(sysconf(_SC_CLK_TCK))
                              : 0.0;
}

// Counts the lines the window parses and how late each probe value came.
class Receiver : public QObject
{
public:
    explicit Receiver(SerialManager *serial)
    {
        connect(serial, &SerialManager::lineParsed, this, [this](double, const QMap<QString, double> &values) {
            ++lines;
            if (!collecting)
                return;
            const auto probe = values.constFind(QString::fromLatin1(ProbeSignal));
            if (probe != values.constEnd())
                lagsMs.push_back((LiveFeeder::monotonicUs() - qint64(probe.value())) / 1000.0);
        });
    }
    qint64 lines = 0;
    bool collecting = false;
    std::vector<double> lagsMs;
};

Figures measure(LiveFeeder &feeder, double rate, Receiver &receiver, qint64 bridgePid)
{
    feeder.start(rate);
    BenchDemo::runFor(WarmUpMs);
    receiver.lagsMs.clear();
    receiver.collecting = true;
    const qint64 writtenBefore = feeder.lines();
    const qint64 receivedBefore = receiver.lines;
    const double bridgeCpuBefore = processCpuSeconds(bridgePid);
    QElapsedTimer wall;
    wall.start();
    BenchDemo::runFor(PhaseMs);
    const double seconds = wall.nsecsElapsed() / 1e9;
    Figures figures;
    figures.writtenPerSecond = (feeder.lines() - writtenBefore) / seconds;
    figures.receivedPerSecond = (receiver.lines - receivedBefore) / seconds;
    figures.bridgeCpuPercent = 100.0 * (processCpuSeconds(bridgePid) - bridgeCpuBefore) / seconds;
    receiver.collecting = false;
    feeder.stop();
    figures.lagMedianMs = percentile(receiver.lagsMs, 0.5);
    figures.lagP99Ms = percentile(receiver.lagsMs, 0.99);
    BenchDemo::runFor(500); // drain what is left before the next phase
    return figures;
}

const char *verdict(bool met)
{
    return met ? "(met)" : "(MISSED)";
}

void printRows(const char *path, const Figures &full, const Figures &paced, bool throughTarget)
{
    std::printf("| %s: lines per second the window receives, device as fast as it is read | %.0f (device wrote %.0f) | %s |\n",
                path, full.receivedPerSecond, full.writtenPerSecond,
                throughTarget ? (full.receivedPerSecond >= 100000 ? ">= 100,000 (met)" : ">= 100,000 (MISSED)")
                              : "reference");
    if (full.bridgeCpuPercent > 0)
        std::printf("| %s: CPU of the bridge process, full speed / 1,000 lines/s | %.1f%% / %.1f%% of one core | - |\n",
                    path, full.bridgeCpuPercent, paced.bridgeCpuPercent);
    std::printf("| %s: 1,000 lines/s, lag from the device writing to the window parsing, median / 99th percentile | "
                "%.1f / %.1f ms | p99 < 100 ms %s |\n",
                path, paced.lagMedianMs, paced.lagP99Ms, verdict(paced.lagP99Ms < 100.0));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    BenchDemo::useOffscreenTestMode();
    QApplication app(argc, argv);
    QTemporaryDir root;
    const QString project = root.filePath(QStringLiteral("demo"));
    SignalDefinitions defs;
    if (!BenchDemo::copyDemo(project) || !defs.load(QDir(project).filePath(QStringLiteral("dashboard_signals.def"))))
        qFatal("bench_bridge: cannot copy the demo project");
    LiveFeeder feeder(defs, ProbeSignal);
    Ombrix window;
    window.setProjectDir(project);
    window.loadLayoutFrom(QDir(project).filePath(QStringLiteral("layouts/demo.json")));
    window.resize(1440, 900);
    window.show();
    Receiver receiver(window.serialManager());
    BenchDemo::runFor(500);

    if (!window.connectPort(feeder.path(), 115200))
        qFatal("bench_bridge: the window cannot open %s", qPrintable(feeder.path()));
    const Figures directFull = measure(feeder, 0.0, receiver, 0);
    const Figures directPaced = measure(feeder, 1000.0, receiver, 0);
    window.disconnectPort();
    printRows("Pseudo-terminal, window", directFull, directPaced, false);

    TestBroker broker;
    if (!broker.start())
        qFatal("bench_bridge: cannot start mosquitto");
    QProcess bridge;
    bridge.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    bridge.start(QCoreApplication::applicationDirPath() + QStringLiteral("/../ombrix-cli"),
                 {QStringLiteral("bridge"), QStringLiteral("--port"), feeder.path(), QStringLiteral("--to"),
                  broker.url(QStringLiteral("bench"))});
    if (!bridge.waitForStarted())
        qFatal("bench_bridge: cannot start ombrix-cli bridge");
    BenchDemo::runFor(1000);
    if (!window.connectPort(broker.url(QStringLiteral("bench")), 115200))
        qFatal("bench_bridge: the window cannot listen to the broker");
    BenchDemo::runFor(500);
    const Figures bridgedFull = measure(feeder, 0.0, receiver, bridge.processId());
    const Figures bridgedPaced = measure(feeder, 1000.0, receiver, bridge.processId());
    window.disconnectPort();
    printRows("Pseudo-terminal, bridge, mosquitto, window", bridgedFull, bridgedPaced, true);

    bridge.terminate();
    bridge.waitForFinished();
    return 0;
}
