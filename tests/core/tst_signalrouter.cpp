#include "AnalogGaugeWidget.h"
#include "DashboardItem.h"
#include "DesignScene.h"
#include "DigitalDisplayWidget.h"
#include "ErrorConsoleWidget.h"
#include "IPlaybackPlot.h"
#include "ITimeStampedConsumer.h"
#include "MessagesConsoleWidget.h"
#include "SignalDefinitions.h"
#include "SignalRouter.h"
#include "StateIndicatorWidget.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

namespace {

// Records every delivery as "name=value@time", so tests can tell "once" from "twice" and see the time.
class RecordingWidget : public DashboardWidget
{
    Q_OBJECT

public:
    void setValue(double) override {}
    QString typeName() const override { return QStringLiteral("Recorder"); }
    void setValueForSignalAt(const QString &name, double value, double tSec) override
    {
        QVERIFY(!batching || inBatch);
        deliveries.append(QStringLiteral("%1=%2@%3").arg(name).arg(value).arg(tSec));
    }

    QStringList deliveries;
    bool batching = false;
    bool inBatch = false;
};

// A plot: time-stamped values, one repaint per frame.
class BatchingWidget : public RecordingWidget, public IPlaybackPlot
{
    Q_OBJECT

public:
    BatchingWidget() { batching = true; }
    void clearData() override {}
    void beginBatch() override
    {
        ++begun;
        inBatch = true;
    }
    void endBatch() override
    {
        ++ended;
        inBatch = false;
    }

    int begun = 0;
    int ended = 0;
};

// A plot that draws history: it takes every time-stamped value.
class HistoryWidget : public RecordingWidget, public ITimeStampedConsumer
{
    Q_OBJECT

public:
    void setValueForSignalAt(const QString &name, double value, double tSec) override
    {
        RecordingWidget::setValueForSignalAt(name, value, tSec);
    }
};

} // namespace

class tst_SignalRouter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(load(m_defs, "DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n"
                             "DASHBOARD_MAPPING(RPM, 10, 0.5)\n"
                             "DASHBOARD_MAPPING(RPM, 0, 100)\n"
                             "DASHBOARD_MAPPING(TEMP, -40, 1)\n"
                             "DASHBOARD_STATE_GROUP(MODE, \"Operating mode\")\n"
                             "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                             "DASHBOARD_ERROR(E_TEMP, 12, \"Overheat\")\n"));
    }

    void init()
    {
        m_scene = std::make_unique<DesignScene>();
        m_router = std::make_unique<SignalRouter>(m_scene.get());
        m_router->setDefinitions(&m_defs);
    }

    void cleanup()
    {
        m_router.reset();
        m_scene.reset();
        SignalDefinitions::setCurrent(nullptr);
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
    }

    void boundNameIsCutAtTheFirstColon_data()
    {
        QTest::addColumn<QString>("bound");
        QTest::addColumn<bool>("receives");
        QTest::newRow("plain") << "speed" << true;
        QTest::newRow("name:suffix") << "speed:Motor" << true;
        QTest::newRow("spaces trimmed") << " speed : Motor" << true;
        QTest::newRow("two colons") << "speed:a:b" << true;
        QTest::newRow("suffix only") << "Motor:speed" << false;
        QTest::newRow("prefix of name") << "spee" << false;
        QTest::newRow("case differs") << "Speed" << false;
    }

    void boundNameIsCutAtTheFirstColon()
    {
        QFETCH(QString, bound);
        QFETCH(bool, receives);
        auto *widget = add(new RecordingWidget, {bound});
        m_router->routeValue(QStringLiteral("speed"), 3.0, 0.5);
        QCOMPARE(widget->deliveries.size(), receives ? 1 : 0);
    }

    void frameReachesEachBoundTopLevelWidgetOnce()
    {
        auto *widget = add(new RecordingWidget, {QStringLiteral("A:x"), QStringLiteral("A:y"), QStringLiteral("B")});
        auto *batching = add(new BatchingWidget, {QStringLiteral("A"), QStringLiteral("B")});
        auto *idle = add(new BatchingWidget, {QStringLiteral("Z")});
        auto *unbound = add(new RecordingWidget);
        // Only top-level items take part.
        auto *parentItem = new DashboardItem(new RecordingWidget);
        m_scene->addItem(parentItem);
        auto *nested = new RecordingWidget;
        nested->setSignalNames({QStringLiteral("A")});
        new DashboardItem(nested, parentItem);

        m_router->routeValues({{QStringLiteral("A"), 1.5}, {QStringLiteral("B"), 2.0}, {QStringLiteral("C"), 3.0}}, 12.25);
        const QStringList frame{QStringLiteral("A=1.5@12.25"), QStringLiteral("B=2@12.25")};
        QCOMPARE(widget->deliveries, frame);
        // A batching widget gets the frame between one beginBatch() and one endBatch().
        QCOMPARE(batching->deliveries, frame);
        QCOMPARE(QList<int>({batching->begun, batching->ended, idle->begun}), QList<int>({1, 1, 0}));
        QVERIFY(unbound->deliveries.isEmpty() && nested->deliveries.isEmpty());
    }

    void aBurstShowsItsLastValuesAndKeepsEveryPlotSample()
    {
        auto *display = add(new RecordingWidget, {QStringLiteral("A"), QStringLiteral("B")});
        auto *plot = add(new HistoryWidget, {QStringLiteral("A")});
        m_router->beginBurst();
        m_router->routeValues({{QStringLiteral("A"), 1.0}, {QStringLiteral("B"), 5.0}}, 1.0);
        m_router->routeValues({{QStringLiteral("A"), 2.0}}, 2.0);
        QCOMPARE(plot->deliveries, QStringList({QStringLiteral("A=1@1"), QStringLiteral("A=2@2")}));
        QVERIFY(display->deliveries.isEmpty());
        m_router->endBurst();
        QCOMPARE(display->deliveries, QStringList({QStringLiteral("A=2@2"), QStringLiteral("B=5@1")}));
    }

    void indexFollowsTheScene()
    {
        auto *first = add(new RecordingWidget, {QStringLiteral("A")});
        m_router->routeValue(QStringLiteral("A"), 1.0, 0.0);

        // New items and new bindings count from the next delivery on.
        auto *second = add(new RecordingWidget, {QStringLiteral("A")});
        auto *third = add(new RecordingWidget, {QStringLiteral("A")});
        m_router->routeValue(QStringLiteral("A"), 2.0, 0.0);
        QCOMPARE(second->deliveries, QStringList{QStringLiteral("A=2@0")});
        QCOMPARE(third->deliveries, second->deliveries);

        first->deliveries.clear();
        first->setSignalNames({QStringLiteral("B")});
        m_router->routeValue(QStringLiteral("A"), 3.0, 0.0);
        m_router->routeValue(QStringLiteral("B"), 4.0, 0.0);
        QCOMPARE(first->deliveries, QStringList{QStringLiteral("B=4@0")});

        // A deleted item is dropped, even in the same turn.
        const QList<QGraphicsItem *> items = m_scene->items();
        delete *std::find_if(items.cbegin(), items.cend(), [second](QGraphicsItem *candidate) {
            auto *item = qgraphicsitem_cast<DashboardItem *>(candidate);
            return item && item->dashboardWidget() == second;
        });
        m_router->routeValue(QStringLiteral("A"), 5.0, 0.0);
        QCOMPARE(m_router->widgetsForSignal(QStringLiteral("A")), QList<DashboardWidget *>{third});
    }

    void mappingsFollowTheCatalogue()
    {
        auto *widget = add(new RecordingWidget, {QStringLiteral("RPM")});
        m_router->setDefinitions(nullptr);
        m_router->routeValue(QStringLiteral("RPM"), 100.0, 0.0);
        QCOMPARE(m_router->errorText(QStringLiteral("E_TEMP")), QStringLiteral("E_TEMP"));

        // A catalogue loaded later, or reloaded in place, is read afresh.
        SignalDefinitions defs;
        QVERIFY(load(defs, "DASHBOARD_MAPPING(RPM, 1, 2)\n"));
        m_router->setDefinitions(&defs);
        m_router->routeValue(QStringLiteral("RPM"), 100.0, 0.0);
        QVERIFY(load(defs, "DASHBOARD_MAPPING(RPM, 0, 3)\nDASHBOARD_MAPPING(X, 0, 3)\n"));
        m_router->setDefinitions(&defs);
        m_router->routeValue(QStringLiteral("RPM"), 100.0, 0.0);
        QCOMPARE(widget->deliveries, QStringList({QStringLiteral("RPM=100@0"), QStringLiteral("RPM=201@0"),
                                                  QStringLiteral("RPM=300@0")}));
    }

    void statesReachOnlyTheirGroup()
    {
        SignalDefinitions::setCurrent(&m_defs);
        auto *mode1 = add(new StateIndicatorWidget);
        auto *mode2 = add(new StateIndicatorWidget);
        auto *door = add(new StateIndicatorWidget);
        mode1->setGroupId(QStringLiteral("MODE"));
        mode2->setGroupId(QStringLiteral("MODE"));
        door->setGroupId(QStringLiteral("DOOR"));

        m_router->routeState(QStringLiteral("MODE"), QStringLiteral("RUN"));
        QCOMPARE(mode1->pillText(), QStringLiteral("Running"));
        QCOMPARE(mode2->stateId(), QStringLiteral("RUN"));
        QCOMPARE(door->pillText(), QStringLiteral("\u2014"));

        // A label given by the caller wins over the catalogue's.
        m_router->routeState(QStringLiteral("MODE"), QStringLiteral("RUN"), QStringLiteral("Spinning"));
        QCOMPARE(mode1->pillText(), QStringLiteral("Spinning"));

        // The group is read at delivery time: regrouping needs no invalidate().
        door->setGroupId(QStringLiteral("MODE"));
        m_router->routeState(QStringLiteral("MODE"), QStringLiteral("RUN"));
        QCOMPARE(door->pillText(), QStringLiteral("Running"));
    }

    void errorsAndMessagesReachEveryConsoleOfTheirKind()
    {
        auto *errors1 = add(new ErrorConsoleWidget);
        auto *errors2 = add(new ErrorConsoleWidget);
        auto *messages = add(new MessagesConsoleWidget);

        // An undeclared error is described by its id.
        m_router->routeError(1.5, QStringLiteral("E_TEMP"));
        m_router->routeError(2.0, QStringLiteral("E_UNKNOWN"));
        m_router->routeMessage(2.5, QStringLiteral("boot ok"));
        const QStringList errors{QStringLiteral("[1.500] E_TEMP : Overheat"), QStringLiteral("[2.000] E_UNKNOWN : E_UNKNOWN")};
        QCOMPARE(errors1->lines(), errors);
        QCOMPARE(errors2->lines(), errors);
        QCOMPARE(messages->lines(), QStringList{QStringLiteral("[2.500] boot ok")});

        m_router->clearErrors();
        QCOMPARE(errors1->lines().size() + errors2->lines().size(), 0);
        QCOMPARE(messages->lines().size(), 1);
    }

private:
    template<typename W>
    W *add(W *widget, const QStringList &signalNames = {})
    {
        if (!signalNames.isEmpty())
            widget->setSignalNames(signalNames);
        m_scene->addItem(new DashboardItem(widget));
        return widget;
    }

    bool load(SignalDefinitions &defs, const QByteArray &text)
    {
        static int counter = 0;
        const QString path = m_dir.filePath(QStringLiteral("defs%1.def").arg(++counter));
        return writeFile(path, text) && defs.load(path);
    }

    QTemporaryDir m_dir;
    SignalDefinitions m_defs;
    std::unique_ptr<DesignScene> m_scene;
    std::unique_ptr<SignalRouter> m_router;
};

QTEST_MAIN(tst_SignalRouter)
#include "tst_signalrouter.moc"
