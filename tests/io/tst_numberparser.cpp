#include "NumberParser.h"

#include <QRandomGenerator>
#include <QtTest>

#include <cstring>

// NumberParser must agree with QString::toDouble on every text: the same
// verdict and, for numbers, the same bits.
class tst_NumberParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesOnChosenTexts();
    void agreesOnGeneratedDecimals();
};

// The texts on which the two conversions disagree, each described for the
// failure message.
static QStringList disagreements(const QStringList &texts)
{
    QStringList found;
    for (const QString &text : texts) {
        bool expectedOk = false;
        bool actualOk = true;
        const double expected = text.toDouble(&expectedOk);
        const double actual = NumberParser::toDouble(text, &actualOk);
        if (expectedOk != actualOk || (expectedOk && std::memcmp(&expected, &actual, sizeof expected) != 0))
            found.append(QStringLiteral("'%1': QString ok=%2 %3, NumberParser ok=%4 %5")
                             .arg(text).arg(expectedOk).arg(expected, 0, 'g', 17).arg(actualOk).arg(actual, 0, 'g', 17));
    }
    return found;
}

void tst_NumberParser::agreesOnChosenTexts()
{
    // Signs, points and exponents at the edges of the plain form, the limits
    // of the double range, and the forms a locale or another language allows.
    const QStringList texts = {
        "-0", "+.5", "1.", ".", "-.", "+", "", "e5", ".e5", "1e", "1e+", "1.e5", "1e0005", "9007199254740993",
        "1.7976931348623159e308", "1e309", "-1e400", "2.2250738585072011e-308", "4.9e-324",
        "2.4703282292062327e-324", "2.4703282292062328e-324", "1e-400", "0e999999", "0x10", "0x1p3", "1,5", "1'000",
        "1_000", "1 000", "+-1", "1..2", "1e5.5", "1d", "1f", "12.5abc", " 1", "1 ", "\t1\n", "\v1\f", "1\r",
        "123456789012345678901234567890123", "1000000000000000000000000000000000000000e-40",
        "inf", "-INF", "NaN", "+Infinity", "iNfInItY", "infinity1", "nanx", "in", "-nan ",
        // No-break and em spaces, an Arabic-Indic and full-width digits, a
        // superscript, the minus sign, a NUL inside, and a very long mantissa.
        QStringLiteral("\u00a01.5\u00a0"), QStringLiteral("\u20031"), QStringLiteral("\u0663"),
        QStringLiteral("\uff11\uff12"), QStringLiteral("1\u00b2"), QStringLiteral("\u22121"),
        QString::fromLatin1("1\0" "2", 3), QString(800, u'9') + u"e-790",
    };
    const QStringList failures = disagreements(texts);
    QVERIFY2(failures.isEmpty(), qPrintable(failures.join(u'\n')));
}

// Every combination of sign, integer digits, fraction and exponent a device
// might send, plain and with junk around it, then random mantissas.
void tst_NumberParser::agreesOnGeneratedDecimals()
{
    const QStringList signs = {"", "+", "-"};
    const QStringList integers = {"", "0", "00", "1", "007", "42", "65535", "9007199254740993", "123456789012345678901"};
    const QStringList fractions = {"", ".", ".0", ".5", ".25", ".000001", ".1234567890123456789", ".30000000000000004"};
    const QStringList exponents = {"", "e", "e0", "E3", "e+7", "e-7", "e22", "e23", "e-300", "e-310", "e-323",
                                   "e-324", "e308", "e309", "e-99999", "e+", "e--1"};
    const QStringList junk = {"", " ", "\t", "x", ",", "=", ".", "e", "_", "\u00a0"};
    QRandomGenerator random(20240101);
    QStringList texts;
    for (const QString &sign : signs)
        for (const QString &integer : integers)
            for (const QString &fraction : fractions)
                for (const QString &exponent : exponents) {
                    const QString text = sign + integer + fraction + exponent;
                    texts.append(text);
                    texts.append(text + junk.at(random.bounded(junk.size())));
                    texts.append(u' ' + text + junk.at(random.bounded(junk.size())));
                }
    // Long random digit strings at every magnitude: the rounding must match bit for bit.
    for (int i = 0; i < 100000; ++i)
        texts.append(QString::number(random.bounded(1u << 31)) + u'.' + QString::number(random.generate()) + u'e'
                     + QString::number(random.bounded(-330, 330)));
    // Short mantissas with the point anywhere: the values a device sends.
    for (int i = 0; i < 100000; ++i) {
        QString digits = QString::number(random.bounded(1, 1 << 30)) + QString::number(random.bounded(100000));
        digits.truncate(random.bounded(1, 17));
        digits.insert(random.bounded(digits.size() + 1), u'.');
        if (random.bounded(2))
            digits += u'e' + QString::number(random.bounded(-26, 27));
        texts.append((random.bounded(2) ? QStringLiteral("-") : QString()) + digits);
    }
    const QStringList failures = disagreements(texts);
    QVERIFY2(failures.isEmpty(), qPrintable(failures.mid(0, 20).join(u'\n')));
}

QTEST_GUILESS_MAIN(tst_NumberParser)
#include "tst_numberparser.moc"
