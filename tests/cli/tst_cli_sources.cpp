#include "CliRun.h"
#include "TestFiles.h"

#include <QDir>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUdpSocket>
#include <QtTest>

namespace {

constexpr int LineCount = 1000;

// The line the test device sends i-th, with its own time stamp, and what the
// recording makes of it.
QByteArray deviceLine(int i)
{
    return QByteArray::number(i * 0.01, 'f', 2) + " A=" + QByteArray::number(i) + '\n';
}

QByteArray recordedLine(int i)
{
    return QByteArray::number(i * 0.01, 'f', 6) + " A=" + QByteArray::number(i) + '\n';
}

} // namespace

// ombrix-cli record and send on every kind of source, with the test as the
// device on 127.0.0.1.
class tst_CliSources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_project = std::make_unique<QTemporaryDir>();
        QVERIFY(writeFile(m_project->filePath(QStringLiteral("dashboard_signals.def")),
                          "DASHBOARD_SIGNAL(A, \"Alpha\", float)\n"));
    }

    void recordsTheLineLimit_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("tcp") << "tcp";
        QTest::newRow("udp") << "udp";
        QTest::newRow("sim") << "sim";
    }

    void recordsTheLineLimit();
    void sendWritesOneLinePerText_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QByteArray>("delivered");
        QTest::newRow("line feed by default") << QStringList() << QByteArray("START\nLOAD_SET=40\n");
        QTest::newRow("crlf") << QStringList{"--ending", "crlf"} << QByteArray("START\r\nLOAD_SET=40\r\n");
        QTest::newRow("none") << QStringList{"--ending", "none"} << QByteArray("STARTLOAD_SET=40");
    }

    void sendWritesOneLinePerText();
    void failuresExitOneNamingTheSource_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("message"); // the one line on stderr, after "ombrix-cli <command>: "
        const QString missing = QDir::temp().filePath(QStringLiteral("no-such-port"));
        QTest::newRow("record, no such port") << QStringList{"record", "--port", missing}
                                              << "cannot open " + missing + ": ";
        QTest::newRow("record, refused") << QStringList{"record", "--port", "tcp://127.0.0.1:1"}
                                         << "cannot open tcp://127.0.0.1:1: Connection refused";
        QTest::newRow("record, malformed") << QStringList{"record", "--port", "udp://127.0.0.1"}
                                           << "cannot open udp://127.0.0.1: malformed address";
        QTest::newRow("send, refused") << QStringList{"send", "--port", "tcp://127.0.0.1:1", "START"}
                                       << "cannot open tcp://127.0.0.1:1: Connection refused";
        QTest::newRow("send, nobody to answer")
            << QStringList{"send", "--port", "udp://127.0.0.1:0", "START"}
            << "cannot write to udp://127.0.0.1:0: no device to send to yet";
    }

    void failuresExitOneNamingTheSource();

private:
    // Starts the command; false when it did not start.
    bool start(QProcess &process, const QStringList &args)
    {
        process.start(CliRun::program(), args);
        return process.waitForStarted();
    }

    std::unique_ptr<QTemporaryDir> m_project;
};

// 1,000 lines from a device that sends more, recorded whole: the network
// ones byte for byte, the simulated one counted.
void tst_CliSources::recordsTheLineLimit()
{
    QFETCH(QString, kind);
    QTcpServer server;
    QUdpSocket device;
    QString source = QStringLiteral("sim:?rate=1000");
    if (kind == QLatin1String("tcp")) {
        QVERIFY(server.listen(QHostAddress::LocalHost));
        source = QStringLiteral("tcp://127.0.0.1:%1").arg(server.serverPort());
    } else if (kind == QLatin1String("udp")) {
        // A port to listen on, free a moment ago.
        QVERIFY(device.bind(QHostAddress::LocalHost, 0));
        source = QStringLiteral("udp://127.0.0.1:%1").arg(device.localPort());
        device.close();
        QVERIFY(device.bind(QHostAddress::LocalHost, 0));
    }
    QProcess recorder;
    QVERIFY(start(recorder, {"record", "--port", source, "--project", m_project->path(), "--lines",
                             QString::number(LineCount)}));
    QTRY_VERIFY_WITH_TIMEOUT(recorder.canReadLine(), 10000);
    const QString path = QString::fromUtf8(recorder.readLine()).trimmed();

    QByteArray lines;
    QByteArray expected;
    for (int i = 0; i < LineCount + 50; ++i) {
        lines += deviceLine(i);
        expected += i < LineCount ? recordedLine(i) : QByteArray();
    }
    if (kind == QLatin1String("tcp")) {
        QTRY_VERIFY(server.hasPendingConnections());
        server.nextPendingConnection()->write(lines);
    } else if (kind == QLatin1String("udp")) {
        // Fifty lines a datagram, the last line of each without its line feed.
        const quint16 port = QUrl(source).port();
        for (qsizetype at = 0; at < lines.size();) {
            const qsizetype end = lines.indexOf('\n', at + 500);
            const qsizetype next = end < 0 ? lines.size() : end + 1;
            QVERIFY(device.writeDatagram(lines.sliced(at, next - at).chopped(1), QHostAddress::LocalHost, port) > 0);
            at = next;
        }
    }
    QTRY_COMPARE_WITH_TIMEOUT(recorder.state(), QProcess::NotRunning, 20000);
    QCOMPARE(recorder.exitCode(), 0);
    QVERIFY(recorder.readAllStandardError().contains("1000 lines received"));
    if (kind != QLatin1String("sim"))
        QCOMPARE(readFile(path), expected);
}

void tst_CliSources::sendWritesOneLinePerText()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, delivered);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QProcess sender;
    QVERIFY(start(sender, QStringList{"send", "--port", QStringLiteral("tcp://127.0.0.1:%1").arg(server.serverPort())}
                              + options + QStringList{"START", "LOAD_SET=40"}));
    QTRY_VERIFY(server.hasPendingConnections());
    QTcpSocket *device = server.nextPendingConnection();
    QTRY_COMPARE(device->state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(device->readAll(), delivered);
    QTRY_COMPARE(sender.state(), QProcess::NotRunning);
    QCOMPARE(sender.exitCode(), 0);
    QVERIFY(sender.readAll().isEmpty() && sender.readAllStandardError().isEmpty());
}

// The source and the system's reason on one line; nothing recorded.
void tst_CliSources::failuresExitOneNamingTheSource()
{
    QFETCH(QStringList, args);
    QFETCH(QString, message);
    const CliRun run = CliRun::run(args + QStringList{"--project", m_project->path()});
    QCOMPARE(run.exitCode, 1);
    QVERIFY(run.out.isEmpty());
    QCOMPARE(run.err.count('\n'), 1);
    const QByteArray prefix = "ombrix-cli " + args.at(0).toUtf8() + ": " + message.toUtf8();
    QVERIFY2(run.err.startsWith(prefix), run.err.constData());
    QVERIFY(QDir(m_project->filePath("recordings")).isEmpty());
}

QTEST_GUILESS_MAIN(tst_CliSources)
#include "tst_cli_sources.moc"
