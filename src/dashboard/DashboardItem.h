#pragma once

#include <QGraphicsItem>
#include <QJsonObject>
#include <QPointer>
#include <QSizeF>

QT_BEGIN_NAMESPACE
class QGraphicsProxyWidget;
class QGraphicsRectItem;
QT_END_NAMESPACE

class DashboardWidget;
class DesignScene;

// Places one widget on the design scene. The widget is embedded through a
// QGraphicsProxyWidget child and owned by it; the item's size stays on a
// 10-unit grid. In design mode a transparent overlay child takes the mouse,
// so the item can be moved, resized, restacked, configured and deleted;
// outside design mode the item is inert and the widget gets the mouse.
class DashboardItem : public QGraphicsItem
{
public:
    enum { Type = UserType + 1 };

    // Takes ownership of `widget` (which may be any QWidget, or null).
    explicit DashboardItem(QWidget *widget, QGraphicsItem *parent = nullptr);
    ~DashboardItem() override;

    // A new item from a layout record, or nullptr when "type" names no
    // registered widget type. The item is not added to any scene.
    static DashboardItem *fromJson(const QJsonObject &record);
    // "type", "signals", "x", "y", "width", "height", "config", "z".
    QJsonObject toJson() const;

    int type() const override { return Type; }
    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

    void setDesignMode(bool on);
    bool designMode() const { return m_designMode; }

    // Raised to minimumSize() and held to LayoutFormat::MaxSize, then each
    // dimension rounded up to a multiple of the grid.
    void setSize(const QSizeF &size);
    QSizeF size() const { return m_size; }
    // The widget's minimum design size (80x60 at least for other widgets),
    // never below 20x20.
    QSize minimumSize() const;

    // The embedded widget, or nullptr when it is not a DashboardWidget.
    DashboardWidget *dashboardWidget() const;
    QGraphicsRectItem *overlay() const { return m_overlay; }

    // Z-order among the scene's top-level DashboardItems, as the scene keeps
    // it. Forward/backward step past exactly one distinct neighbouring z
    // value and do nothing at the top or bottom.
    void bringToFront();
    void sendToBack();
    void bringForward();
    void sendBackward();

    // Opens the configuration dialog modally; true when it was accepted.
    bool configure();
    // Asks "Delete Widget"; on Yes removes the item. True when removed.
    bool requestDelete();
    // Takes the item off its scene and deletes item and widget on the next
    // event-loop turn, so a menu or dialog still on the stack stays valid.
    void removeFromScene();

protected:
    bool sceneEventFilter(QGraphicsItem *watched, QEvent *event) override;
    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;
    void contextMenuEvent(QGraphicsSceneContextMenuEvent *event) override;
    void hoverMoveEvent(QGraphicsSceneHoverEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;

private:
    static QSize minimumSizeFor(const QWidget *widget);
    QRectF resizeHandle() const;
    QList<qreal> zValuesWithOwn() const;
    void setZAndRestack(qreal z);
    void restackOverlay();
    void trackZ();
    void updateCursor(const QPointF &pos);
    void setOverrideCursor(Qt::CursorShape shape);
    void restoreOverrideCursor();

    QGraphicsProxyWidget *m_proxy = nullptr;
    QGraphicsRectItem *m_overlay = nullptr;
    bool m_designMode = false;
    bool m_moving = false;
    bool m_resizing = false;
    bool m_cursorOverridden = false;
    bool m_removed = false;
    QPointF m_pressPos;
    QSizeF m_size;
    // Where this item's z is counted (a DesignScene's top level) and as what.
    QPointer<DesignScene> m_zScene;
    qreal m_trackedZ = 0.0;
};
