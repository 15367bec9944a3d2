#include "CheckLayoutCommand.h"

#include "CliCommand.h"
#include "DashboardWidget.h"
#include "LayoutChecker.h"
#include "ProjectFolder.h"
#include "SignalDefinitions.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <cstdio>
#include <optional>

int CheckLayoutCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("check-layout"), QStringLiteral("FILE [--project DIR]"),
                   QStringLiteral("Check a layout file: items of unknown type, values of the wrong type or out of\n"
                                  "range, sizes raised to the minimum or rounded to the grid, config settings a\n"
                                  "widget does not know or did not take as written and, with --project, bound\n"
                                  "signals and state groups the project does not declare. Items are counted from 1.\n"
                                  "Findings go to stdout as FILE: message. Exit status: 0 when clean, 1 with\n"
                                  "findings, 2 for bad arguments."));
    QCommandLineParser &parser = cli.parser();
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The layout file (.json)."));
    const QCommandLineOption project({QStringLiteral("p"), QStringLiteral("project")},
                                     QStringLiteral("Project folder whose dashboard_signals.def the bound names must "
                                                    "be declared in."),
                                     QStringLiteral("DIR"));
    parser.addOption(project);
    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({QStringLiteral("FILE")}, &positionals))
        return cli.exitCode();
    const QString path = positionals.constFirst();
    if (!QFileInfo(path).isFile())
        return cli.usageError(QStringLiteral("no such file: %1").arg(path));

    std::optional<SignalDefinitions> defs;
    if (parser.isSet(project)) {
        const QString dir = parser.value(project);
        if (!ProjectFolder::isValid(dir))
            return cli.usageError(QStringLiteral("%1 is not a project: it has no %2").arg(dir, ProjectFolder::DefinitionFileName));
        defs.emplace();
        if (!defs->load(ProjectFolder::definitionsPath(dir)))
            return cli.fail(defs->lastError(), 2);
        // Pictures are found as the window finds them.
        DashboardWidget::setProjectFolder(QFileInfo(dir).absoluteFilePath());
    }

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return cli.fail(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()), 2);
    LayoutChecker checker(defs ? &*defs : nullptr);
    const QStringList findings = checker.check(file.readAll());
    QTextStream out(stdout);
    for (const QString &finding : findings)
        out << path << ": " << finding << '\n';
    return findings.isEmpty() ? 0 : 1;
}
