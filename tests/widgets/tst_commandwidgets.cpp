#include "CommandButtonWidget.h"
#include "LivePipeline.h"
#include "SetpointControlWidget.h"

#include <QApplication>
#include <QDoubleSpinBox>
#include <QJsonObject>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <memory>

class tst_CommandWidgets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void configSurvivesALayout_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QJsonObject>("config");
        QTest::newRow("button") << QStringLiteral("CommandButton")
                                << QJsonObject{{"caption", "Reset Fault"}, {"command", "RESET"},
                                               {"confirm", "Reset the latched fault?"}, {"color", "Amber"}};
        QTest::newRow("setpoint") << QStringLiteral("SetpointControl")
                                  << QJsonObject{{"caption", "Load"}, {"min", -5.0}, {"max", 95.0}, {"step", 2.5},
                                                 {"decimals", 1}, {"template", "LOAD_SET={value}"}};
    }

    void configSurvivesALayout()
    {
        QFETCH(QString, type);
        QFETCH(QJsonObject, config);
        std::unique_ptr<CommandWidget> widget;
        if (type == QLatin1String("CommandButton"))
            widget = std::make_unique<CommandButtonWidget>();
        else
            widget = std::make_unique<SetpointControlWidget>();
        widget->loadConfig(config);
        QCOMPARE(widget->saveConfig(), config);
    }

    void setpointKeepsItsRangeSane_data()
    {
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        QTest::addColumn<double>("step");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("sliderPosition");
        QTest::newRow("steps of five") << 0.0 << 100.0 << 5.0 << 0 << 40.0 << "SET=40" << 8;
        QTest::newRow("rounded to the decimals") << 0.0 << 10.0 << 0.1 << 1 << 2.345 << "SET=2.3" << 23;
        QTest::newRow("clamped to the maximum") << 0.0 << 10.0 << 1.0 << 0 << 50.0 << "SET=10" << 10;
        QTest::newRow("maximum below minimum") << 5.0 << 1.0 << 1.0 << 0 << 3.0 << "SET=5" << 0;
        QTest::newRow("step of zero") << 0.0 << 1.0 << 0.0 << 2 << 0.5 << "SET=0.50" << 50;
    }

    void setpointKeepsItsRangeSane()
    {
        QFETCH(double, min);
        QFETCH(double, max);
        QFETCH(double, step);
        QFETCH(int, decimals);
        QFETCH(double, value);
        QFETCH(QString, command);
        QFETCH(int, sliderPosition);
        SetpointControlWidget setpoint;
        setpoint.setRange(min, max, step, decimals);
        setpoint.setSetpoint(value);
        QCOMPARE(setpoint.command(), command);
        QCOMPARE(setpoint.slider()->value(), sliderPosition);
        QVERIFY(setpoint.maximum() >= setpoint.minimum());
        QVERIFY(setpoint.step() > 0.0);
    }

    // A question guards a button that needs one; a setpoint goes when its
    // slider is let go.
    void confirmationAndSliderRelease()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        LivePipeline pipeline;
        CommandWidget::setCommandSink(&pipeline);
        SerialSettings settings;
        settings.portName = QStringLiteral("tcp://127.0.0.1:%1").arg(server.serverPort());
        QVERIFY(pipeline.open(settings));
        QTRY_VERIFY(server.hasPendingConnections());
        QTcpSocket *device = server.nextPendingConnection();

        CommandButtonWidget button;
        button.setCommand(QStringLiteral("RESET"));
        button.setConfirmation(QStringLiteral("Reset the latched fault?"));
        QTRY_VERIFY(button.button()->isEnabled());
        answerQuestion(QMessageBox::No);
        button.trigger();
        answerQuestion(QMessageBox::Yes);
        button.trigger();

        SetpointControlWidget setpoint;
        setpoint.setCommandTemplate(QStringLiteral("LOAD_SET={value}"));
        setpoint.slider()->setSliderDown(true);
        setpoint.slider()->setValue(30);
        QCOMPARE(setpoint.setpoint(), 30.0);
        setpoint.slider()->setSliderDown(false);

        QByteArray received;
        QTRY_VERIFY((received += device->readAll()).size() >= 18);
        QCOMPARE(received, QByteArray("RESET\nLOAD_SET=30\n"));

        // Once the source is gone the controls say so.
        pipeline.close();
        QTRY_VERIFY(!setpoint.spinBox()->isEnabled());
        QCOMPARE(setpoint.statusText(), QStringLiteral("Disabled: no source is open"));
        CommandWidget::setCommandSink(nullptr);
    }

private:
    static void answerQuestion(QMessageBox::StandardButton answer)
    {
        QTimer::singleShot(0, [answer] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            box->button(answer)->click();
        });
    }
};

QTEST_MAIN(tst_CommandWidgets)
#include "tst_commandwidgets.moc"
