#include "LineEnding.h"

namespace {

struct Entry
{
    LineEnding ending;
    const char *name;
    const char *bytes;
};

constexpr Entry Entries[] = {
    {LineEnding::Lf, "lf", "\n"},
    {LineEnding::CrLf, "crlf", "\r\n"},
    {LineEnding::Cr, "cr", "\r"},
    {LineEnding::None, "none", ""},
};

const Entry &entryOf(LineEnding ending)
{
    for (const Entry &entry : Entries) {
        if (entry.ending == ending)
            return entry;
    }
    return Entries[0];
}

} // namespace

QByteArray LineEndings::bytes(LineEnding ending)
{
    return QByteArray(entryOf(ending).bytes);
}

QString LineEndings::name(LineEnding ending)
{
    return QString::fromLatin1(entryOf(ending).name);
}

bool LineEndings::fromName(const QString &name, LineEnding *ending)
{
    for (const Entry &entry : Entries) {
        if (name.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0) {
            *ending = entry.ending;
            return true;
        }
    }
    return false;
}

QStringList LineEndings::names()
{
    QStringList list;
    for (const Entry &entry : Entries)
        list.append(QString::fromLatin1(entry.name));
    return list;
}
