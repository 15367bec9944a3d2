#include "SimulateCommand.h"

#include "DeviceSimulator.h"
#include "LinePacer.h"
#include "ConsoleIo.h"
#include "PseudoTerminal.h"
#include "SignalDefinitions.h"

#include <QCommandLineParser>
#include <QDir>
#include <QThread>

#include <algorithm>
#include <cstdio>

namespace {

constexpr qsizetype FullSpeedLow = 64 * 1024; // at full speed, build more once fewer bytes wait
constexpr qsizetype MaxPending = 512 * 1024;  // bytes waiting for a slow reader before old lines go

void appendDue(DeviceSimulator &simulator, QByteArray &out, qint64 lines)
{
    for (qint64 i = 0; i < lines; ++i)
        simulator.appendLine(out);
}

// Drops the oldest whole lines until about limit bytes are left. The first
// line may be half written already, so it stays.
void trimPending(QByteArray &pending, qsizetype limit)
{
    if (pending.size() <= limit)
        return;
    const qsizetype firstEnd = pending.indexOf('\n') + 1;
    if (firstEnd <= 0)
        return;
    const qsizetype cut = pending.indexOf('\n', firstEnd + (pending.size() - limit) - 1);
    pending.remove(firstEnd, (cut < 0 ? pending.size() : cut + 1) - firstEnd);
}

// Reads a number >= 0 into target when the option is given; false with error set when it is not a number.
bool readNumber(const QCommandLineParser &parser, const QCommandLineOption &option, double &target, QString &error)
{
    if (!parser.isSet(option))
        return true;
    bool ok = false;
    const double value = parser.value(option).toDouble(&ok);
    if (!ok || !(value >= 0.0) || qIsInf(value)) {
        error = QStringLiteral("--") + option.names().constFirst() + QStringLiteral(" needs a number >= 0, not '")
            + parser.value(option) + QLatin1Char('\'');
        return false;
    }
    target = value;
    return true;
}

} // namespace

QString SimulateCommand::usage()
{
    return QStringLiteral(
        "Usage: ombrix-cli simulate (--def FILE | --project DIR) [options]\n"
        "\n"
        "Streams a simulated device that sends every declared signal, state changes,\n"
        "errors and messages. Without --stdout it opens a pseudo-terminal and prints\n"
        "the device path to open in the dashboard.\n"
        "\n"
        "Options:\n"
        "  --def FILE      definition file to simulate\n"
        "  --project DIR   project folder (uses DIR/dashboard_signals.def)\n"
        "  --rate N        lines per second (default 50; 0 = as fast as the reader takes them)\n"
        "  --duration S    stop after S seconds (default: run until interrupted)\n"
        "  --count N       stop after N lines\n"
        "  --seed N        seed of the waveforms and events (default 1)\n"
        "  --timestamps    start every line with the device time in seconds\n"
        "  --stdout        write to standard output instead of a pseudo-terminal\n"
        "  --link PATH     symbolic link to the device, replaced if present, removed at exit\n"
        "  --help          show this help\n"
        "\n"
        "Ctrl+C stops. Exit status: 0 when done, 1 when the pseudo-terminal or link\n"
        "cannot be set up, 2 for bad options or an unreadable definition file.\n");
}

std::optional<SimulateCommand::Options> SimulateCommand::parseOptions(const QStringList &args, QString &error,
                                                                      bool &help)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption def(QStringLiteral("def"), QString(), QStringLiteral("FILE"));
    const QCommandLineOption project(QStringLiteral("project"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption rate(QStringLiteral("rate"), QString(), QStringLiteral("N"));
    const QCommandLineOption duration(QStringLiteral("duration"), QString(), QStringLiteral("S"));
    const QCommandLineOption count(QStringLiteral("count"), QString(), QStringLiteral("N"));
    const QCommandLineOption seed(QStringLiteral("seed"), QString(), QStringLiteral("N"));
    const QCommandLineOption timestamps(QStringLiteral("timestamps"));
    const QCommandLineOption toStdout(QStringLiteral("stdout"));
    const QCommandLineOption link(QStringLiteral("link"), QString(), QStringLiteral("PATH"));
    const QCommandLineOption helpOption(QStringList{QStringLiteral("help"), QStringLiteral("h")});
    parser.addOptions({def, project, rate, duration, count, seed, timestamps, toStdout, link, helpOption});

    help = false;
    if (!parser.parse(args)) {
        error = parser.errorText();
        return std::nullopt;
    }
    if (parser.isSet(helpOption)) {
        help = true;
        return std::nullopt;
    }
    if (!parser.positionalArguments().isEmpty()) {
        error = QStringLiteral("unexpected argument '") + parser.positionalArguments().constFirst()
            + QLatin1Char('\'');
        return std::nullopt;
    }

    Options options;
    if (parser.isSet(def) == parser.isSet(project)) {
        error = QStringLiteral("give either --def FILE or --project DIR");
        return std::nullopt;
    }
    options.defPath = parser.isSet(def) ? parser.value(def)
                                        : QDir(parser.value(project)).filePath(QStringLiteral("dashboard_signals.def"));

    double lines = -1;
    if (!readNumber(parser, rate, options.rate, error) || !readNumber(parser, duration, options.duration, error)
        || !readNumber(parser, count, lines, error))
        return std::nullopt;
    options.count = lines < 0 ? -1 : qint64(std::min(lines, 1e18)); // 1e18: no limit in practice
    if (parser.isSet(seed)) {
        bool ok = false;
        options.seed = parser.value(seed).toULongLong(&ok);
        if (!ok) {
            error = QStringLiteral("--seed needs a whole number, not '") + parser.value(seed) + QLatin1Char('\'');
            return std::nullopt;
        }
    }
    options.timestamps = parser.isSet(timestamps);
    options.toStdout = parser.isSet(toStdout);
    options.linkPath = parser.value(link);
    return options;
}

int SimulateCommand::run(const QStringList &args)
{
    QString error;
    bool help = false;
    const std::optional<Options> options = parseOptions(args, error, help);
    if (help) {
        std::fputs(usage().toLocal8Bit().constData(), stdout);
        return 0;
    }
    SignalDefinitions defs;
    if (options && !defs.load(options->defPath))
        error = defs.lastError();
    if (!error.isEmpty()) {
        std::fprintf(stderr, "ombrix-cli simulate: %s\n%s", error.toLocal8Bit().constData(),
                     usage().toLocal8Bit().constData());
        return 2;
    }

    DeviceSimulator simulator(defs, options->seed);
    simulator.setTimestamps(options->timestamps);
    simulator.setLineInterval(options->rate > 0 ? 1.0 / options->rate : 0.001);
    ConsoleIo::installStopHandlers();
    return options->toStdout ? streamToStdout(simulator, *options) : streamToPty(simulator, *options);
}

int SimulateCommand::streamToStdout(DeviceSimulator &simulator, const Options &options)
{
    std::fflush(stdout);
    LinePacer pacer(options.rate, options.duration, options.count);
    QByteArray chunk;
    chunk.reserve(1024 * 1024);
    qint64 produced = 0;
    while (!ConsoleIo::stopRequested() && !pacer.finished(produced)) {
        const qint64 lines = pacer.due(produced);
        if (lines == 0) {
            QThread::msleep(unsigned(pacer.waitMs()));
            continue;
        }
        chunk.resize(0);
        appendDue(simulator, chunk, lines);
        produced += lines;
        if (!ConsoleIo::writeStdout(chunk))
            break; // the reader closed the pipe
    }
    return 0;
}

int SimulateCommand::streamToPty(DeviceSimulator &simulator, const Options &options)
{
    PseudoTerminal terminal;
    QString error;
    if (!terminal.open(error) || (!options.linkPath.isEmpty() && !terminal.link(options.linkPath, error))) {
        std::fprintf(stderr, "ombrix-cli simulate: %s\n", error.toLocal8Bit().constData());
        return 1;
    }
    const QString devicePath = options.linkPath.isEmpty() ? terminal.slavePath() : options.linkPath;
    std::printf("%s\n", devicePath.toLocal8Bit().constData());
    std::fflush(stdout);

    LinePacer pacer(options.rate, options.duration, options.count);
    QByteArray pending;
    qint64 produced = 0;
    bool attached = false;
    while (!ConsoleIo::stopRequested() && !pacer.finished(produced)) {
        const bool nowAttached = terminal.readerAttached();
        if (nowAttached && !attached)
            terminal.discardStale(); // nothing from before the reader opened the port
        attached = nowAttached;
        const bool fullSpeed = options.rate <= 0;
        // At full speed the reader sets the pace and nothing is dropped.
        const bool wanted = !fullSpeed || (attached && pending.size() < FullSpeedLow);
        const qint64 lines = wanted ? pacer.due(produced) : 0;
        appendDue(simulator, pending, lines);
        produced += lines;
        if (!attached) {
            pending.clear(); // nobody listens: the device talks into the void
            QThread::msleep(20);
            continue;
        }
        if (!fullSpeed)
            trimPending(pending, MaxPending);
        if (!terminal.writeSome(pending))
            pending.clear(); // the reader closed between poll and write
        if (!pending.isEmpty())
            terminal.waitWritable(20);
        else if (!fullSpeed)
            QThread::msleep(unsigned(pacer.waitMs()));
    }
    return 0;
}
