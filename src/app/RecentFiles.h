#pragma once

#include <QString>
#include <QStringList>

// A most-recent-first list of paths kept in the user's settings under one
// key ("recentProjects", "recentRecordings"). Every call reads or writes the
// settings, so that two windows share one list.
class RecentFiles
{
public:
    static constexpr int MaxEntries = 8;

    explicit RecentFiles(const QString &key);

    QString key() const { return m_key; }
    // Newest first, as stored.
    QStringList paths() const;
    // Newest first, leaving out what no longer exists on disk.
    QStringList existingPaths() const;
    // Moves the path (made absolute) to the front; the oldest beyond MaxEntries go.
    void add(const QString &path);
    // Moves an entry that is no path (a source's address) to the front as it stands.
    void addEntry(const QString &entry);
    void clear();

private:
    void store(const QStringList &paths);

    QString m_key;
};
