#include "SendCommand.h"

#include "CliCommand.h"
#include "CliSource.h"
#include "LineEnding.h"
#include "LivePipeline.h"
#include "SerialManager.h"
#include "TerminationNotifier.h"

#include <QEventLoop>
#include <QTimer>

namespace {

// Runs the event loop until the source has handed every written byte to the
// system, it is lost, or the time is up. False with *error set.
bool waitUntilWritten(LivePipeline &pipeline, TerminationNotifier &termination, QString *error)
{
    SerialManager *serial = pipeline.serial();
    QEventLoop loop;
    QTimer timeout;
    timeout.setSingleShot(true);
    const auto check = [&] {
        if (!serial->isOpen() || serial->bytesToWrite() == 0)
            loop.quit();
    };
    QObject::connect(serial, &SerialManager::bytesWritten, &loop, check);
    QObject::connect(serial, &SerialManager::portLost, &loop, check);
    QObject::connect(&timeout, &QTimer::timeout, &loop, &QEventLoop::quit);
    QObject::connect(&termination, &TerminationNotifier::terminationRequested, &loop, &QEventLoop::quit);
    if (serial->isOpen() && serial->bytesToWrite() > 0) {
        timeout.start(SendCommand::WriteTimeoutMs);
        loop.exec();
    }
    if (serial->isOpen() && serial->bytesToWrite() == 0) {
        QTimer::singleShot(SendCommand::SettleMs, &loop, &QEventLoop::quit);
        loop.exec();
    }
    if (serial->isOpen() && serial->bytesToWrite() == 0)
        return true;
    const QString name = serial->portName();
    *error = !serial->isOpen()         ? QStringLiteral("%1 went away before everything was written").arg(name)
        : TerminationNotifier::requested() ? QStringLiteral("interrupted before everything was written to %1").arg(name)
                                           : QStringLiteral("%1 took no more than part of it within %2 seconds")
                                                 .arg(name)
                                                 .arg(SendCommand::WriteTimeoutMs / 1000);
    return false;
}

} // namespace

int SendCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("send"),
                   QStringLiteral("--port SOURCE [--ending lf|crlf|cr|none] [--baud N] [--project DIR] TEXT..."),
                   QStringLiteral("Send each TEXT as one line to the device on SOURCE (a serial port,\n"
                                  "tcp://HOST:PORT, udp://[HOST]:PORT?reply=HOST:PORT or sim:), in order.\n"
                                  "Exit status: 0 when every line was written, 1 when the source cannot be\n"
                                  "opened or a line cannot be written, 2 for bad arguments."));
    CliSource source(cli, false);
    const QCommandLineOption endingOption(QStringLiteral("ending"),
                                          QStringLiteral("What ends each line: lf (default), crlf, cr or none."),
                                          QStringLiteral("ENDING"), QStringLiteral("lf"));
    cli.parser().addOption(endingOption);
    cli.parser().addPositionalArgument(QStringLiteral("TEXT"), QStringLiteral("A line to send."),
                                       QStringLiteral("TEXT..."));
    if (!cli.parse(args))
        return cli.exitCode();
    if (!source.read())
        return 2;
    LineEnding ending = LineEnding::Lf;
    if (!LineEndings::fromName(cli.parser().value(endingOption), &ending))
        return cli.usageError(QStringLiteral("--ending needs one of %1").arg(LineEndings::names().join(u", ")));
    const QStringList lines = cli.parser().positionalArguments();
    if (lines.isEmpty())
        return cli.usageError(QStringLiteral("missing TEXT"));

    TerminationNotifier termination;
    LivePipeline pipeline;
    QString error;
    if (!source.open(pipeline, &termination, &error))
        return cli.fail(error);
    for (const QString &line : lines) {
        if (!pipeline.sendCommand(line, ending, &error))
            return cli.fail(error);
    }
    if (!waitUntilWritten(pipeline, termination, &error))
        return cli.fail(error);
    pipeline.close();
    return 0;
}
