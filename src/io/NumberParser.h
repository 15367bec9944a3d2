#pragma once

#include <QStringView>

// Text to double with exactly the acceptance and the values of
// QString::toDouble, but without its allocation and locale machinery for the
// plain decimal forms a device sends ("-12.5", "3000", "1.2e-3"). Anything
// unusual (white space, inf/nan, non-ASCII, very long text) goes to
// QString::toDouble itself.
class NumberParser
{
public:
    // The value of text, or 0 with *ok false when text is not a number.
    static double toDouble(QStringView text, bool *ok = nullptr);

private:
    static double viaFromChars(QStringView text, bool *ok);
    static double viaQString(QStringView text, bool *ok);
};
