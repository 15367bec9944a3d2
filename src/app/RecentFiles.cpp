#include "RecentFiles.h"

#include "SettingsStores.h"

#include <QFileInfo>

RecentFiles::RecentFiles(const QString &key)
    : m_key(key)
{
}

QStringList RecentFiles::paths() const
{
    return SettingsStores::remembered().value(m_key).toStringList();
}

QStringList RecentFiles::existingPaths() const
{
    QStringList existing;
    for (const QString &path : paths()) {
        if (QFileInfo::exists(path))
            existing.append(path);
    }
    return existing;
}

void RecentFiles::add(const QString &path)
{
    if (path.isEmpty())
        return;
    addEntry(QFileInfo(path).absoluteFilePath());
}

void RecentFiles::addEntry(const QString &entry)
{
    if (entry.isEmpty())
        return;
    QStringList list = paths();
    list.removeAll(entry);
    list.prepend(entry);
    store(list.mid(0, MaxEntries));
}

void RecentFiles::clear()
{
    store(QStringList());
}

void RecentFiles::store(const QStringList &paths)
{
    QSettings store = SettingsStores::remembered();
    if (paths.isEmpty())
        store.remove(m_key);
    else
        store.setValue(m_key, paths);
}
