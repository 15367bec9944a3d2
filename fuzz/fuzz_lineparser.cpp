// Feeds arbitrary bytes through the line framing and the line grammar, in
// pieces whose sizes the input chooses, and checks what must always hold:
// a reused result equals a fresh one, and every number conversion agrees
// with QString::toDouble.
#include "LineFramer.h"
#include "LineParser.h"
#include "NumberParser.h"

#include <QString>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

void checkNumber(QStringView text)
{
    bool expectedOk = false;
    bool actualOk = false;
    const double expected = text.toString().toDouble(&expectedOk);
    const double actual = NumberParser::toDouble(text, &actualOk);
    if (expectedOk != actualOk || (expectedOk && std::memcmp(&expected, &actual, sizeof expected) != 0))
        std::abort();
}

void checkLine(QByteArrayView bytes, ParsedLine &reused)
{
    const QString text = QString::fromUtf8(bytes).trimmed();
    ParsedLine fresh;
    const bool parsed = LineParser::parse(text, 1.5, fresh);
    if (LineParser::parse(text, 1.5, reused) != parsed || !parsed)
        return;
    if (reused.values != fresh.values || reused.events.size() != fresh.events.size()
        || reused.unrecognized != fresh.unrecognized || reused.timestamp != fresh.timestamp)
        std::abort();
    qsizetype pos = 0;
    for (QStringView token = LineParser::nextToken(text, pos); !token.isNull(); token = LineParser::nextToken(text, pos)) {
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
    LineFramer framer;
    ParsedLine reused;
    for (qsizetype at = 0; at < input.size(); at += piece) {
        framer.append(input.sliced(at, qMin(piece, input.size() - at)));
        QByteArrayView line;
        while (framer.takeLine(line))
            checkLine(line, reused);
    }
    return 0;
}
