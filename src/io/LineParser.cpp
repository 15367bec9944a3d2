#include "LineParser.h"

#include "NumberParser.h"

#include <QHashFunctions>
#include <QVarLengthArray>

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

// The values of one line in token order, before they go into the map.
struct PendingValue
{
    QStringView key;
    double value;
};
using PendingValues = QVarLengthArray<PendingValue, 16>;

// Lines with more values than this rebuild their map every time.
constexpr qsizetype MaxShapeSize = 64;

// QStringView::trimmed, skipped when both ends are plainly not white space.
QStringView trimmedToken(QStringView text)
{
    if (text.isEmpty())
        return text;
    const char16_t first = text.front().unicode();
    const char16_t last = text.back().unicode();
    if (first > u' ' && first < 0x80 && last > u' ' && last < 0x80)
        return text;
    return text.trimmed();
}

bool isStateKey(QStringView key)
{
    return key.size() >= 3 && key[0] == u'S' && key[1] == u'T' && key[2] == u'_';
}

bool isErrorKey(QStringView key)
{
    return key.size() == 3 && key[0] == u'E' && key[1] == u'R' && key[2] == u'R';
}

// The next token at or after pos and the position of its first '=' (-1 when
// none), inlined into the receive path.
inline QStringView scanToken(QStringView text, qsizetype &pos, qsizetype &equals)
{
    const qsizetype size = text.size();
    const QChar *data = text.data();
    qsizetype start = pos;
    while (start < size && LineParser::isSeparator(data[start]))
        ++start;
    if (start >= size) {
        pos = size;
        return {};
    }
    equals = -1;
    qsizetype end = start;
    for (; end < size && !LineParser::isSeparator(data[end]); ++end) {
        if (equals < 0 && data[end] == u'=')
            equals = end - start;
    }
    pos = end;
    return text.sliced(start, end - start);
}

// The token rules, inlined into the receive path.
inline LineToken readTokenInline(QStringView token, qsizetype equals)
{
    LineToken read;
    if (equals <= 0) {
        read.kind = LineToken::Word;
        return read;
    }
    const QStringView key = trimmedToken(token.first(equals));
    read.value = trimmedToken(token.sliced(equals + 1));
    if (isStateKey(key)) {
        read.key = key.sliced(3);
        if (!read.key.isEmpty() && !read.value.isEmpty())
            read.kind = LineToken::State;
        return read;
    }
    if (isErrorKey(key)) {
        if (!read.value.isEmpty())
            read.kind = LineToken::Error;
        return read;
    }
    bool ok = false;
    read.number = NumberParser::toDouble(read.value, &ok);
    if (ok) {
        read.kind = LineToken::Value;
        read.key = key;
    }
    return read;
}

void applyToken(QStringView token, qsizetype equals, ParsedLine &out, PendingValues &pending)
{
    const LineToken read = readTokenInline(token, equals);
    switch (read.kind) {
    case LineToken::Word:
        out.unrecognized.append(token.toString());
        break;
    case LineToken::State:
        out.events.append({LineEvent::State, intern(read.key), intern(read.value)});
        break;
    case LineToken::Error:
        out.events.append({LineEvent::Error, QString(), intern(read.value)});
        break;
    case LineToken::Value:
        pending.append({read.key, read.number});
        break;
    case LineToken::Dropped:
        break;
    }
}

// True when the line has the keys of the last line, in the same order.
bool sameKeys(const ValueShape &shape, const PendingValues &pending)
{
    if (shape.keys.size() != pending.size())
        return false;
    for (qsizetype i = 0; i < pending.size(); ++i) {
        if (QStringView(shape.keys.at(i)) != pending.at(i).key)
            return false;
    }
    return true;
}

// The map's entries when it still holds exactly the keys the shape recorded
// and nobody shares it; empty otherwise.
QVarLengthArray<QMap<QString, double>::iterator, 16> ownEntries(ParsedLine &out)
{
    QVarLengthArray<QMap<QString, double>::iterator, 16> entries;
    const QStringList &sorted = out.shape.sortedKeys;
    if (!out.values.isDetached() || out.values.size() != sorted.size())
        return entries;
    qsizetype j = 0;
    for (auto it = out.values.begin(); it != out.values.end(); ++it, ++j) {
        if (it.key().constData() != sorted.at(j).constData()) {
            entries.clear();
            break;
        }
        entries.append(it);
    }
    return entries;
}

void rebuildValues(ParsedLine &out, const PendingValues &pending)
{
    ValueShape &shape = out.shape;
    out.values.clear();
    shape = {};
    for (const PendingValue &item : pending)
        out.values.insert(intern(item.key), item.value);
    if (pending.size() > MaxShapeSize)
        return;
    shape.sortedKeys = out.values.keys();
    for (const PendingValue &item : pending) {
        const auto it = out.values.constFind(item.key.toString());
        shape.keys.append(it.key());
        shape.slots.append(int(std::distance(out.values.cbegin(), it)));
    }
}

void storeValues(ParsedLine &out, const PendingValues &pending)
{
    if (pending.isEmpty()) {
        out.values.clear();
        return;
    }
    const ValueShape &shape = out.shape;
    if (!sameKeys(shape, pending)) {
        rebuildValues(out, pending);
        return;
    }
    auto entries = ownEntries(out);
    if (!entries.isEmpty()) {
        for (qsizetype i = 0; i < pending.size(); ++i)
            entries[shape.slots.at(i)].value() = pending.at(i).value; // a repeated key keeps the last
        return;
    }
    // A receiver kept the last map: build a new one in key order, appending
    // at the end so that no key is compared.
    QVarLengthArray<double, 16> sorted(shape.sortedKeys.size());
    for (qsizetype i = 0; i < pending.size(); ++i)
        sorted[shape.slots.at(i)] = pending.at(i).value;
    QMap<QString, double> fresh;
    for (qsizetype j = 0; j < sorted.size(); ++j)
        fresh.insert(fresh.cend(), shape.sortedKeys.at(j), sorted.at(j));
    out.values = std::move(fresh);
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
    shape = {};
}

bool LineParser::parse(QStringView trimmedLine, double defaultTimestamp, ParsedLine &out)
{
    qsizetype probe = 0;
    if (nextToken(trimmedLine, probe).isNull()) {
        out.clear();
        return false;
    }
    return parse(trimmedLine.toString(), defaultTimestamp, out);
}

bool LineParser::parse(const QString &trimmedLine, double defaultTimestamp, ParsedLine &out)
{
    out.events.clear();
    out.unrecognized.clear();
    const QStringView text(trimmedLine);
    qsizetype pos = 0;
    qsizetype equals = -1;
    const QStringView first = scanToken(text, pos, equals);
    if (first.isNull()) {
        out.clear();
        return false;
    }
    out.line = trimmedLine;
    bool ok = false;
    const double own = equals < 0 ? NumberParser::toDouble(first, &ok) : 0.0;
    out.ownTimestamp = ok;
    out.timestamp = ok ? own : defaultTimestamp;
    PendingValues pending;
    if (!ok)
        applyToken(first, equals, out, pending);
    for (QStringView token = scanToken(text, pos, equals); !token.isNull(); token = scanToken(text, pos, equals))
        applyToken(token, equals, out, pending);
    storeValues(out, pending);
    return true;
}

LineToken LineParser::readToken(QStringView token, qsizetype equals)
{
    return readTokenInline(token, equals);
}

QStringView LineParser::nextToken(QStringView text, qsizetype &pos)
{
    qsizetype equals = -1;
    return nextToken(text, pos, equals);
}

QStringView LineParser::nextToken(QStringView text, qsizetype &pos, qsizetype &equals)
{
    return scanToken(text, pos, equals);
}
