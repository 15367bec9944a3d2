#include "CheckDefCommand.h"

#include "CliCommand.h"
#include "DefinitionLinter.h"

#include <QFileInfo>
#include <QTextStream>

#include <cstdio>

int CheckDefCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("check-def"), QStringLiteral("FILE"),
                   QStringLiteral("Check a definition file (dashboard_signals.def): lines that declare nothing and\n"
                                  "what they nearly were, repeated names, keys and codes, mappings of undeclared\n"
                                  "signals, states of undeclared groups. Loading skips all of these silently.\n"
                                  "Findings go to stdout as FILE:LINE: message, sorted by line. Exit status: 0\n"
                                  "when clean, 1 with findings, 2 for bad arguments."));
    cli.parser().addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The definition file."));
    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({QStringLiteral("FILE")}, &positionals))
        return cli.exitCode();
    const QString path = positionals.constFirst();
    if (!QFileInfo(path).isFile())
        return cli.usageError(QStringLiteral("no such file: %1").arg(path));

    QList<DefinitionLinter::Finding> findings;
    QString error;
    if (!DefinitionLinter::checkFile(path, &findings, &error))
        return cli.fail(error, 2);
    QTextStream out(stdout);
    for (const DefinitionLinter::Finding &finding : std::as_const(findings)) {
        out << path << ':' << finding.line << ": " << (finding.warning ? "warning: " : "") << finding.message
            << '\n';
    }
    return findings.isEmpty() ? 0 : 1;
}
