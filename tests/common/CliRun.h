#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// One run of the real ombrix-cli (the binary named by OMBRIX_CLI), to its end.
struct CliRun
{
    int exitCode = -1; // -1 when it crashed or did not end within 30 s
    QByteArray out;
    QByteArray err;

    // CTest sets OMBRIX_CLI; empty when the test runs outside CTest.
    static QString program();
    static CliRun run(const QStringList &args,
                      const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

    // The shape of every argument error: exit 2, nothing on stdout, one line
    // "ombrix-cli <command>: ..." on stderr, then the command's usage.
    bool isUsageError(const QString &command) const;
};
