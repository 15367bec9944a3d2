#include "CliRun.h"
#include "DeviceFaults.h"
#include "LineFramer.h"
#include "PtyPair.h"
#include "Recording.h"
#include "TestFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <memory>

namespace {

const QByteArray Definitions = "DASHBOARD_SIGNAL(A, \"Alpha\", float)\n"
                               "DASHBOARD_STATE(MODE, RUN, \"Running\")\n";

// The device's own time stamps make the recorded times predictable.
const QByteArray FirstLines = "10.5 B=2 A=1.5\n"
                              "10.75 ST_MODE=RUN ERR=E_HOT hello world\n";
const QByteArray FirstLinesRecorded = "0.000000 A=1.5 B=2\n"
                                      "0.250000 ST_MODE=RUN\n"
                                      "0.250000 ERR=E_HOT\n"
                                      "0.250000 RAWhello world\n";

} // namespace

// "ombrix-cli record" on a real pseudo-terminal, stopped every way a user stops it.
class tst_CliRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_project = std::make_unique<QTemporaryDir>();
        m_pty = std::make_unique<PtyPair>();
        m_process = std::make_unique<QProcess>();
        QVERIFY(m_pty->isValid());
        // The recorder must not inherit the master side, or closing it here would not hang the terminal up.
        QCOMPARE(::fcntl(m_pty->masterFd(), F_SETFD, FD_CLOEXEC), 0);
        QVERIFY(writeFile(m_project->filePath(QStringLiteral("dashboard_signals.def")), Definitions));
    }

    void cleanup()
    {
        if (m_process->state() != QProcess::NotRunning) {
            m_process->kill();
            m_process->waitForFinished();
        }
        m_process.reset();
    }

    // The line that reaches the limit is recorded whole, the next one not at
    // all, even when both arrive in the same read.
    void stopsAfterTheLineLimit()
    {
        QVERIFY(startRecording({"--lines", "3"}));
        QVERIFY(m_pty->write(FirstLines + "11 A=0.333333333333333\n12 A=9\n"));
        QVERIFY(finishedWith(0, "line limit reached"));

        const QFileInfo info(m_recordingPath);
        QCOMPARE(info.absolutePath(), QDir(m_project->filePath("recordings")).absolutePath());
        QVERIFY(QRegularExpression(QStringLiteral("^log_\\d{8}_\\d{6}\\.rec$")).match(info.fileName()).hasMatch());
        QCOMPARE(readFile(m_recordingPath), FirstLinesRecorded + "0.500000 A=0.333333333333\n");
        QCOMPARE(readFile(Recording::companionPathFor(m_recordingPath)), Definitions);
    }

    void stopKeepsEverythingReceived_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::newRow("Ctrl+C") << int(SIGINT);
        QTest::newRow("SIGTERM") << int(SIGTERM);
        QTest::newRow("terminal closed") << int(SIGHUP);
    }

    void stopKeepsEverythingReceived();
    void badStreamKeepsTheLinesAround_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("recorded"); // what the bytes become in the file
        QTest::addColumn<int>("reports");
        // Every word of it is kept as the message, invalid bytes replaced.
        const QByteArray garbage = DeviceFaults::binaryGarbage();
        QTest::newRow("binary garbage") << garbage << "0.750000 RAW" + QString::fromUtf8(garbage).simplified().toUtf8() + '\n'
                                        << 0;
        QTest::newRow("no line feed for 10 MB") << QByteArray(10 << 20, 'x') << QByteArray() << 1;
    }

    void badStreamKeepsTheLinesAround();
    void stopsAfterTheDuration()
    {
        QVERIFY(startRecording({"--duration", "0.3"}));
        QVERIFY(finishedWith(0, "duration reached"));
    }

private:
    // Starts recording the pseudo-terminal and waits for the recording's path on stdout.
    bool startRecording(const QStringList &extraArgs)
    {
        // Whatever this test runs under (nohup ignores hang-ups), the recorder starts like one in a terminal.
        m_process->setChildProcessModifier([] { ::signal(SIGHUP, SIG_DFL); });
        m_process->start(CliRun::program(),
                         QStringList{"record", "--port", m_pty->slavePath(), "--project", m_project->path()} + extraArgs);
        while (!m_process->canReadLine()) {
            if (!m_process->waitForReadyRead(10000))
                return false;
        }
        m_recordingPath = QString::fromUtf8(m_process->readLine()).trimmed();
        return QFile::exists(m_recordingPath);
    }

    // Sends the signal and keeps what the recorder said on stderr.
    bool finishedOn(int signalNumber, int exitCode)
    {
        ::kill(pid_t(m_process->processId()), signalNumber);
        const bool finished = m_process->waitForFinished(10000) && m_process->exitStatus() == QProcess::NormalExit
            && m_process->exitCode() == exitCode;
        m_stderr = m_process->readAllStandardError();
        return finished;
    }

    bool finishedWith(int exitCode, const QByteArray &message)
    {
        return m_process->waitForFinished(10000) && m_process->exitStatus() == QProcess::NormalExit
            && m_process->exitCode() == exitCode && m_process->readAllStandardError().contains(message);
    }

    std::unique_ptr<QTemporaryDir> m_project;
    std::unique_ptr<PtyPair> m_pty;
    std::unique_ptr<QProcess> m_process; // ombrix-cli record
    QString m_recordingPath;
    QByteArray m_stderr;
};

void tst_CliRecord::stopKeepsEverythingReceived()
{
    QFETCH(int, signalNumber);
    QVERIFY(startRecording({"--duration", "60"}));
    QVERIFY(m_pty->write(FirstLines + "12 A=7 B")); // the last line is cut off
    QTRY_COMPARE_WITH_TIMEOUT(readFile(m_recordingPath), FirstLinesRecorded, 10000);

    QCOMPARE(::kill(pid_t(m_process->processId()), signalNumber), 0);
    QVERIFY(finishedWith(0, "interrupted"));
    QCOMPARE(readFile(m_recordingPath), FirstLinesRecorded);
}

// Between two good lines, binary garbage becomes a message and a line that
// does not end is dropped with one note on stderr.
void tst_CliRecord::badStreamKeepsTheLinesAround()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, recorded);
    QFETCH(int, reports);
    QVERIFY(startRecording({"--duration", "60"}));
    const QByteArray lastLine = "1.500000 A=9\n";
    QVERIFY(m_pty->write(FirstLines + "11.25 " + bytes + "\n12 A=9\n"));
    QTRY_VERIFY_WITH_TIMEOUT(readFile(m_recordingPath).endsWith(lastLine), 10000);
    QVERIFY(finishedOn(SIGINT, 0));

    const QByteArray report = "ombrix-cli record: line longer than " + QByteArray::number(LineFramer::MaxLineBytes)
        + " bytes dropped\n";
    QCOMPARE(m_stderr.count(report), reports);
    const QByteArray file = readFile(m_recordingPath);
    QVERIFY(DeviceFaults::allLinesWhole(file));
    QVERIFY(file.startsWith(FirstLinesRecorded));
    const QByteArray between = file.sliced(FirstLinesRecorded.size()).chopped(lastLine.size());
    QCOMPARE(between, recorded);
    Recording recording;
    QVERIFY(recording.load(m_recordingPath));
    QCOMPARE(recording.messages().size(), recorded.isEmpty() ? 1 : 2); // "hello world" and the garbage
}

QTEST_GUILESS_MAIN(tst_CliRecord)
#include "tst_cli_record.moc"
