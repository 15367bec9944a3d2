#include "DashboardItem.h"
#include "DesignScene.h"
#include "ProbeWidget.h"
#include "WidgetView.h"

#include <QDialog>
#include <QGraphicsProxyWidget>
#include <QGraphicsRectItem>
#include <QGraphicsSceneContextMenuEvent>
#include <QJsonArray>
#include <QMenu>
#include <QPointer>
#include <QtTest>

#include <limits>
#include <memory>

class TestDashboardItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void recordRoundTripIntoFreshScene();
    void recordWithMissingKeysUsesDefaults();
    void recordWithoutKnownTypeBuildsNothing_data();
    void recordWithoutKnownTypeBuildsNothing();
    void absurdRecordValuesAreClamped_data();
    void absurdRecordValuesAreClamped();
    void sizeRule_data();
    void sizeRule();
    void minimumSizeOfOtherWidgets();
    void unsizedWidgetStartsAtItsMinimum();

    void movingSnapsToGrid();
    void resizingThroughHandle();
    void hoverShowsResizeCursorOnHandleOnly();
    void designModeOverlayTakesMouseEvenWhenTopmost();
    void outsideDesignModeMouseReachesWidget();
    void designModeToggling();
    void contextMenuOffersItemOperations();

    void zOrderOperations_data();
    void zOrderOperations();

    void removeFromSceneDeletesOnNextTurn();

private:
    DashboardItem *addProbe(const QPointF &pos = QPointF(), const QSizeF &size = QSizeF(100, 80));
    void showView();
    QPoint viewPoint(const QPointF &scenePos) const { return m_view->mapFromScene(scenePos); }

    std::unique_ptr<DesignScene> m_scene;
    std::unique_ptr<WidgetView> m_view;
};

void TestDashboardItem::initTestCase()
{
    ProbeWidget::registerTypes();
}

void TestDashboardItem::init()
{
    m_scene = std::make_unique<DesignScene>();
    m_scene->setSceneRect(-100, -100, 400, 300);
}

void TestDashboardItem::cleanup()
{
    m_view.reset();
    m_scene.reset();
    QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty());
    QCOMPARE(QApplication::overrideCursor(), nullptr);
}

DashboardItem *TestDashboardItem::addProbe(const QPointF &pos, const QSizeF &size)
{
    auto *item = new DashboardItem(new ProbeWidget);
    item->setPos(pos);
    item->setSize(size);
    m_scene->addItem(item);
    return item;
}

void TestDashboardItem::showView()
{
    m_view = std::make_unique<WidgetView>(m_scene.get());
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->resize(400, 300);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void TestDashboardItem::recordRoundTripIntoFreshScene()
{
    DashboardItem *item = addProbe(QPointF(40, -30), QSizeF(130, 90));
    item->setZValue(3.5);
    auto *probe = static_cast<ProbeWidget *>(item->dashboardWidget());
    probe->setSignalNames({QStringLiteral("rpm"), QStringLiteral("temp")});
    probe->threshold = 17;

    const QJsonObject record = item->toJson();
    QCOMPARE(record.value(QLatin1String("type")).toString(), ProbeWidget::typeId());
    QCOMPARE(record.value(QLatin1String("signals")).toArray(), QJsonArray({QStringLiteral("rpm"), QStringLiteral("temp")}));

    DesignScene fresh;
    DashboardItem *copy = DashboardItem::fromJson(record);
    QVERIFY(copy);
    fresh.addItem(copy);
    auto *copyProbe = static_cast<ProbeWidget *>(copy->dashboardWidget());
    QVERIFY(copyProbe);
    QCOMPARE(copyProbe->typeName(), ProbeWidget::typeId());
    QCOMPARE(copyProbe->signalNames(), probe->signalNames());
    QCOMPARE(copyProbe->threshold, 17);
    QCOMPARE(copy->size(), QSizeF(130, 90));
    QCOMPARE(copy->pos(), QPointF(40, -30));
    QCOMPARE(copy->zValue(), 3.5);
    QCOMPARE(copy->toJson(), record);
}

void TestDashboardItem::recordWithMissingKeysUsesDefaults()
{
    QJsonObject record;
    record.insert(QLatin1String("type"), ProbeWidget::typeId());
    std::unique_ptr<DashboardItem> item(DashboardItem::fromJson(record));
    QVERIFY(item);
    auto *probe = static_cast<ProbeWidget *>(item->dashboardWidget());
    QCOMPARE(item->pos(), QPointF(0, 0));
    QCOMPARE(item->size(), QSizeF(80, 60));
    QCOMPARE(item->zValue(), 0.0);
    QVERIFY(probe->signalNames().isEmpty());
    QCOMPARE(probe->threshold, 5);
}

void TestDashboardItem::recordWithoutKnownTypeBuildsNothing_data()
{
    QTest::addColumn<QJsonValue>("type");
    QTest::newRow("missing") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("empty") << QJsonValue(QString());
    QTest::newRow("unknown") << QJsonValue(QStringLiteral("NoSuchWidget"));
    QTest::newRow("other case") << QJsonValue(QStringLiteral("testprobe"));
    QTest::newRow("number") << QJsonValue(7);
}

void TestDashboardItem::recordWithoutKnownTypeBuildsNothing()
{
    QFETCH(QJsonValue, type);
    QJsonObject record{{QLatin1String("width"), 200}};
    if (!type.isUndefined())
        record.insert(QLatin1String("type"), type);
    QCOMPARE(DashboardItem::fromJson(record), nullptr);
}

void TestDashboardItem::absurdRecordValuesAreClamped_data()
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    QTest::addColumn<QJsonValue>("x");
    QTest::addColumn<QJsonValue>("width");
    QTest::addColumn<QJsonValue>("height");
    QTest::addColumn<QJsonValue>("z");
    QTest::addColumn<QPointF>("expectedPos");
    QTest::addColumn<QSizeF>("expectedSize");
    QTest::addColumn<qreal>("expectedZ");

    QTest::newRow("negative size") << QJsonValue(-30) << QJsonValue(-500) << QJsonValue(-1)
                                   << QJsonValue(1) << QPointF(-30, 0) << QSizeF(80, 60) << 1.0;
    QTest::newRow("huge") << QJsonValue(1e12) << QJsonValue(1e12) << QJsonValue(1e300)
                          << QJsonValue(-1e12) << QPointF(DashboardItem::MaxExtent, 0)
                          << QSizeF(DashboardItem::MaxExtent, DashboardItem::MaxExtent) << -DashboardItem::MaxExtent;
    QTest::newRow("not finite") << QJsonValue(nan) << QJsonValue(inf) << QJsonValue(nan) << QJsonValue(inf)
                                << QPointF(0, 0) << QSizeF(80, 60) << 0.0;
    QTest::newRow("wrong types") << QJsonValue(QStringLiteral("12")) << QJsonValue(QJsonArray{1})
                                 << QJsonValue(true) << QJsonValue(QStringLiteral("top")) << QPointF(0, 0)
                                 << QSizeF(80, 60) << 0.0;
}

void TestDashboardItem::absurdRecordValuesAreClamped()
{
    QFETCH(QJsonValue, x);
    QFETCH(QJsonValue, width);
    QFETCH(QJsonValue, height);
    QFETCH(QJsonValue, z);
    QFETCH(QPointF, expectedPos);
    QFETCH(QSizeF, expectedSize);
    QFETCH(qreal, expectedZ);

    const QJsonObject record{{QLatin1String("type"), ProbeWidget::typeId()},
                             {QLatin1String("x"), x},
                             {QLatin1String("width"), width},
                             {QLatin1String("height"), height},
                             {QLatin1String("z"), z},
                             {QLatin1String("signals"), QStringLiteral("rpm")},
                             {QLatin1String("config"), QJsonArray{1, 2}}};
    std::unique_ptr<DashboardItem> item(DashboardItem::fromJson(record));
    QVERIFY(item);
    QCOMPARE(item->pos(), expectedPos);
    QCOMPARE(item->size(), expectedSize);
    QCOMPARE(item->zValue(), expectedZ);
    QVERIFY(item->dashboardWidget()->signalNames().isEmpty());
}

void TestDashboardItem::sizeRule_data()
{
    QTest::addColumn<QSize>("hint");
    QTest::addColumn<QSizeF>("requested");
    QTest::addColumn<QSizeF>("expected");
    QTest::newRow("raised to minimum") << QSize(40, 30) << QSizeF(61, 5) << QSizeF(80, 60);
    QTest::newRow("rounded up to grid") << QSize(40, 30) << QSizeF(91, 65) << QSizeF(100, 70);
    QTest::newRow("multiples stay") << QSize(40, 30) << QSizeF(120, 60) << QSizeF(120, 60);
    QTest::newRow("fraction above multiple") << QSize(40, 30) << QSizeF(100.01, 90.5) << QSizeF(110, 100);
    QTest::newRow("minimum from hint") << QSize(50, 200) << QSizeF(0, 0) << QSizeF(80, 200);
    QTest::newRow("odd minimum rounded") << QSize(85, 61) << QSizeF(0, 0) << QSizeF(90, 70);
}

void TestDashboardItem::sizeRule()
{
    QFETCH(QSize, hint);
    QFETCH(QSizeF, requested);
    QFETCH(QSizeF, expected);

    auto *probe = new ProbeWidget;
    probe->hint = hint;
    DashboardItem *item = new DashboardItem(probe);
    m_scene->addItem(item);
    item->setSize(requested);

    QCOMPARE(item->size(), expected);
    QCOMPARE(item->boundingRect(), QRectF(QPointF(0, 0), expected));
    QCOMPARE(QSizeF(probe->size()), expected);
    QCOMPARE(probe->minimumSize(), item->minimumSize());
    QCOMPARE(item->overlay()->rect(), QRectF(QPointF(0, 0), expected));
}

void TestDashboardItem::minimumSizeOfOtherWidgets()
{
    auto *plain = new QWidget;
    plain->setMinimumSize(10, 10);
    DashboardItem plainItem(plain);
    QCOMPARE(plainItem.minimumSize(), QSize(80, 60));
    QVERIFY(!plainItem.dashboardWidget());

    DashboardItem empty(nullptr);
    QCOMPARE(empty.minimumSize(), QSize(80, 60));
    QCOMPARE(empty.size(), QSizeF(80, 60));

    // A widget may ask for less than 80x60, but never below 20x20.
    class TinyProbe : public ProbeWidget
    {
    public:
        QSize minimumDesignSize() const override { return QSize(5, 45); }
    };
    DashboardItem tiny(new TinyProbe);
    QCOMPARE(tiny.minimumSize(), QSize(20, 45));
    tiny.setSize(QSizeF(1, 1));
    QCOMPARE(tiny.size(), QSizeF(20, 50));
}

void TestDashboardItem::unsizedWidgetStartsAtItsMinimum()
{
    DashboardItem fresh(new ProbeWidget);
    QCOMPARE(fresh.size(), QSizeF(80, 60));

    auto *sized = new ProbeWidget;
    sized->resize(145, 92);
    DashboardItem kept(sized);
    QCOMPARE(kept.size(), QSizeF(150, 100));
}

void TestDashboardItem::movingSnapsToGrid()
{
    DashboardItem *item = addProbe();
    item->setDesignMode(true);
    showView();

    QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, viewPoint(QPointF(40, 30)));
    QVERIFY(QApplication::overrideCursor());
    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::ClosedHandCursor);
    QTest::mouseMove(m_view->viewport(), viewPoint(QPointF(54, 15)));
    QCOMPARE(item->pos(), QPointF(10, -20));
    QTest::mouseMove(m_view->viewport(), viewPoint(QPointF(57, 18)));
    QCOMPARE(item->pos(), QPointF(20, -10));
    QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, viewPoint(QPointF(57, 18)));
    QCOMPARE(QApplication::overrideCursor(), nullptr);
    QCOMPARE(item->size(), QSizeF(100, 80));
}

void TestDashboardItem::resizingThroughHandle()
{
    DashboardItem *item = addProbe(QPointF(10, 10));
    item->setDesignMode(true);
    showView();

    // The handle is the 12x12 square in the bottom-right corner: (98..110, 78..90) in the scene.
    QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, viewPoint(QPointF(105, 85)));
    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::SizeFDiagCursor);
    QTest::mouseMove(m_view->viewport(), viewPoint(QPointF(153, 131)));
    QCOMPARE(item->size(), QSizeF(150, 130));
    QTest::mouseMove(m_view->viewport(), viewPoint(QPointF(20, 20)));
    QCOMPARE(item->size(), QSizeF(80, 60));
    QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, viewPoint(QPointF(20, 20)));
    QCOMPARE(item->pos(), QPointF(10, 10));
    QCOMPARE(item->dashboardWidget()->size(), QSize(80, 60));
    QCOMPARE(QApplication::overrideCursor(), nullptr);
}

void TestDashboardItem::hoverShowsResizeCursorOnHandleOnly()
{
    DashboardItem *item = addProbe();
    item->setDesignMode(true);
    showView();

    QTest::mouseMove(m_view->viewport(), viewPoint(QPointF(95, 75)));
    QTRY_COMPARE(item->cursor().shape(), Qt::SizeFDiagCursor);
    QTest::mouseMove(m_view->viewport(), viewPoint(QPointF(50, 40)));
    QTRY_COMPARE(item->cursor().shape(), Qt::OpenHandCursor);
}

void TestDashboardItem::designModeOverlayTakesMouseEvenWhenTopmost()
{
    DashboardItem *below = addProbe(QPointF(150, 0));
    DashboardItem *item = addProbe();
    item->setZValue(5);
    below->setZValue(0);
    item->setDesignMode(true);
    below->setDesignMode(true);
    showView();

    auto *probe = static_cast<ProbeWidget *>(item->dashboardWidget());
    QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, viewPoint(QPointF(40, 30)));
    QTest::mouseMove(m_view->viewport(), viewPoint(QPointF(71, 30)));
    QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, viewPoint(QPointF(71, 30)));
    QCOMPARE(probe->presses, 0);
    QCOMPARE(item->pos(), QPointF(30, 0));
}

void TestDashboardItem::outsideDesignModeMouseReachesWidget()
{
    DashboardItem *item = addProbe();
    item->setDesignMode(true);
    item->setDesignMode(false);
    showView();

    auto *probe = static_cast<ProbeWidget *>(item->dashboardWidget());
    QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, viewPoint(QPointF(40, 30)));
    QTest::mouseMove(m_view->viewport(), viewPoint(QPointF(75, 60)));
    QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, viewPoint(QPointF(75, 60)));
    QCOMPARE(probe->presses, 1);
    QCOMPARE(item->pos(), QPointF(0, 0));
    QCOMPARE(QApplication::overrideCursor(), nullptr);

    QGraphicsSceneContextMenuEvent menuEvent(QEvent::GraphicsSceneContextMenu);
    menuEvent.setPos(QPointF(40, 30));
    menuEvent.setAccepted(true);
    m_scene->sendEvent(item, &menuEvent);
    QVERIFY(!menuEvent.isAccepted());
}

void TestDashboardItem::designModeToggling()
{
    DashboardItem *item = addProbe();
    QWidget *widget = item->dashboardWidget();
    QVERIFY(!item->designMode());
    QVERIFY(!item->overlay()->isVisible());

    item->setDesignMode(true);
    QVERIFY(item->overlay()->isVisible());
    QVERIFY(item->flags() & QGraphicsItem::ItemIsMovable);
    QVERIFY(item->acceptHoverEvents());
    QCOMPARE(item->cursor().shape(), Qt::OpenHandCursor);
    QCOMPARE(widget->cursor().shape(), Qt::OpenHandCursor);
    QVERIFY(item->overlay()->zValue() > item->childItems().constFirst()->zValue());

    item->setDesignMode(false);
    QVERIFY(!item->overlay()->isVisible());
    QVERIFY(!(item->flags() & QGraphicsItem::ItemIsMovable));
    QVERIFY(!item->acceptHoverEvents());
    QVERIFY(!item->hasCursor());
    QCOMPARE(widget->cursor().shape(), Qt::ArrowCursor);
}

void TestDashboardItem::contextMenuOffersItemOperations()
{
    addProbe(QPointF(200, 0));
    DashboardItem *item = addProbe();
    item->setDesignMode(true);

    QStringList entries;
    QTimer::singleShot(0, this, [&entries] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        const QList<QAction *> actions = menu->actions();
        for (const QAction *action : actions)
            entries.append(action->isSeparator() ? QStringLiteral("|") : action->text());
        // Down twice from no active entry lands on "Bring to Front".
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QGraphicsSceneContextMenuEvent menuEvent(QEvent::GraphicsSceneContextMenu);
    menuEvent.setScenePos(QPointF(40, 30));
    menuEvent.setPos(QPointF(40, 30));
    m_scene->sendEvent(item->overlay(), &menuEvent);

    QCOMPARE(entries,
             (QStringList{QStringLiteral("Configure Widget..."), QStringLiteral("Bring to Front"),
                          QStringLiteral("Send to Back"), QStringLiteral("Bring Forward"),
                          QStringLiteral("Send Backward"), QStringLiteral("|"), QStringLiteral("Delete")}));
    QCOMPARE(item->zValue(), 1.0);
}

void TestDashboardItem::zOrderOperations_data()
{
    QTest::addColumn<QList<qreal>>("zValues");
    QTest::addColumn<int>("target");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<qreal>("expected");

    const QList<qreal> spread{0.0, 1.0, 2.0};
    QTest::newRow("front") << spread << 0 << "front" << 3.0;
    QTest::newRow("back") << spread << 2 << "back" << -1.0;
    QTest::newRow("forward one step") << spread << 0 << "forward" << 1.5;
    QTest::newRow("backward one step") << spread << 2 << "backward" << 0.5;
    QTest::newRow("forward on topmost unchanged") << spread << 2 << "forward" << 2.0;
    QTest::newRow("backward on lowest unchanged") << spread << 0 << "backward" << 0.0;

    const QList<qreal> tied{0.0, 0.0, 2.0};
    QTest::newRow("equal z forward, first") << tied << 0 << "forward" << 2.5;
    QTest::newRow("equal z forward, second") << tied << 1 << "forward" << 2.5;
    QTest::newRow("equal z backward unchanged") << tied << 1 << "backward" << 0.0;
    const QList<qreal> tiedTop{1.0, 1.0, -3.0};
    QTest::newRow("equal z backward") << tiedTop << 0 << "backward" << -3.5;
    QTest::newRow("equal z top forward unchanged") << tiedTop << 1 << "forward" << 1.0;
}

void TestDashboardItem::zOrderOperations()
{
    QFETCH(QList<qreal>, zValues);
    QFETCH(int, target);
    QFETCH(QString, operation);
    QFETCH(qreal, expected);

    QList<DashboardItem *> items;
    for (qreal z : zValues) {
        DashboardItem *item = addProbe();
        item->setZValue(z);
        items.append(item);
    }
    // Other scene items do not take part in the ordering.
    m_scene->addRect(0, 0, 10, 10)->setZValue(100);

    DashboardItem *item = items.at(target);
    if (operation == QLatin1String("front"))
        item->bringToFront();
    else if (operation == QLatin1String("back"))
        item->sendToBack();
    else if (operation == QLatin1String("forward"))
        item->bringForward();
    else
        item->sendBackward();

    QCOMPARE(item->zValue(), expected);
    for (int i = 0; i < items.size(); ++i) {
        if (i != target)
            QCOMPARE(items.at(i)->zValue(), zValues.at(i));
    }
}

void TestDashboardItem::removeFromSceneDeletesOnNextTurn()
{
    DashboardItem *item = addProbe();
    item->setDesignMode(true);
    QPointer<DashboardWidget> widget = item->dashboardWidget();
    auto *dialog = new QDialog(widget);
    dialog->show();
    QVERIFY(dialog->isVisible());

    item->removeFromScene();
    item->removeFromScene();
    QVERIFY(!m_scene->items().contains(item));
    QVERIFY(widget);
    QVERIFY(!widget->isVisible());
    QVERIFY(!dialog->isVisible());

    QTRY_VERIFY(widget.isNull());
}

QTEST_MAIN(TestDashboardItem)
#include "tst_dashboarditem.moc"
