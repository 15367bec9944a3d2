#include "LineParser.h"
#include "Recording.h"
#include "RecordingWriter.h"
#include "TestFiles.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

// One frame as text: "t|values|states|errors|messages".
static QString describe(const PlaybackFrame &frame)
{
    QStringList values;
    for (auto it = frame.values.cbegin(); it != frame.values.cend(); ++it)
        values.append(it.key() + u'=' + QString::number(it.value(), 'g', QLocale::FloatingPointShortest));
    QStringList states;
    for (const auto &state : frame.states)
        states.append(state.first + u'=' + state.second);
    return QStringList{QString::number(frame.t, 'g', QLocale::FloatingPointShortest), values.join(u','),
                       states.join(u','), frame.errors.join(u','), frame.messages.join(u',')}
        .join(u'|');
}

static QStringList describe(const Recording &recording)
{
    QStringList frames;
    for (int i = 0; i < recording.frameCount(); ++i)
        frames.append(describe(recording.frameAt(i)));
    return frames;
}

class tst_RecordingReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }
    void reads_data();
    void reads()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, frames);
        Recording recording;
        QVERIFY(recording.load(write(content)));
        QCOMPARE(describe(recording), frames);
        Recording fromBytes; // the same bytes held in memory read the same
        QVERIFY(fromBytes.loadFromBytes(content));
        QCOMPARE(describe(fromBytes), frames);
        double latest = 0.0;
        for (int i = 0; i < recording.frameCount(); ++i)
            latest = std::max(latest, recording.timeAt(i));
        QCOMPARE(recording.duration(), latest);
    }

    // A device line, recorded as it came or through the writer, must read back
    // as what the live link gave: the reader applies the same token rules.
    void deviceLinesReadBackAsReceived_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("everything") << QStringLiteral("12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello there");
        QTest::newRow("numbers") << QStringLiteral("1 A=+5 B=.5 C=-1e-3 D=1E5 E=0x10 F=1,5 G=inf H=1. I=--1");
        QTest::newRow("malformed") << QStringLiteral("2 =5 A=abc ST_=X ST_A= ERR= X==1 ST_G==S");
        QTest::newRow("tabs and runs of space") << QStringLiteral("3\tA=1  \t B=2\x0B" "C=3");
        QTest::newRow("non-ASCII space inside a token") << QStringLiteral("4 A\u00A0=5 \u00A0B=6 ST_\u2003G=S\u00A0");
        QTest::newRow("message of equals words") << QStringLiteral("5 =5 =x RAW");
        QTest::newRow("message that looks like RAW") << QStringLiteral("6 RAW RAWdata");
        QTest::newRow("a signal named RAW") << QStringLiteral("8 RAW=5 TEMP=71");
        QTest::newRow("states and errors in token order") << QStringLiteral("7 ERR=E1 ST_A=X ERR=E2 ST_A=Y");
    }

    void deviceLinesReadBackAsReceived();
    void failedLoadKeepsPreviousFrames();
    void linesAcrossReadChunks();

private:
    QString write(const QByteArray &content, const QString &name = QStringLiteral("r.rec"))
    {
        const QString path = m_dir->filePath(name);
        return writeFile(path, content) ? path : QString();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_RecordingReader::reads_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("frames");

    QTest::newRow("comments and blank lines") << QByteArray("# by hand\n\n0.000000 A=1\n   # indented\n\t\n")
                                              << QStringList{"0|A=1|||"};
    QTest::newRow("a device line's parts form one frame")
        << QByteArray("0.5 ST_M=RUN\n0.5 ERR=E1\n0.5 ST_M=STOP\n0.5 A=1 B=2 A=3\n0.5 RAWhi\n")
        << QStringList{"0.5|A=3,B=2|M=RUN,M=STOP|E1|hi"};
    // No recorded value may overwrite another.
    QTest::newRow("a second value set or a later event at the same time starts a frame")
        << QByteArray("0.5 A=1 ERR=E1\n0.5 A=2 B=3 ST_M=RUN\n0.5 ERR=E2 ST_M=STOP\n1.0 A=4\n")
        << QStringList{"0.5|A=1||E1|", "0.5|A=2,B=3|M=RUN||", "0.5||M=STOP|E2|", "1|A=4|||"};
    QTest::newRow("RAW as its own word joins the rest with single spaces")
        << QByteArray("0.1 RAW hello    world A=1\n") << QStringList{"0.1||||hello world A=1"};
    QTest::newRow("RAW glued to the text keeps the text as written")
        << QByteArray("0.1 RAWhello  world A=1\n") << QStringList{"0.1||||hello  world A=1"};
    QTest::newRow("a value named RAW... stays a value") << QByteArray("0.1 RAWX=5 RAW_2=6\n0.2 RAW=5 x\n")
                                                        << QStringList{"0.1|RAWX=5,RAW_2=6|||", "0.2|RAW=5|||"};
    QTest::newRow("RAW without text adds nothing") << QByteArray("0.1 RAW\n0.2 RAW   \n") << QStringList{};
    QTest::newRow("cut last line is skipped") << QByteArray("0.1 A=1\n0.2 RAWhalf a mess")
                                              << QStringList{"0.1|A=1|||"};
    QTest::newRow("malformed lines contribute nothing")
        << QByteArray("abc A=1\nA=2\n0.2 A=abc =5 hello ST_=X ST_A= ERR=\nnan A=1\ninf A=2\n0.3 A=1e3\n- B=1\n")
        << QStringList{"0.3|A=1000|||"};
    QTest::newRow("time going backwards starts a frame with its own time")
        << QByteArray("1.0 A=1\n0.5 A=2 ERR=E\n0.7 A=5\n") << QStringList{"1|A=1|||", "0.5|A=2||E|", "0.7|A=5|||"};
    QTest::newRow("CR LF line ends") << QByteArray("0.1 A=1\r\n0.2 RAWtext\r\n")
                                     << QStringList{"0.1|A=1|||", "0.2||||text"};
    QTest::newRow("byte order mark and UTF-8") << QByteArray("\xEF\xBB\xBF" "0.1 RAWgr\xC3\xBC\xC3\x9F" "e\n0.2 \xC2\xB5V=3\n")
                                               << QStringList{QStringLiteral("0.1||||grüße"), QStringLiteral("0.2|µV=3|||")};
    QTest::newRow("empty file") << QByteArray() << QStringList{};
}

void tst_RecordingReader::deviceLinesReadBackAsReceived()
{
    QFETCH(QString, line);
    ParsedLine live;
    QVERIFY(LineParser::parse(line, 0.0, live));
    PlaybackFrame expected;
    expected.values = live.values;
    for (const LineEvent &event : std::as_const(live.events))
        event.kind == LineEvent::State ? expected.states.append({event.groupId, event.id}) : expected.errors.append(event.id);
    if (!live.unrecognized.isEmpty())
        expected.messages.append(live.unrecognizedText());

    // Through the writer: everything comes back, the words as one message.
    RecordingWriter writer;
    QVERIFY(writer.start(m_dir->path(), QString()));
    writer.appendParsedLine(live);
    writer.stop();
    Recording recording;
    QVERIFY(recording.load(writer.filePath()));
    QCOMPARE(describe(recording), QStringList{describe(expected)});

    // As sent, at the device's time; words as the device sent them are no
    // message form, so a line of words alone is left out.
    expected.t = live.timestamp;
    expected.messages.clear();
    QVERIFY(recording.load(write(line.toUtf8() + '\n')));
    if (!live.values.isEmpty() || !live.events.isEmpty())
        QCOMPARE(describe(recording), QStringList{describe(expected)});
}

void tst_RecordingReader::failedLoadKeepsPreviousFrames()
{
    Recording recording;
    const QString good = write("0 A=1\n", QStringLiteral("good.rec"));
    QVERIFY(recording.load(good));
    QVERIFY(!recording.load(m_dir->filePath(QStringLiteral("missing.rec"))));
    QVERIFY(!recording.errorString().isEmpty());

    const QString other = write("0 B=1\n1 B=2\n2 B=3\n", QStringLiteral("other.rec"));
    qint64 reportedTotal = -1;
    QVERIFY(!recording.load(other, [&](qint64, qint64 total) { return (reportedTotal = total) < 0; })); // cancel
    QCOMPARE(reportedTotal, QFileInfo(other).size());
    QCOMPARE(recording.path(), good);
    QCOMPARE(describe(recording), QStringList{"0|A=1|||"});

    qint64 lastDone = 0;
    QVERIFY(recording.load(other, [&](qint64 done, qint64) { return (lastDone = done) >= 0; }));
    QCOMPARE(lastDone, QFileInfo(other).size());
    QCOMPARE(recording.frameCount(), 3);
}

// Well beyond one read chunk, with a multi-byte character that will
// straddle chunk boundaries somewhere.
void tst_RecordingReader::linesAcrossReadChunks()
{
    QByteArray content;
    const int lines = 120000;
    for (int i = 0; i < lines; ++i)
        content += QByteArray::number(i * 0.001, 'f', 6) + " SIGNAL_NAME=" + QByteArray::number(i)
            + (i % 7 == 0 ? " RAW_\xC3\xBC=1\n" : "\n");
    Recording recording;
    QVERIFY(recording.load(write(content)));
    QCOMPARE(recording.frameCount(), lines);
    for (int i : {0, 1, 34952, 69904, lines - 1}) {
        QCOMPARE(recording.frameAt(i).values.value(QStringLiteral("SIGNAL_NAME")), double(i));
        QCOMPARE(recording.timeAt(i), QByteArray::number(i * 0.001, 'f', 6).toDouble());
    }
    QCOMPARE(recording.signalNames(), QStringList({QStringLiteral("RAW_ü"), QStringLiteral("SIGNAL_NAME")}));
}

QTEST_GUILESS_MAIN(tst_RecordingReader)
#include "tst_recordingreader.moc"
