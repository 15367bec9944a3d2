#include "PtyPair.h"
#include "Recording.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>

namespace {

QString cliPath()
{
    const QString fromEnv = qEnvironmentVariable("OMBRIX_CLI");
    return fromEnv.isEmpty() ? QStringLiteral(OMBRIX_BINARY_DIR "/ombrix-cli") : fromEnv;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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

class TestCliRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void stopsAfterTheLineLimit();
    void signalStopsCleanly_data();
    void signalStopsCleanly();
    void vanishedDeviceEndsTheRecording();
    void stopsAfterTheDuration();
    void unopenablePortFails();

private:
    // Starts "ombrix-cli record" on the pseudo-terminal and waits for the
    // recording's path on stdout.
    bool startRecording(const QStringList &extraArgs);

    QTemporaryDir *m_project = nullptr;
    PtyPair *m_pty = nullptr;
    QProcess *m_process = nullptr;
    QString m_recordingPath;
};

void TestCliRecord::init()
{
    m_project = new QTemporaryDir;
    m_pty = new PtyPair;
    m_process = new QProcess;
    QVERIFY(m_pty->isValid());
    // The recorder must not inherit the master side, or closing it here
    // would not hang the terminal up.
    QCOMPARE(::fcntl(m_pty->masterFd(), F_SETFD, FD_CLOEXEC), 0);
    QFile def(QDir(m_project->path()).filePath(QStringLiteral("dashboard_signals.def")));
    QVERIFY(def.open(QIODevice::WriteOnly));
    def.write(Definitions);
}

void TestCliRecord::cleanup()
{
    if (m_process->state() != QProcess::NotRunning) {
        m_process->kill();
        m_process->waitForFinished();
    }
    delete m_process;
    delete m_pty;
    delete m_project;
    m_recordingPath.clear();
}

bool TestCliRecord::startRecording(const QStringList &extraArgs)
{
    m_process->start(cliPath(), QStringList{QStringLiteral("record"), QStringLiteral("--port"), m_pty->slavePath(),
                                            QStringLiteral("--project"), m_project->path()}
                                    + extraArgs);
    while (!m_process->canReadLine()) {
        if (!m_process->waitForReadyRead(10000)) {
            qWarning() << "no recording path:" << m_process->readAllStandardError();
            return false;
        }
    }
    m_recordingPath = QString::fromUtf8(m_process->readLine()).trimmed();
    return QFile::exists(m_recordingPath);
}

// The line that reaches the limit is recorded whole, the next one not at
// all, even when both arrive in the same read.
void TestCliRecord::stopsAfterTheLineLimit()
{
    QVERIFY(startRecording({QStringLiteral("--lines"), QStringLiteral("3")}));
    QVERIFY(m_pty->write(FirstLines + "11 A=0.333333333333333\n12 A=9\n"));
    QVERIFY(m_process->waitForFinished(10000));
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process->exitCode(), 0);

    const QFileInfo info(m_recordingPath);
    QCOMPARE(info.absolutePath(), QDir(m_project->filePath(QStringLiteral("recordings"))).absolutePath());
    QVERIFY(QRegularExpression(QStringLiteral("^log_\\d{8}_\\d{6}\\.rec$")).match(info.fileName()).hasMatch());
    QCOMPARE(readAll(m_recordingPath), FirstLinesRecorded + "0.500000 A=0.333333333333\n");
    QCOMPARE(readAll(Recording::companionPathFor(m_recordingPath)), Definitions);
}

void TestCliRecord::signalStopsCleanly_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("SIGINT") << int(SIGINT);
    QTest::newRow("SIGTERM") << int(SIGTERM);
}

void TestCliRecord::signalStopsCleanly()
{
    QFETCH(int, signalNumber);
    QVERIFY(startRecording({}));
    QVERIFY(m_pty->write(FirstLines));
    QTRY_COMPARE_WITH_TIMEOUT(readAll(m_recordingPath), FirstLinesRecorded, 10000);

    QVERIFY(::kill(pid_t(m_process->processId()), signalNumber) == 0);
    QVERIFY(m_process->waitForFinished(10000));
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process->exitCode(), 0);
    QVERIFY(m_process->readAllStandardError().contains("interrupted"));
    QCOMPARE(readAll(m_recordingPath), FirstLinesRecorded);
}

// A pulled cable: the recording keeps everything that arrived and says so.
void TestCliRecord::vanishedDeviceEndsTheRecording()
{
    QVERIFY(startRecording({QStringLiteral("--duration"), QStringLiteral("60")}));
    QVERIFY(m_pty->write(FirstLines));
    QTRY_COMPARE_WITH_TIMEOUT(readAll(m_recordingPath), FirstLinesRecorded, 10000);

    m_pty->close();
    QVERIFY(m_process->waitForFinished(10000));
    QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_process->exitCode(), 3);
    QVERIFY(m_process->readAllStandardError().contains("disappeared"));
    QCOMPARE(readAll(m_recordingPath), FirstLinesRecorded);
}

void TestCliRecord::stopsAfterTheDuration()
{
    QVERIFY(startRecording({QStringLiteral("--duration"), QStringLiteral("0.3")}));
    QVERIFY(m_process->waitForFinished(10000));
    QCOMPARE(m_process->exitCode(), 0);
    QVERIFY(m_process->readAllStandardError().contains("duration reached"));
}

void TestCliRecord::unopenablePortFails()
{
    m_process->start(cliPath(), {QStringLiteral("record"), QStringLiteral("--port"),
                                 m_project->filePath(QStringLiteral("no-such-port")), QStringLiteral("--project"),
                                 m_project->path(), QStringLiteral("--lines"), QStringLiteral("1")});
    QVERIFY(m_process->waitForFinished(10000));
    QCOMPARE(m_process->exitCode(), 1);
    QCOMPARE(m_process->readAllStandardError().count('\n'), 1);
    QVERIFY(m_process->readAllStandardOutput().isEmpty());
    QVERIFY(!QDir(m_project->filePath(QStringLiteral("recordings"))).exists()
            || QDir(m_project->filePath(QStringLiteral("recordings"))).isEmpty());
}

QTEST_GUILESS_MAIN(TestCliRecord)
#include "tst_cli_record.moc"
