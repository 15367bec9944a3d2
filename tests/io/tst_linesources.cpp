#include "LineSource.h"
#include "LineSourceFactory.h"
#include "LivePipeline.h"
#include "PortReconnector.h"
#include "RecordingWriter.h"
#include "SerialManager.h"
#include "TestFiles.h"
#include "UdpLineSource.h"

#include <QNetworkDatagram>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUdpSocket>
#include <QtTest>

#include <memory>

namespace {

SerialSettings sourceNamed(const QString &name)
{
    SerialSettings settings;
    settings.portName = name;
    return settings;
}

// The raw lines a spy on rawLineReceived has seen.
QStringList rawLines(const QSignalSpy &spy)
{
    QStringList lines;
    for (const QList<QVariant> &arguments : spy)
        lines.append(arguments.at(1).toString());
    return lines;
}

// A port on 127.0.0.1 that nothing listens on.
quint16 closedTcpPort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : 0;
}

} // namespace

// Network sources against real sockets on 127.0.0.1, where the test plays
// the device: lines in, commands out, and every way a network lets one down.
class tst_LineSources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A UDP port some other program holds.
        QVERIFY(m_busyUdp.bind(QHostAddress::LocalHost, 0));
    }

    void addresses_data();
    void addresses();
    void tcpLinesCommandsAndRecording();
    void udpDatagramsAndCommands_data();
    void udpDatagramsAndCommands();
    void failuresNameTheReason_data();
    void failuresNameTheReason();
    void droppedConnectionComesBack();

private:
    QUdpSocket m_busyUdp;
};

void tst_LineSources::addresses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("error"); // a part of the reason; empty for a good address

    QTest::newRow("serial port name") << "ttyUSB0" << "";
    QTest::newRow("serial path with colons") << "/dev/serial/by-path/pci-0000:00:14.0-usb-0:2:1.0" << "";
    QTest::newRow("tcp") << "tcp://127.0.0.1:5000" << "";
    QTest::newRow("tcp to IPv6") << "tcp://[::1]:5000" << "";
    QTest::newRow("tcp without port") << "tcp://device.local" << "expected tcp://HOST:PORT";
    QTest::newRow("tcp to port 0") << "tcp://127.0.0.1:0" << "expected tcp://HOST:PORT";
    QTest::newRow("tcp port out of range") << "tcp://127.0.0.1:70000" << "malformed address";
    QTest::newRow("tcp with a path") << "tcp://127.0.0.1:5000/x" << "expected tcp://HOST:PORT";
    QTest::newRow("tcp with an option") << "tcp://127.0.0.1:5000?reply=1.2.3.4:5" << "unknown option \"reply\"";
    QTest::newRow("udp on every address") << "udp://:5000" << "";
    QTest::newRow("udp on any port") << "udp://127.0.0.1:0" << "";
    QTest::newRow("udp with reply") << "udp://:5000?reply=192.168.1.20:4000" << "";
    QTest::newRow("udp bound to a name") << "udp://device.local:5000" << "no address of this machine";
    QTest::newRow("udp reply without port") << "udp://:5000?reply=192.168.1.20" << "reply must be HOST:PORT";
    QTest::newRow("unknown kind") << "ftp://host/x" << "unknown kind of source \"ftp:\"";
}

void tst_LineSources::addresses()
{
    QFETCH(QString, text);
    QFETCH(QString, error);
    QString reason;
    const std::unique_ptr<LineSource> source(LineSourceFactory::create({sourceNamed(text), QString()}, nullptr, &reason));
    QCOMPARE(reason.isEmpty(), error.isEmpty());
    QCOMPARE(bool(source), error.isEmpty());
    QVERIFY2(reason.contains(error), qPrintable(reason));
    if (source)
        QCOMPARE(source->name(), text);
}

// Lines arrive however the stream cuts them; commands go back with the
// ending asked for and into the recording, between the lines around them.
void tst_LineSources::tcpLinesCommandsAndRecording()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QTemporaryDir project;
    LivePipeline pipeline;
    QSignalSpy raw(pipeline.serial(), &SerialManager::rawLineReceived);
    QString reason;
    QVERIFY(!pipeline.sendCommand(QStringLiteral("EARLY"), LineEnding::Lf, &reason));
    QCOMPARE(reason, QStringLiteral("no source is open"));

    const QString name = QStringLiteral("tcp://127.0.0.1:%1").arg(server.serverPort());
    QVERIFY(pipeline.open(sourceNamed(name)));
    QVERIFY(pipeline.isOpening());
    QVERIFY(!pipeline.sendCommand(QStringLiteral("EARLY"), LineEnding::Lf, &reason));
    QCOMPARE(reason, name + QStringLiteral(" is still connecting"));
    QTRY_VERIFY(server.hasPendingConnections());
    QTcpSocket *device = server.nextPendingConnection();
    QTRY_VERIFY(pipeline.isOpen());
    QVERIFY(pipeline.recorder()->start(project.path(), QString()));

    device->write("1.5 A=1\n2.0 A=2 ST_M=RUN\n2.5 A=");
    QTRY_COMPARE(raw.count(), 2);
    device->write("3\r\n");
    QTRY_COMPARE(rawLines(raw), QStringList({"1.5 A=1", "2.0 A=2 ST_M=RUN", "2.5 A=3"}));
    QVERIFY(pipeline.sendCommand(QStringLiteral("START"), LineEnding::Lf, &reason));
    QVERIFY(pipeline.sendCommand(QStringLiteral("LOAD_SET=40"), LineEnding::CrLf, &reason));
    QVERIFY(!pipeline.sendCommand(QStringLiteral("A\nB"), LineEnding::Lf, &reason));
    QVERIFY(reason.contains(QLatin1String("line break")));
    QTRY_COMPARE(device->bytesAvailable(), qint64(19));
    QCOMPARE(device->readAll(), QByteArray("START\nLOAD_SET=40\r\n"));

    device->write("3.0 A=4\n");
    QTRY_COMPARE(raw.count(), 4);
    pipeline.recorder()->stop();
    const QList<QByteArray> lines = readFile(pipeline.recorder()->filePath()).split('\n');
    QCOMPARE(lines.size(), 8); // and the empty rest after the last line feed
    QCOMPARE(lines.at(3), QByteArray("1.000000 A=3"));
    QVERIFY(lines.at(4).startsWith("1.0") && lines.at(4).endsWith(" RAW> START"));
    QVERIFY(lines.at(5).endsWith(" RAW> LOAD_SET=40"));
    QCOMPARE(lines.at(6), QByteArray("1.500000 A=4"));
}

void tst_LineSources::udpDatagramsAndCommands_data()
{
    QTest::addColumn<bool>("reply"); // commands go to ?reply=HOST:PORT, else to the last sender
    QTest::newRow("to the last sender") << false;
    QTest::newRow("to ?reply") << true;
}

// A datagram ends its last line; one too large for any device is dropped
// whole and counted; commands answer the device.
void tst_LineSources::udpDatagramsAndCommands()
{
    QFETCH(bool, reply);
    QUdpSocket device;
    QUdpSocket replies;
    QVERIFY(device.bind(QHostAddress::LocalHost, 0) && replies.bind(QHostAddress::LocalHost, 0));
    QString name = QStringLiteral("udp://127.0.0.1:0");
    if (reply)
        name += QStringLiteral("?reply=127.0.0.1:%1").arg(replies.localPort());
    SerialManager manager;
    QSignalSpy raw(&manager, &SerialManager::rawLineReceived);
    QSignalSpy dropped(&manager, &SerialManager::oversizedInputDropped);
    QVERIFY(manager.open(sourceNamed(name)));
    QVERIFY(manager.isOpen());
    const quint16 port = qobject_cast<UdpLineSource *>(manager.source())->localPort();

    QString reason;
    QCOMPARE(manager.write("HELLO\n", &reason), reply);
    if (!reply)
        QVERIFY2(reason.contains(QLatin1String("no datagram has arrived")), qPrintable(reason));
    device.writeDatagram("A=1\nB=2", QHostAddress::LocalHost, port);
    device.writeDatagram(QByteArray(UdpLineSource::MaxDatagramBytes + 1, 'x'), QHostAddress::LocalHost, port);
    device.writeDatagram("C=3\n", QHostAddress::LocalHost, port);
    QTRY_COMPARE(rawLines(raw), QStringList({"A=1", "B=2", "C=3"}));
    QCOMPARE(dropped.count(), 1);
    QCOMPARE(dropped.at(0), QVariantList({UdpLineSource::MaxDatagramBytes, qint64(1)}));

    QVERIFY2(manager.write("START\n", &reason), qPrintable(reason));
    QUdpSocket &receiver = reply ? replies : device;
    QTRY_VERIFY(receiver.hasPendingDatagrams());
    if (reply)
        QCOMPARE(receiver.receiveDatagram().data(), QByteArray("HELLO\n"));
    QTRY_VERIFY(receiver.hasPendingDatagrams());
    QCOMPARE(receiver.receiveDatagram().data(), QByteArray("START\n"));
}

void tst_LineSources::failuresNameTheReason_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("reason"); // a pattern the system's reason matches

    QTest::newRow("connection refused") << QStringLiteral("tcp://127.0.0.1:%1").arg(closedTcpPort())
                                        << "refused";
    // Without a name server the lookup fails for that reason instead.
    QTest::newRow("unknown host") << "tcp://no-such-host.invalid:5000" << "not found|name resolution";
    QTest::newRow("port in use") << QStringLiteral("udp://127.0.0.1:%1").arg(m_busyUdp.localPort()) << "in use";
    QTest::newRow("malformed address") << "tcp://127.0.0.1" << "malformed address";
}

// Reported once, at once or when the attempt ends, with the source named;
// the manager is closed and ready for the next.
void tst_LineSources::failuresNameTheReason()
{
    QFETCH(QString, source);
    QFETCH(QString, reason);
    SerialManager manager;
    QSignalSpy errors(&manager, &SerialManager::errorOccurred);
    QSignalSpy failed(&manager, &SerialManager::openFailed);
    const bool started = manager.open(sourceNamed(source));
    QTRY_COMPARE_WITH_TIMEOUT(failed.count(), 1, 15000);
    QCOMPARE(started, source.startsWith(QLatin1String("tcp")) && reason != QLatin1String("malformed address"));
    QCOMPARE(failed.at(0).at(0).toString(), source);
    const QString why = failed.at(0).at(1).toString();
    QVERIFY2(QRegularExpression(reason, QRegularExpression::CaseInsensitiveOption).match(why).hasMatch(),
             qPrintable(why));
    QCOMPARE(errors.count(), 1);
    QVERIFY(!manager.isOpen() && !manager.isOpening());
}

// A device that hangs up has its last line read, is reported lost, and is
// tried again, less and less often, until it listens again.
void tst_LineSources::droppedConnectionComesBack()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const quint16 port = server.serverPort();
    LivePipeline pipeline;
    pipeline.setReconnect(true);
    QSignalSpy raw(pipeline.serial(), &SerialManager::rawLineReceived);
    QSignalSpy lost(&pipeline, &LivePipeline::sourceLost);
    QSignalSpy back(&pipeline, &LivePipeline::reconnected);
    QVERIFY(pipeline.open(sourceNamed(QStringLiteral("tcp://127.0.0.1:%1").arg(port))));
    QTRY_VERIFY(server.hasPendingConnections());
    QTcpSocket *device = server.nextPendingConnection();
    QTRY_VERIFY(pipeline.isOpen());

    server.close();
    device->write("A=1\n");
    device->disconnectFromHost();
    QTRY_COMPARE(lost.count(), 1);
    QCOMPARE(rawLines(raw), QStringList{"A=1"});
    QVERIFY2(lost.at(0).at(1).toString().contains(QLatin1String("closed")), qPrintable(lost.at(0).at(1).toString()));
    QVERIFY(pipeline.isWaitingToReconnect());
    QString reason;
    QVERIFY(!pipeline.sendCommand(QStringLiteral("X"), LineEnding::Lf, &reason));
    QVERIFY(reason.endsWith(QLatin1String(" was lost")));

    QTRY_VERIFY_WITH_TIMEOUT(pipeline.reconnector()->nextTryMs() > PortReconnector::FirstRetryMs, 10000);
    QVERIFY(server.listen(QHostAddress::LocalHost, port));
    QTRY_COMPARE_WITH_TIMEOUT(back.count(), 1, 15000);
    QVERIFY(pipeline.isOpen() && !pipeline.isWaitingToReconnect());
    QVERIFY(pipeline.sendCommand(QStringLiteral("X"), LineEnding::Lf, &reason));
}

QTEST_GUILESS_MAIN(tst_LineSources)
#include "tst_linesources.moc"
