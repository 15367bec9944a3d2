#include "LineFramer.h"

#include <QtTest>

using Lines = QList<QByteArray>;

static Lines takeAll(LineFramer &framer)
{
    Lines lines;
    QByteArrayView line;
    while (framer.takeLine(line))
        lines.append(line.toByteArray());
    return lines;
}

class tst_LineFramer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Whole lines, split lines and CR LF over a real port are the serial
    // manager's tests; these are the framer's own edge cases.
    void framing_data()
    {
        QTest::addColumn<Lines>("chunks");
        QTest::addColumn<Lines>("lines");
        QTest::addColumn<QByteArray>("tail");
        QTest::addColumn<int>("overlong"); // lines dropped for their length

        QTest::newRow("CR LF and LF alike") << Lines{"A=1\r\nB=2\n"} << Lines{"A=1", "B=2"} << QByteArray() << 0;
        QTest::newRow("CR LF split between chunks") << Lines{"A=1\r", "\nB"} << Lines{"A=1"} << QByteArray("B") << 0;
        QTest::newRow("several trailing CRs") << Lines{"A=1\r\r\r\n"} << Lines{"A=1"} << QByteArray() << 0;
        QTest::newRow("inner CR kept") << Lines{"A=1\rB=2\n"} << Lines{"A=1\rB=2"} << QByteArray() << 0;
        QTest::newRow("lone CR is no line end") << Lines{"A=1\r"} << Lines{} << QByteArray("A=1\r") << 0;
        QTest::newRow("empty lines") << Lines{"\n\r\n\n"} << Lines{"", "", ""} << QByteArray() << 0;
        QTest::newRow("NUL bytes") << Lines{QByteArray("A\0B\n", 4)} << Lines{QByteArray("A\0B", 3)} << QByteArray() << 0;
        QTest::newRow("one byte at a time") << Lines{"A", "=", "1", "\r", "\n", "x"} << Lines{"A=1"} << QByteArray("x") << 0;
        // Between ordinary lines, arriving 7 bytes at a time.
        const QByteArray stream = "A=1\n" + QByteArray(1 << 20, 'y') + "\nB=2\nC";
        Lines pieces;
        for (qsizetype i = 0; i < stream.size(); i += 7)
            pieces.append(stream.sliced(i, qMin<qsizetype>(7, stream.size() - i)));
        QTest::newRow("megabyte line in tiny pieces") << pieces << Lines{"A=1", QByteArray(1 << 20, 'y'), "B=2"}
                                                      << QByteArray("C") << 0;

        // A line may be MaxLineBytes long. One byte more and it is dropped,
        // reported once, whether its line feed comes with it or much later.
        const QByteArray longest(LineFramer::MaxLineBytes, 'z');
        QTest::newRow("longest line kept") << Lines{longest, "\nB=2\n"} << Lines{longest, "B=2"} << QByteArray() << 0;
        QTest::newRow("one byte too long") << Lines{"A=1\n" + longest + "z\nB=2\n"} << Lines{"A=1", "B=2"}
                                           << QByteArray() << 1;
        QTest::newRow("too long before its line feed") << Lines{longest, "zz", "zz\nB=2\nC"} << Lines{"B=2"}
                                                       << QByteArray("C") << 1;
        const QByteArray endless = "A=1\n" + QByteArray(10 << 20, 'x') + "\nB=2\nC";
        Lines reads;
        for (qsizetype i = 0; i < endless.size(); i += 65536)
            reads.append(endless.sliced(i, qMin<qsizetype>(65536, endless.size() - i)));
        QTest::newRow("ten megabytes without a line feed") << reads << Lines{"A=1", "B=2"} << QByteArray("C") << 1;
    }

    void framing()
    {
        QFETCH(Lines, chunks);
        QFETCH(Lines, lines);
        QFETCH(QByteArray, tail);
        QFETCH(int, overlong);

        LineFramer framer;
        Lines taken;
        qsizetype largestChunk = 0;
        for (const QByteArray &chunk : chunks) {
            framer.append(chunk);
            taken += takeAll(framer);
            // Whatever arrives, at most one line waits, and memory follows.
            largestChunk = qMax(largestChunk, chunk.size());
            QVERIFY(framer.pendingSize() <= LineFramer::MaxLineBytes);
            QVERIFY(framer.capacity() <= 2 * (LineFramer::MaxLineBytes + largestChunk));
        }
        QCOMPARE(taken, lines);
        QCOMPARE(framer.overlongLines(), overlong);
        QCOMPARE(framer.pendingSize(), tail.size());
        framer.append("\n");
        QCOMPARE(takeAll(framer), Lines{tail.replace('\r', QByteArray())});
    }
};

QTEST_GUILESS_MAIN(tst_LineFramer)
#include "tst_lineframer.moc"
