#include "WindowFixture.h"

#include "AnalogGaugeWidget.h"
#include "MainToolBars.h"
#include "SerialManager.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QStatusBar>
#include <QTcpServer>
#include <QTcpSocket>
#include <QToolButton>

// Sources other than a serial port, typed into the port box: a device on
// the network and the built-in simulated device.
class tst_MainWindowSources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    // While connecting the button offers to give up; a dropped connection
    // marks the values stale, naming the source, until "Reconnect" has it back.
    void networkSourceLostAndBack()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        WindowFixture f;
        auto *gauge = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("TEMP")}));
        MainToolBars *bars = f.window->toolBars();
        QLabel *stale = f.window->statusBar()->findChild<QLabel *>(QStringLiteral("staleLabel"));
        bars->reconnectBox->setChecked(true);
        const QString source = QStringLiteral("tcp://127.0.0.1:%1").arg(server.serverPort());
        bars->portBox->setEditText(source);
        QTest::mouseClick(bars->connectButton, Qt::LeftButton);
        QCOMPARE(bars->connectButton->text(), QStringLiteral("Disconnect"));
        QTRY_VERIFY(server.hasPendingConnections());
        QTcpSocket *device = server.nextPendingConnection();
        QTRY_VERIFY(f.window->serialManager()->isOpen());
        device->write("TEMP=12\n");
        QTRY_COMPARE(gauge->value(), 12.0);

        device->disconnectFromHost();
        QTRY_VERIFY(!stale->isHidden());
        QVERIFY2(f.window->statusBar()->currentMessage().contains(source),
                 qPrintable(f.window->statusBar()->currentMessage()));
        QCOMPARE(gauge->value(), 12.0);
        QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), 10000);
        device = server.nextPendingConnection();
        QTRY_VERIFY(stale->isHidden());
        device->write("TEMP=13\n");
        QTRY_COMPARE(gauge->value(), 13.0);
    }

    // "sim:" speaks the project's definitions, so values move at once.
    void simulatedDeviceMovesTheDashboard()
    {
        WindowFixture f;
        auto *gauge = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("TEMP")}));
        QVERIFY(f.window->connectPort(QStringLiteral("sim:?rate=200"), 115200));
        QTRY_VERIFY(gauge->value() > 0.0);
        f.window->recordButton();
        QCOMPARE(f.window->mode(), Ombrix::Record);
    }
};

QTEST_MAIN(tst_MainWindowSources)
#include "tst_mainwindow_sources.moc"
