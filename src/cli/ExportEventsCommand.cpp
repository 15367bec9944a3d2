#include "ExportEventsCommand.h"

#include "CliCommand.h"
#include "EventsCsvExporter.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "TerminationNotifier.h"

int ExportEventsCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("export-events"), QStringLiteral("[options] FILE.rec -o OUT.csv"),
                   QStringLiteral("Export the states, errors and messages of a recording as CSV."));
    cli.addExportArguments(QStringLiteral("Definitions for the display texts (default: the "
                                          "recording's companion .signals.h)."));
    QString recordingPath;
    QString outPath;
    if (!cli.parseExport(args, &recordingPath, &outPath))
        return cli.exitCode();

    TerminationNotifier termination;
    Recording recording;
    std::unique_ptr<SignalDefinitions> defs;
    if (!cli.loadExportInput(recordingPath, recording, &defs))
        return cli.exitCode();
    return cli.writeExport(outPath, [&](const Recording::Progress &progress, QString *error) {
        return EventsCsvExporter::exportTo(outPath, recording, defs.get(), progress, error);
    });
}
