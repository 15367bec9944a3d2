#include "DiskFull.h"
#include "Recording.h"
#include "RecordingWriter.h"
#include "TestFiles.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class tst_RecordingWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }
    void lineForms();
    void newFilesBesideExistingOnes();
    void failuresAndMisuse();
    // Read back by another handle while the writer keeps recording.
    void flushesWhileRecording()
    {
        RecordingWriter writer;
        QVERIFY(writer.start(m_dir->path(), definitions()));
        writer.appendValues(1.0, {{QStringLiteral("A"), 7.0}});
        QTRY_COMPARE(readFile(writer.filePath()), QByteArray("0.000000 A=7\n"));
        writer.appendError(2.0, QStringLiteral("E2"));
        QTRY_COMPARE(readFile(writer.filePath()), QByteArray("0.000000 A=7\n1.000000 ERR=E2\n"));
        QVERIFY(writer.isRecording());
    }

private:
    QString definitions(const QByteArray &content = "DASHBOARD_SIGNAL(A, \"a\", float)\n")
    {
        const QString path = m_dir->filePath(QStringLiteral("dashboard_signals.def"));
        return writeFile(path, content) ? path : QString();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_RecordingWriter::lineForms()
{
    RecordingWriter writer;
    QVERIFY2(writer.start(m_dir->path(), definitions()), qPrintable(writer.errorString()));
    writer.appendError(100.0, QStringLiteral("E_OVERHEAT"));
    writer.appendValues(100.25, {{QStringLiteral("B"), 2.0}, {QStringLiteral("A"), 1.5}});
    writer.appendValues(100.5, {{QStringLiteral("X"), 1.0 / 3.0}});
    writer.appendState(101.0, QStringLiteral("MODE"), QStringLiteral("RUN"));
    writer.appendMessage(101.5, QStringLiteral("hello world"));
    writer.appendValues(102.0, {{QStringLiteral("BIG"), 1e20}, {QStringLiteral("NEG"), -0.000125}});
    writer.appendMessage(102.0, QStringLiteral("two\nlines\r")); // must stay one line
    writer.appendMessage(99.5, QStringLiteral("device clock went back"));
    writer.stop();
    QVERIFY(!writer.isRecording());
    QCOMPARE(readFile(writer.filePath()), QByteArray("0.000000 ERR=E_OVERHEAT\n"
                                                    "0.250000 A=1.5 B=2\n"
                                                    "0.500000 X=0.333333333333\n"
                                                    "1.000000 ST_MODE=RUN\n"
                                                    "1.500000 RAWhello world\n"
                                                    "2.000000 BIG=1e+20 NEG=-0.000125\n"
                                                    "2.000000 RAWtwo lines \n"
                                                    "-0.500000 RAWdevice clock went back\n"));

    // A new recording takes a new origin.
    QVERIFY(writer.start(m_dir->path(), definitions()));
    writer.appendError(50.0, QStringLiteral("E"));
    writer.stop();
    QCOMPARE(readFile(writer.filePath()), QByteArray("0.000000 ERR=E\n"));

    // A device time stamp that is not a number ("nan", "inf") keeps its line readable, at the time before.
    QVERIFY(writer.start(m_dir->path(), definitions()));
    writer.appendValues(qQNaN(), {{QStringLiteral("A"), 1.0}});
    writer.appendValues(10.0, {{QStringLiteral("A"), 2.0}});
    writer.appendError(10.5, QStringLiteral("E"));
    writer.appendMessage(qInf(), QStringLiteral("late"));
    writer.stop();
    QCOMPARE(readFile(writer.filePath()),
             QByteArray("0.000000 A=1\n0.000000 A=2\n0.500000 ERR=E\n0.500000 RAWlate\n"));
}

// Recordings of this second and the next two exist already: two writers
// started now take new names beside them and leave them untouched, and the
// stale companions left under the new names (their recordings were deleted)
// do not survive.
void tst_RecordingWriter::newFilesBesideExistingOnes()
{
    QCOMPARE(RecordingWriter::fileNameFor(QDateTime(QDate(2024, 1, 1), QTime(12, 0, 0))),
             QStringLiteral("log_20240101_120000.rec"));
    const QString project = m_dir->filePath(QStringLiteral("nested/project"));
    const QDir recordings(project + u"/recordings");
    QVERIFY(recordings.mkpath(QStringLiteral(".")));
    const QDateTime now = QDateTime::currentDateTime();
    QStringList existing;
    for (int s = 0; s < 3; ++s) {
        existing.append(recordings.filePath(RecordingWriter::fileNameFor(now.addSecs(s))));
        QVERIFY(writeFile(existing.last(), "0 KEEP=1\n"));
        for (const char *suffix : {"_1.rec", "_2.rec"})
            writeFile(Recording::companionPathFor(existing.last().chopped(4) + QLatin1String(suffix)), "stale");
    }

    const QByteArray defs = "DASHBOARD_SIGNAL(RPM, \"Speed\", float)\n";
    RecordingWriter first;
    RecordingWriter second;
    QVERIFY(first.start(project, definitions(defs)));
    QVERIFY(second.start(project, definitions(defs)));
    first.appendMessage(0, QStringLiteral("one"));
    second.appendMessage(0, QStringLiteral("two"));
    first.stop();
    second.stop();
    QCOMPARE(readFile(first.filePath()), QByteArray("0.000000 RAWone\n"));
    QCOMPARE(readFile(second.filePath()), QByteArray("0.000000 RAWtwo\n"));
    for (const RecordingWriter *writer : {&first, &second}) {
        const QFileInfo info(writer->filePath());
        QCOMPARE(info.absolutePath(), recordings.absolutePath());
        QVERIFY2(QRegularExpression(QStringLiteral("^log_\\d{8}_\\d{6}_[12]\\.rec$")).match(info.fileName()).hasMatch(),
                 qPrintable(info.fileName()));
        QCOMPARE(readFile(recordings.filePath(info.completeBaseName() + u".signals.h")), defs);
    }
    for (const QString &path : std::as_const(existing))
        QCOMPARE(readFile(path), QByteArray("0 KEEP=1\n"));
}

void tst_RecordingWriter::failuresAndMisuse()
{
    RecordingWriter writer;
    writer.appendValues(1.0, {{QStringLiteral("A"), 1.0}}); // not recording: ignored
    QCOMPARE(writer.linesWritten(), 0);

    // The project "folder" is a file: neither the folder nor the file can be made.
    const QString notADir = m_dir->filePath(QStringLiteral("plain-file"));
    QVERIFY(writeFile(notADir, "x"));
    QVERIFY(!writer.start(notADir, definitions()));
    QVERIFY(!writer.isRecording());
    QCOMPARE(writer.errorString(), QStringLiteral("Could not open file for writing."));

    // Without definitions the recording goes on, only without its companion.
    QVERIFY(writer.start(m_dir->path(), m_dir->filePath(QStringLiteral("absent.def"))));
    QVERIFY(!QFileInfo::exists(Recording::companionPathFor(writer.filePath())));
    QVERIFY(!writer.start(m_dir->path(), QString()));
    QCOMPARE(writer.errorString(), QStringLiteral("Already recording."));

    // Lines refused on their way to the disk end the recording; the file
    // keeps the whole lines written before and says how many.
    writer.appendMessage(0, QStringLiteral("kept"));
    writer.flush();
    QSignalSpy failed(&writer, &RecordingWriter::writeFailed);
    {
        const DiskFull full;
        writer.appendMessage(1, QStringLiteral("lost"));
        writer.flush();
    }
    QCOMPARE(failed.count(), 1);
    QVERIFY(!writer.isRecording());
    QCOMPARE(writer.linesInFile(), 1);
    QCOMPARE(readFile(writer.filePath()), QByteArray("0.000000 RAWkept\n"));
}

QTEST_GUILESS_MAIN(tst_RecordingWriter)
#include "tst_recordingwriter.moc"
