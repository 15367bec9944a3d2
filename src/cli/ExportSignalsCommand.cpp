#include "ExportSignalsCommand.h"

#include "CliCommand.h"
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
    cli.addExportArguments(QStringLiteral("Definitions for the mappings (default: the recording's "
                                          "companion .signals.h)."));
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
    cli.parser().addOptions({signalList, rate, mapped});
    QString recordingPath;
    QString outPath;
    if (!cli.parseExport(args, &recordingPath, &outPath))
        return cli.exitCode();
    SignalsExportOptions options;
    bool rateOk = false;
    options.rateHz = cli.parser().value(rate).toDouble(&rateOk);
    if (!rateOk || !std::isfinite(options.rateHz) || options.rateHz < 0.0)
        return cli.usageError(QStringLiteral("--rate needs a number of samples per second, 0 or more"));
    options.applyMappings = cli.parser().isSet(mapped);

    TerminationNotifier termination;
    Recording recording;
    std::unique_ptr<SignalDefinitions> defs;
    if (!cli.loadExportInput(recordingPath, recording, &defs))
        return cli.exitCode();
    if (!chosenSignals(cli, cli.parser().value(signalList), recording, &options.signalNames))
        return 2;
    if (options.applyMappings && !defs)
        cli.note(QStringLiteral("no definitions beside the recording; values stay raw"));
    return cli.writeExport(outPath, [&](const Recording::Progress &progress, QString *error) {
        return SignalsCsvExporter::exportTo(outPath, recording, defs.get(), options, progress, error);
    });
}
