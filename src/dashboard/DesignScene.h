#pragma once

#include "LayoutFormat.h"

#include <QGraphicsScene>
#include <QList>

#include <map>
#include <optional>

class DashboardItem;

// The scene that holds the dashboard's items. While the dashboard is being
// designed its background is white with a light grey grid on multiples of
// the grid size (the items' snapping step); otherwise it is window-coloured.
// It announces items coming and going, so that whoever indexes the
// dashboard (the router) never has to poll it, and it keeps the stacking
// order of its DashboardItems, which the items' z-order menu works on.
class DesignScene : public QGraphicsScene
{
    Q_OBJECT

public:
    explicit DesignScene(QObject *parent = nullptr);
    ~DesignScene() override;

    // Repaints the whole scene at once.
    void setDesignMode(bool on);
    bool designMode() const { return m_designMode; }
    int gridSize() const { return m_gridSize; }

    // The top-level DashboardItems of a scene, in QGraphicsScene::items() order.
    static QList<DashboardItem *> dashboardItemsOf(const QGraphicsScene *scene);
    QList<DashboardItem *> dashboardItems() const { return dashboardItemsOf(this); }

    // The distinct z values of a scene's top-level DashboardItems, ascending.
    static QList<qreal> itemZValuesOf(const QGraphicsScene *scene);
    // The largest z among a scene's top-level items other than `item`.
    static std::optional<qreal> largestZBesides(const QGraphicsScene *scene, const QGraphicsItem *item);

    // The z values of the DashboardItems on the top level, which the items
    // keep up to date themselves: restacking an overlay, or putting a new
    // item on top, then costs no sort of every item of a large dashboard.
    // Other items on this scene do not count; another kind of scene is
    // asked item by item.
    void addItemZ(qreal z);
    void removeItemZ(qreal z);
    // The largest z, or none on an empty dashboard.
    std::optional<qreal> largestItemZ() const;
    // The largest z of the items other than one whose z is `ownZ`.
    std::optional<qreal> largestItemZBesides(qreal ownZ) const;

Q_SIGNALS:
    // A DashboardItem was added to the scene or is about to leave it.
    void dashboardItemsChanged();

protected:
    void drawBackground(QPainter *painter, const QRectF &rect) override;

private:
    void drawGrid(QPainter *painter, const QRectF &rect) const;

    bool m_designMode = false;
    int m_gridSize = int(LayoutFormat::GridSize);
    std::map<qreal, int> m_itemZCounts; // z -> number of items at it
};
