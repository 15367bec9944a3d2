#include "CliCommand.h"

#include "ConsoleProgress.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "TerminationNotifier.h"

#include <QFileInfo>
#include <QTextStream>

#include <cstdio>

CliCommand::CliCommand(const QString &command, const QString &synopsis, const QString &description)
    : m_command(command)
    , m_synopsis(synopsis)
    , m_helpOption({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."))
{
    m_parser.setApplicationDescription(description);
    m_parser.addOption(m_helpOption);
}

bool CliCommand::parse(const QStringList &args)
{
    if (!m_parser.parse(args)) {
        m_exitCode = usageError(m_parser.errorText());
        return false;
    }
    if (m_parser.isSet(m_helpOption)) {
        QTextStream(stdout) << usage();
        m_exitCode = 0;
        return false;
    }
    return true;
}

bool CliCommand::takePositionals(const QStringList &names, QStringList *out)
{
    const QStringList given = m_parser.positionalArguments();
    if (given.size() == names.size()) {
        *out = given;
        return true;
    }
    m_exitCode = usageError(given.size() < names.size()
                                ? QStringLiteral("missing %1").arg(names.at(given.size()))
                                : QStringLiteral("unexpected argument '%1'").arg(given.at(names.size())));
    return false;
}

QString CliCommand::usage() const
{
    QString help = m_parser.helpText();
    const qsizetype firstLineEnd = help.indexOf(QLatin1Char('\n'));
    help.remove(0, firstLineEnd < 0 ? help.size() : firstLineEnd + 1);
    return QStringLiteral("Usage: ombrix-cli ") % m_command % QLatin1Char(' ') % m_synopsis
        % QLatin1String("\n\n") % help;
}

int CliCommand::usageError(const QString &message) const
{
    QTextStream err(stderr);
    err << "ombrix-cli " << m_command << ": " << message << '\n' << usage();
    return 2;
}

int CliCommand::fail(const QString &message, int code) const
{
    note(message);
    return code;
}

void CliCommand::note(const QString &message) const
{
    QTextStream(stderr) << "ombrix-cli " << m_command << ": " << message << '\n';
}

bool CliCommand::loadRecording(Recording &recording, const QString &path)
{
    if (!QFileInfo(path).isFile()) {
        m_exitCode = usageError(QStringLiteral("no such recording: %1").arg(path));
        return false;
    }
    ConsoleProgress progress(QStringLiteral("Loading"));
    const bool loaded = recording.load(path, progress.callback());
    progress.finish();
    if (loaded)
        return true;
    if (TerminationNotifier::requested()) {
        m_exitCode = fail(QStringLiteral("interrupted"), InterruptedExitCode);
        return false;
    }
    m_exitCode = fail(QStringLiteral("cannot read %1: %2").arg(path, recording.errorString()), 2);
    return false;
}

bool CliCommand::loadDefinitions(const QString &recordingPath, const QString &defPath,
                                 std::unique_ptr<SignalDefinitions> *defs)
{
    const QString companion = Recording::companionPathFor(recordingPath);
    const QString path = defPath.isEmpty() ? companion : defPath;
    if (defPath.isEmpty() && !QFileInfo(companion).isFile()) {
        defs->reset();
        return true;
    }
    auto loaded = std::make_unique<SignalDefinitions>();
    if (!loaded->load(path)) {
        m_exitCode = defPath.isEmpty() ? fail(loaded->lastError(), 2) : usageError(loaded->lastError());
        return false;
    }
    *defs = std::move(loaded);
    return true;
}

void CliCommand::addExportArguments(const QString &defDescription)
{
    m_parser.setApplicationDescription(m_parser.applicationDescription()
                                       % QLatin1String("\nThe file is written whole or not at all. Exit status: 0 when "
                                                       "written,\n1 when it cannot be, 2 for bad arguments, 130 when "
                                                       "interrupted."));
    m_parser.addOption({{QStringLiteral("o"), QStringLiteral("output")}, QStringLiteral("The CSV file to write."),
                        QStringLiteral("OUT.csv")});
    m_parser.addOption({{QStringLiteral("d"), QStringLiteral("def")}, defDescription, QStringLiteral("FILE")});
    m_parser.addPositionalArgument(QStringLiteral("FILE.rec"), QStringLiteral("The recording (.rec)."));
}

bool CliCommand::parseExport(const QStringList &args, QString *recordingPath, QString *outPath)
{
    QStringList positionals;
    if (!parse(args) || !takePositionals({QStringLiteral("FILE.rec")}, &positionals))
        return false;
    *recordingPath = positionals.at(0);
    *outPath = m_parser.value(QStringLiteral("output"));
    if (outPath->isEmpty()) {
        m_exitCode = usageError(QStringLiteral("missing -o OUT.csv"));
        return false;
    }
    // A slip of the keyboard must not replace the recording or its definitions with a CSV.
    const QString target = QFileInfo(*outPath).canonicalFilePath();
    const QStringList inputs{*recordingPath, Recording::companionPathFor(*recordingPath),
                             m_parser.value(QStringLiteral("def"))};
    for (const QString &input : inputs) {
        if (!target.isEmpty() && !input.isEmpty() && QFileInfo(input).canonicalFilePath() == target) {
            m_exitCode = usageError(QStringLiteral("%1 is an input; give another -o OUT.csv").arg(*outPath));
            return false;
        }
    }
    return true;
}

bool CliCommand::loadExportInput(const QString &recordingPath, Recording &recording,
                                 std::unique_ptr<SignalDefinitions> *defs)
{
    if (!loadRecording(recording, recordingPath)
        || !loadDefinitions(recordingPath, m_parser.value(QStringLiteral("def")), defs))
        return false;
    if (!recording.isEmpty())
        return true;
    m_exitCode = fail(QStringLiteral("no playback data in %1; nothing written").arg(recordingPath));
    return false;
}

int CliCommand::writeExport(const QString &outPath, const ExportFunction &write) const
{
    ConsoleProgress progress(QStringLiteral("Exporting"));
    QString error;
    if (write(progress.callback(), &error))
        return 0;
    progress.finish();
    if (TerminationNotifier::requested())
        return fail(QStringLiteral("interrupted; %1 not written").arg(outPath), InterruptedExitCode);
    return fail(QStringLiteral("%1: %2").arg(outPath, error));
}
