#include "CliRun.h"
#include "SerialManager.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <functional>
#include <memory>

// "ombrix-cli simulate", as a user runs it, read by the real SerialManager.
class tst_Simulate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_device = std::make_unique<QProcess>();
        m_link = m_dir->filePath("ttySIM");
        m_reader.portName = m_link;
    }

    void cleanup()
    {
        if (m_device->state() != QProcess::NotRunning) {
            m_device->kill();
            m_device->waitForFinished();
        }
    }

    // The seed alone fixes the stream; with --timestamps each line carries the device time, 1 / rate apart.
    void seedReproducesTheStream()
    {
        const QStringList args = {"simulate", "--stdout",  "--timestamps", "--rate", "1000",
                                  "--count",  "300",       "--project",    m_demo,   "--seed"};
        const CliRun first = CliRun::run(args + QStringList{"3"});
        QCOMPARE(first.exitCode, 0);
        QVERIFY(first.err.isEmpty());
        QVERIFY(first.out.endsWith('\n'));
        const QByteArrayList lines = first.out.trimmed().split('\n');
        QCOMPARE(lines.size(), 300);
        for (int i = 0; i < lines.size(); ++i)
            QCOMPARE(lines.at(i).left(lines.at(i).indexOf(' ')).toDouble(), i * 0.001);
        QCOMPARE(CliRun::run(args + QStringList{"3"}).out, first.out);
        QVERIFY(CliRun::run(args + QStringList{"4"}).out != first.out);
    }

    // A reader gets whole lines in order and may close and reopen the port; a
    // stale link in the way is replaced, and removed when the device stops.
    void readerOnThePseudoTerminal()
    {
        QVERIFY(QFile::link(QStringLiteral("/nonexistent"), m_link));
        QVERIFY(startDevice(QStringLiteral("200")));
        QVERIFY(QFileInfo(m_link).canonicalFilePath().startsWith(QStringLiteral("/dev/pts/")));
        for (int session = 0; session < 2; ++session) {
            const QList<double> times = readTimes(20);
            QVERIFY(times.size() >= 20);
            QVERIFY(std::adjacent_find(times.cbegin(), times.cend(), std::greater_equal<>()) == times.cend());
        }
        QVERIFY(stopsCleanlyOn(SIGINT));
    }

    // At --rate 0 the reader sets the pace: consecutive lines, none dropped.
    void fullSpeedDropsNothing()
    {
        QVERIFY(startDevice(QStringLiteral("0")));
        const QList<double> times = readTimes(20000);
        QVERIFY(times.size() >= 20000);
        QVERIFY(stopsCleanlyOn(SIGTERM));
        for (int i = 1; i < times.size(); ++i)
            QVERIFY2(qAbs(times.at(i) - times.at(i - 1) - 0.001) < 0.0005, qPrintable(QString::number(i)));
    }

    void slowReaderGetsWholeLines();

private:
    // Starts the demo device at that rate behind a link in the test folder
    // and waits until it prints the link.
    bool startDevice(const QString &rate)
    {
        m_device->start(CliRun::program(),
                        {"simulate", "--project", m_demo, "--rate", rate, "--timestamps", "--link", m_link});
        while (!m_device->canReadLine()) {
            if (!m_device->waitForReadyRead(10000))
                return false;
        }
        return m_device->readLine().trimmed() == m_link.toLocal8Bit();
    }

    // True when the device ended cleanly on that signal and removed its link.
    bool stopsCleanlyOn(int signalNumber)
    {
        ::kill(pid_t(m_device->processId()), signalNumber);
        return m_device->waitForFinished(5000) && m_device->exitStatus() == QProcess::NormalExit
            && m_device->exitCode() == 0 && !QFileInfo(m_link).isSymLink();
    }

    // The times of the lines a reader of the device gets until count arrived.
    QList<double> readTimes(int count)
    {
        SerialManager manager;
        QList<double> times;
        connect(&manager, &SerialManager::lineParsed, this, [&times](double t) { times.append(t); });
        // qWait runs the event loop throughout, so a fast device is read as fast as it writes.
        QDeadlineTimer deadline(20000);
        if (manager.open(m_reader)) {
            while (times.size() < count && !deadline.hasExpired())
                QTest::qWait(20);
        }
        return times;
    }

    const QString m_demo = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo");
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QProcess> m_device;
    QString m_link;
    SerialSettings m_reader; // the device, opened through its link
};

// A whole demo line holds each of its eleven signals once; a line cut and
// joined to another holds some twice.
static bool isWholeDemoLine(const QString &raw)
{
    QStringList keys;
    for (const QString &token : raw.split(u' ')) {
        if (token.contains(u'=') && !token.startsWith(QLatin1String("ST_")) && !token.startsWith(QLatin1String("ERR=")))
            keys.append(token.section(u'=', 0, 0));
    }
    return keys.size() == 11 && keys.removeDuplicates() == 0;
}

// A reader too slow for the rate misses old lines, but never gets a broken one.
void tst_Simulate::slowReaderGetsWholeLines()
{
    QVERIFY(startDevice(QStringLiteral("40000")));
    SerialManager manager;
    int lines = 0;
    QStringList broken;
    connect(&manager, &SerialManager::rawLineReceived, this, [&lines, &broken](double, const QString &raw) {
        ++lines;
        if (!isWholeDemoLine(raw))
            broken.append(raw);
    });
    QVERIFY(manager.open(m_reader));
    for (int i = 0; i < 4; ++i) {
        QThread::msleep(150); // a busy GUI thread: the device's lines pile up meanwhile
        const int before = lines;
        QTRY_VERIFY(lines > before + 100);
    }
    manager.close();
    QVERIFY(stopsCleanlyOn(SIGTERM));
    QVERIFY2(broken.isEmpty(), qPrintable(broken.join(u'\n')));
}

QTEST_GUILESS_MAIN(tst_Simulate)
#include "tst_simulate.moc"
