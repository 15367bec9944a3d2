#include "BenchDemo.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTimer>

#include <sys/resource.h>

namespace {

bool copyTree(const QString &from, const QString &to)
{
    const QDir source(from);
    QDir().mkpath(to);
    for (const QString &entry : source.entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString path = source.filePath(entry);
        const bool copied = QFileInfo(path).isDir() ? copyTree(path, QDir(to).filePath(entry))
                                                    : QFile::copy(path, QDir(to).filePath(entry));
        if (!copied)
            return false;
    }
    return true;
}

} // namespace

bool BenchDemo::copyDemo(const QString &folder)
{
    return copyTree(QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo"), folder);
}

void BenchDemo::useOffscreenTestMode()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
}

void BenchDemo::runFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

double BenchDemo::processCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double BenchDemo::residentMb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0.0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
    return 0.0;
}
