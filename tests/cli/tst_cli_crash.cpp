#include "CliRun.h"
#include "DeviceFaults.h"
#include "Recording.h"
#include "RecordingWriter.h"
#include "TestFiles.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <csignal>

// "ombrix-cli record" killed outright (power cut, out-of-memory killer)
// while "ombrix-cli simulate" streams into it.
class tst_CliCrash : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        for (QProcess *process : {&m_recorder, &m_device}) {
            process->kill();
            process->waitForFinished();
        }
    }

    void killedRecorderKeepsEveryLineOlderThanASecond();

private:
    // Starts a command and waits for the first line it prints.
    static QByteArray startAndReadLine(QProcess &process, const QStringList &args)
    {
        process.start(CliRun::program(), args);
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(10000))
                return QByteArray();
        }
        return process.readLine().trimmed();
    }

    // Waits until the file grows: the writer has just handed its lines over.
    static bool waitForGrowth(const QString &path)
    {
        const qint64 size = QFile(path).size();
        QElapsedTimer waited;
        waited.start();
        while (QFile(path).size() == size) {
            if (waited.hasExpired(5000))
                return false;
            QThread::msleep(2);
        }
        return true;
    }

    QTemporaryDir m_dir;
    QProcess m_device;
    QProcess m_recorder;
};

void tst_CliCrash::killedRecorderKeepsEveryLineOlderThanASecond()
{
    const QString project = m_dir.path();
    QVERIFY(writeFile(m_dir.filePath(QStringLiteral("dashboard_signals.def")),
                      "DASHBOARD_SIGNAL(A, \"Alpha\", float)\nDASHBOARD_SIGNAL(B, \"Beta\", float)\n"));
    const QString link = m_dir.filePath(QStringLiteral("ttySIM"));
    QCOMPARE(startAndReadLine(m_device, {"simulate", "--project", project, "--rate", "200", "--link", link}),
             link.toLocal8Bit());

    // Without the device's own time stamps a line's time is when the recorder
    // read it, counted from the first line, which comes as the port opens.
    const QString path = QString::fromLocal8Bit(startAndReadLine(m_recorder, {"record", "--port", link, "--project", project}));
    QElapsedTimer sinceOpen;
    sinceOpen.start();
    QVERIFY(QFile::exists(path));

    // Killed a second and a half after a flush: the lines of the half second
    // after it are older than a second by then, and a writer that flushes
    // less often than once a second has not written them yet.
    QVERIFY(waitForGrowth(path));
    QVERIFY(waitForGrowth(path));
    QThread::msleep(RecordingWriter::FlushIntervalMs * 3 / 2);
    const double killedAt = sinceOpen.elapsed() / 1000.0;
    QCOMPARE(::kill(pid_t(m_recorder.processId()), SIGKILL), 0);
    QVERIFY(m_recorder.waitForFinished(5000));
    QCOMPARE(m_recorder.exitStatus(), QProcess::CrashExit);

    const QByteArray file = readFile(path);
    QVERIFY2(DeviceFaults::allLinesWhole(file), file.right(200).constData());
    Recording recording;
    QVERIFY(recording.load(path));
    QVERIFY(recording.frameCount() >= 200);
    // The two processes' clocks start a few milliseconds apart.
    const double tolerance = 0.1;
    QVERIFY2(recording.duration() >= killedAt - RecordingWriter::FlushIntervalMs / 1000.0 - tolerance,
             qPrintable(QStringLiteral("last line at %1 s, killed at %2 s").arg(recording.duration()).arg(killedAt)));
}

QTEST_GUILESS_MAIN(tst_CliCrash)
#include "tst_cli_crash.moc"
