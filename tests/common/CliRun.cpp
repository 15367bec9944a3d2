#include "CliRun.h"

#include <QProcess>

QString CliRun::program()
{
    return qEnvironmentVariable("OMBRIX_CLI");
}

CliRun CliRun::run(const QStringList &args, const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program(), args);
    CliRun result;
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

bool CliRun::isUsageError(const QString &command) const
{
    const QByteArrayList lines = err.split('\n');
    const QByteArray name = command.toUtf8();
    return exitCode == 2 && out.isEmpty() && lines.size() > 2
        && lines.at(0).startsWith(QByteArray("ombrix-cli " + name + ": "))
        && lines.at(1).startsWith(QByteArray("Usage: ombrix-cli " + name));
}
