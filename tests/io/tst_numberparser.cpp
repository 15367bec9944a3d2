#include "NumberParser.h"

#include <QtTest>

#include <cstring>

// NumberParser must agree with QString::toDouble on every text: the same
// verdict and, for numbers, the same bits.
class tst_NumberParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesOnChosenTexts();
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

QTEST_GUILESS_MAIN(tst_NumberParser)
#include "tst_numberparser.moc"
