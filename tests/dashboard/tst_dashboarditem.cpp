#include "DashboardItem.h"
#include "DesignScene.h"
#include "ProbeWidget.h"
#include "WidgetView.h"

#include <QDialog>
#include <QGraphicsRectItem>
#include <QGraphicsSceneContextMenuEvent>
#include <QJsonArray>
#include <QMenu>
#include <QtTest>

#include <limits>
#include <memory>

class TestDashboardItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ProbeWidget::registerTypes(); }
    void init();
    void cleanup();

    void recordRoundTripIntoFreshScene();
    void recordWithoutKnownTypeBuildsNothing_data();
    void recordWithoutKnownTypeBuildsNothing();
    void recordValuesFallBackOrAreClamped_data();
    void recordValuesFallBackOrAreClamped();
    void sizeRule_data();
    void sizeRule();
    void minimumSizeOfOtherAndTinyWidgets();

    void movingSnapsToGridThroughTheOverlay();
    void resizingThroughHandle();
    void hoverShowsResizeCursorOnHandleOnly();
    void outsideDesignModeMouseReachesWidget();
    void designModeToggling();
    void contextMenuOffersItemOperations();
    void zOrderOperations_data();
    void zOrderOperations();
    void removeFromSceneDeletesOnNextTurn();

private:
    DashboardItem *addProbe(const QPointF &pos = QPointF(), qreal z = 0.0);
    void showView();
    void drag(const QPointF &from, const QList<QPointF> &path);
    ProbeWidget *probeOf(DashboardItem *item) { return static_cast<ProbeWidget *>(item->dashboardWidget()); }

    std::unique_ptr<DesignScene> m_scene;
    std::unique_ptr<WidgetView> m_view;
};

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

DashboardItem *TestDashboardItem::addProbe(const QPointF &pos, qreal z)
{
    auto *item = new DashboardItem(new ProbeWidget);
    item->setPos(pos);
    item->setSize(QSizeF(100, 80));
    item->setZValue(z);
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

// Presses the left button at `from`, moves along `path` and releases at its end.
void TestDashboardItem::drag(const QPointF &from, const QList<QPointF> &path)
{
    QWidget *viewport = m_view->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, m_view->mapFromScene(from));
    for (const QPointF &point : path)
        QTest::mouseMove(viewport, m_view->mapFromScene(point));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, m_view->mapFromScene(path.last()));
}

void TestDashboardItem::recordRoundTripIntoFreshScene()
{
    DashboardItem *item = addProbe(QPointF(40, -30), 3.5);
    item->setSize(QSizeF(130, 90));
    probeOf(item)->setSignalNames({QStringLiteral("rpm"), QStringLiteral("temp")});
    probeOf(item)->threshold = 17;
    const QJsonObject record = item->toJson();
    QCOMPARE(record.value(QLatin1String("type")).toString(), ProbeWidget::typeId());

    DesignScene fresh;
    DashboardItem *copy = DashboardItem::fromJson(record);
    QVERIFY(copy);
    fresh.addItem(copy);
    QCOMPARE(probeOf(copy)->signalNames(), probeOf(item)->signalNames());
    QCOMPARE(probeOf(copy)->threshold, 17);
    QCOMPARE(copy->size(), QSizeF(130, 90));
    QCOMPARE(copy->pos(), QPointF(40, -30));
    QCOMPARE(copy->zValue(), 3.5);
    QCOMPARE(copy->toJson(), record);
}

void TestDashboardItem::recordWithoutKnownTypeBuildsNothing_data()
{
    QTest::addColumn<QJsonValue>("type");
    QTest::newRow("missing") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("unknown") << QJsonValue(QStringLiteral("NoSuchWidget"));
    QTest::newRow("other case") << QJsonValue(QStringLiteral("testprobe"));
}

void TestDashboardItem::recordWithoutKnownTypeBuildsNothing()
{
    QFETCH(QJsonValue, type);
    QJsonObject record{{QLatin1String("width"), 200}};
    if (!type.isUndefined())
        record.insert(QLatin1String("type"), type);
    QCOMPARE(DashboardItem::fromJson(record), nullptr);
}

void TestDashboardItem::recordValuesFallBackOrAreClamped_data()
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const qreal most = DashboardItem::MaxExtent;
    QTest::addColumn<QJsonObject>("keys");
    QTest::addColumn<QPointF>("pos");
    QTest::addColumn<QSizeF>("size");
    QTest::addColumn<qreal>("z");
    QTest::newRow("only type") << QJsonObject() << QPointF(0, 0) << QSizeF(80, 60) << 0.0;
    QTest::newRow("negative size") << QJsonObject{{"x", -30}, {"width", -500}, {"height", -1}, {"z", 1}}
                                   << QPointF(-30, 0) << QSizeF(80, 60) << 1.0;
    QTest::newRow("huge") << QJsonObject{{"x", 1e12}, {"width", 1e12}, {"height", 1e300}, {"z", -1e12}}
                          << QPointF(most, 0) << QSizeF(most, most) << -most;
    QTest::newRow("not finite") << QJsonObject{{"x", nan}, {"width", inf}, {"height", nan}, {"z", inf}}
                                << QPointF(0, 0) << QSizeF(80, 60) << 0.0;
    QTest::newRow("wrong types") << QJsonObject{{"x", "12"}, {"width", QJsonArray{1}}, {"z", "top"},
                                                {"signals", "rpm"}, {"config", QJsonArray{1, 2}}}
                                 << QPointF(0, 0) << QSizeF(80, 60) << 0.0;
}

void TestDashboardItem::recordValuesFallBackOrAreClamped()
{
    QFETCH(QJsonObject, keys);
    keys.insert(QLatin1String("type"), ProbeWidget::typeId());
    std::unique_ptr<DashboardItem> item(DashboardItem::fromJson(keys));
    QVERIFY(item);
    QTEST(item->pos(), "pos");
    QTEST(item->size(), "size");
    QTEST(item->zValue(), "z");
    QVERIFY(item->dashboardWidget()->signalNames().isEmpty());
    QCOMPARE(probeOf(item.get())->threshold, 5);
}

void TestDashboardItem::sizeRule_data()
{
    QTest::addColumn<QSize>("hint");
    QTest::addColumn<QSizeF>("requested");
    QTest::addColumn<QSizeF>("expected");
    QTest::newRow("raised to minimum") << QSize(40, 30) << QSizeF(61, 5) << QSizeF(80, 60);
    QTest::newRow("rounded up to grid") << QSize(40, 30) << QSizeF(91, 65) << QSizeF(100, 70);
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
    auto *item = new DashboardItem(probe);
    m_scene->addItem(item);
    item->setSize(requested);

    QCOMPARE(item->boundingRect(), QRectF(QPointF(0, 0), expected));
    QCOMPARE(QSizeF(probe->size()), expected);
    QCOMPARE(probe->minimumSize(), item->minimumSize());
    QCOMPARE(item->overlay()->rect(), QRectF(QPointF(0, 0), expected));
}

void TestDashboardItem::minimumSizeOfOtherAndTinyWidgets()
{
    auto *plain = new QWidget;
    plain->setMinimumSize(10, 10);
    DashboardItem plainItem(plain);
    QCOMPARE(plainItem.minimumSize(), QSize(80, 60));
    QVERIFY(!plainItem.dashboardWidget());

    // A widget may ask for less than 80x60, but never below 20x20.
    class TinyProbe : public ProbeWidget
    {
    public:
        QSize minimumDesignSize() const override { return QSize(5, 45); }
    };
    DashboardItem tiny(new TinyProbe);
    tiny.setSize(QSizeF(1, 1));
    QCOMPARE(tiny.size(), QSizeF(20, 50));

    // A widget nobody has sized starts at its minimum, a sized one keeps its size.
    auto *sized = new ProbeWidget;
    sized->resize(145, 92);
    QCOMPARE(DashboardItem(new ProbeWidget).size(), QSizeF(80, 60));
    QCOMPARE(DashboardItem(sized).size(), QSizeF(150, 100));
}

void TestDashboardItem::movingSnapsToGridThroughTheOverlay()
{
    // The overlay must take the press even on the topmost item.
    addProbe(QPointF(150, 0))->setDesignMode(true);
    DashboardItem *item = addProbe(QPointF(), 5);
    item->setDesignMode(true);
    showView();

    QWidget *viewport = m_view->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, m_view->mapFromScene(QPointF(40, 30)));
    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::ClosedHandCursor);
    QTest::mouseMove(viewport, m_view->mapFromScene(QPointF(54, 15)));
    QCOMPARE(item->pos(), QPointF(10, -20));
    QTest::mouseMove(viewport, m_view->mapFromScene(QPointF(57, 18)));
    QCOMPARE(item->pos(), QPointF(20, -10));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, m_view->mapFromScene(QPointF(57, 18)));
    QCOMPARE(probeOf(item)->presses, 0);
    QCOMPARE(item->size(), QSizeF(100, 80));
}

void TestDashboardItem::resizingThroughHandle()
{
    DashboardItem *item = addProbe(QPointF(10, 10));
    item->setDesignMode(true);
    showView();

    // The handle is the 12x12 square in the bottom-right corner: (98..110, 78..90) in the scene.
    drag(QPointF(105, 85), {QPointF(153, 131)});
    QCOMPARE(item->size(), QSizeF(150, 130));
    drag(QPointF(155, 135), {QPointF(20, 20)});
    QCOMPARE(item->size(), QSizeF(80, 60));
    QCOMPARE(item->pos(), QPointF(10, 10));
    QCOMPARE(item->dashboardWidget()->size(), QSize(80, 60));
}

void TestDashboardItem::hoverShowsResizeCursorOnHandleOnly()
{
    DashboardItem *item = addProbe();
    item->setDesignMode(true);
    showView();
    QTest::mouseMove(m_view->viewport(), m_view->mapFromScene(QPointF(95, 75)));
    QTRY_COMPARE(item->cursor().shape(), Qt::SizeFDiagCursor);
    QTest::mouseMove(m_view->viewport(), m_view->mapFromScene(QPointF(50, 40)));
    QTRY_COMPARE(item->cursor().shape(), Qt::OpenHandCursor);
}

void TestDashboardItem::outsideDesignModeMouseReachesWidget()
{
    DashboardItem *item = addProbe();
    item->setDesignMode(true);
    item->setDesignMode(false);
    showView();
    drag(QPointF(40, 30), {QPointF(75, 60)});
    QCOMPARE(probeOf(item)->presses, 1);
    QCOMPARE(item->pos(), QPointF(0, 0));

    QGraphicsSceneContextMenuEvent menuEvent(QEvent::GraphicsSceneContextMenu);
    menuEvent.setAccepted(true);
    m_scene->sendEvent(item, &menuEvent);
    QVERIFY(!menuEvent.isAccepted());
}

void TestDashboardItem::designModeToggling()
{
    DashboardItem *item = addProbe();
    QWidget *widget = item->dashboardWidget();
    QVERIFY(!item->overlay()->isVisible());

    item->setDesignMode(true);
    QVERIFY(item->overlay()->isVisible());
    QVERIFY(item->flags() & QGraphicsItem::ItemIsMovable);
    QVERIFY(item->acceptHoverEvents());
    QCOMPARE(widget->cursor().shape(), Qt::OpenHandCursor);

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
        for (const QAction *action : menu->actions())
            entries.append(action->isSeparator() ? QStringLiteral("|") : action->text());
        // Down twice from no active entry lands on "Bring to Front".
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QGraphicsSceneContextMenuEvent menuEvent(QEvent::GraphicsSceneContextMenu);
    menuEvent.setScenePos(QPointF(40, 30));
    m_scene->sendEvent(item->overlay(), &menuEvent);

    QCOMPARE(entries, (QStringList{"Configure Widget...", "Bring to Front", "Send to Back", "Bring Forward",
                                   "Send Backward", "|", "Delete"}));
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
    QTest::newRow("equal z on top, backward") << QList<qreal>{1.0, 1.0, -3.0} << 0 << "backward" << -3.5;
}

void TestDashboardItem::zOrderOperations()
{
    QFETCH(QList<qreal>, zValues);
    QFETCH(int, target);
    QFETCH(QString, operation);
    QList<DashboardItem *> items;
    for (qreal z : zValues)
        items.append(addProbe(QPointF(), z));
    // Other scene items do not take part in the ordering.
    m_scene->addRect(0, 0, 10, 10)->setZValue(100);

    const QHash<QString, void (DashboardItem::*)()> operations{{"front", &DashboardItem::bringToFront},
                                                                {"back", &DashboardItem::sendToBack},
                                                                {"forward", &DashboardItem::bringForward},
                                                                {"backward", &DashboardItem::sendBackward}};
    (items.at(target)->*operations.value(operation))();
    for (int i = 0; i < items.size(); ++i) {
        if (i == target)
            QTEST(items.at(i)->zValue(), "expected");
        else
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
