#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include "Recording.h"

#include <functional>
#include <memory>

class SignalDefinitions;

// The plumbing every ombrix-cli command shares: option parsing with --help,
// the "one error line, then usage, exit 2" convention for bad arguments,
// loading a recording and its definitions with a progress line, and the
// arguments and output of the CSV exports.
class CliCommand
{
public:
    // command: the word after "ombrix-cli"; synopsis: what follows it in the
    // usage line, e.g. "[options] FILE.rec".
    CliCommand(const QString &command, const QString &synopsis, const QString &description);

    QCommandLineParser &parser() { return m_parser; }

    // Parses args (args[0] is the program name). False when the command must
    // end now with exitCode(): 0 after --help, 2 after a parse error.
    bool parse(const QStringList &args);
    int exitCode() const { return m_exitCode; }

    // The positional arguments, or a usage error unless there is exactly one
    // for each of names (as the usage shows them, e.g. "FILE.rec").
    bool takePositionals(const QStringList &names, QStringList *out);
    // Prints "ombrix-cli <command>: message" and the usage on stderr; returns 2.
    int usageError(const QString &message) const;
    // Prints "ombrix-cli <command>: message" on stderr; returns code.
    int fail(const QString &message, int code = 1) const;
    // Prints message as a line on stderr, prefixed like the errors.
    void note(const QString &message) const;
    QString usage() const;

    // Loads a recording, with a progress line when it takes a while. On
    // failure prints the reason and returns false with exitCode() set.
    bool loadRecording(Recording &recording, const QString &path);
    // --def when given (it must load), else the recording's companion copy
    // when present, else none (nullptr).
    bool loadDefinitions(const QString &recordingPath, const QString &defPath,
                         std::unique_ptr<SignalDefinitions> *defs);

    // For the exports: the FILE.rec argument, -o/--output OUT.csv and
    // -d/--def FILE, whose help text is defDescription.
    void addExportArguments(const QString &defDescription);
    // After addExportArguments: parses args and takes the recording and the
    // output path. False when the command must end now with exitCode().
    bool parseExport(const QStringList &args, QString *recordingPath, QString *outPath);
    // Loads the recording and its definitions (--def, else the companion).
    // Like the window, refuses a recording without data: nothing to export.
    bool loadExportInput(const QString &recordingPath, Recording &recording,
                         std::unique_ptr<SignalDefinitions> *defs);
    using ExportFunction = std::function<bool(const Recording::Progress &progress, QString *error)>;
    // Runs an export with a progress line and returns the exit code: 0, 1 when
    // it failed, InterruptedExitCode when SIGINT or SIGTERM cancelled it.
    int writeExport(const QString &outPath, const ExportFunction &write) const;

    // Exit code of a command stopped by SIGINT or SIGTERM.
    static constexpr int InterruptedExitCode = 130;

private:
    QString m_command;
    QString m_synopsis;
    QCommandLineParser m_parser;
    QCommandLineOption m_helpOption;
    int m_exitCode = 0;
};
