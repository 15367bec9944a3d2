#include "ExportSignalsCommand.h"

#include "CliCommand.h"
#include "ConsoleProgress.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalsCsvExporter.h"
#include "TerminationNotifier.h"

#include <cmath>

namespace {

// The --signals list, every name checked against the recording; false
// after printing the error.
bool chosenSignals(CliCommand &cli, const QString &list, const Recording &recording, QStringList *names)
{
    const QStringList available = recording.signalNames();
    if (list.isEmpty()) {
        *names = available;
        return true;
    }
    for (const QString &part : list.split(QLatin1Char(','))) {
        const QString name = part.trimmed();
        if (name.isEmpty())
            continue;
        if (!available.contains(name)) {
            cli.fail(QStringLiteral("unknown signal '%1' (the recording has: %2)")
                         .arg(name, available.join(QStringLiteral(", "))), 2);
            return false;
        }
        names->append(name);
    }
    if (names->isEmpty()) {
        cli.fail(QStringLiteral("--signals names no signal"), 2);
        return false;
    }
    return true;
}

} // namespace

int ExportSignalsCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("export-signals"), QStringLiteral("[options] FILE.rec -o OUT.csv"),
                   QStringLiteral("Export the signal values of a recording as CSV."));
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("The CSV file to write."), QStringLiteral("OUT.csv"));
    const QCommandLineOption signalList({QStringLiteral("s"), QStringLiteral("signals")},
                                        QStringLiteral("Comma-separated signal names, in column order "
                                                       "(default: every signal of the recording)."),
                                        QStringLiteral("A,B"));
    const QCommandLineOption rate({QStringLiteral("r"), QStringLiteral("rate")},
                                  QStringLiteral("Samples per second; 0 keeps the recorded times "
                                                 "(default)."),
                                  QStringLiteral("HZ"), QStringLiteral("0"));
    const QCommandLineOption mapped({QStringLiteral("m"), QStringLiteral("mapped")},
                                    QStringLiteral("Apply the mappings (physical units)."));
    const QCommandLineOption def({QStringLiteral("d"), QStringLiteral("def")},
                                 QStringLiteral("Definitions for the mappings (default: the "
                                                "recording's companion .signals.h)."),
                                 QStringLiteral("FILE"));
    cli.parser().addOptions({output, signalList, rate, mapped, def});
    cli.parser().addPositionalArgument(QStringLiteral("file"), QStringLiteral("The recording (.rec)."),
                                       QStringLiteral("FILE.rec"));
    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({QStringLiteral("FILE.rec")}, &positionals))
        return cli.exitCode();
    const QString outPath = cli.parser().value(output);
    if (outPath.isEmpty())
        return cli.usageError(QStringLiteral("missing -o OUT.csv"));
    SignalsExportOptions options;
    bool rateOk = false;
    options.rateHz = cli.parser().value(rate).toDouble(&rateOk);
    if (!rateOk || !std::isfinite(options.rateHz) || options.rateHz < 0.0)
        return cli.usageError(QStringLiteral("--rate needs a number of samples per second, 0 or more"));
    options.applyMappings = cli.parser().isSet(mapped);

    TerminationNotifier termination;
    Recording recording;
    std::unique_ptr<SignalDefinitions> defs;
    if (!cli.loadRecording(recording, positionals.at(0))
        || !cli.loadDefinitions(positionals.at(0), cli.parser().value(def), &defs))
        return cli.exitCode();
    if (!chosenSignals(cli, cli.parser().value(signalList), recording, &options.signalNames))
        return 2;
    if (options.applyMappings && !defs)
        cli.note(QStringLiteral("no definitions beside the recording; values stay raw"));

    ConsoleProgress progress(QStringLiteral("Exporting"));
    QString error;
    if (!SignalsCsvExporter::exportTo(outPath, recording, defs.get(), options, progress.callback(), &error)) {
        progress.finish();
        if (TerminationNotifier::requested())
            return cli.fail(QStringLiteral("interrupted; %1 not written").arg(outPath),
                            CliCommand::InterruptedExitCode);
        return cli.fail(QStringLiteral("%1: %2").arg(outPath, error));
    }
    return 0;
}
