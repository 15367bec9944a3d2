#include "LineParser.h"

#include <QtTest>

// A parsed line as "time|events|values|words": states as S:<group>/<state>,
// errors as E:<name>, both in token order; values in map order; words as
// unrecognizedParsed carries them.
static QString describe(const ParsedLine &parsed)
{
    QStringList events;
    for (const LineEvent &event : parsed.events)
        events.append(event.kind == LineEvent::State ? QString(u"S:" + event.groupId + u'/' + event.id)
                                                     : QString(u"E:" + event.id));
    QStringList values;
    for (auto it = parsed.values.cbegin(); it != parsed.values.cend(); ++it)
        values.append(it.key() + u'=' + QString::number(it.value(), 'g', 12));
    return QStringList{QString::number(parsed.timestamp), events.join(u','), values.join(u','), parsed.unrecognizedText()}
        .join(u'|');
}

class tst_LineParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void grammar_data();
    void grammar()
    {
        QFETCH(QString, line);
        QFETCH(QString, parsed);
        ParsedLine copied, viewed;
        QVERIFY(LineParser::parse(line, 7.25, copied));
        QVERIFY(LineParser::parse(QStringView(line), 7.25, viewed));
        QCOMPARE(describe(copied), parsed);
        QCOMPARE(describe(viewed), parsed);
        QCOMPARE(copied.line, line);
        QCOMPARE(copied.ownTimestamp, !parsed.startsWith(u"7.25|"));
    }

    void blankLinesAreNotLines()
    {
        for (const QString &line : {QString(), QStringLiteral(" \t\r\n\f\v")}) {
            ParsedLine parsed;
            parsed.values.insert(QStringLiteral("stale"), 1);
            QVERIFY(!LineParser::parse(QStringView(line), 1.0, parsed));
            QVERIFY(!LineParser::parse(line, 1.0, parsed));
            QVERIFY(parsed.values.isEmpty() && parsed.line.isEmpty());
        }
    }
};

void tst_LineParser::grammar_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("parsed"); // the default time stamp is 7.25

    QTest::newRow("full example") << "12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello"
                                  << "12.5|S:MODE/RUN,E:E_OVERHEAT|RPM=3000,TEMP=71.2|hello";
    QTest::newRow("number alone") << "5" << "5|||";
    QTest::newRow("exponent time stamp") << "1e3 A=1" << "1000||A=1|";
    QTest::newRow("only the first number is time") << "1 2 A=3 12.5" << "1||A=3|2 12.5";
    QTest::newRow("number with junk or hex is a word") << "12.5s 0x10 A=1" << "7.25||A=1|12.5s 0x10";
    QTest::newRow("equals first is a word") << "=5 hello = ==" << "7.25|||=5 hello = ==";
    QTest::newRow("equals inside a value") << "A==5 B=5= ST_G=S=T" << "7.25|S:G/S=T||";
    QTest::newRow("empty or non-numeric values dropped") << "A=abc A= ERR= ST_=X ST_A= ST_=" << "7.25|||";
    QTest::newRow("repeated key keeps last") << "A=1 A=2" << "7.25||A=2|";
    QTest::newRow("states and errors in token order") << "ERR=E2 ST_A=X ERR=E1 ST_A=Y"
                                                      << "7.25|E:E2,S:A/X,E:E1,S:A/Y||";
    QTest::newRow("keys are case-sensitive") << "err=E1 st_A=B Err=3" << "7.25||Err=3|";
    QTest::newRow("runs of white space") << "3\t\tA=1 \x0b B=2\f\rC=3" << "3||A=1,B=2,C=3|";
    QTest::newRow("value forms") << "A=+3000 B=1e-3 C=-0.5 D=.5 E=007 F=inf G=1,5"
                                 << "7.25||A=3000,B=0.001,C=-0.5,D=0.5,E=7,F=inf|";
    QTest::newRow("non-ASCII keys and words") << QStringLiteral("Température=21.5 ST_Ü=Öl grüß")
                                              << QStringLiteral("7.25|S:Ü/Öl|Température=21.5|grüß");
    // \s knows only ASCII white space: a no-break space stays inside its
    // token, but keys and values are trimmed of it.
    QTest::newRow("no-break space") << QStringLiteral("A=1\u00a0B=2 C=\u00a03 D\u00a0=4") << "7.25||C=3,D=4|";
}

QTEST_GUILESS_MAIN(tst_LineParser)
#include "tst_lineparser.moc"
