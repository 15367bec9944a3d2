#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <memory>

class Recording;
class SignalDefinitions;

// The plumbing every ombrix-cli command shares: option parsing with --help,
// the "one error line, then usage, exit 2" convention for bad arguments,
// and loading a recording and its definitions with a progress line.
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

    // Exit code of a command stopped by SIGINT or SIGTERM.
    static constexpr int InterruptedExitCode = 130;

private:
    QString m_command;
    QString m_synopsis;
    QCommandLineParser m_parser;
    QCommandLineOption m_helpOption;
    int m_exitCode = 0;
};
