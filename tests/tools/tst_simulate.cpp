#include "SerialManager.h"

#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

// The real ombrix-cli, as a user runs it.
class TestSimulate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void stdoutStreamIsDeterministic();
    void timestampsOption();
    void readerOnThePseudoTerminal_data();
    void readerOnThePseudoTerminal();
    void fullSpeedDropsNothing();
    void slowReaderGetsWholeLines();
    void badOptions_data();
    void badOptions();
    void help();

private:
    struct Result
    {
        int exitCode = -1;
        QByteArray out;
        QByteArray err;
    };
    Result runCli(const QStringList &args);

    QString m_cli;
    QString m_demo;
};

void TestSimulate::initTestCase()
{
    m_cli = qEnvironmentVariable("OMBRIX_CLI");
    QVERIFY2(QFileInfo(m_cli).isExecutable(), "OMBRIX_CLI must name the ombrix-cli binary");
    m_demo = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo");
}

TestSimulate::Result TestSimulate::runCli(const QStringList &args)
{
    QProcess process;
    process.start(m_cli, QStringList{QStringLiteral("simulate")} + args);
    Result result;
    if (!process.waitForFinished(30000))
        return result;
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

void TestSimulate::stdoutStreamIsDeterministic()
{
    const QStringList args = {"--stdout", "--rate", "0", "--count", "3000", "--project", m_demo};
    const Result first = runCli(args + QStringList{"--seed", "3"});
    const Result again = runCli(args + QStringList{"--seed", "3"});
    const Result other = runCli(args + QStringList{"--seed", "4"});
    QCOMPARE(first.exitCode, 0);
    QCOMPARE(first.out.count('\n'), 3000);
    QVERIFY(first.out.endsWith('\n'));
    QCOMPARE(again.out, first.out);
    QVERIFY(other.out != first.out);
    QVERIFY(first.err.isEmpty());
    QVERIFY(first.out.startsWith("SPEED="));
}

void TestSimulate::timestampsOption()
{
    const Result result = runCli({"--stdout", "--rate", "100", "--count", "20", "--timestamps", "--def",
                                  m_demo + QStringLiteral("/dashboard_signals.def")});
    QCOMPARE(result.exitCode, 0);
    const QList<QByteArray> lines = result.out.trimmed().split('\n');
    QCOMPARE(lines.size(), 20);
    for (int i = 0; i < lines.size(); ++i)
        QCOMPARE(lines.at(i).left(lines.at(i).indexOf(' ')).toDouble(), i * 0.01);
}

void TestSimulate::readerOnThePseudoTerminal_data()
{
    QTest::addColumn<int>("stopSignal");
    QTest::newRow("SIGTERM") << int(SIGTERM);
    QTest::newRow("SIGINT") << int(SIGINT);
}

// A reader gets the device's lines, may close and reopen the port, and the
// simulator cleans up its link when stopped.
void TestSimulate::readerOnThePseudoTerminal()
{
    QFETCH(int, stopSignal);
    QTemporaryDir dir;
    const QString link = dir.filePath(QStringLiteral("ttySIM"));
    QVERIFY(QFile::link(QStringLiteral("/nonexistent"), link)); // a stale link is replaced

    QProcess process;
    process.start(m_cli, {"simulate", "--project", m_demo, "--rate", "200", "--timestamps", "--link", link});
    QVERIFY(process.waitForStarted());
    QTRY_VERIFY(process.canReadLine());
    QCOMPARE(process.readLine().trimmed(), link.toLocal8Bit());
    QVERIFY(QFileInfo(link).canonicalFilePath().startsWith(QStringLiteral("/dev/pts/")));

    SerialManager manager;
    QList<double> times;
    connect(&manager, &SerialManager::lineParsed, this, [&times](double t, const QMap<QString, double> &values) {
        if (values.contains(QStringLiteral("SPEED")))
            times.append(t);
    });
    SerialSettings settings;
    settings.portName = link;
    for (int session = 0; session < 2; ++session) {
        times.clear();
        QVERIFY(manager.open(settings));
        QTRY_VERIFY(times.size() >= 20);
        manager.close();
        for (int i = 1; i < times.size(); ++i)
            QVERIFY(times.at(i) > times.at(i - 1)); // whole lines, in order
    }
    QCOMPARE(process.state(), QProcess::Running);

    ::kill(pid_t(process.processId()), stopSignal);
    QVERIFY(process.waitForFinished(5000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(!QFileInfo(link).isSymLink());
}

// At --rate 0 the reader sets the pace: consecutive lines, none dropped.
void TestSimulate::fullSpeedDropsNothing()
{
    QTemporaryDir dir;
    const QString link = dir.filePath(QStringLiteral("ttyFAST"));
    QProcess process;
    process.start(m_cli, {"simulate", "--project", m_demo, "--rate", "0", "--timestamps", "--link", link});
    QVERIFY(process.waitForStarted());
    QTRY_VERIFY(process.canReadLine());

    SerialManager manager;
    QList<double> times;
    connect(&manager, &SerialManager::lineParsed, this, [&times](double t) { times.append(t); });
    SerialSettings settings;
    settings.portName = link;
    QVERIFY(manager.open(settings));
    QTRY_VERIFY_WITH_TIMEOUT(times.size() >= 20000, 20000);
    manager.close();
    process.terminate();
    QVERIFY(process.waitForFinished(5000));
    for (int i = 1; i < times.size(); ++i)
        QVERIFY2(qAbs(times.at(i) - times.at(i - 1) - 0.001) < 0.0005, qPrintable(QString::number(i)));
}

// A whole line of the demo device holds each of its ten signals once; a line
// cut and joined to another holds some twice.
static bool isWholeDemoLine(const QString &raw)
{
    QSet<QString> keys;
    int values = 0;
    for (const QString &token : raw.split(u' ')) {
        if (!token.contains(u'=') || token.startsWith(QLatin1String("ST_")) || token.startsWith(QLatin1String("ERR=")))
            continue;
        keys.insert(token.section(u'=', 0, 0));
        ++values;
    }
    return values == 10 && keys.size() == 10;
}

// A reader too slow for the rate misses old lines, but never gets a broken one.
void TestSimulate::slowReaderGetsWholeLines()
{
    QTemporaryDir dir;
    const QString link = dir.filePath(QStringLiteral("ttySLOW"));
    QProcess process;
    process.start(m_cli, {"simulate", "--project", m_demo, "--rate", "40000", "--timestamps", "--link", link});
    QVERIFY(process.waitForStarted());
    QTRY_VERIFY(process.canReadLine());

    SerialManager manager;
    int lines = 0;
    QStringList broken;
    connect(&manager, &SerialManager::rawLineReceived, this, [&lines, &broken](double, const QString &raw) {
        ++lines;
        if (!isWholeDemoLine(raw))
            broken.append(raw);
    });
    SerialSettings settings;
    settings.portName = link;
    QVERIFY(manager.open(settings));
    for (int i = 0; i < 4; ++i) {
        QThread::msleep(150); // a busy GUI thread: the device's lines pile up meanwhile
        const int before = lines;
        QTRY_VERIFY(lines > before + 100);
    }
    manager.close();
    process.terminate();
    QVERIFY(process.waitForFinished(5000));
    QVERIFY2(broken.isEmpty(), qPrintable(broken.join(u'\n')));
}

void TestSimulate::badOptions_data()
{
    QTest::addColumn<QStringList>("args");
    const QString demo = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo");
    QTest::newRow("unknown option") << QStringList{"--project", demo, "--bogus"};
    QTest::newRow("no definitions") << QStringList{"--stdout"};
    QTest::newRow("both def and project") << QStringList{"--project", demo, "--def", demo + "/dashboard_signals.def"};
    QTest::newRow("missing definition file") << QStringList{"--def", "/nonexistent/dashboard_signals.def"};
    QTest::newRow("project without definitions") << QStringList{"--project", "/nonexistent"};
    QTest::newRow("rate not a number") << QStringList{"--project", demo, "--rate", "fast"};
    QTest::newRow("negative duration") << QStringList{"--project", demo, "--duration", "-1"};
    QTest::newRow("negative seed") << QStringList{"--project", demo, "--seed", "-3"};
    QTest::newRow("missing value") << QStringList{"--project", demo, "--rate"};
    QTest::newRow("stray argument") << QStringList{"--project", demo, "now"};
}

void TestSimulate::badOptions()
{
    QFETCH(QStringList, args);
    const Result result = runCli(args + QStringList{"--stdout", "--count", "1"});
    QCOMPARE(result.exitCode, 2);
    QVERIFY(result.out.isEmpty());
    const QList<QByteArray> lines = result.err.split('\n');
    QVERIFY2(lines.size() > 2, result.err.constData());
    QVERIFY2(lines.at(0).startsWith("ombrix-cli simulate: "), result.err.constData());
    QVERIFY2(lines.at(1).startsWith("Usage: ombrix-cli simulate"), result.err.constData());
}

void TestSimulate::help()
{
    const Result result = runCli({"--help"});
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.out.startsWith("Usage: ombrix-cli simulate"));
    QVERIFY(result.out.contains("--link PATH"));
}

QTEST_GUILESS_MAIN(TestSimulate)
#include "tst_simulate.moc"
