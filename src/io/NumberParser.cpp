#include "NumberParser.h"

#include <QString>

#include <charconv>
#include <cmath>

namespace {

// Longer texts go to QString; a device never sends them.
constexpr qsizetype MaxPlainLength = 32;

// Up to 15 significant digits and a power of ten up to 22 are both exact
// doubles, so one multiplication or division rounds correctly.
constexpr int MaxExactDigits = 15;
constexpr int MaxExactPower = 22;
constexpr double PowersOfTen[MaxExactPower + 1] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

// Letters or characters that may belong to a number QString::toDouble
// takes in some spelling ("inf", "nan", white space, non-ASCII).
bool needsQString(char16_t c)
{
    if (c >= 0x80 || c <= u' ')
        return true;
    switch (c | 0x20) {
    case u'i':
    case u'n':
    case u'f':
    case u'a':
        return true;
    default:
        return false;
    }
}

// A text of the form [+-]digits[.digits][(e|E)[+-]digits], scanned once.
struct PlainDecimal
{
    enum Verdict { Number, NotANumber, Unsure };

    Verdict verdict = Unsure;
    bool negative = false;
    quint64 mantissa = 0; // the first MaxExactDigits significant digits
    int significantDigits = 0;
    int power = 0;        // value = mantissa * 10^power, while exact()

    explicit PlainDecimal(QStringView text)
    {
        const char16_t *s = text.utf16();
        const qsizetype size = text.size();
        qsizetype i = 0;
        if (s[0] == u'+' || s[0] == u'-')
            negative = s[i++] == u'-';
        int digits = 0;
        for (; i < size && isDigit(s[i]); ++i, ++digits)
            addDigit(s[i], false);
        if (i < size && s[i] == u'.') {
            for (++i; i < size && isDigit(s[i]); ++i, ++digits)
                addDigit(s[i], true);
        }
        if (digits == 0) {
            decide(s, size);
            return;
        }
        if (i < size && (s[i] == u'e' || s[i] == u'E')) {
            ++i;
            const bool negativePower = i < size && s[i] == u'-';
            if (i < size && (s[i] == u'+' || s[i] == u'-'))
                ++i;
            const qsizetype start = i;
            int exponent = 0;
            for (; i < size && isDigit(s[i]); ++i)
                exponent = qMin(exponent * 10 + int(s[i] - u'0'), 100000);
            if (i == start) {
                decide(s, size);
                return;
            }
            power += negativePower ? -exponent : exponent;
        }
        if (i < size) {
            decide(s, size);
            return;
        }
        verdict = Number;
    }

    void addDigit(char16_t c, bool fraction)
    {
        if (c == u'0' && significantDigits == 0) {
            power -= fraction; // a leading zero
            return;
        }
        // Beyond the exact digits std::from_chars reads the text itself.
        if (++significantDigits <= MaxExactDigits) {
            mantissa = mantissa * 10 + quint64(c - u'0');
            power -= fraction;
        }
    }

    // The text left the plain form: certainly no number unless some
    // character could still make QString::toDouble take it.
    void decide(const char16_t *s, qsizetype size)
    {
        verdict = NotANumber;
        for (qsizetype j = 0; j < size && verdict == NotANumber; ++j) {
            if (needsQString(s[j]))
                verdict = Unsure;
        }
    }

    bool exact() const
    {
        return significantDigits <= MaxExactDigits && power >= -MaxExactPower && power <= MaxExactPower;
    }

    double exactValue() const
    {
        const double m = double(mantissa);
        const double value = power < 0 ? m / PowersOfTen[-power] : m * PowersOfTen[power];
        return negative ? -value : value;
    }
};

} // namespace

double NumberParser::toDouble(QStringView text, bool *ok)
{
    if (text.isEmpty()) {
        if (ok)
            *ok = false;
        return 0.0;
    }
    if (text.size() > MaxPlainLength)
        return viaQString(text, ok);
    const PlainDecimal decimal(text);
    switch (decimal.verdict) {
    case PlainDecimal::NotANumber:
        if (ok)
            *ok = false;
        return 0.0;
    case PlainDecimal::Unsure:
        return viaQString(text, ok);
    case PlainDecimal::Number:
        break;
    }
    if (decimal.mantissa == 0 && decimal.significantDigits == 0) {
        if (ok)
            *ok = true;
        return decimal.negative ? -0.0 : 0.0;
    }
    if (decimal.exact()) {
        if (ok)
            *ok = true;
        return decimal.exactValue();
    }
    return viaFromChars(text, ok);
}

// Correctly rounded like QString::toDouble; overflow, underflow and
// subnormals are left to QString so that its verdicts hold.
double NumberParser::viaFromChars(QStringView text, bool *ok)
{
    char buffer[MaxPlainLength];
    qsizetype length = 0;
    for (const QChar c : text) {
        if (c != u'+' || length > 0)
            buffer[length++] = char(c.unicode());
    }
    double value = 0.0;
    const auto result = std::from_chars(buffer, buffer + length, value, std::chars_format::general);
    if (result.ec != std::errc() || result.ptr != buffer + length || !std::isnormal(value))
        return viaQString(text, ok);
    if (ok)
        *ok = true;
    return value;
}

double NumberParser::viaQString(QStringView text, bool *ok)
{
    bool converted = false;
    const double value = text.toString().toDouble(&converted);
    if (ok)
        *ok = converted;
    return value;
}
