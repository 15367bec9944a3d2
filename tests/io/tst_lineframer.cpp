#include "LineFramer.h"

#include <QtTest>

class TestLineFramer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framing_data();
    void framing();
    void tailWaitsForItsLineFeed();
    void longLineInTinyPieces();
    void clearDropsThePartialLine();

private:
    static QList<QByteArray> takeAll(LineFramer &framer);
};

QList<QByteArray> TestLineFramer::takeAll(LineFramer &framer)
{
    QList<QByteArray> lines;
    QByteArrayView line;
    while (framer.takeLine(line))
        lines.append(line.toByteArray());
    return lines;
}

void TestLineFramer::framing_data()
{
    QTest::addColumn<QList<QByteArray>>("chunks");
    QTest::addColumn<QList<QByteArray>>("lines");
    QTest::addColumn<QByteArray>("tail");

    using L = QList<QByteArray>;
    QTest::newRow("two lines in one chunk") << L{"A=1\nB=2\n"} << L{"A=1", "B=2"} << QByteArray();
    QTest::newRow("line over two chunks") << L{"RPM=30", "00\n"} << L{"RPM=3000"} << QByteArray();
    QTest::newRow("CR LF and LF alike") << L{"A=1\r\nB=2\n"} << L{"A=1", "B=2"} << QByteArray();
    QTest::newRow("CR LF split between chunks") << L{"A=1\r", "\nB"} << L{"A=1"} << QByteArray("B");
    QTest::newRow("several trailing CRs") << L{"A=1\r\r\r\n"} << L{"A=1"} << QByteArray();
    QTest::newRow("inner CR kept") << L{"A=1\rB=2\n"} << L{"A=1\rB=2"} << QByteArray();
    QTest::newRow("lone CR is no line end") << L{"A=1\r"} << L{} << QByteArray("A=1\r");
    QTest::newRow("empty lines") << L{"\n\r\n\n"} << L{"", "", ""} << QByteArray();
    QTest::newRow("NUL bytes") << L{QByteArray("A\0B\n", 4)} << L{QByteArray("A\0B", 3)} << QByteArray();
    QTest::newRow("tail kept") << L{"A=1\nB=", "2"} << L{"A=1"} << QByteArray("B=2");
    QTest::newRow("one byte at a time") << L{"A", "=", "1", "\r", "\n", "x"} << L{"A=1"} << QByteArray("x");
}

void TestLineFramer::framing()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(QList<QByteArray>, lines);
    QFETCH(QByteArray, tail);

    LineFramer framer;
    QList<QByteArray> taken;
    for (const QByteArray &chunk : chunks) {
        framer.append(chunk);
        taken += takeAll(framer);
    }
    QCOMPARE(taken, lines);
    QCOMPARE(framer.pendingSize(), tail.size());
    framer.append("\n");
    const QList<QByteArray> rest = takeAll(framer);
    QCOMPARE(rest.size(), 1);
    QCOMPARE(rest.first(), QByteArray(tail).replace('\r', QByteArray()));
}

void TestLineFramer::tailWaitsForItsLineFeed()
{
    LineFramer framer;
    for (int i = 0; i < 1000; ++i) {
        framer.append(QByteArray(1000, 'x'));
        QByteArrayView line;
        QVERIFY(!framer.takeLine(line));
    }
    QCOMPARE(framer.pendingSize(), 1000 * 1000);
    framer.append("\nA=1\n");
    const QList<QByteArray> lines = takeAll(framer);
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0), QByteArray(1000 * 1000, 'x'));
    QCOMPARE(lines.at(1), QByteArray("A=1"));
    QCOMPARE(framer.pendingSize(), 0);
}

// A megabyte line arriving a few bytes at a time between ordinary lines.
void TestLineFramer::longLineInTinyPieces()
{
    QByteArray stream = "A=1\n";
    stream += QByteArray(1 << 20, 'y') + "\nB=2\n";
    LineFramer framer;
    QList<QByteArray> lines;
    for (qsizetype i = 0; i < stream.size(); i += 7) {
        framer.append(QByteArrayView(stream).sliced(i, qMin<qsizetype>(7, stream.size() - i)));
        lines += takeAll(framer);
    }
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(1).size(), 1 << 20);
    QCOMPARE(lines.at(2), QByteArray("B=2"));
}

void TestLineFramer::clearDropsThePartialLine()
{
    LineFramer framer;
    framer.append("A=1\nB=");
    framer.clear();
    QCOMPARE(framer.pendingSize(), 0);
    framer.append("C=3\n");
    QCOMPARE(takeAll(framer), QList<QByteArray>{"C=3"});
}

QTEST_GUILESS_MAIN(TestLineFramer)
#include "tst_lineframer.moc"
