#include "Recording.h"

#include "LineParser.h"
#include "NumberParser.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStringView>

#include <algorithm>
#include <cmath>
#include <vector>

/*
 * Reading a recording, line by line (a line ends with a line feed):
 *
 * - The line is trimmed; empty lines and lines starting with "#" are skipped.
 *   A last line without its line feed (the writer was cut off, e.g. by a
 *   crash) is skipped as well, since it may be incomplete.
 * - The first token is the time; a line whose first token is not a finite
 *   number is skipped.
 * - A second token that is exactly "RAW" makes the remaining tokens, joined
 *   with single spaces, the line's message (the form a person would write);
 *   an empty message is dropped.
 * - A second token that starts with "RAW" and has no "=" ("RAWhello") is a
 *   message as the writer puts it: the message is the line's text after
 *   "RAW". "RAW=5" is the value of a signal named RAW; the writer puts a
 *   message that starts with "=" after "RAW " instead.
 * - Anything else is read with the device's token rules: ST_<group>=<state>
 *   is a state, ERR=<id> an error, any other key with a numeric value a
 *   value; words that fit no rule are ignored.
 * - A frame is what one device line brought: the writer puts its states and
 *   errors (in token order), its value set and its message on lines of
 *   their own, in that order and with the same time. So consecutive lines
 *   with the same time form one frame while they keep that order; a second
 *   value set (or message, or a state or error after a value set) starts a
 *   new frame, so that no recorded value overwrites another. Within one
 *   line, a repeated value keeps the last. A line that carries nothing
 *   (only a time, or only malformed words) adds no frame.
 * - A time that goes backwards (a device that restarted its clock) starts a
 *   new frame with its own time; frames stay in file order. Positions (the
 *   slider, seeking, the duration) follow the largest time so far.
 */

namespace {
constexpr qint64 ChunkBytes = 4 * 1024 * 1024;
constexpr qint64 MinChunkBytes = 64 * 1024;
const QChar Bom(0xFEFF);

// A plain character test: it runs for a million lines, where the general
// string functions cost more than the comparison.
bool startsWithRaw(QStringView s)
{
    return s.size() >= 3 && s[0] == u'R' && s[1] == u'A' && s[2] == u'W';
}
} // namespace

class RecordingLoader
{
public:
    explicit RecordingLoader(Recording &target) : r(target) { }

    void reserveFor(qint64 fileBytes);
    void addLine(QStringView line);
    void finish();

private:
    // What a frame holds, in the order the writer puts a device line's parts.
    enum Part { Events, Values, Message };

    // The frame of the current line, created on its first content, so that
    // a line that carries nothing adds no frame; `part` is what it adds.
    int currentFrame(Part part);
    void addMessage(QString text);
    void addToken(QStringView token, qsizetype equals);
    void setValue(int name, double value);
    int internName(QStringView name);
    int internWord(QStringView word);

    Recording &r;
    QHash<QStringView, int> m_nameIndex; // views into r.m_names
    QHash<QStringView, int> m_wordIndex; // views into r.m_words
    std::vector<int> m_nameAtOrdinal; // name index last seen at each token position
    int m_tokenOrdinal = 0;
    double m_lineTime = 0.0;
    bool m_lineHasFrame = false;
    Part m_framePart = Events;      // the last part the open frame took
    bool m_frameHasValues = false;
    bool m_frameHasMessage = false;
};

void RecordingLoader::reserveFor(qint64 fileBytes)
{
    // A typical line is 40-80 bytes with a few values; squeezed at the end.
    const qint64 lines = fileBytes / 48 + 16;
    r.m_times.reserve(lines);
    r.m_positions.reserve(lines);
    r.m_valueBegin.reserve(lines + 1);
    r.m_valueNames.reserve(lines * 3);
    r.m_values.reserve(lines * 3);
}

void RecordingLoader::addLine(QStringView line)
{
    line = line.trimmed();
    if (line.isEmpty() || line.startsWith(u'#'))
        return;
    qsizetype pos = 0;
    qsizetype equals = -1;
    const QStringView first = LineParser::nextToken(line, pos);
    bool ok = false;
    const double t = NumberParser::toDouble(first, &ok);
    if (!ok || !std::isfinite(t))
        return;
    m_lineTime = t;
    m_lineHasFrame = false;

    const QStringView second = LineParser::nextToken(line, pos, equals);
    if (second.isNull())
        return;
    if (second.size() == 3 && startsWithRaw(second)) {
        QStringList words;
        for (QStringView w = LineParser::nextToken(line, pos); !w.isNull(); w = LineParser::nextToken(line, pos))
            words.append(w.toString());
        addMessage(words.join(QLatin1Char(' ')));
        return;
    }
    if (startsWithRaw(second) && equals < 0) {
        const qsizetype textStart = (second.data() - line.data()) + 3;
        addMessage(line.sliced(textStart).toString());
        return;
    }
    m_tokenOrdinal = 0;
    for (QStringView token = second; !token.isNull(); token = LineParser::nextToken(line, pos, equals))
        addToken(token, equals);
}

int RecordingLoader::currentFrame(Part part)
{
    if (!m_lineHasFrame) {
        m_lineHasFrame = true;
        const bool joins = !r.m_times.isEmpty() && m_lineTime == r.m_times.constLast() && part >= m_framePart
            && !(part == Values && m_frameHasValues) && !(part == Message && m_frameHasMessage);
        if (!joins) {
            const double position = r.m_positions.isEmpty() ? m_lineTime
                                                            : std::max(m_lineTime, r.m_positions.constLast());
            r.m_times.append(m_lineTime);
            r.m_positions.append(position);
            if (r.m_valueBegin.isEmpty())
                r.m_valueBegin.append(0);
            r.m_valueBegin.append(int(r.m_values.size()));
            m_frameHasValues = false;
            m_frameHasMessage = false;
            m_framePart = Events;
        }
    }
    m_framePart = std::max(m_framePart, part);
    m_frameHasValues |= part == Values;
    m_frameHasMessage |= part == Message;
    return int(r.m_times.size()) - 1;
}

void RecordingLoader::addMessage(QString text)
{
    if (text.isEmpty())
        return;
    const int frame = currentFrame(Message);
    r.m_messages.append({frame, int(r.m_messageTexts.size())});
    r.m_messageTexts.append(std::move(text));
}

void RecordingLoader::addToken(QStringView token, qsizetype equals)
{
    ++m_tokenOrdinal;
    const LineToken read = LineParser::readToken(token, equals);
    switch (read.kind) {
    case LineToken::State:
        r.m_states.append({currentFrame(Events), internWord(read.key), internWord(read.value)});
        break;
    case LineToken::Error:
        r.m_errors.append({currentFrame(Events), internWord(read.value)});
        break;
    case LineToken::Value:
        currentFrame(Values);
        setValue(internName(read.key), read.number);
        break;
    case LineToken::Word:
    case LineToken::Dropped:
        break;
    }
}

void RecordingLoader::setValue(int name, double value)
{
    // The open frame's values start at the second-to-last range mark.
    const int frameBegin = r.m_valueBegin.at(r.m_valueBegin.size() - 2);
    for (int i = frameBegin; i < r.m_values.size(); ++i) {
        if (r.m_valueNames.at(i) == name) {
            r.m_values[i] = value;
            return;
        }
    }
    r.m_valueNames.append(name);
    r.m_values.append(value);
    r.m_valueBegin.last() = int(r.m_values.size());
}

int RecordingLoader::internName(QStringView name)
{
    // Lines of one device name their signals in the same order: the name
    // seen at this token position last time is the likely one.
    const size_t slot = size_t(m_tokenOrdinal) - 1;
    if (slot < m_nameAtOrdinal.size()) {
        const int guess = m_nameAtOrdinal[slot];
        if (guess >= 0 && QStringView(r.m_names.at(guess)) == name)
            return guess;
    } else {
        m_nameAtOrdinal.resize(slot + 1, -1);
    }
    int index;
    const auto it = m_nameIndex.constFind(name);
    if (it != m_nameIndex.cend()) {
        index = it.value();
    } else {
        index = int(r.m_names.size());
        r.m_names.append(name.toString());
        m_nameIndex.insert(QStringView(r.m_names.constLast()), index);
    }
    m_nameAtOrdinal[slot] = index;
    return index;
}

int RecordingLoader::internWord(QStringView word)
{
    const auto it = m_wordIndex.constFind(word);
    if (it != m_wordIndex.cend())
        return it.value();
    const int index = int(r.m_words.size());
    r.m_words.append(word.toString());
    m_wordIndex.insert(QStringView(r.m_words.constLast()), index);
    return index;
}

void RecordingLoader::finish()
{
    if (r.m_valueBegin.isEmpty())
        r.m_valueBegin.append(0);
    r.m_valueFrameUpTo.resize(r.m_times.size());
    int lastWithValues = -1;
    for (int frame = 0; frame < r.m_times.size(); ++frame) {
        if (r.m_valueBegin.at(frame + 1) > r.m_valueBegin.at(frame))
            lastWithValues = frame;
        r.m_valueFrameUpTo[frame] = lastWithValues;
    }
    r.m_times.squeeze();
    r.m_positions.squeeze();
    r.m_valueBegin.squeeze();
    r.m_valueNames.squeeze();
    r.m_values.squeeze();
    r.m_states.squeeze();
    r.m_errors.squeeze();
    r.m_messages.squeeze();
    r.m_messageTexts.squeeze();
}

bool Recording::load(const QString &path, const Progress &progress)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_errorString = QObject::tr("Could not open file: %1 (%2)").arg(path, file.errorString());
        return false;
    }
    return read(file, path, progress);
}

bool Recording::loadFromBytes(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return read(buffer, QString(), {});
}

bool Recording::read(QIODevice &device, const QString &path, const Progress &progress)
{
    const qint64 total = device.size();
    Recording next;
    next.m_path = path;
    RecordingLoader loader(next);
    loader.reserveFor(total);

    QByteArray bytes;
    qint64 done = 0;
    bool atStart = true;
    while (true) {
        // What is left of the file, and one byte more to see its end, in
        // chunks of a bounded size: a small file takes a small buffer.
        const qint64 chunk = std::clamp(total - done + 1, MinChunkBytes, ChunkBytes);
        const qsizetype carried = bytes.size();
        bytes.resize(carried + chunk);
        const qint64 got = device.read(bytes.data() + carried, chunk);
        if (got < 0) {
            m_errorString = QObject::tr("Could not read file: %1").arg(path);
            return false;
        }
        bytes.resize(carried + got);
        done += got;
        const qsizetype lastFeed = bytes.lastIndexOf('\n');
        if (lastFeed >= 0) {
            // Only whole lines are decoded, so no UTF-8 sequence is split.
            QString text = QString::fromUtf8(bytes.constData(), lastFeed + 1);
            QStringView view(text);
            if (atStart && view.startsWith(Bom))
                view = view.sliced(1);
            atStart = false;
            qsizetype from = 0;
            for (qsizetype feed = view.indexOf(u'\n'); feed >= 0; feed = view.indexOf(u'\n', from)) {
                loader.addLine(view.sliced(from, feed - from));
                from = feed + 1;
            }
            bytes.remove(0, lastFeed + 1);
        }
        if (progress && !progress(done, total)) {
            m_errorString = QObject::tr("Loading cancelled.");
            return false;
        }
        if (got == 0)
            break; // what is left has no line feed: a cut last line
    }
    loader.finish();
    *this = std::move(next);
    return true;
}

QString Recording::errorString() const
{
    return m_errorString;
}

QString Recording::path() const
{
    return m_path;
}

int Recording::frameCount() const
{
    return int(m_times.size());
}

double Recording::duration() const
{
    return m_positions.isEmpty() ? 0.0 : m_positions.constLast();
}

double Recording::timeAt(int index) const
{
    return m_times.at(index);
}

int Recording::indexAtOrAfter(double t) const
{
    return int(std::lower_bound(m_positions.cbegin(), m_positions.cend(), t) - m_positions.cbegin());
}

QMap<QString, double> Recording::valuesAt(int index) const
{
    QMap<QString, double> values;
    const int end = m_valueBegin.at(index + 1);
    for (int i = m_valueBegin.at(index); i < end; ++i)
        values.insert(m_names.at(m_valueNames.at(i)), m_values.at(i));
    return values;
}

namespace {
template<typename Entry>
int prefixUpTo(const QList<Entry> &entries, int lastFrame)
{
    const auto greater = [](int f, const Entry &e) { return f < e.frame; };
    return int(std::upper_bound(entries.cbegin(), entries.cend(), lastFrame, greater) - entries.cbegin());
}
} // namespace

int Recording::countUpTo(const QList<StateEntry> &entries, int lastFrame)
{
    return prefixUpTo(entries, lastFrame);
}

int Recording::countUpTo(const QList<IdEntry> &entries, int lastFrame)
{
    return prefixUpTo(entries, lastFrame);
}

PlaybackFrame Recording::frameAt(int index) const
{
    PlaybackFrame frame;
    frame.t = m_times.at(index);
    frame.values = valuesAt(index);
    for (int i = countUpTo(m_states, index - 1), end = countUpTo(m_states, index); i < end; ++i)
        frame.states.append({m_words.at(m_states.at(i).group), m_words.at(m_states.at(i).state)});
    for (int i = countUpTo(m_errors, index - 1), end = countUpTo(m_errors, index); i < end; ++i)
        frame.errors.append(m_words.at(m_errors.at(i).id));
    for (int i = countUpTo(m_messages, index - 1), end = countUpTo(m_messages, index); i < end; ++i)
        frame.messages.append(m_messageTexts.at(m_messages.at(i).id));
    return frame;
}

QStringList Recording::signalNames() const
{
    QStringList names = m_names;
    names.sort();
    return names;
}

QString Recording::companionPathFor(const QString &recordingPath)
{
    const QFileInfo info(recordingPath);
    return info.dir().filePath(info.completeBaseName() % QStringLiteral(".signals.h"));
}
