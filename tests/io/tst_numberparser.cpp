#include "NumberParser.h"

#include <QRandomGenerator>
#include <QtTest>

#include <cstring>

// NumberParser must agree with QString::toDouble on every text: the same
// verdict and, for numbers, the same bits.
class TestNumberParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithQString_data();
    void agreesWithQString();
    void agreesOnGeneratedDecimals();
    void agreesOnRandomJunk();
    void agreesOnInfinityAndNanSpellings();

private:
    static QString mismatch(const QString &text);
    static QStringList decimals();
};

// Empty when both conversions agree, else a description for the failure message.
QString TestNumberParser::mismatch(const QString &text)
{
    bool expectedOk = false;
    bool actualOk = true;
    const double expected = text.toDouble(&expectedOk);
    const double actual = NumberParser::toDouble(text, &actualOk);
    quint64 expectedBits = 0;
    quint64 actualBits = 0;
    std::memcpy(&expectedBits, &expected, sizeof expected);
    std::memcpy(&actualBits, &actual, sizeof actual);
    if (expectedOk == actualOk && (!expectedOk || expectedBits == actualBits))
        return {};
    return QStringLiteral("'%1': QString ok=%2 %3, NumberParser ok=%4 %5")
        .arg(text)
        .arg(expectedOk)
        .arg(expected, 0, 'g', 17)
        .arg(actualOk)
        .arg(actual, 0, 'g', 17);
}

void TestNumberParser::agreesWithQString_data()
{
    QTest::addColumn<QString>("text");
    const char *const cases[] = {
        "0", "-0", "+0", "1", "+1", "-1", "007", "-007.50", "00.5", "1.", ".5", "-.5", "+.5", ".", "-.", "+.",
        "+", "-", "", "e", "e5", ".e5", "1e", "1e+", "1e-", "1.e5", "1e5", "1E5", "1e+05", "1E-5", "1e0005",
        "3000", "71.2", "-40.25", "0.1", "0.3", "123456789012345678", "9007199254740993",
        "1.7976931348623157e308", "1.7976931348623159e308", "1e308", "1e309", "1e400", "-1e400",
        "2.2250738585072011e-308", "2.2250738585072014e-308", "4.9e-324", "2.4703282292062327e-324",
        "2.4703282292062328e-324", "1e-320", "1e-324", "1e-400", "0e999999", "0.000e-99999", "-0e5",
        "0x10", "0X1A", "0x1p3", "0b101", "1,000", "1,5", "1.000,5", "1'000", "1_000", "1 000", "--1", "+-1",
        "-+1", "1..2", "1.2.3", "1e5.5", "1e5e5", "1d", "1f", "1L", "12.5abc", "abc", "A=1", "=5", " 1", "1 ",
        "\t1\n", " \t", "\v1\f", "1\r", "12345678901234567890123456789012", "123456789012345678901234567890123",
        "0.000000000000000000000000000001", "1000000000000000000000000000000000000000e-40",
        "-1.797693134862315708145274237317043567981e+308",
    };
    for (const char *text : cases)
        QTest::newRow(text[0] ? text : "(empty)") << QString::fromLatin1(text);
    QTest::newRow("no-break spaces") << QStringLiteral("\u00a01.5\u00a0");
    QTest::newRow("em space") << QStringLiteral("\u20031");
    QTest::newRow("arabic-indic digit") << QStringLiteral("\u0663");
    QTest::newRow("full-width digits") << QStringLiteral("\uff11\uff12");
    QTest::newRow("superscript two") << QStringLiteral("1\u00b2");
    QTest::newRow("minus sign") << QStringLiteral("\u22121");
    QTest::newRow("nul inside") << QString::fromLatin1("1\0" "2", 3);
    QTest::newRow("long digits") << QString(800, u'9') + QStringLiteral("e-790");
}

void TestNumberParser::agreesWithQString()
{
    QFETCH(QString, text);
    const QString failure = mismatch(text);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
}

// Every combination of sign, integer digits, fraction and exponent a device
// might send, including leading zeros and exponents at the edges of the range.
QStringList TestNumberParser::decimals()
{
    const QStringList signs = {"", "+", "-"};
    const QStringList integers = {"", "0", "00", "1", "007", "42", "65535", "9007199254740993", "123456789012345678901"};
    const QStringList fractions = {"", ".", ".0", ".5", ".25", ".000001", ".1234567890123456789", ".30000000000000004"};
    const QStringList exponents = {"", "e", "e0", "E3", "e+7", "e-7", "e22", "e23", "e-300", "e-310", "e-323",
                                   "e-324", "e308", "e309", "e-99999", "e+", "e--1"};
    QStringList texts;
    for (const QString &sign : signs)
        for (const QString &integer : integers)
            for (const QString &fraction : fractions)
                for (const QString &exponent : exponents)
                    texts.append(sign + integer + fraction + exponent);
    return texts;
}

void TestNumberParser::agreesOnGeneratedDecimals()
{
    const QStringList junk = {"", " ", "\t", "x", ",", "=", ".", "e", "_", "\u00a0"};
    QRandomGenerator random(20240101);
    int checked = 0;
    for (const QString &text : decimals()) {
        for (const QString &prefix : {QString(), QStringLiteral(" ")}) {
            const QString failure = mismatch(prefix + text + junk.at(random.bounded(junk.size())));
            QVERIFY2(failure.isEmpty(), qPrintable(failure));
            ++checked;
        }
        const QString failure = mismatch(text);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }
    // Random digit strings at every magnitude: the rounding must match bit for bit.
    for (int i = 0; i < 100000; ++i, ++checked) {
        QString text = QString::number(random.bounded(1u << 31)) + u'.' + QString::number(random.generate());
        text += u'e' + QString::number(random.bounded(-330, 330));
        const QString failure = mismatch(text);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }
    // Short mantissas with the point anywhere: the values a device sends.
    for (int i = 0; i < 100000; ++i, ++checked) {
        QString digits = QString::number(random.bounded(1, 1 << 30)) + QString::number(random.bounded(100000));
        digits.truncate(random.bounded(1, 17));
        digits.insert(random.bounded(digits.size() + 1), u'.');
        if (random.bounded(2))
            digits += u'e' + QString::number(random.bounded(-26, 27));
        const QString text = (random.bounded(2) ? QStringLiteral("-") : QString()) + digits;
        const QString failure = mismatch(text);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }
    QVERIFY(checked > 200000);
}

void TestNumberParser::agreesOnRandomJunk()
{
    const QString alphabet = QStringLiteral("0123456789+-.eE,x infaINFA\t\u00a0\u0663");
    QRandomGenerator random(7);
    for (int i = 0; i < 100000; ++i) {
        QString text;
        const int length = random.bounded(1, 12);
        for (int j = 0; j < length; ++j)
            text += alphabet.at(random.bounded(alphabet.size()));
        const QString failure = mismatch(text);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }
}

void TestNumberParser::agreesOnInfinityAndNanSpellings()
{
    for (const QString &word : {QStringLiteral("inf"), QStringLiteral("nan"), QStringLiteral("infinity")}) {
        for (int mask = 0; mask < (1 << word.size()); ++mask) {
            QString spelled = word;
            for (int i = 0; i < word.size(); ++i) {
                if (mask & (1 << i))
                    spelled[i] = spelled.at(i).toUpper();
            }
            for (const QString &sign : QStringList{"", "+", "-"}) {
                for (const QString &suffix : QStringList{"", " ", "x", "1"}) {
                    const QString failure = mismatch(sign + spelled + suffix);
                    QVERIFY2(failure.isEmpty(), qPrintable(failure));
                }
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestNumberParser)
#include "tst_numberparser.moc"
