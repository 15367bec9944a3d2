#include "ExportEventsCommand.h"

#include "CliCommand.h"
#include "ConsoleProgress.h"
#include "EventsCsvExporter.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "TerminationNotifier.h"

int ExportEventsCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("export-events"), QStringLiteral("[options] FILE.rec -o OUT.csv"),
                   QStringLiteral("Export the states, errors and messages of a recording as CSV."));
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("The CSV file to write."), QStringLiteral("OUT.csv"));
    const QCommandLineOption def({QStringLiteral("d"), QStringLiteral("def")},
                                 QStringLiteral("Definitions for the display texts (default: the "
                                                "recording's companion .signals.h)."),
                                 QStringLiteral("FILE"));
    cli.parser().addOptions({output, def});
    cli.parser().addPositionalArgument(QStringLiteral("file"), QStringLiteral("The recording (.rec)."),
                                       QStringLiteral("FILE.rec"));
    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({QStringLiteral("FILE.rec")}, &positionals))
        return cli.exitCode();
    if (cli.parser().value(output).isEmpty())
        return cli.usageError(QStringLiteral("missing -o OUT.csv"));

    TerminationNotifier termination;
    Recording recording;
    std::unique_ptr<SignalDefinitions> defs;
    if (!cli.loadRecording(recording, positionals.at(0))
        || !cli.loadDefinitions(positionals.at(0), cli.parser().value(def), &defs))
        return cli.exitCode();

    ConsoleProgress progress(QStringLiteral("Exporting"));
    QString error;
    const QString outPath = cli.parser().value(output);
    if (!EventsCsvExporter::exportTo(outPath, recording, defs.get(), progress.callback(), &error)) {
        progress.finish();
        if (TerminationNotifier::requested())
            return cli.fail(QStringLiteral("interrupted; %1 not written").arg(outPath),
                            CliCommand::InterruptedExitCode);
        return cli.fail(QStringLiteral("%1: %2").arg(outPath, error));
    }
    return 0;
}
