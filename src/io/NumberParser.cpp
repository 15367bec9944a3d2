#include "NumberParser.h"

#include <QString>

#include <charconv>
#include <cmath>

namespace {

// Longer texts go to the fallback; a device never sends them.
constexpr qsizetype MaxPlainLength = 32;

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

// Letters that may belong to a number QString::toDouble takes ("inf", "nan", "e").
bool mayBelongToNumber(char16_t c)
{
    switch (c | 0x20) {
    case u'e':
    case u'i':
    case u'n':
    case u'f':
    case u'a':
        return true;
    default:
        return false;
    }
}

} // namespace

double NumberParser::toDouble(QStringView text, bool *ok)
{
    char buffer[MaxPlainLength + 1];
    qsizetype length = 0;
    bool nonZeroDigit = false;
    switch (scanPlain(text, buffer, length, nonZeroDigit)) {
    case Verdict::NotANumber:
        if (ok)
            *ok = false;
        return 0.0;
    case Verdict::Unsure:
        return fallback(text, ok);
    case Verdict::Number:
        break;
    }

    double value = 0.0;
    const auto result = std::from_chars(buffer, buffer + length, value, std::chars_format::general);
    if (result.ec != std::errc() || result.ptr != buffer + length)
        return fallback(text, ok);
    // Overflow, underflow and subnormals follow QString::toDouble's own rules.
    if (value == 0.0 ? nonZeroDigit : !std::isnormal(value))
        return fallback(text, ok);
    if (ok)
        *ok = true;
    return value;
}

// Checks text against [+-]?digits[.digits][(e|E)[+-]?digits] and copies it
// (without a leading '+') into buffer for std::from_chars.
NumberParser::Verdict NumberParser::scanPlain(QStringView text, char *buffer, qsizetype &length,
                                              bool &nonZeroDigit)
{
    const qsizetype size = text.size();
    if (size == 0)
        return Verdict::NotANumber;
    if (size > MaxPlainLength)
        return Verdict::Unsure;
    const char16_t *s = text.utf16();
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t c = s[i];
        if (c >= 0x80 || c <= u' ' || mayBelongToNumber(c))
            continue;
        if (!isDigit(c) && c != u'+' && c != u'-' && c != u'.')
            return Verdict::NotANumber; // '=', ',', 'x', punctuation...
    }

    qsizetype i = 0;
    length = 0;
    if (s[i] == u'+' || s[i] == u'-') {
        if (s[i] == u'-')
            buffer[length++] = '-';
        ++i;
    }
    int mantissaDigits = 0;
    for (; i < size && isDigit(s[i]); ++i, ++mantissaDigits) {
        nonZeroDigit |= s[i] != u'0';
        buffer[length++] = char(s[i]);
    }
    if (i < size && s[i] == u'.') {
        buffer[length++] = '.';
        for (++i; i < size && isDigit(s[i]); ++i, ++mantissaDigits) {
            nonZeroDigit |= s[i] != u'0';
            buffer[length++] = char(s[i]);
        }
    }
    if (mantissaDigits == 0)
        return Verdict::Unsure;
    if (i < size && (s[i] == u'e' || s[i] == u'E')) {
        buffer[length++] = 'e';
        ++i;
        if (i < size && (s[i] == u'+' || s[i] == u'-'))
            buffer[length++] = char(s[i++]);
        const qsizetype exponentStart = i;
        for (; i < size && isDigit(s[i]); ++i)
            buffer[length++] = char(s[i]);
        if (i == exponentStart)
            return Verdict::Unsure;
    }
    return i == size ? Verdict::Number : Verdict::Unsure;
}

double NumberParser::fallback(QStringView text, bool *ok)
{
    bool converted = false;
    const double value = text.toString().toDouble(&converted);
    if (ok)
        *ok = converted;
    return value;
}
