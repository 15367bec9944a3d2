#include "WindowFixture.h"

#include "AnalogGaugeWidget.h"
#include "ClickableLabel.h"
#include "SignalPlaybackEngine.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"
#include "DigitalDisplayWidget.h"
#include "ErrorConsoleWidget.h"
#include "MainToolBars.h"
#include "MessagesConsoleWidget.h"
#include "PtyPair.h"
#include "SerialManager.h"
#include "SignalDefinitions.h"
#include "StateIndicatorWidget.h"
#include "WidgetPalette.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QSlider>
#include <QGraphicsView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

class tst_MainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void toolBarsAndControls();
    void liveValuesReachBoundWidgetsMapped();
    void liveStatesErrorsAndMessagesReachTheirWidgets();
    void modeTransitions_data();
    void modeTransitions();
    void designModeMakesItemsEditable();
    void paletteFollowsRegistryAndAddsOnDoubleClick();
    void layoutRoundTripRestoresEveryItem();
    void layoutWarnings_data();
    void layoutWarnings();
    void layoutWithoutItemsEmptiesDashboard();
    void unopenablePortLeavesWindowUsable();
    void lostPortReturnsButtonToConnect();
    void typedPortPathSurvivesPortRefresh();
    void demoLayoutFitsDemoProject();
};

void tst_MainWindow::cleanup()
{
    QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_MainWindow::toolBarsAndControls()
{
    WindowFixture f;
    MainToolBars *bars = f.window->toolBars();
    QStringList names;
    for (const QToolBar *bar : f.window->findChildren<QToolBar *>()) {
        names.append(bar->objectName());
        QVERIFY(!bar->isMovable());
        QVERIFY(!bar->isFloatable());
        QCOMPARE(bar->iconSize(), QSize(24, 24));
    }
    QCOMPARE(names, (QStringList{QStringLiteral("tb_controls"), QStringLiteral("tb_export"), QStringLiteral("tb_io")}));
    QCOMPARE(bars->controlsBar->windowTitle(), QStringLiteral("Controls"));
    QCOMPARE(bars->ioBar->windowTitle(), QStringLiteral("I/O"));

    QStringList baudTexts;
    for (int i = 0; i < bars->baudBox->count(); ++i) {
        baudTexts.append(bars->baudBox->itemText(i));
        QCOMPARE(bars->baudBox->itemData(i).toString(), bars->baudBox->itemText(i));
    }
    QCOMPARE(baudTexts, (QStringList{QStringLiteral("115200"), QStringLiteral("57600"), QStringLiteral("38400"),
                                     QStringLiteral("19200"), QStringLiteral("9600")}));
    QCOMPARE(bars->baudRate(), 115200);
    QVERIFY(bars->portBox->isEditable());
    QCOMPARE(bars->connectButton->text(), QStringLiteral("Connect"));
    QCOMPARE(bars->positionSlider->maximum(), 1000);
    QCOMPARE(bars->playbackFileLabel->text(), QStringLiteral("No file selected"));
    QCOMPARE(bars->useRecordingDefinitionsBox->text(), QStringLiteral("Use recording’s definitions"));
    QCOMPARE(f.window->modeLabel()->text(), QStringLiteral("Idle"));
    QCOMPARE(f.window->palette()->width(), 160);

    bars->speedBox->setValue(2.5);
    QCOMPARE(f.window->engine()->playbackRate(), 2.5);
}

void tst_MainWindow::liveValuesReachBoundWidgetsMapped()
{
    PtyPair pty;
    QVERIFY(pty.isValid());
    WindowFixture f;
    auto *gauge = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("RPM")}));
    auto *display = f.widgetOf<DigitalDisplayWidget>(f.add(QStringLiteral("DigitalDisplay"), {QStringLiteral("RPM:avg")}));
    auto *other = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("TEMP")}));
    QVERIFY(gauge && display && other);
    gauge->setRange(0, 1000);

    QVERIFY(f.window->connectPort(pty.slavePath(), 115200));
    QCOMPARE(f.window->toolBars()->connectButton->text(), QStringLiteral("Disconnect"));

    QVERIFY(pty.write("RPM=100\n"));
    // RPM maps as raw * 0.5 + 10.
    QTRY_COMPARE(gauge->value(), 60.0);
    QTRY_VERIFY2(display->valueText().startsWith(QLatin1String("60")), qPrintable(display->valueText()));
    QCOMPARE(other->value(), 0.0);
    QCOMPARE(f.window->latestValues().value(QStringLiteral("RPM")), 100.0);

    QVERIFY(pty.write("1.5 RPM=300 TEMP=42\n"));
    QTRY_COMPARE(gauge->value(), 160.0);
    QCOMPARE(other->value(), 42.0);

    QTest::mouseClick(f.window->toolBars()->connectButton, Qt::LeftButton);
    QCOMPARE(f.window->toolBars()->connectButton->text(), QStringLiteral("Connect"));
    QVERIFY(!f.window->serialManager()->isOpen());
}

void tst_MainWindow::liveStatesErrorsAndMessagesReachTheirWidgets()
{
    PtyPair pty;
    WindowFixture f;
    auto *indicator = f.widgetOf<StateIndicatorWidget>(f.add(QStringLiteral("StateIndicator")));
    auto *unrelated = f.widgetOf<StateIndicatorWidget>(f.add(QStringLiteral("StateIndicator")));
    auto *errors = f.widgetOf<ErrorConsoleWidget>(f.add(QStringLiteral("ErrorConsole")));
    auto *messages = f.widgetOf<MessagesConsoleWidget>(f.add(QStringLiteral("MessagesConsole")));
    indicator->setGroupId(QStringLiteral("MODE"));
    unrelated->setGroupId(QStringLiteral("PUMP"));
    QVERIFY(f.window->connectPort(pty.slavePath(), 115200));

    QVERIFY(pty.write("2.0 ST_MODE=RUN ERR=E_HOT ERR=E_UNKNOWN hello there\n"));
    QTRY_COMPARE(indicator->stateLabel(), QStringLiteral("Running"));
    QCOMPARE(unrelated->stateId(), QString());
    QTRY_COMPARE(errors->lineCount(), 2);
    QVERIFY(errors->lines().at(0).contains(QLatin1String("E_HOT")));
    QVERIFY(errors->lines().at(0).contains(QLatin1String("Overheated")));
    QVERIFY(errors->lines().at(1).contains(QLatin1String("E_UNKNOWN")));
    QTRY_COMPARE(messages->lineCount(), 1);
    QVERIFY(messages->lines().at(0).endsWith(QLatin1String("hello there")));
}

void tst_MainWindow::modeTransitions_data()
{
    QTest::addColumn<QStringList>("presses");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("stopText");
    QTest::addColumn<bool>("playEnabled");
    auto mode = [](Ombrix::OperatingMode m) { return int(m); };
    QTest::newRow("design") << QStringList{"design"} << mode(Ombrix::Design) << "Design Mode" << "Stop" << true;
    QTest::newRow("design twice") << QStringList{"design", "design"} << mode(Ombrix::Idle) << "Idle" << "Stop" << true;
    QTest::newRow("play") << QStringList{"play"} << mode(Ombrix::Play) << "Playing..." << "Pause" << false;
    QTest::newRow("stop in play pauses") << QStringList{"play", "stop"} << mode(Ombrix::Pause) << "Pause..." << "Stop"
                                         << true;
    QTest::newRow("stop in pause") << QStringList{"play", "stop", "stop"} << mode(Ombrix::Idle) << "Idle" << "Stop"
                                   << true;
    QTest::newRow("play after pause") << QStringList{"play", "stop", "play"} << mode(Ombrix::Play) << "Playing..."
                                      << "Pause" << false;
    QTest::newRow("stop in design") << QStringList{"design", "stop"} << mode(Ombrix::Idle) << "Idle" << "Stop" << true;
    QTest::newRow("design from play") << QStringList{"play", "design"} << mode(Ombrix::Design) << "Design Mode"
                                      << "Stop" << true;
    QTest::newRow("record without port") << QStringList{"record"} << mode(Ombrix::Idle) << "Idle" << "Stop" << true;
    QTest::newRow("record without port in design") << QStringList{"design", "record"} << mode(Ombrix::Design)
                                                   << "Design Mode" << "Stop" << true;
}

void tst_MainWindow::modeTransitions()
{
    QFETCH(QStringList, presses);
    QFETCH(int, mode);
    QFETCH(QString, status);
    QFETCH(QString, stopText);
    QFETCH(bool, playEnabled);

    WindowFixture f;
    MainToolBars *bars = f.window->toolBars();
    for (const QString &press : presses) {
        QAction *action = press == QLatin1String("design") ? bars->designAction
            : press == QLatin1String("play")               ? bars->playAction
            : press == QLatin1String("stop")               ? bars->stopAction
                                                           : bars->recordAction;
        action->trigger();
    }
    QCOMPARE(int(f.window->mode()), mode);
    QCOMPARE(f.window->modeLabel()->text(), status);
    QCOMPARE(bars->stopAction->text(), stopText);
    QCOMPARE(bars->stopAction->toolTip(), stopText == QLatin1String("Pause") ? QStringLiteral("Pause playback") : stopText);
    QCOMPARE(bars->playAction->isEnabled(), playEnabled);
    QCOMPARE(f.window->palette()->isEnabled(), mode == Ombrix::Design);

    // Play without a file and record without a port are refused with their warnings.
    QStringList expected;
    for (const QString &press : presses) {
        if (press == QLatin1String("play"))
            expected.append(QStringLiteral("No File: No playback file selected."));
        if (press == QLatin1String("record"))
            expected.append(QStringLiteral("Serial: Open a serial port before recording."));
    }
    QCOMPARE(f.prompts->warningTexts(), expected);
}

void tst_MainWindow::designModeMakesItemsEditable()
{
    WindowFixture f;
    DashboardItem *item = f.add(QStringLiteral("AnalogGauge"));
    QVERIFY(!item->designMode());
    f.window->designButton();
    QVERIFY(item->designMode());
    QVERIFY(f.window->dashboard()->scene()->designMode());
    f.window->designButton();
    QVERIFY(!item->designMode());
    QVERIFY(!f.window->dashboard()->scene()->designMode());
}

void tst_MainWindow::paletteFollowsRegistryAndAddsOnDoubleClick()
{
    WindowFixture f;
    WidgetPalette *palette = f.window->palette();
    QCOMPARE(palette->typeNames(), DashboardWidgetFactory::instance().typeNames());
    QVERIFY(palette->count() >= 5);

    f.window->designButton();
    f.window->show();
    QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));
    for (int row : {0, 0, 1}) {
        const QRect rect = palette->visualItemRect(palette->item(row));
        // A real double click is a press and release followed by the double-click press.
        QTest::mouseClick(palette->viewport(), Qt::LeftButton, {}, rect.center());
        QTest::mouseDClick(palette->viewport(), Qt::LeftButton, {}, rect.center());
    }
    const QList<DashboardItem *> items = f.window->dashboard()->items();
    QCOMPARE(items.size(), 3);
    QStringList types;
    for (DashboardItem *item : items) {
        types.append(item->dashboardWidget()->typeName());
        QVERIFY(item->designMode());
        QCOMPARE(std::fmod(item->pos().x(), 10.0), 0.0);
        QCOMPARE(std::fmod(item->pos().y(), 10.0), 0.0);
        for (DashboardItem *other : items) {
            if (other != item)
                QVERIFY(!item->sceneBoundingRect().intersects(other->sceneBoundingRect()));
        }
    }
    types.sort();
    QStringList expected{palette->typeNames().at(0), palette->typeNames().at(0), palette->typeNames().at(1)};
    expected.sort();
    QCOMPARE(types, expected);
}

void tst_MainWindow::layoutRoundTripRestoresEveryItem()
{
    WindowFixture f;
    DashboardItem *gauge = f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("RPM")});
    f.widgetOf<AnalogGaugeWidget>(gauge)->setRange(0, 4000);
    gauge->setPos(40, 30);
    gauge->setSize(QSizeF(250, 240));
    gauge->setZValue(5);
    DashboardItem *display = f.add(QStringLiteral("DigitalDisplay"), {QStringLiteral("TEMP:avg")});
    display->setPos(300, 30);
    DashboardItem *state = f.add(QStringLiteral("StateIndicator"));
    f.widgetOf<StateIndicatorWidget>(state)->setGroupId(QStringLiteral("MODE"));
    state->setZValue(-2);
    f.add(QStringLiteral("ErrorConsole"));

    const QString path = f.project + QStringLiteral("/layouts/bench.json");
    QVERIFY(f.window->saveLayoutTo(path));
    const QJsonObject saved = QJsonDocument::fromJson(WindowFixture::readFile(path)).object();
    QCOMPARE(saved.value(QStringLiteral("items")).toArray().size(), 4);
    QVERIFY(!saved.value(QStringLiteral("windowGeometry")).toString().isEmpty());

    auto records = [](Ombrix &window) {
        QStringList result;
        for (DashboardItem *item : window.dashboard()->items())
            result.append(QString::fromUtf8(QJsonDocument(item->toJson()).toJson(QJsonDocument::Compact)));
        result.sort();
        return result;
    };

    WindowFixture fresh;
    fresh.add(QStringLiteral("MessagesConsole")); // replaced by the layout
    QVERIFY(fresh.window->loadLayoutFrom(path));
    QCOMPARE(records(*fresh.window), records(*f.window));
    for (DashboardItem *item : fresh.window->dashboard()->items())
        QVERIFY(!item->designMode());
    QVERIFY(fresh.prompts->warnings.isEmpty());

    // Loaded in Design every item is editable.
    WindowFixture designing;
    designing.window->designButton();
    QVERIFY(designing.window->loadLayoutFrom(path));
    for (DashboardItem *item : designing.window->dashboard()->items())
        QVERIFY(item->designMode());
}

void tst_MainWindow::layoutWarnings_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("warning");
    QTest::newRow("load missing") << "load" << QByteArray() << "Error: Could not load layout.";
    QTest::newRow("load array") << "load" << QByteArray("[1, 2]") << "Error: Invalid layout format.";
    QTest::newRow("load garbage") << "load" << QByteArray("\x01\x02{{") << "Error: Invalid layout format.";
    QTest::newRow("save unwritable") << "save" << QByteArray() << "Error: Could not save layout.";
}

void tst_MainWindow::layoutWarnings()
{
    QFETCH(QString, operation);
    QFETCH(QByteArray, content);
    QFETCH(QString, warning);

    WindowFixture f;
    f.add(QStringLiteral("AnalogGauge"));
    QString path = f.project + QStringLiteral("/layouts/broken.json");
    if (!content.isEmpty())
        QVERIFY(WindowFixture::writeFile(path, content));
    if (operation == QLatin1String("save")) {
        path = f.project + QStringLiteral("/missing/folder/layout.json");
        QVERIFY(!f.window->saveLayoutTo(path));
    } else {
        QVERIFY(!f.window->loadLayoutFrom(path));
    }
    QCOMPARE(f.prompts->warningTexts(), QStringList{warning});
    QCOMPARE(f.window->dashboard()->items().size(), 1);
}

void tst_MainWindow::layoutWithoutItemsEmptiesDashboard()
{
    WindowFixture f;
    f.add(QStringLiteral("AnalogGauge"));
    const QString path = f.project + QStringLiteral("/layouts/empty.json");
    QVERIFY(WindowFixture::writeFile(path, "{}"));

    // The dialog route: the answer of the file dialog is loaded.
    f.prompts->fileAnswers = {path};
    f.window->loadButton();
    QCOMPARE(f.prompts->captions, QStringList{QStringLiteral("Load Layout")});
    QVERIFY(f.window->dashboard()->items().isEmpty());

    // A cancelled dialog changes nothing and says nothing.
    f.add(QStringLiteral("AnalogGauge"));
    f.window->loadButton();
    f.window->saveButton();
    QCOMPARE(f.window->dashboard()->items().size(), 1);
    QVERIFY(f.prompts->warnings.isEmpty());
}

void tst_MainWindow::unopenablePortLeavesWindowUsable()
{
    WindowFixture f;
    const QString missing = f.root.filePath(QStringLiteral("no-such-tty"));
    QVERIFY(!f.window->connectPort(missing, 9600));
    QCOMPARE(f.window->toolBars()->connectButton->text(), QStringLiteral("Connect"));
    QVERIFY(f.window->statusBar()->currentMessage().startsWith(QLatin1String("Serial port error")));
    QCOMPARE(f.window->toolBars()->portName(), missing);

    PtyPair pty;
    QVERIFY(f.window->connectPort(pty.slavePath(), 9600));
    QCOMPARE(f.window->toolBars()->connectButton->text(), QStringLiteral("Disconnect"));
}

void tst_MainWindow::lostPortReturnsButtonToConnect()
{
    auto pty = std::make_unique<PtyPair>();
    WindowFixture f;
    auto *gauge = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("TEMP")}));
    QVERIFY(f.window->connectPort(pty->slavePath(), 115200));
    pty->close();
    QTRY_COMPARE(f.window->toolBars()->connectButton->text(), QStringLiteral("Connect"));
    QVERIFY(!f.window->serialManager()->isOpen());
    QVERIFY(f.window->statusBar()->currentMessage().contains(QLatin1String("lost")));

    // A new device on another port works as before.
    PtyPair again;
    QVERIFY(f.window->connectPort(again.slavePath(), 115200));
    QVERIFY(again.write("TEMP=12\n"));
    QTRY_COMPARE(gauge->value(), 12.0);
}

void tst_MainWindow::typedPortPathSurvivesPortRefresh()
{
    WindowFixture f;
    QComboBox *box = f.window->toolBars()->portBox;
    box->setEditText(QStringLiteral("/dev/my-bench-link"));
    f.window->serialManager()->refreshPorts();
    QCOMPARE(box->currentText(), QStringLiteral("/dev/my-bench-link"));
    Q_EMIT f.window->serialManager()->portsChanged({QStringLiteral("ttyS0"), QStringLiteral("ttyUSB0")});
    QCOMPARE(box->count(), 2);
    QCOMPARE(box->currentText(), QStringLiteral("/dev/my-bench-link"));
}

void tst_MainWindow::demoLayoutFitsDemoProject()
{
    const QString demo = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo");
    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    QVERIFY(window.loadDefinitions(demo + QStringLiteral("/dashboard_signals.def")));
    QVERIFY(window.loadLayoutFrom(demo + QStringLiteral("/layouts/demo.json")));
    QVERIFY(shown->warnings.isEmpty());

    const SignalDefinitions *defs = window.definitions();
    QStringList groups;
    QStringList types;
    const QList<DashboardItem *> items = window.dashboard()->items();
    QVERIFY(items.size() >= 10);
    for (DashboardItem *item : items) {
        DashboardWidget *widget = item->dashboardWidget();
        types.append(widget->typeName());
        for (const QString &name : widget->signalNames())
            QVERIFY2(defs->signalFor(SignalRouter::routingName(name)), qPrintable(name));
        if (auto *indicator = qobject_cast<StateIndicatorWidget *>(widget))
            groups.append(indicator->groupId());
        // Everything sits on a 1280x800 window's surface without overlapping.
        QVERIFY(QRectF(0, 0, 1120, 650).contains(item->sceneBoundingRect()));
        for (DashboardItem *other : items) {
            if (other != item)
                QVERIFY(!item->sceneBoundingRect().intersects(other->sceneBoundingRect()));
        }
    }
    groups.sort();
    QStringList declared = defs->stateGroupIds();
    declared.sort();
    QCOMPARE(groups, declared);
    QVERIFY(types.contains(QStringLiteral("ErrorConsole")));
    QVERIFY(types.contains(QStringLiteral("MessagesConsole")));
    QVERIFY(types.contains(QStringLiteral("AnalogGauge")));
    QVERIFY(types.contains(QStringLiteral("DigitalDisplay")));
}

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
