#include "LineParser.h"

#include <QtTest>

#include <cmath>

using ValueMap = QMap<QString, double>;

class TestLineParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void grammar_data();
    void grammar();
    void emptyOrBlankLinesAreNotLines_data();
    void emptyOrBlankLinesAreNotLines();
    void unusualNumbersAsValues();
    void onlyAsciiWhiteSpaceSeparatesTokens();
    void copiedAndViewedLinesAgree();
    void nextTokenWalksTheLine();
    void reusedResultIsClearedBetweenLines();
    void consecutiveLinesGiveFreshValues_data();
    void consecutiveLinesGiveFreshValues();
    void keptMapIsNotOverwritten();
    void externallyChangedMapIsRebuilt();
};

// Events as "S:<group>/<state>" and "E:<name>", in the order they were parsed.
static QStringList eventList(const ParsedLine &parsed)
{
    QStringList list;
    for (const LineEvent &event : parsed.events) {
        if (event.kind == LineEvent::State)
            list.append(QStringLiteral("S:") + event.groupId + u'/' + event.id);
        else
            list.append(QStringLiteral("E:") + event.id);
    }
    return list;
}

void TestLineParser::grammar_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<double>("timestamp");
    QTest::addColumn<bool>("ownTimestamp");
    QTest::addColumn<QStringList>("events");
    QTest::addColumn<ValueMap>("values");
    QTest::addColumn<QStringList>("unrecognized");

    const double d = 7.25; // the default time stamp every row passes
    QTest::newRow("full example")
        << "12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello" << 12.5 << true
        << QStringList{"S:MODE/RUN", "E:E_OVERHEAT"} << ValueMap{{"RPM", 3000}, {"TEMP", 71.2}}
        << QStringList{"hello"};
    QTest::newRow("number alone") << "5" << 5.0 << true << QStringList() << ValueMap() << QStringList();
    QTest::newRow("words without key") << "=5 hello" << d << false << QStringList() << ValueMap()
                                       << QStringList{"=5", "hello"};
    QTest::newRow("non-numeric value dropped") << "A=abc" << d << false << QStringList() << ValueMap() << QStringList();
    QTest::newRow("empty group or state") << "ST_=X ST_A= ST_=" << d << false << QStringList() << ValueMap()
                                          << QStringList();
    QTest::newRow("repeated key keeps last") << "A=1 A=2" << d << false << QStringList() << ValueMap{{"A", 2}}
                                             << QStringList();
    QTest::newRow("lone equals") << "= ==" << d << false << QStringList() << ValueMap() << QStringList{"=", "=="};
    QTest::newRow("equals inside value") << "A==5 B=5= ST_G=S=T" << d << false << QStringList{"S:G/S=T"}
                                         << ValueMap() << QStringList();
    QTest::newRow("empty value dropped") << "A= ERR=" << d << false << QStringList() << ValueMap() << QStringList();
    QTest::newRow("errors in order") << "ERR=E2 ST_A=X ERR=E1 ST_A=Y" << d << false
                                     << QStringList{"E:E2", "S:A/X", "E:E1", "S:A/Y"} << ValueMap() << QStringList();
    QTest::newRow("keys are case-sensitive") << "err=E1 st_A=B Err=3" << d << false << QStringList()
                                             << ValueMap{{"Err", 3}} << QStringList();
    QTest::newRow("exponent time stamp") << "1e3 A=1" << 1000.0 << true << QStringList() << ValueMap{{"A", 1}}
                                         << QStringList();
    QTest::newRow("negative time stamp") << "-2.5 A=1" << -2.5 << true << QStringList() << ValueMap{{"A", 1}}
                                         << QStringList();
    QTest::newRow("number with junk is a word") << "12.5s A=1" << d << false << QStringList()
                                                << ValueMap{{"A", 1}} << QStringList{"12.5s"};
    QTest::newRow("hex is a word") << "0x10 A=1" << d << false << QStringList() << ValueMap{{"A", 1}}
                                   << QStringList{"0x10"};
    QTest::newRow("later number is a word") << "A=1 12.5 7" << d << false << QStringList() << ValueMap{{"A", 1}}
                                            << QStringList{"12.5", "7"};
    QTest::newRow("only the first number is time") << "1 2 A=3" << 1.0 << true << QStringList()
                                                   << ValueMap{{"A", 3}} << QStringList{"2"};
    QTest::newRow("runs of white space") << "3\t\tA=1 \x0b B=2\f\rC=3" << 3.0 << true << QStringList()
                                         << ValueMap{{"A", 1}, {"B", 2}, {"C", 3}} << QStringList();
    QTest::newRow("value forms") << "A=+3000 B=1e-3 C=-0.5 D=.5 E=007" << d << false << QStringList()
                                 << ValueMap{{"A", 3000}, {"B", 0.001}, {"C", -0.5}, {"D", 0.5}, {"E", 7}}
                                 << QStringList();
    QTest::newRow("words keep their order") << "hello A=1 big world" << d << false << QStringList()
                                            << ValueMap{{"A", 1}} << QStringList{"hello", "big", "world"};
    QTest::newRow("non-ASCII keys and words") << QString::fromUtf8("Température=21.5 ST_Ü=Öl grüß")
                                              << d << false << QStringList{QString::fromUtf8("S:Ü/Öl")}
                                              << ValueMap{{QString::fromUtf8("Température"), 21.5}}
                                              << QStringList{QString::fromUtf8("grüß")};
}

void TestLineParser::grammar()
{
    QFETCH(QString, line);
    QFETCH(double, timestamp);
    QFETCH(bool, ownTimestamp);
    QFETCH(QStringList, events);
    QFETCH(ValueMap, values);
    QFETCH(QStringList, unrecognized);

    ParsedLine parsed;
    QVERIFY(LineParser::parse(line, 7.25, parsed));
    QCOMPARE(parsed.line, line);
    QCOMPARE(parsed.timestamp, timestamp);
    QCOMPARE(parsed.ownTimestamp, ownTimestamp);
    QCOMPARE(eventList(parsed), events);
    QCOMPARE(parsed.values, values);
    QCOMPARE(parsed.unrecognized, unrecognized);
    QCOMPARE(parsed.unrecognizedText(), unrecognized.join(u' '));
}

void TestLineParser::emptyOrBlankLinesAreNotLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("empty") << QString();
    QTest::newRow("spaces") << QStringLiteral("   ");
    QTest::newRow("tabs and returns") << QStringLiteral("\t\r\n\f\v");
}

void TestLineParser::emptyOrBlankLinesAreNotLines()
{
    QFETCH(QString, line);
    ParsedLine parsed;
    parsed.values.insert(QStringLiteral("stale"), 1);
    QVERIFY(!LineParser::parse(QStringView(line), 1.0, parsed));
    QVERIFY(!LineParser::parse(line, 1.0, parsed));
    QVERIFY(parsed.values.isEmpty());
    QVERIFY(parsed.line.isEmpty());
}

void TestLineParser::unusualNumbersAsValues()
{
    ParsedLine parsed;
    QVERIFY(LineParser::parse(QStringLiteral("inf A=nan B=-INF C=1e999 D=1,5 E=infinity"), 0.0, parsed));
    QVERIFY(parsed.ownTimestamp);
    QVERIFY(std::isinf(parsed.timestamp));
    QCOMPARE(parsed.values.keys(), QStringList({"A", "B"}));
    QVERIFY(std::isnan(parsed.values.value("A")));
    QCOMPARE(parsed.values.value("B"), -qInf());
}

// The pattern \s knows only ASCII white space: a no-break space stays inside
// its token, but the key and value are trimmed of it.
void TestLineParser::onlyAsciiWhiteSpaceSeparatesTokens()
{
    ParsedLine parsed;
    const QString nbsp(QChar(0x00A0));
    QVERIFY(LineParser::parse(QStringLiteral("A=1") + nbsp + QStringLiteral("B=2 C=") + nbsp
                                  + QStringLiteral("3 D") + nbsp + QStringLiteral("=4"),
                              0.0, parsed));
    QCOMPARE(parsed.values, (ValueMap{{"C", 3}, {"D", 4}}));
    QVERIFY(parsed.unrecognized.isEmpty());
}

void TestLineParser::copiedAndViewedLinesAgree()
{
    const QString line = QStringLiteral("4 A=1 ST_G=S ERR=E word");
    ParsedLine viewed;
    ParsedLine shared;
    QVERIFY(LineParser::parse(QStringView(line), 0.0, viewed));
    QVERIFY(LineParser::parse(line, 0.0, shared));
    QCOMPARE(viewed.line, shared.line);
    QCOMPARE(viewed.values, shared.values);
    QCOMPARE(eventList(viewed), eventList(shared));
    QCOMPARE(viewed.unrecognized, shared.unrecognized);
}

void TestLineParser::nextTokenWalksTheLine()
{
    const QString text = QStringLiteral("  0.500000 A=1\tB=2  ");
    qsizetype pos = 0;
    QStringList tokens;
    for (QStringView token = LineParser::nextToken(text, pos); !token.isNull(); token = LineParser::nextToken(text, pos))
        tokens.append(token.toString());
    QCOMPARE(tokens, QStringList({"0.500000", "A=1", "B=2"}));
    QCOMPARE(pos, text.size());
}

void TestLineParser::reusedResultIsClearedBetweenLines()
{
    ParsedLine parsed;
    QVERIFY(LineParser::parse(QStringLiteral("9 A=1 ST_G=S ERR=E word"), 0.0, parsed));
    const ValueMap kept = parsed.values; // a receiver holding on to the map
    QVERIFY(LineParser::parse(QStringLiteral("B=2"), 3.0, parsed));
    QCOMPARE(parsed.timestamp, 3.0);
    QVERIFY(!parsed.ownTimestamp);
    QCOMPARE(parsed.values, (ValueMap{{"B", 2}}));
    QVERIFY(parsed.events.isEmpty());
    QVERIFY(parsed.unrecognized.isEmpty());
    QCOMPARE(kept, (ValueMap{{"A", 1}}));
}

// Lines parsed into one reused result must give what each gives on its own,
// whatever the previous line held.
void TestLineParser::consecutiveLinesGiveFreshValues_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("same keys") << QStringList{"1 A=1 B=2 C=3", "2 A=4 B=5 C=6", "3 A=7 B=8 C=9"};
    QTest::newRow("unsorted keys") << QStringList{"Z=1 A=2 M=3", "Z=4 A=5 M=6"};
    QTest::newRow("same keys, other order") << QStringList{"A=1 B=2", "B=3 A=4", "A=5 B=6"};
    QTest::newRow("repeated key") << QStringList{"A=1 A=2 B=0", "A=3 A=4 B=0", "A=5 B=1 A=6"};
    QTest::newRow("a key goes missing") << QStringList{"A=1 B=2", "A=3", "A=4 B=5"};
    QTest::newRow("a value fails to parse") << QStringList{"A=1 B=2", "A=3 B=x", "A=4 B=5"};
    QTest::newRow("no values between") << QStringList{"A=1", "hello", "A=2", "7", "A=3"};
    QTest::newRow("longer and shorter keys") << QStringList{"AB=1 A=2", "A=3 AB=4", "ABC=5 A=6"};
}

void TestLineParser::consecutiveLinesGiveFreshValues()
{
    QFETCH(QStringList, lines);
    ParsedLine reused;
    for (const QString &line : lines) {
        ParsedLine fresh;
        QVERIFY(LineParser::parse(line, 0.0, fresh));
        QVERIFY(LineParser::parse(line, 0.0, reused));
        QCOMPARE(reused.values, fresh.values);
    }
}

void TestLineParser::keptMapIsNotOverwritten()
{
    ParsedLine parsed;
    QVERIFY(LineParser::parse(QStringLiteral("A=1 B=2"), 0.0, parsed));
    QVERIFY(LineParser::parse(QStringLiteral("A=3 B=4"), 0.0, parsed));
    const ValueMap kept = parsed.values;
    QVERIFY(LineParser::parse(QStringLiteral("A=5 B=6"), 0.0, parsed));
    QCOMPARE(kept, (ValueMap{{"A", 3}, {"B", 4}}));
    QCOMPARE(parsed.values, (ValueMap{{"A", 5}, {"B", 6}}));
}

void TestLineParser::externallyChangedMapIsRebuilt()
{
    ParsedLine parsed;
    QVERIFY(LineParser::parse(QStringLiteral("A=1 B=2"), 0.0, parsed));
    parsed.values = ValueMap{{"X", 1}, {"Y", 2}};
    QVERIFY(LineParser::parse(QStringLiteral("A=3 B=4"), 0.0, parsed));
    QCOMPARE(parsed.values, (ValueMap{{"A", 3}, {"B", 4}}));
    parsed.values.remove(QStringLiteral("B"));
    parsed.values.insert(QStringLiteral("C"), 9);
    QVERIFY(LineParser::parse(QStringLiteral("A=5 B=6"), 0.0, parsed));
    QCOMPARE(parsed.values, (ValueMap{{"A", 5}, {"B", 6}}));
}

QTEST_GUILESS_MAIN(TestLineParser)
#include "tst_lineparser.moc"
