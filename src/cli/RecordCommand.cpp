#include "RecordCommand.h"

#include "CliCommand.h"
#include "DevicePaths.h"
#include "RecordingWriter.h"
#include "SerialManager.h"
#include "TerminationNotifier.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QTextStream>
#include <QTimer>

#include <climits>
#include <cmath>
#include <cstdio>

RecordCommand::RecordCommand(QObject *parent)
    : QObject(parent)
    , m_serial(new SerialManager(this))
    , m_writer(new RecordingWriter(this))
    , m_durationTimer(new QTimer(this))
    , m_deviceWatch(new QTimer(this))
    , m_termination(new TerminationNotifier(this))
{
    m_durationTimer->setSingleShot(true);
    connect(m_durationTimer, &QTimer::timeout, this,
            [this] { finish(0, QStringLiteral("duration reached")); });
    connect(m_termination, &TerminationNotifier::terminationRequested, this,
            [this] { finish(0, QStringLiteral("interrupted")); });
    m_deviceWatch->setInterval(DeviceWatchMs);
    connect(m_deviceWatch, &QTimer::timeout, this, &RecordCommand::checkDevicePresent);
    connect(m_writer, &RecordingWriter::writeFailed, this, &RecordCommand::onWriteFailed);
}

QString RecordCommand::filePath() const
{
    return m_writer->filePath();
}

bool RecordCommand::start(const SerialSettings &settings, const QString &projectDir,
                          const QString &definitionsPath, const Limits &limits, QString *error)
{
    connect(m_serial, &SerialManager::errorOccurred, this,
            [this](const QString &message) { m_lastSerialError = message; });
    if (!m_serial->open(settings)) {
        *error = QStringLiteral("cannot open %1: %2").arg(settings.portName, m_lastSerialError);
        return false;
    }
    if (!m_writer->start(projectDir, definitionsPath)) {
        m_serial->close();
        *error = m_writer->errorString();
        return false;
    }
    m_lineLimit = limits.lines;
    connectSerial();
    if (limits.durationMs > 0)
        m_durationTimer->start(std::chrono::milliseconds(limits.durationMs));
    m_devicePath = DevicePaths::systemLocation(settings.portName);
    if (QFileInfo::exists(m_devicePath))
        m_deviceWatch->start();
    return true;
}

// The same events, in the same forms, as the window records.
void RecordCommand::connectSerial()
{
    connect(m_serial, &SerialManager::rawLineReceived, this, &RecordCommand::onRawLine);
    connect(m_serial, &SerialManager::lineParsed, m_writer, &RecordingWriter::appendValues);
    connect(m_serial, &SerialManager::stateParsed, m_writer, &RecordingWriter::appendState);
    connect(m_serial, &SerialManager::errorParsed, m_writer, &RecordingWriter::appendError);
    connect(m_serial, &SerialManager::unrecognizedParsed, m_writer, &RecordingWriter::appendMessage);
    connect(m_serial, &SerialManager::portLost, this, &RecordCommand::onPortLost);
    connect(m_serial, &SerialManager::overlongLineDropped, this, [this](double, qint64 maxBytes) {
        Q_EMIT notice(QStringLiteral("line longer than %1 bytes dropped").arg(maxBytes));
    });
}

// Comes first of a line's signals: past the limit the writer is cut off
// before the line's events, and the line that reaches the limit is
// finished before stopping.
void RecordCommand::onRawLine()
{
    if (m_lineLimit > 0 && m_linesReceived >= m_lineLimit) {
        disconnect(m_serial, nullptr, m_writer, nullptr);
        return;
    }
    ++m_linesReceived;
    if (m_lineLimit > 0 && m_linesReceived == m_lineLimit)
        QTimer::singleShot(0, this, [this] { finish(0, QStringLiteral("line limit reached")); });
}

void RecordCommand::onPortLost()
{
    // The port's own text for a vanished device is often beside the point
    // (a hung-up terminal reads as "Permission denied"): a device file that
    // is gone says more.
    const QString cause = QFileInfo::exists(m_devicePath)
        ? QStringLiteral("the device stopped answering: %1").arg(m_lastSerialError)
        : QStringLiteral("the device disappeared: %1 no longer exists").arg(m_devicePath);
    finish(DeviceLostExitCode,
           QStringLiteral("%1; the recording holds everything received until then").arg(cause));
}

// The writer has stopped, keeping every whole line it could write: the
// recording ends here rather than discarding everything that follows.
void RecordCommand::onWriteFailed(const QString &message)
{
    finish(1, QStringLiteral("cannot write %1 (%2); it keeps the %3 lines written before")
                  .arg(filePath(), message)
                  .arg(m_writer->linesInFile()));
}

// A hung-up terminal (a closed pseudo-terminal, some adapters) only reads
// end-of-file and never reports an error; its device file is gone though.
void RecordCommand::checkDevicePresent()
{
    if (!QFileInfo::exists(m_devicePath))
        onPortLost();
}

void RecordCommand::finish(int exitCode, const QString &reason)
{
    if (m_finished)
        return;
    m_finished = true;
    m_durationTimer->stop();
    m_deviceWatch->stop();
    m_writer->stop();
    m_serial->close();
    Q_EMIT finished(exitCode, reason);
}

namespace {

struct RecordArguments
{
    SerialSettings settings;
    QString projectDir;
    QString definitionsPath;
    RecordCommand::Limits limits;
};

bool parseLimits(CliCommand &cli, const QCommandLineOption &duration, const QCommandLineOption &lines,
                 RecordCommand::Limits *limits)
{
    const QCommandLineParser &parser = cli.parser();
    if (parser.isSet(duration) && parser.isSet(lines)) {
        cli.usageError(QStringLiteral("give either --duration or --lines, not both"));
        return false;
    }
    bool ok = true;
    if (parser.isSet(duration)) {
        const double seconds = parser.value(duration).toDouble(&ok);
        ok = ok && std::isfinite(seconds) && seconds > 0.0 && seconds * 1000.0 < double(INT_MAX);
        limits->durationMs = ok ? std::max<qint64>(1, std::llround(seconds * 1000.0)) : 0;
        if (!ok)
            cli.usageError(QStringLiteral("--duration needs a positive number of seconds (under 24 days)"));
    } else if (parser.isSet(lines)) {
        limits->lines = parser.value(lines).toLongLong(&ok);
        ok = ok && limits->lines > 0;
        if (!ok)
            cli.usageError(QStringLiteral("--lines needs a positive whole number"));
    }
    return ok;
}

// False after printing a usage error (exit 2) or the help (exit 0); the
// exit code is then in *exitCode.
bool parseArguments(CliCommand &cli, const QStringList &args, RecordArguments *out, int *exitCode)
{
    const QCommandLineOption port({QStringLiteral("p"), QStringLiteral("port")},
                                  QStringLiteral("The serial port (name or device path)."), QStringLiteral("NAME"));
    const QCommandLineOption baud({QStringLiteral("b"), QStringLiteral("baud")},
                                  QStringLiteral("Baud rate (default 115200)."), QStringLiteral("N"),
                                  QStringLiteral("115200"));
    const QCommandLineOption project(QStringLiteral("project"), QStringLiteral("The project folder."),
                                     QStringLiteral("DIR"));
    const QCommandLineOption def({QStringLiteral("d"), QStringLiteral("def")},
                                 QStringLiteral("Definitions copied beside the recording (default: "
                                                "DIR/dashboard_signals.def)."),
                                 QStringLiteral("FILE"));
    const QCommandLineOption duration(QStringLiteral("duration"), QStringLiteral("Stop after S seconds."),
                                      QStringLiteral("S"));
    const QCommandLineOption lines(QStringLiteral("lines"), QStringLiteral("Stop after N lines."),
                                   QStringLiteral("N"));
    cli.parser().addOptions({port, baud, project, def, duration, lines});
    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({}, &positionals)) {
        *exitCode = cli.exitCode();
        return false;
    }
    *exitCode = 2;
    const QCommandLineParser &parser = cli.parser();
    out->settings.portName = parser.value(port);
    out->projectDir = parser.value(project);
    bool baudOk = false;
    out->settings.baudRate = parser.value(baud).toInt(&baudOk);
    out->definitionsPath = parser.isSet(def)
        ? parser.value(def)
        : QDir(out->projectDir).filePath(QStringLiteral("dashboard_signals.def"));
    if (out->settings.portName.isEmpty())
        cli.usageError(QStringLiteral("missing --port NAME"));
    else if (out->projectDir.isEmpty())
        cli.usageError(QStringLiteral("missing --project DIR"));
    else if (!QFileInfo(out->projectDir).isDir())
        cli.usageError(QStringLiteral("no such project folder: %1").arg(out->projectDir));
    else if (!baudOk || out->settings.baudRate <= 0)
        cli.usageError(QStringLiteral("--baud needs a positive whole number"));
    else if (parser.isSet(def) && !QFileInfo(out->definitionsPath).isFile())
        cli.usageError(QStringLiteral("no such definition file: %1").arg(out->definitionsPath));
    else
        return parseLimits(cli, duration, lines, &out->limits);
    return false;
}

} // namespace

int RecordCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("record"),
                   QStringLiteral("--port NAME --project DIR [--baud N] [--def FILE] [--duration S | --lines N]"),
                   QStringLiteral("Record a serial port into DIR/recordings, as the window does, until\n"
                                  "the limit is reached, Ctrl+C, or the device goes away. Prints the\n"
                                  "recording's path. Exit status: 0 when stopped, 1 when the port or the\n"
                                  "file cannot be opened or written, 2 for bad arguments, 3 when the\n"
                                  "device went away (the recording keeps every line received until then)."));
    RecordArguments arguments;
    int exitCode = 0;
    if (!parseArguments(cli, args, &arguments, &exitCode))
        return exitCode;
    if (!QFileInfo(arguments.definitionsPath).isFile())
        cli.note(QStringLiteral("%1 not found; the recording gets no companion definitions")
                     .arg(arguments.definitionsPath));

    RecordCommand recorder;
    QString error;
    if (!recorder.start(arguments.settings, arguments.projectDir, arguments.definitionsPath,
                        arguments.limits, &error))
        return cli.fail(error);
    QTextStream(stdout) << recorder.filePath() << Qt::endl;
    cli.note(QStringLiteral("recording %1 at %2 baud; Ctrl+C stops")
                 .arg(arguments.settings.portName)
                 .arg(arguments.settings.baudRate));

    connect(&recorder, &RecordCommand::notice, &recorder, [&cli](const QString &message) { cli.note(message); });
    QEventLoop loop;
    QString reason;
    connect(&recorder, &RecordCommand::finished, &loop, [&loop, &reason](int code, const QString &why) {
        reason = why;
        loop.exit(code);
    });
    exitCode = loop.exec();
    cli.note(QStringLiteral("stopped: %1").arg(reason));
    cli.note(QStringLiteral("%1 lines received into %2").arg(recorder.linesReceived()).arg(recorder.filePath()));
    return exitCode;
}
