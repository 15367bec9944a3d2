#include "RecordCommand.h"

#include "CliCommand.h"
#include "CliSource.h"
#include "LivePipeline.h"
#include "RecordingWriter.h"
#include "SerialManager.h"
#include "TerminationNotifier.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QTextStream>
#include <QTimer>

#include <climits>
#include <cmath>

RecordCommand::RecordCommand(QObject *parent)
    : QObject(parent)
    , m_pipeline(new LivePipeline(this))
    , m_durationTimer(new QTimer(this))
    , m_termination(new TerminationNotifier(this))
{
    m_durationTimer->setSingleShot(true);
    connect(m_durationTimer, &QTimer::timeout, this, [this] { finish(0, QStringLiteral("duration reached")); });
    connect(m_termination, &TerminationNotifier::terminationRequested, this,
            [this] { finish(0, QStringLiteral("interrupted")); });
    connect(m_pipeline->recorder(), &RecordingWriter::writeFailed, this, &RecordCommand::onWriteFailed);
}

QString RecordCommand::filePath() const
{
    return m_pipeline->recorder()->filePath();
}

bool RecordCommand::start(const CliSource &source, const Limits &limits, QString *error)
{
    if (!source.open(*m_pipeline, m_termination, error))
        return false;
    RecordingWriter *writer = m_pipeline->recorder();
    if (!writer->start(source.projectDir(), source.definitionsPath())) {
        m_pipeline->close();
        *error = writer->errorString();
        return false;
    }
    m_lineLimit = limits.lines;
    watchSource();
    if (limits.durationMs > 0)
        m_durationTimer->start(std::chrono::milliseconds(limits.durationMs));
    return true;
}

void RecordCommand::watchSource()
{
    SerialManager *serial = m_pipeline->serial();
    connect(serial, &SerialManager::rawLineReceived, this, &RecordCommand::onRawLine);
    connect(m_pipeline, &LivePipeline::sourceLost, this, &RecordCommand::onSourceLost);
    connect(serial, &SerialManager::overlongLineDropped, this, [this](double, qint64 maxBytes) {
        Q_EMIT notice(QStringLiteral("line longer than %1 bytes dropped").arg(maxBytes));
    });
    connect(serial, &SerialManager::oversizedInputDropped, this, [this](qint64 maxBytes, qint64 total) {
        Q_EMIT notice(QStringLiteral("datagram larger than %1 bytes dropped (%2 so far)").arg(maxBytes).arg(total));
    });
}

// Comes first of a line's signals: past the limit the recording is closed
// before the line's events, and the line that reaches the limit is
// finished before stopping.
void RecordCommand::onRawLine()
{
    if (m_lineLimit > 0 && m_linesReceived >= m_lineLimit) {
        m_pipeline->recorder()->stop();
        return;
    }
    ++m_linesReceived;
    if (m_lineLimit > 0 && m_linesReceived == m_lineLimit)
        QTimer::singleShot(0, this, [this] { finish(0, QStringLiteral("line limit reached")); });
}

void RecordCommand::onSourceLost(const QString &, const QString &reason)
{
    // A device that says goodbye after the last line wanted has done no harm.
    if (m_lineLimit > 0 && m_linesReceived >= m_lineLimit) {
        finish(0, QStringLiteral("line limit reached"));
        return;
    }
    finish(DeviceLostExitCode, QStringLiteral("%1; the recording holds everything received until then").arg(reason));
}

// The writer has stopped, keeping every whole line it could write: the
// recording ends here rather than discarding everything that follows.
void RecordCommand::onWriteFailed(const QString &message)
{
    finish(1, QStringLiteral("cannot write %1 (%2); it keeps the %3 lines written before")
                  .arg(filePath(), message)
                  .arg(m_pipeline->recorder()->linesInFile()));
}

void RecordCommand::finish(int exitCode, const QString &reason)
{
    if (m_finished)
        return;
    m_finished = true;
    m_durationTimer->stop();
    m_pipeline->recorder()->stop();
    m_pipeline->close();
    Q_EMIT finished(exitCode, reason);
}

namespace {

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
bool parseArguments(CliCommand &cli, CliSource &source, const QStringList &args, RecordCommand::Limits *limits,
                    int *exitCode)
{
    const QCommandLineOption duration(QStringLiteral("duration"), QStringLiteral("Stop after S seconds."),
                                      QStringLiteral("S"));
    const QCommandLineOption lines(QStringLiteral("lines"), QStringLiteral("Stop after N lines."),
                                   QStringLiteral("N"));
    cli.parser().addOptions({duration, lines});
    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({}, &positionals)) {
        *exitCode = cli.exitCode();
        return false;
    }
    *exitCode = 2;
    return source.read() && parseLimits(cli, duration, lines, limits);
}

} // namespace

int RecordCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("record"),
                   QStringLiteral("--port SOURCE --project DIR [--baud N] [--def FILE] [--duration S | --lines N]"),
                   QStringLiteral("Record a source (a serial port, tcp://HOST:PORT, udp://[HOST]:PORT or sim:)\n"
                                  "into DIR/recordings, as the window does, until the limit is reached,\n"
                                  "Ctrl+C, or the source goes away. Prints the recording's path. Exit\n"
                                  "status: 0 when stopped, 1 when the source or the file cannot be opened\n"
                                  "or written, 2 for bad arguments, 3 when the source went away (the\n"
                                  "recording keeps every line received until then)."));
    CliSource source(cli, true);
    Limits limits;
    int exitCode = 0;
    if (!parseArguments(cli, source, args, &limits, &exitCode))
        return exitCode;
    if (!QFileInfo(source.definitionsPath()).isFile())
        cli.note(QStringLiteral("%1 not found; the recording gets no companion definitions")
                     .arg(source.definitionsPath()));

    RecordCommand recorder;
    QString error;
    if (!recorder.start(source, limits, &error))
        return cli.fail(error);
    QTextStream(stdout) << recorder.filePath() << Qt::endl;
    cli.note(QStringLiteral("recording %1; Ctrl+C stops").arg(source.description()));

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
