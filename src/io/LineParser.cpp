#include "LineParser.h"

#include "NumberParser.h"

#include <QHashFunctions>

#include <vector>

namespace {

// Keys and ids seen before, so that a steady stream of the same names shares
// one QString each instead of allocating a new one per token. Bounded: a
// stream of ever new names resets the table now and then.
class InternTable
{
public:
    QString intern(QStringView text)
    {
        if (text.isEmpty())
            return QString();
        if (m_slots.empty() || m_used * 2 >= m_slots.size())
            grow();
        const size_t mask = m_slots.size() - 1;
        size_t i = qHash(text, 0) & mask;
        while (!m_slots[i].isNull()) {
            if (QStringView(m_slots[i]) == text)
                return m_slots[i];
            i = (i + 1) & mask;
        }
        m_slots[i] = text.toString();
        ++m_used;
        return m_slots[i];
    }

private:
    static constexpr size_t MaxEntries = 4096;

    void grow()
    {
        std::vector<QString> old;
        old.swap(m_slots);
        if (m_used >= MaxEntries) {
            old.clear();
            m_used = 0;
        }
        m_slots.resize(old.empty() ? 64 : old.size() * 2);
        const size_t mask = m_slots.size() - 1;
        for (QString &entry : old) {
            if (entry.isNull())
                continue;
            size_t i = qHash(QStringView(entry), 0) & mask;
            while (!m_slots[i].isNull())
                i = (i + 1) & mask;
            m_slots[i] = std::move(entry);
        }
    }

    std::vector<QString> m_slots;
    size_t m_used = 0;
};

QString intern(QStringView text)
{
    thread_local InternTable table;
    return table.intern(text);
}

} // namespace

void ParsedLine::clear()
{
    timestamp = 0.0;
    ownTimestamp = false;
    line.clear();
    events.clear();
    values.clear();
    unrecognized.clear();
}

bool LineParser::parse(QStringView trimmedLine, double defaultTimestamp, ParsedLine &out)
{
    out.clear();
    qsizetype probe = 0;
    if (nextToken(trimmedLine, probe).isNull())
        return false;
    return parse(trimmedLine.toString(), defaultTimestamp, out);
}

bool LineParser::parse(const QString &trimmedLine, double defaultTimestamp, ParsedLine &out)
{
    out.clear();
    const QStringView text(trimmedLine);
    qsizetype pos = 0;
    const QStringView first = nextToken(text, pos);
    if (first.isNull())
        return false;
    out.line = trimmedLine;
    bool ok = false;
    const double own = NumberParser::toDouble(first, &ok);
    out.ownTimestamp = ok;
    out.timestamp = ok ? own : defaultTimestamp;
    if (!ok)
        parseToken(first, out);
    for (QStringView token = nextToken(text, pos); !token.isNull(); token = nextToken(text, pos))
        parseToken(token, out);
    return true;
}

void LineParser::parseTokens(QStringView text, ParsedLine &out)
{
    qsizetype pos = 0;
    for (QStringView token = nextToken(text, pos); !token.isNull(); token = nextToken(text, pos))
        parseToken(token, out);
}

void LineParser::parseToken(QStringView token, ParsedLine &out)
{
    const qsizetype equals = token.indexOf(u'=');
    if (equals <= 0) {
        out.unrecognized.append(token.toString());
        return;
    }
    const QStringView key = token.first(equals).trimmed();
    const QStringView value = token.sliced(equals + 1).trimmed();
    if (key.startsWith(u"ST_")) {
        const QStringView group = key.sliced(3);
        if (!group.isEmpty() && !value.isEmpty())
            out.events.append({LineEvent::State, intern(group), intern(value)});
        return;
    }
    if (key == u"ERR") {
        if (!value.isEmpty())
            out.events.append({LineEvent::Error, QString(), intern(value)});
        return;
    }
    bool ok = false;
    const double number = NumberParser::toDouble(value, &ok);
    if (ok)
        out.values.insert(intern(key), number);
}

QStringView LineParser::nextToken(QStringView text, qsizetype &pos)
{
    const qsizetype size = text.size();
    const QChar *data = text.data();
    qsizetype start = pos;
    while (start < size && isSeparator(data[start]))
        ++start;
    if (start >= size) {
        pos = size;
        return {};
    }
    qsizetype end = start + 1;
    while (end < size && !isSeparator(data[end]))
        ++end;
    pos = end;
    return text.sliced(start, end - start);
}
