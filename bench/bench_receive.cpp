// The receive path at speed: bytes in, framed, parsed and emitted to a
// connected receiver, as SerialManager does for every readyRead.
#include "DeviceSimulator.h"
#include "SerialManager.h"
#include "SignalDefinitions.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr int LineCount = 1000000;
constexpr int ChunkSize = 4096; // what one readyRead typically delivers
constexpr int Rounds = 3;

// A bench controller with six channels, two state groups and a few errors:
// 50 to 70 byte lines with a device time stamp.
const char Definitions[] = R"(
DASHBOARD_SIGNAL(RPM, "Speed", float)
DASHBOARD_SIGNAL(TQ, "Torque", float)
DASHBOARD_SIGNAL(IA, "Phase Current", float)
DASHBOARD_SIGNAL(UB, "Bus Voltage", float)
DASHBOARD_SIGNAL(TW, "Winding Temperature", float)
DASHBOARD_SIGNAL(VIB, "Vibration", float)
DASHBOARD_MAPPING(IA, -50.0, 0.0244)
DASHBOARD_MAPPING(TW, -40, 0.0488)
DASHBOARD_STATE(MODE, RUN, "Running")
DASHBOARD_STATE(MODE, STOP, "Stopped")
DASHBOARD_STATE(MODE, PAUSE, "Paused")
DASHBOARD_STATE(TEST, PASS, "Pass")
DASHBOARD_STATE(TEST, FAIL, "Fail")
DASHBOARD_ERROR(E_OVERTEMP, 1, "Over temperature")
DASHBOARD_ERROR(E_OVERCURRENT, 2, "Over current")
DASHBOARD_ERROR(E_ESTOP, 3, "Emergency stop")
)";

class Receiver : public QObject
{
public:
    qint64 lines = 0;
    qint64 values = 0;
    qint64 events = 0;
    qint64 words = 0;
    bool keepMaps = false; // like a receiver that queues or stores every value map
    QMap<QString, double> kept;

    void onRaw(double, const QString &) { ++lines; }
    void onValues(double, const QMap<QString, double> &map)
    {
        values += map.size();
        if (keepMaps)
            kept = map;
    }
    void onState(double, const QString &, const QString &) { ++events; }
    void onError(double, const QString &) { ++events; }
    void onWords(double, const QString &) { ++words; }
};

// Also reports how fast the simulated device builds its lines.
QByteArray makeStream()
{
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("dashboard_signals.def")));
    if (!file.open(QIODevice::WriteOnly) || file.write(Definitions) < 0)
        return {};
    file.close();
    SignalDefinitions defs;
    defs.load(file.fileName());
    DeviceSimulator simulator(defs, 42);
    simulator.setTimestamps(true);
    simulator.setLineInterval(0.01);
    QByteArray stream;
    stream.reserve(qsizetype(LineCount) * 72);
    QElapsedTimer clock;
    clock.start();
    simulator.appendLines(stream, LineCount);
    const double seconds = double(clock.nsecsElapsed()) * 1e-9;
    std::printf("| name | figure | target |\n|---|---|---|\n");
    std::printf("| simulated device, lines built per second (6 signals) | %.0f | >= 200000 |\n", LineCount / seconds);
    return stream;
}

void report(const char *name, const QByteArray &stream, const Receiver &receiver, double seconds)
{
    std::printf("| %s (%d lines, %.0f bytes/line, %.1f values/line, %lld states+errors, %lld word lines) | %.0f | "
                ">= 1000000 |\n",
                name, LineCount, double(stream.size()) / LineCount, double(receiver.values) / LineCount,
                receiver.events, receiver.words, LineCount / seconds);
    std::printf("| %s, throughput | %.1f MB/s | - |\n", name, double(stream.size()) / seconds / 1e6);
}

// Feeds the stream in readyRead-sized chunks, best of a few rounds; returns the lines received.
qint64 measure(const QByteArray &stream, bool keepMaps, const char *name)
{
    double bestSeconds = 1e9;
    qint64 linesSeen = 0;
    for (int round = 0; round < Rounds; ++round) {
        SerialManager manager;
        Receiver receiver;
        receiver.keepMaps = keepMaps;
        QObject::connect(&manager, &SerialManager::rawLineReceived, &receiver, &Receiver::onRaw);
        QObject::connect(&manager, &SerialManager::lineParsed, &receiver, &Receiver::onValues);
        QObject::connect(&manager, &SerialManager::stateParsed, &receiver, &Receiver::onState);
        QObject::connect(&manager, &SerialManager::errorParsed, &receiver, &Receiver::onError);
        QObject::connect(&manager, &SerialManager::unrecognizedParsed, &receiver, &Receiver::onWords);
        QElapsedTimer clock;
        clock.start();
        for (qsizetype at = 0; at < stream.size(); at += ChunkSize)
            manager.processBytes(QByteArrayView(stream).sliced(at, qMin<qsizetype>(ChunkSize, stream.size() - at)));
        bestSeconds = qMin(bestSeconds, double(clock.nsecsElapsed()) * 1e-9);
        linesSeen = receiver.lines;
        if (round == Rounds - 1)
            report(name, stream, receiver, bestSeconds);
    }
    return linesSeen;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QByteArray stream = makeStream();
    if (stream.isEmpty()) {
        std::fprintf(stderr, "bench_receive: could not build the stream\n");
        return 1;
    }

    const qint64 counted = measure(stream, false, "receive path, lines per second");
    const qint64 kept = measure(stream, true, "receive path, receiver keeps every value map");
    if (counted != LineCount || kept != LineCount) {
        std::fprintf(stderr, "bench_receive: %lld and %lld of %d lines arrived\n", counted, kept, LineCount);
        return 1;
    }
    return 0;
}

