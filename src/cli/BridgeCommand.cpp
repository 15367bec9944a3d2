#include "BridgeCommand.h"

#include "CliCommand.h"
#include "CliSource.h"
#include "LivePipeline.h"
#include "MqttAddress.h"
#include "MqttBridge.h"
#include "SerialManager.h"
#include "SourceAddress.h"
#include "TerminationNotifier.h"

#include <QEventLoop>
#include <QTimer>

namespace {

// The broker address of --to, or false after a usage error.
bool readTarget(CliCommand &cli, const QString &text, MqttAddress *to)
{
    SourceAddress address;
    QString error;
    const QString scheme = SourceAddress::schemeOf(text);
    if (scheme != QLatin1String("mqtt") && scheme != QLatin1String("mqtts"))
        error = QStringLiteral("--to needs %1").arg(MqttAddress::Form);
    else if (SourceAddress::parse(text, &address, &error) && MqttAddress::parse(address, to, &error)
             && !MqttClient::isValidTopic(to->topic))
        error = QStringLiteral("--to needs a topic without wildcards to publish to");
    if (error.isEmpty())
        return true;
    cli.usageError(error);
    return false;
}

// Runs the event loop until the broker answers the first time. False with
// *error naming the broker and the reason.
bool connectBroker(MqttBridge &bridge, TerminationNotifier &termination, QString *error)
{
    QString reason;
    if (!bridge.start(&reason)) {
        *error = QStringLiteral("cannot reach the broker at %1: %2").arg(bridge.brokerName(), reason);
        return false;
    }
    QEventLoop loop;
    QObject::connect(&bridge, &MqttBridge::connected, &loop, &QEventLoop::quit);
    QObject::connect(&bridge, &MqttBridge::brokerFailed, &loop, [&](const QString &why) {
        reason = why;
        loop.quit();
    });
    QObject::connect(&termination, &TerminationNotifier::terminationRequested, &loop, &QEventLoop::quit);
    loop.exec();
    if (bridge.isConnected())
        return true;
    *error = QStringLiteral("cannot reach the broker at %1: %2")
                 .arg(bridge.brokerName(), reason.isEmpty() ? QStringLiteral("interrupted while connecting") : reason);
    return false;
}

// Reports what happens on both sides while the bridge runs.
void narrate(const CliCommand &cli, LivePipeline &pipeline, MqttBridge &bridge)
{
    QObject::connect(&bridge, &MqttBridge::brokerLost, &bridge, [&cli, &bridge](const QString &reason, int retryMs) {
        cli.note(QStringLiteral("broker %1: %2; lines are queued, next try in %3 s (%4 queued, %5 dropped)")
                     .arg(bridge.brokerName(), reason)
                     .arg(retryMs / 1000.0)
                     .arg(bridge.linesQueued())
                     .arg(bridge.linesDropped()));
    });
    QObject::connect(&bridge, &MqttBridge::connected, &bridge, [&cli, &bridge] {
        cli.note(QStringLiteral("broker %1 is back (%2 lines queued, %3 dropped while away)")
                     .arg(bridge.brokerName())
                     .arg(bridge.linesQueued())
                     .arg(bridge.linesDropped()));
    });
    QObject::connect(&bridge, &MqttBridge::queueFull, &bridge, [&cli](qint64 limit) {
        cli.note(QStringLiteral("queue full (%1 lines): newer lines are dropped until the broker is back").arg(limit));
    });
    QObject::connect(&bridge, &MqttBridge::commandFailed, &bridge, [&cli](const QString &why) { cli.note(why); });
    QObject::connect(&pipeline, &LivePipeline::sourceLost, &bridge, [&cli](const QString &name, const QString &why) {
        cli.note(QStringLiteral("%1 lost: %2; it is opened again when it is back").arg(name, why));
    });
    QObject::connect(&pipeline, &LivePipeline::reconnected, &bridge,
                     [&cli](const QString &name) { cli.note(QStringLiteral("%1 is back").arg(name)); });
}

// Hands the broker what is batched and queued, for up to StopTimeoutMs.
void drain(MqttBridge &bridge)
{
    QEventLoop loop;
    QObject::connect(&bridge, &MqttBridge::drained, &loop, &QEventLoop::quit);
    QTimer::singleShot(BridgeCommand::StopTimeoutMs, &loop, &QEventLoop::quit);
    bridge.flush();
    if (bridge.linesQueued() > 0 && bridge.isConnected())
        loop.exec();
}

} // namespace

int BridgeCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("bridge"),
                   QStringLiteral("--port SOURCE --to mqtt://HOST[:PORT]/TOPIC [--queue N] [--baud N] [--project DIR]"),
                   QStringLiteral("Forward every line of SOURCE (a serial port, tcp://HOST:PORT,\n"
                                  "udp://[HOST]:PORT or sim:) to TOPIC on an MQTT broker, in batches with\n"
                                  "QoS 1, and write every message on TOPIC/cmd (or ?cmd=TOPIC) to the device.\n"
                                  "Both sides are reconnected when they go away; while the broker is away up\n"
                                  "to N lines are queued, and newer ones dropped and counted. Runs until\n"
                                  "Ctrl+C or SIGTERM. Exit status: 0 when stopped, 1 when the source or the\n"
                                  "broker cannot be reached at the start, 2 for bad arguments."));
    CliSource source(cli, false);
    const QCommandLineOption toOption(QStringLiteral("to"),
                                      QStringLiteral("The broker and topic: mqtt[s]://[USER[:PASSWORD]@]HOST[:PORT]/"
                                                     "TOPIC[?cmd=TOPIC&cafile=PATH]."),
                                      QStringLiteral("URL"));
    const QCommandLineOption queueOption(QStringLiteral("queue"),
                                         QStringLiteral("Lines held while the broker is away (default %1).")
                                             .arg(MqttBridge::DefaultQueueLines),
                                         QStringLiteral("N"), QString::number(MqttBridge::DefaultQueueLines));
    cli.parser().addOptions({toOption, queueOption});
    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({}, &positionals))
        return cli.exitCode();
    if (!source.read())
        return 2;
    MqttAddress to;
    if (!cli.parser().isSet(toOption))
        return cli.usageError(QStringLiteral("missing --to mqtt://HOST/TOPIC"));
    if (!readTarget(cli, cli.parser().value(toOption), &to))
        return 2;
    bool ok = false;
    const qint64 queueLines = cli.parser().value(queueOption).toLongLong(&ok);
    if (!ok || queueLines < MqttBridge::MaxBatchLines)
        return cli.usageError(QStringLiteral("--queue needs a whole number of at least %1").arg(MqttBridge::MaxBatchLines));

    TerminationNotifier termination;
    LivePipeline pipeline;
    pipeline.setReconnect(true);
    MqttBridge bridge(&pipeline, to, queueLines);
    QString error;
    if (!connectBroker(bridge, termination, &error))
        return cli.fail(error);
    if (!source.open(pipeline, &termination, &error))
        return cli.fail(error);
    cli.note(QStringLiteral("bridging %1 to %2 on %3; Ctrl+C stops")
                 .arg(source.description(), QString::fromUtf8(to.topic), bridge.brokerName()));
    narrate(cli, pipeline, bridge);

    QEventLoop loop;
    QObject::connect(&termination, &TerminationNotifier::terminationRequested, &loop, &QEventLoop::quit);
    loop.exec();

    pipeline.close();
    drain(bridge);
    bridge.stop();
    cli.note(QStringLiteral("stopped: %1 lines forwarded, %2 dropped, %3 left queued, %4 commands written")
                 .arg(bridge.linesForwarded())
                 .arg(bridge.linesDropped())
                 .arg(bridge.linesQueued())
                 .arg(bridge.commandsWritten()));
    return 0;
}
