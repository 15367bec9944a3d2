#include "LineParser.h"
#include "Recording.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

// One frame as text: "t|values|states|errors|messages".
QString describe(const PlaybackFrame &frame)
{
    QStringList values;
    for (auto it = frame.values.cbegin(); it != frame.values.cend(); ++it)
        values.append(it.key() + QLatin1Char('=') + QString::number(it.value(), 'g', QLocale::FloatingPointShortest));
    QStringList states;
    for (const auto &state : frame.states)
        states.append(state.first + QLatin1Char('=') + state.second);
    return QStringList{QString::number(frame.t, 'g', QLocale::FloatingPointShortest), values.join(QLatin1Char(',')),
                       states.join(QLatin1Char(',')), frame.errors.join(QLatin1Char(',')),
                       frame.messages.join(QLatin1Char(','))}
            .join(QLatin1Char('|'));
}

QStringList describe(const Recording &recording)
{
    QStringList frames;
    for (int i = 0; i < recording.frameCount(); ++i)
        frames.append(describe(recording.frameAt(i)));
    return frames;
}

} // namespace

class TestRecordingReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void reads_data();
    void reads();
    void tokenRulesMatchTheDeviceProtocol_data();
    void tokenRulesMatchTheDeviceProtocol();
    void unreadableFileKeepsPreviousFrames();
    void cancelKeepsPreviousFrames();
    void linesAcrossReadChunks();
    void seekHelpers();
    void companionPath();

private:
    QString write(const QByteArray &content, const QString &name = QStringLiteral("r.rec"));

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestRecordingReader::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

QString TestRecordingReader::write(const QByteArray &content, const QString &name)
{
    const QString path = m_dir->filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(content);
    return path;
}

void TestRecordingReader::reads_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("frames");

    QTest::newRow("comments and blank lines")
            << QByteArray("# made by hand\n\n0.000000 A=1\n   # indented comment\n\t\n")
            << QStringList{QStringLiteral("0|A=1|||")};
    QTest::newRow("same time merges, later value wins, events in order")
            << QByteArray("0.5 A=1 ERR=E1\n0.5 A=2 B=3 ST_M=RUN\n0.5 ERR=E2 ST_M=STOP\n1.0 A=4\n")
            << QStringList{QStringLiteral("0.5|A=2,B=3|M=RUN,M=STOP|E1,E2|"), QStringLiteral("1|A=4|||")};
    QTest::newRow("repeated key in one line keeps the last")
            << QByteArray("0 A=1 A=2\n") << QStringList{QStringLiteral("0|A=2|||")};
    QTest::newRow("RAW as its own word joins the rest with single spaces")
            << QByteArray("0.1 RAW hello    world A=1\n")
            << QStringList{QStringLiteral("0.1||||hello world A=1")};
    QTest::newRow("RAW glued to the text keeps the text as written")
            << QByteArray("0.1 RAWhello  world A=1\n")
            << QStringList{QStringLiteral("0.1||||hello  world A=1")};
    QTest::newRow("RAW glued to a word starting with =")
            << QByteArray("0.1 RAW=5 x\n") << QStringList{QStringLiteral("0.1||||=5 x")};
    QTest::newRow("a value named RAW... stays a value")
            << QByteArray("0.1 RAWX=5 RAW_2=6\n") << QStringList{QStringLiteral("0.1|RAWX=5,RAW_2=6|||")};
    QTest::newRow("RAW without text adds nothing")
            << QByteArray("0.1 RAW\n0.2 RAW   \n") << QStringList{};
    QTest::newRow("cut last line is skipped")
            << QByteArray("0.1 A=1\n0.2 A=2") << QStringList{QStringLiteral("0.1|A=1|||")};
    QTest::newRow("cut last message is skipped")
            << QByteArray("0.1 A=1\n0.2 RAWhalf a mess") << QStringList{QStringLiteral("0.1|A=1|||")};
    QTest::newRow("malformed lines contribute nothing")
            << QByteArray("abc A=1\nA=2\n0.2 A=abc =5 hello ST_=X ST_A= ERR=\n0.3 A=1e3\n- B=1\n")
            << QStringList{QStringLiteral("0.3|A=1000|||")};
    QTest::newRow("non-finite time is skipped")
            << QByteArray("nan A=1\ninf A=2\n1 A=3\n") << QStringList{QStringLiteral("1|A=3|||")};
    QTest::newRow("time going backwards joins the previous frame")
            << QByteArray("1.0 A=1\n0.5 A=2 ERR=E\n2.0 A=3\n")
            << QStringList{QStringLiteral("1|A=2||E|"), QStringLiteral("2|A=3|||")};
    QTest::newRow("CR LF line ends")
            << QByteArray("0.1 A=1\r\n0.2 RAWtext\r\n")
            << QStringList{QStringLiteral("0.1|A=1|||"), QStringLiteral("0.2||||text")};
    QTest::newRow("byte order mark and UTF-8")
            << QByteArray("\xEF\xBB\xBF" "0.1 RAWgr\xC3\xBC\xC3\x9F" "e\n0.2 \xC2\xB5V=3\n")
            << QStringList{QStringLiteral("0.1||||grüße"), QStringLiteral("0.2|µV=3|||")};
    QTest::newRow("empty file") << QByteArray() << QStringList{};
}

void TestRecordingReader::reads()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, frames);
    Recording recording;
    QVERIFY(recording.load(write(content)));
    QCOMPARE(describe(recording), frames);
    QCOMPARE(recording.isEmpty(), frames.isEmpty());
    QCOMPARE(recording.duration(), frames.isEmpty() ? 0.0 : recording.timeAt(recording.frameCount() - 1));
}

void TestRecordingReader::tokenRulesMatchTheDeviceProtocol_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("values states errors") << QStringLiteral("12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello");
    QTest::newRow("numbers") << QStringLiteral("1 A=+5 B=.5 C=-1e-3 D=1E5 E=0x10 F=1,5 G=inf H=1. I=--1");
    QTest::newRow("malformed") << QStringLiteral("2 =5 A=abc ST_=X ST_A= ERR= X==1 ST_G==S");
    QTest::newRow("non-ASCII space inside a token") << QStringLiteral("4 A\u00A0=5 \u00A0B=6 ST_\u2003G=S\u00A0");
    QTest::newRow("tabs and runs of space") << QStringLiteral("3\tA=1  \t B=2\x0B" "C=3");
}

void TestRecordingReader::tokenRulesMatchTheDeviceProtocol()
{
    // What a recording line reads back as must be what the live line gave.
    QFETCH(QString, line);
    ParsedLine live;
    QVERIFY(LineParser::parse(line, 0.0, live));

    Recording recording;
    QVERIFY(recording.load(write(line.toUtf8() + '\n')));
    QCOMPARE(recording.frameCount(), 1);
    const PlaybackFrame frame = recording.frameAt(0);
    QCOMPARE(frame.t, live.timestamp);
    QCOMPARE(frame.values, live.values);
    QList<QPair<QString, QString>> states;
    QStringList errors;
    for (const LineEvent &event : std::as_const(live.events)) {
        if (event.kind == LineEvent::State)
            states.append({event.groupId, event.id});
        else
            errors.append(event.id);
    }
    QCOMPARE(frame.states, states);
    QCOMPARE(frame.errors, errors);
}

void TestRecordingReader::unreadableFileKeepsPreviousFrames()
{
    Recording recording;
    const QString good = write("0 A=1\n1 A=2\n");
    QVERIFY(recording.load(good));
    QVERIFY(!recording.load(m_dir->filePath(QStringLiteral("missing.rec"))));
    QVERIFY(!recording.errorString().isEmpty());
    QCOMPARE(recording.frameCount(), 2);
    QCOMPARE(recording.path(), good);
    QCOMPARE(recording.frameAt(1).values.value(QStringLiteral("A")), 2.0);
}

void TestRecordingReader::cancelKeepsPreviousFrames()
{
    Recording recording;
    QVERIFY(recording.load(write("0 A=1\n", QStringLiteral("small.rec"))));
    const QString other = write("0 B=1\n1 B=2\n2 B=3\n", QStringLiteral("other.rec"));
    qint64 reportedTotal = -1;
    QVERIFY(!recording.load(other, [&](qint64, qint64 total) {
        reportedTotal = total;
        return false;
    }));
    QCOMPARE(reportedTotal, QFileInfo(other).size());
    QCOMPARE(describe(recording), QStringList{QStringLiteral("0|A=1|||")});

    qint64 lastDone = 0;
    QVERIFY(recording.load(other, [&](qint64 done, qint64) {
        lastDone = done;
        return true;
    }));
    QCOMPARE(lastDone, QFileInfo(other).size());
    QCOMPARE(recording.frameCount(), 3);
}

void TestRecordingReader::linesAcrossReadChunks()
{
    // Well beyond one read chunk, with a multi-byte character that will
    // straddle chunk boundaries somewhere.
    QByteArray content;
    const int lines = 120000;
    for (int i = 0; i < lines; ++i) {
        content += QByteArray::number(i * 0.001, 'f', 6) + " SIGNAL_NAME=" + QByteArray::number(i);
        content += (i % 7 == 0) ? " RAW_\xC3\xBC=1\n" : "\n";
    }
    Recording recording;
    QVERIFY(recording.load(write(content)));
    QCOMPARE(recording.frameCount(), lines);
    for (int i : {0, 1, 34952, 69904, lines - 1}) {
        QCOMPARE(recording.frameAt(i).values.value(QStringLiteral("SIGNAL_NAME")), double(i));
        QCOMPARE(recording.timeAt(i), QByteArray::number(i * 0.001, 'f', 6).toDouble());
    }
    QCOMPARE(recording.signalNames(), QStringList({QStringLiteral("RAW_ü"), QStringLiteral("SIGNAL_NAME")}));
}

void TestRecordingReader::seekHelpers()
{
    Recording recording;
    QVERIFY(recording.load(write("1 A=1 ERR=E1\n2 A=2 RAWm2\n3 ST_G=S ERR=E3\n")));
    QCOMPARE(recording.indexAtOrAfter(0.0), 0);
    QCOMPARE(recording.indexAtOrAfter(1.0), 0);
    QCOMPARE(recording.indexAtOrAfter(1.5), 1);
    QCOMPARE(recording.indexAtOrAfter(3.0), 2);
    QCOMPARE(recording.indexAtOrAfter(3.5), 3);
    QCOMPARE(Recording::countUpTo(recording.errorEntries(), 0), 1);
    QCOMPARE(Recording::countUpTo(recording.errorEntries(), 1), 1);
    QCOMPARE(Recording::countUpTo(recording.errorEntries(), 2), 2);
    QCOMPARE(Recording::countUpTo(recording.messageEntries(), 0), 0);
    QCOMPARE(Recording::countUpTo(recording.stateEntries(), 2), 1);
    QCOMPARE(recording.valuesAt(1), (QMap<QString, double>{{QStringLiteral("A"), 2.0}}));
}

void TestRecordingReader::companionPath()
{
    QCOMPARE(Recording::companionPathFor(QStringLiteral("/p/recordings/log_20240101_120000.rec")),
             QStringLiteral("/p/recordings/log_20240101_120000.signals.h"));
}

QTEST_GUILESS_MAIN(TestRecordingReader)
#include "tst_recordingreader.moc"
