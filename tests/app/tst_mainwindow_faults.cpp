#include "WindowFixture.h"

#include "AnalogGaugeWidget.h"
#include "MainToolBars.h"
#include "PortReconnector.h"
#include "PtyPair.h"
#include "Recording.h"
#include "RecordingWriter.h"
#include "SerialManager.h"

#include <QCheckBox>
#include <QLabel>
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

private:
    static QLabel *staleLabel(WindowFixture &f)
    {
        return f.window->statusBar()->findChild<QLabel *>(QStringLiteral("staleLabel"));
    }
};

QTEST_MAIN(tst_MainWindowFaults)
#include "tst_mainwindow_faults.moc"
