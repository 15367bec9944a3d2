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

#include <memory>

class tst_DashboardItem : public QObject
{
    Q_OBJECT

    std::unique_ptr<DesignScene> m_scene;
    std::unique_ptr<WidgetView> m_view;

    DashboardItem *addProbe(const QPointF &pos = QPointF(), qreal z = 0.0, bool designMode = false)
    {
        auto *item = new DashboardItem(new ProbeWidget);
        item->setPos(pos);
        item->setSize(QSizeF(100, 80));
        item->setZValue(z);
        m_scene->addItem(item);
        if (designMode)
            item->setDesignMode(true);
        return item;
    }

    static ProbeWidget *probeOf(DashboardItem *item) { return static_cast<ProbeWidget *>(item->dashboardWidget()); }
    void showView()
    {
        m_view = std::make_unique<WidgetView>(m_scene.get());
        m_view->setFrameShape(QFrame::NoFrame);
        m_view->resize(400, 300);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }

    QPoint at(const QPointF &scenePos) const { return m_view->mapFromScene(scenePos); }
    void drag(const QPointF &from, const QPointF &to)
    {
        QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, at(from));
        QTest::mouseMove(m_view->viewport(), at(to));
        QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, at(to));
    }

private Q_SLOTS:
    void initTestCase() { ProbeWidget::registerTypes(); }

    void init()
    {
        m_scene = std::make_unique<DesignScene>();
        m_scene->setSceneRect(-100, -100, 400, 300);
    }

    void cleanup()
    {
        m_view.reset();
        m_scene.reset();
        QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty());
        QCOMPARE(QApplication::overrideCursor(), nullptr);
    }

    void recordRoundTripIntoFreshScene()
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
        QCOMPARE(probeOf(copy)->threshold, 17);
        QCOMPARE(copy->toJson(), record);
    }

    void overlayFollowsTheOtherItemsAsTheyComeAndGo()
    {
        // Overlay z = (largest other top-level z) - own z + 1, never below the proxy's.
        DashboardItem *low = addProbe(QPointF(), 1);
        DashboardItem *high = addProbe(QPointF(), 5);
        const auto overlayOf = [](DashboardItem *item) {
            item->setSize(item->size()); // restacks
            return item->overlay()->zValue();
        };
        QCOMPARE(overlayOf(low), 5.0);
        QCOMPARE(overlayOf(high), 1.0);
        high->setZValue(0.5);
        QCOMPARE(overlayOf(high), 1.5);
        QCOMPARE(overlayOf(low), 1.0);

        std::unique_ptr<DashboardItem> top(addProbe(QPointF(), 9));
        QCOMPARE(overlayOf(low), 9.0);
        QCOMPARE(m_scene->largestItemZ(), 9.0);
        m_scene->removeItem(top.get());
        QCOMPARE(overlayOf(low), 1.0);
        top.reset();
        delete high;
        QCOMPARE(m_scene->largestItemZ(), 1.0);
        QCOMPARE(m_scene->largestItemZBesides(1.0), std::nullopt);
    }

    void sizeRule_data()
    {
        QTest::addColumn<QSize>("hint");
        QTest::addColumn<QSizeF>("requested");
        QTest::addColumn<QSizeF>("expected");
        QTest::newRow("raised to minimum") << QSize(40, 30) << QSizeF(61, 5) << QSizeF(80, 60);
        QTest::newRow("rounded up to grid") << QSize(40, 30) << QSizeF(91, 65) << QSizeF(100, 70);
        QTest::newRow("fraction above multiple") << QSize(40, 30) << QSizeF(100.01, 90) << QSizeF(110, 90);
        QTest::newRow("minimum from hint") << QSize(50, 200) << QSizeF(0, 0) << QSizeF(80, 200);
        QTest::newRow("odd minimum rounded up") << QSize(85, 201) << QSizeF(0, 0) << QSizeF(90, 210);
    }

    void sizeRule()
    {
        QFETCH(QSize, hint);
        QFETCH(QSizeF, requested);
        QFETCH(QSizeF, expected);
        auto *probe = new ProbeWidget;
        probe->hint = hint;
        DashboardItem item(probe);
        item.setSize(requested);
        QCOMPARE(item.boundingRect(), QRectF(QPointF(0, 0), expected));
        QCOMPARE(QSizeF(probe->size()), expected);
        QCOMPARE(probe->minimumSize(), item.minimumSize());
        QCOMPARE(item.overlay()->rect(), item.boundingRect());
    }

    void minimumSizeOfOtherTinyAndUnsizedWidgets()
    {
        QCOMPARE(DashboardItem(new QWidget).minimumSize(), QSize(80, 60));
        // A widget may ask for less than 80x60, but never below 20x20.
        class TinyProbe : public ProbeWidget
        {
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

    void movingSnapsToGridThroughTheOverlay()
    {
        addProbe(QPointF(150, 0), 0, true);
        DashboardItem *item = addProbe(QPointF(), 5, true); // the overlay must take the press even on top
        showView();
        QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, at(QPointF(40, 30)));
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::ClosedHandCursor);
        QTest::mouseMove(m_view->viewport(), at(QPointF(54, 15)));
        QCOMPARE(item->pos(), QPointF(10, -20));
        QTest::mouseMove(m_view->viewport(), at(QPointF(57, 18)));
        QCOMPARE(item->pos(), QPointF(20, -10));
        QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, at(QPointF(57, 18)));
        QCOMPARE(probeOf(item)->presses, 0);
        QCOMPARE(item->size(), QSizeF(100, 80));
    }

    void resizingThroughHandle()
    {
        DashboardItem *item = addProbe(QPointF(10, 10), 0, true);
        showView();
        QTest::mouseMove(m_view->viewport(), at(QPointF(105, 85))); // the handle: 12x12 in the bottom-right corner
        QTRY_COMPARE(item->cursor().shape(), Qt::SizeFDiagCursor);
        drag(QPointF(105, 85), QPointF(153, 131));
        QCOMPARE(item->size(), QSizeF(150, 130));
        drag(QPointF(155, 135), QPointF(20, 20));
        QCOMPARE(item->size(), QSizeF(80, 60));
        QCOMPARE(item->pos(), QPointF(10, 10));
        QTest::mouseMove(m_view->viewport(), at(QPointF(50, 40)));
        QTRY_COMPARE(item->cursor().shape(), Qt::OpenHandCursor);
    }

    void outsideDesignModeMouseReachesWidget()
    {
        DashboardItem *item = addProbe(QPointF(), 0, true);
        item->setDesignMode(false);
        QVERIFY(!item->overlay()->isVisible() && !(item->flags() & QGraphicsItem::ItemIsMovable) && !item->hasCursor());
        QCOMPARE(item->dashboardWidget()->cursor().shape(), Qt::ArrowCursor);
        showView();
        drag(QPointF(40, 30), QPointF(75, 60));
        QCOMPARE(probeOf(item)->presses, 1);
        QCOMPARE(item->pos(), QPointF(0, 0));

        QGraphicsSceneContextMenuEvent menuEvent(QEvent::GraphicsSceneContextMenu);
        menuEvent.setAccepted(true);
        m_scene->sendEvent(item, &menuEvent);
        QVERIFY(!menuEvent.isAccepted());
    }

    void contextMenuOffersItemOperations()
    {
        addProbe(QPointF(200, 0));
        DashboardItem *item = addProbe(QPointF(), 0, true);
        QCOMPARE(item->dashboardWidget()->cursor().shape(), Qt::OpenHandCursor);
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
        m_scene->sendEvent(item->overlay(), &menuEvent);
        QCOMPARE(entries, (QStringList{"Configure Widget...", "Bring to Front", "Send to Back", "Bring Forward",
                                       "Send Backward", "|", "Delete"}));
        QCOMPARE(item->zValue(), 1.0);
    }

    void zOrderOperations_data()
    {
        QTest::addColumn<QList<qreal>>("zValues");
        QTest::addColumn<int>("target");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<qreal>("expected");
        const QList<qreal> spread{0.0, 1.0, 2.0};
        const QList<qreal> tied{0.0, 0.0, 2.0};
        QTest::newRow("front") << spread << 0 << "front" << 3.0;
        QTest::newRow("back") << spread << 2 << "back" << -1.0;
        QTest::newRow("forward one step") << spread << 0 << "forward" << 1.5;
        QTest::newRow("backward one step") << spread << 2 << "backward" << 0.5;
        QTest::newRow("forward on topmost unchanged") << spread << 2 << "forward" << 2.0;
        QTest::newRow("backward on lowest unchanged") << spread << 0 << "backward" << 0.0;
        QTest::newRow("equal z forward, first") << tied << 0 << "forward" << 2.5;
        QTest::newRow("equal z forward, second") << tied << 1 << "forward" << 2.5;
        QTest::newRow("equal z backward unchanged") << tied << 1 << "backward" << 0.0;
        QTest::newRow("equal z on top, backward") << QList<qreal>{1.0, 1.0, -3.0} << 0 << "backward" << -3.5;
    }

    void zOrderOperations()
    {
        QFETCH(QList<qreal>, zValues);
        QFETCH(int, target);
        QFETCH(QString, operation);
        QList<DashboardItem *> items;
        for (qreal z : zValues)
            items.append(addProbe(QPointF(), z));
        m_scene->addRect(0, 0, 10, 10)->setZValue(100); // other scene items do not take part
        const QHash<QString, void (DashboardItem::*)()> operations{{"front", &DashboardItem::bringToFront},
                                                                    {"back", &DashboardItem::sendToBack},
                                                                    {"forward", &DashboardItem::bringForward},
                                                                    {"backward", &DashboardItem::sendBackward}};
        (items.at(target)->*operations.value(operation))();
        QFETCH(qreal, expected);
        zValues[target] = expected;
        for (int i = 0; i < items.size(); ++i)
            QCOMPARE(items.at(i)->zValue(), zValues.at(i));
    }

    void removeFromSceneDeletesOnNextTurn()
    {
        DashboardItem *item = addProbe(QPointF(), 0, true);
        QPointer<DashboardWidget> widget = item->dashboardWidget();
        auto *dialog = new QDialog(widget);
        dialog->show();
        item->removeFromScene();
        item->removeFromScene();
        QVERIFY(!m_scene->items().contains(item));
        QVERIFY(widget && !widget->isVisible());
        QVERIFY(!dialog->isVisible());
        QTRY_VERIFY(widget.isNull());
    }
};

QTEST_MAIN(tst_DashboardItem)
#include "tst_dashboarditem.moc"
