#include "FileErrors.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

QString FileErrors::whyUnreadable(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("no such file");
    if (info.isDir())
        return QStringLiteral("a folder, not a file");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    return QStringLiteral("read error");
}

QString FileErrors::describe(const QString &path, const QString &reason)
{
    return QDir::toNativeSeparators(path) + QLatin1String(": ") + reason;
}
