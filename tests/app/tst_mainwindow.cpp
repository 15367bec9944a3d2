#include "WindowFixture.h"

#include "AnalogGaugeWidget.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"
#include "DigitalDisplayWidget.h"
#include "MainToolBars.h"
#include "PtyPair.h"
#include "SerialManager.h"
#include "StateIndicatorWidget.h"
#include "WidgetPalette.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QGraphicsView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QPointer>
#include <QSignalSpy>
#include <QStatusBar>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace {

// Every item's record, sorted, for comparing two dashboards.
QStringList records(Ombrix &window)
{
    QStringList result;
    for (DashboardItem *item : window.dashboard()->items())
        result.append(QString::fromUtf8(QJsonDocument(item->toJson()).toJson(QJsonDocument::Compact)));
    result.sort();
    return result;
}

bool allItemsEditable(Ombrix &window, bool editable)
{
    const QList<DashboardItem *> items = window.dashboard()->items();
    return std::all_of(items.cbegin(), items.cend(), [=](DashboardItem *item) { return item->designMode() == editable; });
}

} // namespace

class tst_MainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    // States, errors and messages on the live path are checked while
    // playback owns the widgets (tst_mainwindow_playback); the routing rules
    // in tst_signalrouter.
    void liveDataReachesItsWidgets()
    {
        PtyPair pty;
        WindowFixture f;
        auto *gauge = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("RPM")}));
        auto *display = f.widgetOf<DigitalDisplayWidget>(f.add(QStringLiteral("DigitalDisplay"), {QStringLiteral("RPM:avg")}));
        auto *other = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("TEMP")}));
        gauge->setRange(0, 1000);

        QVERIFY(f.window->connectPort(pty.slavePath(), 115200));
        QCOMPARE(f.window->toolBars()->connectButton->text(), QStringLiteral("Disconnect"));
        QVERIFY(pty.write("RPM=100\n"));
        // RPM maps as raw * 0.5 + 10; the display is bound as "name:suffix".
        QTRY_COMPARE(gauge->value(), 60.0);
        QTRY_VERIFY2(display->valueText().startsWith(QLatin1String("60")), qPrintable(display->valueText()));
        QCOMPARE(other->value(), 0.0);
        QCOMPARE(f.window->latestValues().value(QStringLiteral("RPM")), 100.0);

        QTest::mouseClick(f.window->toolBars()->connectButton, Qt::LeftButton);
        QCOMPARE(f.window->toolBars()->connectButton->text(), QStringLiteral("Connect"));
        QVERIFY(!f.window->serialManager()->isOpen());
    }

    void modeTransitions_data()
    {
        QTest::addColumn<QString>("presses");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("stopText");
        const int design = Ombrix::Design, play = Ombrix::Play, pause = Ombrix::Pause, idle = Ombrix::Idle;
        QTest::newRow("design") << "design" << design << "Design Mode" << "Stop";
        QTest::newRow("design twice") << "design design" << idle << "Idle" << "Stop";
        QTest::newRow("play") << "play" << play << "Playing..." << "Pause";
        QTest::newRow("stop in play pauses") << "play stop" << pause << "Pause..." << "Stop";
        QTest::newRow("stop in pause") << "play stop stop" << idle << "Idle" << "Stop";
        QTest::newRow("play after pause") << "play stop play" << play << "Playing..." << "Pause";
        QTest::newRow("stop in design") << "design stop" << idle << "Idle" << "Stop";
        QTest::newRow("design from play") << "play design" << design << "Design Mode" << "Stop";
        QTest::newRow("record without port") << "record" << idle << "Idle" << "Stop";
        QTest::newRow("record without port in design") << "design record" << design << "Design Mode" << "Stop";
    }

    void modeTransitions()
    {
        QFETCH(QString, presses);
        QFETCH(int, mode);
        QFETCH(QString, status);
        QFETCH(QString, stopText);

        WindowFixture f;
        f.add(QStringLiteral("AnalogGauge"));
        MainToolBars *bars = f.window->toolBars();
        const QHash<QString, QAction *> actions{{QStringLiteral("design"), bars->designAction},
                                                {QStringLiteral("play"), bars->playAction},
                                                {QStringLiteral("stop"), bars->stopAction},
                                                {QStringLiteral("record"), bars->recordAction}};
        QStringList expectedWarnings;
        for (const QString &press : presses.split(QLatin1Char(' '))) {
            actions.value(press)->trigger();
            // Play without a file and record without a port are refused with their warnings.
            if (press == QLatin1String("play"))
                expectedWarnings.append(QStringLiteral("No File: No playback file selected."));
            if (press == QLatin1String("record"))
                expectedWarnings.append(QStringLiteral("Serial: Open a serial port before recording."));
        }
        QCOMPARE(int(f.window->mode()), mode);
        QCOMPARE(f.window->modeLabel()->text(), status);
        QCOMPARE(bars->stopAction->text(), stopText);
        QCOMPARE(bars->stopAction->toolTip(), stopText == QLatin1String("Pause") ? QStringLiteral("Pause playback") : stopText);
        QCOMPARE(bars->playAction->isEnabled(), mode != Ombrix::Play);
        QCOMPARE(f.window->palette()->isEnabled(), mode == Ombrix::Design);
        QCOMPARE(f.window->dashboard()->scene()->designMode(), mode == Ombrix::Design);
        QVERIFY(allItemsEditable(*f.window, mode == Ombrix::Design));
        QCOMPARE(f.prompts->warningTexts(), expectedWarnings);
    }

    void paletteDoubleClickAddsOnFreeGridPositions()
    {
        WindowFixture f;
        WidgetPalette *palette = f.window->palette();
        QCOMPARE(palette->typeNames(), DashboardWidgetFactory::instance().typeNames());

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
        QVERIFY(allItemsEditable(*f.window, true));
        for (DashboardItem *item : items) {
            QCOMPARE(QPointF(std::fmod(item->pos().x(), 10.0), std::fmod(item->pos().y(), 10.0)), QPointF(0, 0));
            for (DashboardItem *other : items)
                QVERIFY(other == item || !item->sceneBoundingRect().intersects(other->sceneBoundingRect()));
        }
    }

    void layoutRoundTripRestoresEveryItem()
    {
        WindowFixture f;
        DashboardItem *gauge = f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("RPM")});
        f.widgetOf<AnalogGaugeWidget>(gauge)->setRange(0, 4000);
        gauge->setPos(40, 30);
        gauge->setSize(QSizeF(250, 240));
        gauge->setZValue(5);
        f.add(QStringLiteral("DigitalDisplay"), {QStringLiteral("TEMP:avg")})->setPos(300, 30);
        DashboardItem *state = f.add(QStringLiteral("StateIndicator"));
        f.widgetOf<StateIndicatorWidget>(state)->setGroupId(QStringLiteral("MODE"));
        state->setZValue(-2);
        f.add(QStringLiteral("ErrorConsole"));
        f.window->setGeometry(60, 70, 900, 600);
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));

        const QString path = f.project + QStringLiteral("/layouts/bench.json");
        QVERIFY(f.window->saveLayoutTo(path));
        const QByteArray bytes = readFile(path);
        QVERIFY(bytes.contains("\n    \"items\"")); // indented
        const QJsonArray items = QJsonDocument::fromJson(bytes).object().value(QStringLiteral("items")).toArray();
        QCOMPARE(items.size(), 4);
        for (qsizetype i = 1; i < items.size(); ++i) // scene order: topmost first
            QVERIFY(items.at(i - 1)[QLatin1String("z")].toDouble() >= items.at(i)[QLatin1String("z")].toDouble());

        WindowFixture fresh;
        fresh.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(fresh.window.get()));
        QPointer<DashboardWidget> replaced = fresh.add(QStringLiteral("MessagesConsole"))->dashboardWidget();
        QVERIFY(fresh.window->loadLayoutFrom(path));
        QCOMPARE(records(*fresh.window), records(*f.window));
        QTRY_COMPARE(fresh.window->geometry(), f.window->geometry());
        QVERIFY(allItemsEditable(*fresh.window, false));
        QVERIFY(fresh.prompts->warnings.isEmpty());
        QTRY_VERIFY(!replaced);

        // Loaded in Design every item is editable.
        fresh.window->designButton();
        QVERIFY(fresh.window->loadLayoutFrom(path));
        QVERIFY(allItemsEditable(*fresh.window, true));
    }

    void layoutWarnings_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("warning");
        QTest::addColumn<QString>("reason"); // in the details after the path; empty: the system's own words
        QTest::newRow("load missing") << "load" << QByteArray() << "Error: Could not load layout." << "";
        QTest::newRow("load array") << "load" << QByteArray("[1, 2]") << "Error: Invalid layout format."
                                    << "the top level is not an object";
        QTest::newRow("load truncated") << "load" << QByteArray(R"({"items": [)") << "Error: Invalid layout format."
                                        << "at offset 11";
        QTest::newRow("save unwritable") << "save" << QByteArray() << "Error: Could not save layout." << "";
    }

    void layoutWarnings()
    {
        QFETCH(QString, operation);
        QFETCH(QByteArray, content);
        QFETCH(QString, warning);
        QFETCH(QString, reason);

        WindowFixture f;
        f.add(QStringLiteral("AnalogGauge"));
        f.window->statusBar()->clearMessage();
        QString path = f.project + QStringLiteral("/layouts/broken.json");
        if (!content.isEmpty())
            QVERIFY(writeFile(path, content));
        if (operation == QLatin1String("save")) {
            path = f.project + QStringLiteral("/missing/folder/layout.json");
            QVERIFY(!f.window->saveLayoutTo(path));
        } else {
            QVERIFY(!f.window->loadLayoutFrom(path));
        }
        QCOMPARE(f.prompts->warningTexts(), QStringList{warning});
        const QString details = f.prompts->warnings.constFirst().details;
        const QString prefix = QDir::toNativeSeparators(path) + QLatin1String(": ");
        QVERIFY2(details.startsWith(prefix) && details.size() > prefix.size(), qPrintable(details));
        QVERIFY2(details.contains(reason), qPrintable(details));
        QCOMPARE(f.window->statusBar()->currentMessage(), QString());
        QCOMPARE(f.window->dashboard()->items().size(), 1);
    }

    void layoutDialogRouteAndEmptyLayout()
    {
        WindowFixture f;
        f.add(QStringLiteral("AnalogGauge"));
        const QString path = f.project + QStringLiteral("/layouts/empty.json");
        QVERIFY(writeFile(path, "{}"));

        // The dialog's answer is loaded; a layout without "items" empties the dashboard.
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

    void portFailureLeavesWindowUsable()
    {
        WindowFixture f;
        auto *gauge = f.widgetOf<AnalogGaugeWidget>(f.add(QStringLiteral("AnalogGauge"), {QStringLiteral("TEMP")}));
        QToolButton *button = f.window->toolBars()->connectButton;
        QVERIFY(!f.window->connectPort(f.root.filePath(QStringLiteral("no-such-tty")), 9600));
        QCOMPARE(button->text(), QStringLiteral("Connect"));
        QVERIFY(f.window->statusBar()->currentMessage().startsWith(QLatin1String("Serial port error")));
        QVERIFY(f.window->statusBar()->currentMessage().contains(QLatin1String("no-such-tty")));

        // A device on another port works as before.
        PtyPair again;
        QVERIFY(f.window->connectPort(again.slavePath(), 115200));
        QVERIFY(again.write("TEMP=12\n"));
        QTRY_COMPARE(gauge->value(), 12.0);
    }

    void typedPortPathSurvivesPortRefresh()
    {
        WindowFixture f;
        QComboBox *box = f.window->toolBars()->portBox;
        box->setEditText(QStringLiteral("/dev/my-bench-link"));
        Q_EMIT f.window->serialManager()->portsChanged({QStringLiteral("ttyS0"), QStringLiteral("ttyUSB0")});
        QCOMPARE(box->count(), 2);
        QCOMPARE(box->currentText(), QStringLiteral("/dev/my-bench-link"));

        // Opening the list looks again, so a device plugged in after the start shows up.
        QSignalSpy refreshed(f.window->serialManager(), &SerialManager::portsChanged);
        QTest::mousePress(box, Qt::LeftButton, {}, QPoint(box->width() - 4, box->height() / 2));
        box->hidePopup();
        QCOMPARE(refreshed.size(), 1);
        QCOMPARE(box->currentText(), QStringLiteral("/dev/my-bench-link"));
    }

};

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
