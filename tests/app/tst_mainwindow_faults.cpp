#include "WindowFixture.h"

#include "AnalogGaugeWidget.h"
#include "DeviceFaults.h"
#include "LineFramer.h"
#include "MainToolBars.h"
#include "MessagesConsoleWidget.h"
#include "PortReconnector.h"
#include "PtyPair.h"
#include "Recording.h"
#include "RecordingWriter.h"
#include "SerialManager.h"

#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>
#include <QStatusBar>
#include <QToolButton>

namespace {

// A few polls, on a busy machine.
constexpr int ReconnectTimeoutMs = 10 * PortReconnector::PollIntervalMs;

// A device at a fixed path, as /dev/ttyUSB0 is: unplugging hangs its
// pseudo-terminal up and the path goes; plugging in brings a new one there.
struct PluggableDevice
{
    explicit PluggableDevice(const QString &devicePath) : path(devicePath) { plugIn(); }

    bool plugIn()
    {
        pty = std::make_unique<PtyPair>();
        return pty->isValid() && QFile::link(pty->slavePath(), path);
    }

    void unplug()
    {
        pty->close();
        QFile::remove(path);
    }

    QString path;
    std::unique_ptr<PtyPair> pty;
};

} // namespace

// The device misbehaving in front of the window: it goes away mid-line and
// mid-recording, comes back, sends garbage or a line without end.
class tst_MainWindowFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void lostMidRecordingAndBack_data()
    {
        QTest::addColumn<bool>("automatic");
        QTest::newRow("reconnected by hand") << false;
        QTest::newRow("reconnected automatically") << true;
    }

    void lostMidRecordingAndBack()
    {
        QFETCH(bool, automatic);
        WindowFixture f;
        auto *gauge = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("TEMP")}));
        PluggableDevice device(f.root.filePath(QStringLiteral("ttyBENCH")));
        MainToolBars *bars = f.window->toolBars();
        QLabel *stale = staleLabel(f);
        QVERIFY(stale && stale->isHidden());
        QCOMPARE(stale->text(), QStringLiteral("Port lost — values are stale"));
        QVERIFY(!bars->reconnectBox->isChecked());
        bars->reconnectBox->setChecked(automatic);

        QVERIFY(f.window->connectPort(device.path, 57600));
        f.window->recordButton();
        const QString first = f.window->recordingWriter()->filePath();
        QVERIFY(device.pty->write("1.0 TEMP=10\n2.0 TEMP=20\n3.0 TEMP=3"));
        QTRY_COMPARE(gauge->value(), 20.0);

        device.unplug();
        QTRY_COMPARE(f.window->mode(), Ombrix::Idle);
        QCOMPARE(readFile(first), QByteArray("0.000000 TEMP=10\n1.000000 TEMP=20\n"));
        const QString message = f.window->statusBar()->currentMessage();
        QVERIFY2(message.contains(device.path), qPrintable(message));
        QVERIFY(!stale->isHidden());
        QCOMPARE(gauge->value(), 20.0); // the last value stays, marked stale by the label alone
        // While it waits for the device, the button offers to stop waiting.
        QCOMPARE(bars->connectButton->text(), automatic ? QStringLiteral("Disconnect") : QStringLiteral("Connect"));

        QVERIFY(device.plugIn());
        if (automatic)
            QTRY_VERIFY_WITH_TIMEOUT(f.window->serialManager()->isOpen(), ReconnectTimeoutMs);
        else
            QTest::mouseClick(bars->connectButton, Qt::LeftButton);
        QVERIFY(f.window->serialManager()->isOpen());
        QCOMPARE(f.window->serialManager()->settings().baudRate, 57600);
        QCOMPARE(bars->connectButton->text(), QStringLiteral("Disconnect"));
        QVERIFY(stale->isHidden());
        QCOMPARE(f.window->mode(), Ombrix::Idle); // the recording the loss ended stays ended

        f.window->recordButton();
        QCOMPARE(f.window->mode(), Ombrix::Record);
        QVERIFY(device.pty->write("7.0 TEMP=30\n"));
        QTRY_COMPARE(gauge->value(), 30.0);
        f.window->stopButton();
        QVERIFY(f.window->playbackFile() != first);
        QCOMPARE(readFile(f.window->playbackFile()), QByteArray("0.000000 TEMP=30\n"));
    }

    // Waiting for a lost port ends when the user disconnects, which also takes
    // the stale label down, or unchecks "Reconnect", after which the values
    // stay marked stale.
    void waitingForThePortEnds_data()
    {
        QTest::addColumn<bool>("disconnect");
        QTest::newRow("Disconnect clicked") << true;
        QTest::newRow("Reconnect unchecked") << false;
    }

    void waitingForThePortEnds()
    {
        QFETCH(bool, disconnect);
        WindowFixture f;
        PluggableDevice device(f.root.filePath(QStringLiteral("ttyBENCH")));
        MainToolBars *bars = f.window->toolBars();
        bars->reconnectBox->setChecked(true);
        QVERIFY(f.window->connectPort(device.path, 115200));
        device.unplug();
        QTRY_VERIFY(!staleLabel(f)->isHidden());
        QVERIFY(!bars->connectButton->toolTip().isEmpty());

        if (disconnect)
            QTest::mouseClick(bars->connectButton, Qt::LeftButton);
        else
            bars->reconnectBox->setChecked(false);
        // No longer waiting: the button would say "Disconnect" and carry a tool tip.
        QCOMPARE(bars->connectButton->text(), QStringLiteral("Connect"));
        QVERIFY(bars->connectButton->toolTip().isEmpty());
        QCOMPARE(staleLabel(f)->isHidden(), disconnect);

        // Checked again after a loss, it waits for the lost port.
        if (!disconnect) {
            QVERIFY(device.plugIn());
            bars->reconnectBox->setChecked(true);
            QTRY_VERIFY_WITH_TIMEOUT(f.window->serialManager()->isOpen(), ReconnectTimeoutMs);
            QVERIFY(staleLabel(f)->isHidden());
        }
    }

    // What the device sends between two good lines: the lines survive, the
    // garbage reaches the messages, an endless line is dropped and reported once.
    void badStreamWhileRecording_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("messages");
        QTest::addColumn<int>("reports");
        QTest::newRow("binary garbage") << DeviceFaults::binaryGarbage() << 1 << 0;
        QTest::newRow("no line feed for 10 MB") << QByteArray(10 << 20, 'x') << 0 << 1;
    }

    void badStreamWhileRecording()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, messages);
        QFETCH(int, reports);
        PtyPair pty;
        WindowFixture f;
        auto *gauge = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("TEMP")}));
        auto *console = f.widgetOf<MessagesConsoleWidget>(f.add(QStringLiteral("MessagesConsole")));
        QSignalSpy statusMessages(f.window->statusBar(), &QStatusBar::messageChanged);
        QVERIFY(f.window->connectPort(pty.slavePath(), 115200));
        f.window->recordButton();

        QVERIFY(pty.writeLarge("1.0 TEMP=10\n1.5 " + bytes + "\n2.0 TEMP=20\n"));
        QTRY_COMPARE(gauge->value(), 20.0);
        QCOMPARE(console->lines().size(), messages);
        if (messages)
            QVERIFY(console->lines().at(0).contains(QChar::ReplacementCharacter));
        const QString report = QStringLiteral("Port %1: line longer than %2 bytes dropped")
                                   .arg(f.window->serialManager()->portName()).arg(LineFramer::MaxLineBytes);
        QCOMPARE(statusMessages.count(QVariantList{report}), reports);
        QVERIFY(f.window->serialManager()->isOpen());

        f.window->stopButton();
        const QByteArray file = readFile(f.window->playbackFile());
        QVERIFY2(DeviceFaults::allLinesWhole(file), file.left(200).constData());
        QVERIFY(file.startsWith("0.000000 TEMP=10\n") && file.endsWith("1.000000 TEMP=20\n"));
        Recording recording;
        QVERIFY(recording.load(f.window->playbackFile()));
        QCOMPARE(recording.frameCount(), 2 + messages);
        QCOMPARE(recording.messages().size(), messages);
    }

private:
    static QLabel *staleLabel(WindowFixture &f)
    {
        return f.window->statusBar()->findChild<QLabel *>(QStringLiteral("staleLabel"));
    }
};

QTEST_MAIN(tst_MainWindowFaults)
#include "tst_mainwindow_faults.moc"
