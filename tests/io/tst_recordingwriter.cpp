#include "LineParser.h"
#include "Recording.h"
#include "RecordingWriter.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QStringList linesOf(const QString &path)
{
    QStringList lines = QString::fromUtf8(readAll(path)).split(QLatin1Char('\n'));
    if (!lines.isEmpty() && lines.constLast().isEmpty())
        lines.removeLast();
    return lines;
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace

class TestRecordingWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void lineForms();
    void originIsFixedOnce();
    void fileNameAndFolder();
    void companionReplacesOldFile();
    void neverOverwritesAnExistingRecording();
    void missingDefinitionsStillRecords();
    void unwritableProjectFails();
    void flushesWhileRecording();
    void appendsOutsideRecordingAreIgnored();
    void messageWithLineBreakStaysOneLine();
    void roundTrip();
    void deviceLinesReadBackAsReceived_data();
    void deviceLinesReadBackAsReceived();

private:
    QString writeDefinitions(const QByteArray &content = "DASHBOARD_SIGNAL(A, \"a\", float)\n");

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestRecordingWriter::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

QString TestRecordingWriter::writeDefinitions(const QByteArray &content)
{
    const QString path = m_dir->filePath(QStringLiteral("dashboard_signals.def"));
    writeFile(path, content);
    return path;
}

void TestRecordingWriter::lineForms()
{
    RecordingWriter writer;
    QVERIFY2(writer.start(m_dir->path(), writeDefinitions()), qPrintable(writer.errorString()));
    writer.appendError(100.0, QStringLiteral("E_OVERHEAT"));
    writer.appendValues(100.25, {{QStringLiteral("B"), 2.0}, {QStringLiteral("A"), 1.5}});
    writer.appendValues(100.5, {{QStringLiteral("X"), 1.0 / 3.0}});
    writer.appendState(101.0, QStringLiteral("MODE"), QStringLiteral("RUN"));
    writer.appendMessage(101.5, QStringLiteral("hello world"));
    writer.appendValues(102.0, {{QStringLiteral("BIG"), 1e20}, {QStringLiteral("NEG"), -0.000125}});
    QCOMPARE(writer.linesWritten(), 6);
    writer.stop();
    QVERIFY(!writer.isRecording());

    const QStringList expected = {
        QStringLiteral("0.000000 ERR=E_OVERHEAT"),
        QStringLiteral("0.250000 A=1.5 B=2"),
        QStringLiteral("0.500000 X=0.333333333333"),
        QStringLiteral("1.000000 ST_MODE=RUN"),
        QStringLiteral("1.500000 RAWhello world"),
        QStringLiteral("2.000000 BIG=1e+20 NEG=-0.000125"),
    };
    QCOMPARE(linesOf(writer.filePath()), expected);
}

void TestRecordingWriter::originIsFixedOnce()
{
    RecordingWriter writer;
    QVERIFY(writer.start(m_dir->path(), writeDefinitions()));
    writer.appendMessage(5.0, QStringLiteral("first"));
    writer.appendMessage(4.5, QStringLiteral("device clock went back"));
    writer.stop();
    QCOMPARE(linesOf(writer.filePath()),
             QStringList({QStringLiteral("0.000000 RAWfirst"), QStringLiteral("-0.500000 RAWdevice clock went back")}));

    // A new recording takes a new origin.
    QVERIFY(writer.start(m_dir->path(), writeDefinitions()));
    writer.appendError(50.0, QStringLiteral("E"));
    writer.stop();
    QCOMPARE(linesOf(writer.filePath()), QStringList({QStringLiteral("0.000000 ERR=E")}));
}

void TestRecordingWriter::fileNameAndFolder()
{
    const QString project = m_dir->filePath(QStringLiteral("nested/project"));
    const QByteArray defs = "DASHBOARD_SIGNAL(RPM, \"Speed\", float)\n";
    RecordingWriter writer;
    QVERIFY(writer.start(project, writeDefinitions(defs)));
    writer.stop();

    const QFileInfo info(writer.filePath());
    QCOMPARE(info.absolutePath(), QDir(project).absoluteFilePath(QStringLiteral("recordings")));
    static const QRegularExpression pattern(QStringLiteral("^log_\\d{8}_\\d{6}\\.rec$"));
    QVERIFY2(pattern.match(info.fileName()).hasMatch(), qPrintable(info.fileName()));
    QCOMPARE(RecordingWriter::fileNameFor(QDateTime(QDate(2024, 1, 1), QTime(12, 0, 0))),
             QStringLiteral("log_20240101_120000.rec"));

    const QString companion = Recording::companionPathFor(writer.filePath());
    QCOMPARE(QFileInfo(companion).fileName(), info.completeBaseName() + QStringLiteral(".signals.h"));
    QCOMPARE(readAll(companion), defs);
}

void TestRecordingWriter::companionReplacesOldFile()
{
    // A leftover companion whose recording was deleted: it must not survive
    // under the name of a new recording.
    const QString recordings = m_dir->filePath(QStringLiteral("recordings"));
    QVERIFY(QDir().mkpath(recordings));
    const QDateTime now = QDateTime::currentDateTime();
    for (int s = 0; s < 3; ++s) {
        const QString rec = QDir(recordings).filePath(RecordingWriter::fileNameFor(now.addSecs(s)));
        writeFile(Recording::companionPathFor(rec), "stale");
    }
    const QByteArray defs = "DASHBOARD_ERROR(E1, 1, \"fresh\")\n";
    RecordingWriter writer;
    QVERIFY(writer.start(m_dir->path(), writeDefinitions(defs)));
    writer.stop();
    QCOMPARE(readAll(Recording::companionPathFor(writer.filePath())), defs);
}

void TestRecordingWriter::neverOverwritesAnExistingRecording()
{
    const QString recordings = m_dir->filePath(QStringLiteral("recordings"));
    QVERIFY(QDir().mkpath(recordings));
    const QDateTime now = QDateTime::currentDateTime();
    for (int s = 0; s < 3; ++s)
        writeFile(QDir(recordings).filePath(RecordingWriter::fileNameFor(now.addSecs(s))), "0.000000 KEEP=1\n");

    RecordingWriter first;
    RecordingWriter second;
    QVERIFY(first.start(m_dir->path(), writeDefinitions()));
    QVERIFY(second.start(m_dir->path(), writeDefinitions()));
    QVERIFY(first.filePath() != second.filePath());
    first.appendMessage(0, QStringLiteral("one"));
    second.appendMessage(0, QStringLiteral("two"));
    first.stop();
    second.stop();
    QCOMPARE(linesOf(first.filePath()), QStringList({QStringLiteral("0.000000 RAWone")}));
    QCOMPARE(linesOf(second.filePath()), QStringList({QStringLiteral("0.000000 RAWtwo")}));
    for (int s = 0; s < 3; ++s)
        QCOMPARE(readAll(QDir(recordings).filePath(RecordingWriter::fileNameFor(now.addSecs(s)))),
                 QByteArray("0.000000 KEEP=1\n"));
}

void TestRecordingWriter::missingDefinitionsStillRecords()
{
    RecordingWriter writer;
    QVERIFY(writer.start(m_dir->path(), m_dir->filePath(QStringLiteral("absent.def"))));
    QVERIFY(writer.isRecording());
    QVERIFY(!QFileInfo::exists(Recording::companionPathFor(writer.filePath())));
    QVERIFY(!writer.start(m_dir->path(), QString()));
    QCOMPARE(writer.errorString(), QStringLiteral("Already recording."));
}

void TestRecordingWriter::unwritableProjectFails()
{
    // The project "folder" is a file: neither the folder nor the file can be made.
    const QString notADir = m_dir->filePath(QStringLiteral("plain-file"));
    writeFile(notADir, "x");
    RecordingWriter writer;
    QVERIFY(!writer.start(notADir, writeDefinitions()));
    QVERIFY(!writer.isRecording());
    QCOMPARE(writer.errorString(), QStringLiteral("Could not open file for writing."));
    QVERIFY(writer.filePath().isEmpty());
}

void TestRecordingWriter::flushesWhileRecording()
{
    RecordingWriter writer;
    QVERIFY(writer.start(m_dir->path(), writeDefinitions()));
    writer.appendValues(1.0, {{QStringLiteral("A"), 7.0}});
    // Read back by another handle while the writer keeps recording.
    QTRY_COMPARE(linesOf(writer.filePath()), QStringList({QStringLiteral("0.000000 A=7")}));
    writer.appendError(2.0, QStringLiteral("E2"));
    QTRY_COMPARE(linesOf(writer.filePath()).size(), 2);
    QVERIFY(writer.isRecording());
}

void TestRecordingWriter::appendsOutsideRecordingAreIgnored()
{
    RecordingWriter writer;
    writer.appendValues(1.0, {{QStringLiteral("A"), 1.0}});
    writer.appendMessage(1.0, QStringLiteral("nowhere"));
    writer.stop();
    QCOMPARE(writer.linesWritten(), 0);
    QVERIFY(writer.filePath().isEmpty());
}

void TestRecordingWriter::messageWithLineBreakStaysOneLine()
{
    RecordingWriter writer;
    QVERIFY(writer.start(m_dir->path(), writeDefinitions()));
    writer.appendMessage(0.0, QStringLiteral("two\nlines\r"));
    writer.stop();
    QCOMPARE(linesOf(writer.filePath()), QStringList({QStringLiteral("0.000000 RAWtwo lines ")}));
}

void TestRecordingWriter::roundTrip()
{
    RecordingWriter writer;
    QVERIFY(writer.start(m_dir->path(), writeDefinitions()));
    const QMap<QString, double> first = {{QStringLiteral("RPM"), 3000.0}, {QStringLiteral("TEMP"), 71.2},
                                         {QStringLiteral("THIRD"), 1.0 / 3.0}};
    writer.appendValues(10.0, first);
    writer.appendState(10.0, QStringLiteral("MODE"), QStringLiteral("RUN"));
    writer.appendError(10.0, QStringLiteral("E_OVERHEAT"));
    writer.appendMessage(10.0, QStringLiteral("hello  spaced =5 words"));
    writer.appendMessage(10.5, QStringLiteral("=5 starts with equals"));
    writer.appendValues(10.5, {{QStringLiteral("RPM"), -12.5}});
    writer.appendMessage(11.0, QStringLiteral("RAW lookalike"));
    writer.appendState(11.0, QStringLiteral("MODE"), QStringLiteral("STOP"));
    writer.appendMessage(11.25, QStringLiteral("grüße"));
    writer.stop();

    Recording recording;
    QVERIFY2(recording.load(writer.filePath()), qPrintable(recording.errorString()));
    QCOMPARE(recording.frameCount(), 4);

    const PlaybackFrame f0 = recording.frameAt(0);
    QCOMPARE(f0.t, 0.0);
    QCOMPARE(f0.values.value(QStringLiteral("RPM")), 3000.0);
    QCOMPARE(f0.values.value(QStringLiteral("TEMP")), 71.2);
    QCOMPARE(f0.values.value(QStringLiteral("THIRD")), 0.333333333333);
    QCOMPARE(f0.states, (QList<QPair<QString, QString>>{{QStringLiteral("MODE"), QStringLiteral("RUN")}}));
    QCOMPARE(f0.errors, QStringList{QStringLiteral("E_OVERHEAT")});
    QCOMPARE(f0.messages, QStringList{QStringLiteral("hello  spaced =5 words")});

    const PlaybackFrame f1 = recording.frameAt(1);
    QCOMPARE(f1.t, 0.5);
    QCOMPARE(f1.values, (QMap<QString, double>{{QStringLiteral("RPM"), -12.5}}));
    QCOMPARE(f1.messages, QStringList{QStringLiteral("=5 starts with equals")});

    const PlaybackFrame f2 = recording.frameAt(2);
    QCOMPARE(f2.messages, QStringList{QStringLiteral("RAW lookalike")});
    QCOMPARE(f2.states, (QList<QPair<QString, QString>>{{QStringLiteral("MODE"), QStringLiteral("STOP")}}));
    QCOMPARE(recording.frameAt(3).messages, QStringList{QStringLiteral("grüße")});
    QCOMPARE(recording.duration(), 1.25);
    QCOMPARE(recording.signalNames(),
             QStringList({QStringLiteral("RPM"), QStringLiteral("TEMP"), QStringLiteral("THIRD")}));
}

void TestRecordingWriter::deviceLinesReadBackAsReceived_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("everything") << QStringLiteral("12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello there");
    QTest::newRow("message only") << QStringLiteral("3 boot ok");
    QTest::newRow("message of equals words") << QStringLiteral("4 =5 =x RAW");
    QTest::newRow("message that looks like RAW") << QStringLiteral("5 RAW RAWdata");
    QTest::newRow("states and errors in token order") << QStringLiteral("6 ERR=E1 ST_A=X ERR=E2 ST_A=Y");
}

void TestRecordingWriter::deviceLinesReadBackAsReceived()
{
    // Whatever the device sent, played back, gives what was received live.
    QFETCH(QString, line);
    ParsedLine live;
    QVERIFY(LineParser::parse(line, 0.0, live));
    RecordingWriter writer;
    QVERIFY(writer.start(m_dir->path(), writeDefinitions()));
    writer.appendParsedLine(live);
    writer.stop();

    Recording recording;
    QVERIFY(recording.load(writer.filePath()));
    QCOMPARE(recording.frameCount(), 1);
    const PlaybackFrame frame = recording.frameAt(0);
    QCOMPARE(frame.t, 0.0);
    QCOMPARE(frame.values, live.values);
    QStringList errors;
    QList<QPair<QString, QString>> states;
    for (const LineEvent &event : std::as_const(live.events)) {
        if (event.kind == LineEvent::State)
            states.append({event.groupId, event.id});
        else
            errors.append(event.id);
    }
    QCOMPARE(frame.states, states);
    QCOMPARE(frame.errors, errors);
    QCOMPARE(frame.messages, live.unrecognized.isEmpty() ? QStringList() : QStringList{live.unrecognizedText()});
}

QTEST_GUILESS_MAIN(TestRecordingWriter)
#include "tst_recordingwriter.moc"
