// Feeds arbitrary bytes through the serial reader's receive path
// (SerialManager::processBytes: line framing, decoding, the line grammar) in
// pieces whose sizes the input chooses, and checks what must always hold:
// the signals are the same as when the bytes arrive in one piece, each
// line's signals equal those of a fresh parse of its raw text, and every
// number conversion agrees with QString::toDouble.
#include "LineParser.h"
#include "NumberParser.h"
#include "SerialManager.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

QString number(double value)
{
    return QString::number(value, 'g', 17);
}

QString valuesEntry(const QMap<QString, double> &values)
{
    QStringList pairs;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        pairs.append(it.key() + u'=' + number(it.value()));
    return u"values " + pairs.join(u',');
}

// Every signal of a SerialManager as one entry, in emission order.
void listen(SerialManager &manager, QStringList &log)
{
    QObject::connect(&manager, &SerialManager::rawLineReceived, [&log](double t, const QString &raw) {
        log.append(u"raw " + number(t) + u' ' + raw);
    });
    QObject::connect(&manager, &SerialManager::stateParsed, [&log](double, const QString &group, const QString &state) {
        log.append(u"state " + group + u'/' + state);
    });
    QObject::connect(&manager, &SerialManager::errorParsed,
                     [&log](double, const QString &id) { log.append(u"error " + id); });
    QObject::connect(&manager, &SerialManager::lineParsed,
                     [&log](double, const QMap<QString, double> &values) { log.append(valuesEntry(values)); });
    QObject::connect(&manager, &SerialManager::unrecognizedParsed,
                     [&log](double, const QString &text) { log.append(u"words " + text); });
}

// The entries SerialManager emits for one line, from a parse of its own.
void appendFreshParse(const QString &raw, QStringList &expected)
{
    ParsedLine fresh;
    if (!LineParser::parse(QStringView(raw), 0.0, fresh))
        std::abort(); // an emitted line always has a token
    expected.append(u"raw " + number(fresh.timestamp) + u' ' + fresh.line);
    for (const LineEvent &event : std::as_const(fresh.events)) {
        if (event.kind == LineEvent::State)
            expected.append(u"state " + event.groupId + u'/' + event.id);
        else
            expected.append(u"error " + event.id);
    }
    if (!fresh.values.isEmpty())
        expected.append(valuesEntry(fresh.values));
    if (!fresh.unrecognized.isEmpty())
        expected.append(u"words " + fresh.unrecognizedText());
}

void checkNumber(QStringView text)
{
    bool expectedOk = false;
    bool actualOk = false;
    const double expected = text.toString().toDouble(&expectedOk);
    const double actual = NumberParser::toDouble(text, &actualOk);
    if (expectedOk != actualOk || (expectedOk && std::memcmp(&expected, &actual, sizeof expected) != 0))
        std::abort();
}

void checkNumbers(const QString &raw)
{
    qsizetype pos = 0;
    for (QStringView token = LineParser::nextToken(raw, pos); !token.isNull(); token = LineParser::nextToken(raw, pos)) {
        checkNumber(token);
        const qsizetype equals = token.indexOf(u'=');
        if (equals >= 0)
            checkNumber(token.sliced(equals + 1));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const qsizetype piece = 1 + data[0] % 64;
    const QByteArrayView input(reinterpret_cast<const char *>(data) + 1, qsizetype(size - 1));

    QStringList inPieces;
    SerialManager chunked;
    listen(chunked, inPieces);
    for (qsizetype at = 0; at < input.size(); at += piece)
        chunked.processBytes(input.sliced(at, qMin(piece, input.size() - at)));

    QStringList atOnce;
    SerialManager whole;
    listen(whole, atOnce);
    whole.processBytes(input);
    if (inPieces != atOnce)
        std::abort();

    QStringList expected;
    for (const QString &entry : std::as_const(inPieces)) {
        if (!entry.startsWith(u"raw "))
            continue;
        const QString raw = entry.sliced(entry.indexOf(u' ', 4) + 1);
        appendFreshParse(raw, expected);
        checkNumbers(raw);
    }
    if (expected != inPieces)
        std::abort();
    return 0;
}
