#include "DashboardItem.h"

#include "DashboardWidget.h"
#include "DashboardWidgetConfigDialog.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"
#include "LayoutFormat.h"

#include <QApplication>
#include <QDialog>
#include <QGraphicsProxyWidget>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QGraphicsSceneContextMenuEvent>
#include <QGraphicsSceneHoverEvent>
#include <QGraphicsSceneMouseEvent>
#include <QJsonArray>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace {

using namespace LayoutFormat;

constexpr qreal HandleSize = 12.0;
const QSize DefaultMinimum(80, 60);
const QSize SmallestMinimum(20, 20);

// Non-finite values read as 0; anything else is kept within +-MaxExtent.
qreal sanitized(qreal value)
{
    if (!std::isfinite(value))
        return 0.0;
    return std::clamp(value, -MaxExtent, MaxExtent);
}

// Whole units first, then up to the next multiple of the grid: 61 -> 70, 60 -> 60.
qreal roundUpToGrid(qreal value)
{
    return std::ceil(std::ceil(value) / GridSize) * GridSize;
}

// Nearest grid line, halves away from zero: 14 -> 10, -15 -> -20.
qreal snapToGrid(qreal value)
{
    return std::round(value / GridSize) * GridSize;
}

QPen designPen()
{
    return QPen(QBrush(Qt::blue, Qt::SolidPattern), 2.0, Qt::DashLine, Qt::SquareCap, Qt::BevelJoin);
}

} // namespace

DashboardItem::DashboardItem(QWidget *widget, QGraphicsItem *parent)
    : QGraphicsItem(parent)
{
    // A widget nobody has sized yet reports Qt's default window size; start it
    // at its minimum instead.
    const bool sized = widget && widget->testAttribute(Qt::WA_Resized);
    const QSizeF initialSize = sized ? QSizeF(widget->size()) : QSizeF();

    // The overlay's mouse, hover and context-menu events are handled as the item's own.
    setFiltersChildEvents(true);

    m_proxy = new QGraphicsProxyWidget(this);
    if (widget) {
        // Set before embedding, while the widget has no platform window to notify.
        widget->setMinimumSize(minimumSizeFor(widget));
        m_proxy->setWidget(widget);
    }

    m_overlay = new QGraphicsRectItem(this);
    m_overlay->setPen(designPen());
    m_overlay->setBrush(Qt::NoBrush);
    m_overlay->setAcceptedMouseButtons(Qt::LeftButton);
    m_overlay->setAcceptHoverEvents(true);
    m_overlay->setFlag(ItemIsMovable, false);
    m_overlay->setFlag(ItemIsSelectable, false);
    m_overlay->setFlag(ItemIgnoresParentOpacity, true);
    m_overlay->hide();

    setSize(initialSize);
}

DashboardItem::~DashboardItem()
{
    restoreOverrideCursor();
    if (m_zScene)
        m_zScene->removeItemZ(m_trackedZ);
}

DashboardItem *DashboardItem::fromJson(const QJsonObject &record)
{
    const QString typeName = record.value(TypeKey).toString();
    if (typeName.isEmpty())
        return nullptr;
    DashboardWidget *widget = DashboardWidgetFactory::instance().create(typeName);
    if (!widget)
        return nullptr;

    const QJsonValue names = record.value(SignalsKey);
    widget->setSignalNames(names.isArray() ? QVariant(names.toArray().toVariantList()).toStringList()
                                           : QStringList());
    widget->loadConfig(record.value(ConfigKey).toObject());

    auto *item = new DashboardItem(widget);
    item->setPos(sanitized(record.value(XKey).toDouble()), sanitized(record.value(YKey).toDouble()));
    item->setSize(QSizeF(record.value(WidthKey).toDouble(), record.value(HeightKey).toDouble()));
    if (record.contains(ZKey))
        item->setZValue(sanitized(record.value(ZKey).toDouble()));
    return item;
}

QJsonObject DashboardItem::toJson() const
{
    const DashboardWidget *widget = dashboardWidget();
    QJsonObject record;
    record.insert(TypeKey, widget ? widget->typeName() : QString());
    record.insert(SignalsKey, QJsonArray::fromStringList(widget ? widget->signalNames() : QStringList()));
    record.insert(XKey, pos().x());
    record.insert(YKey, pos().y());
    record.insert(WidthKey, m_size.width());
    record.insert(HeightKey, m_size.height());
    record.insert(ConfigKey, widget ? widget->saveConfig() : QJsonObject());
    record.insert(ZKey, zValue());
    return record;
}

QRectF DashboardItem::boundingRect() const
{
    return QRectF(QPointF(0, 0), m_size);
}

void DashboardItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option);
    Q_UNUSED(widget);
    if (!m_designMode)
        return;
    painter->setPen(designPen());
    const qreal inset = designPen().widthF() / 2.0; // keep the stroke inside boundingRect()
    painter->drawRect(boundingRect().adjusted(inset, inset, -inset, -inset));
}

void DashboardItem::setDesignMode(bool on)
{
    m_designMode = on;
    setFlag(ItemIsMovable, on);
    setAcceptHoverEvents(on);
    if (!on) {
        m_moving = false;
        m_resizing = false;
        restoreOverrideCursor();
    }
    m_overlay->setVisible(on);
    restackOverlay();

    if (on) {
        setCursor(Qt::OpenHandCursor);
        m_overlay->setCursor(Qt::OpenHandCursor);
    } else {
        unsetCursor();
        m_overlay->unsetCursor();
    }
    if (QWidget *widget = m_proxy->widget()) {
        if (on)
            widget->setCursor(Qt::OpenHandCursor);
        else
            widget->unsetCursor();
    }
    update();
}

QSize DashboardItem::minimumSize() const
{
    return minimumSizeFor(m_proxy ? m_proxy->widget() : nullptr);
}

QSize DashboardItem::minimumSizeFor(const QWidget *widget)
{
    QSize minimum = DefaultMinimum;
    if (widget) {
        if (auto *dashboard = qobject_cast<const DashboardWidget *>(widget))
            minimum = dashboard->minimumDesignSize();
        else
            minimum = widget->sizeHint().expandedTo(DefaultMinimum);
    }
    const int most = int(MaxSize);
    return minimum.expandedTo(SmallestMinimum).boundedTo(QSize(most, most));
}

void DashboardItem::setSize(const QSizeF &size)
{
    const QSize minimum = minimumSize();
    const qreal width = std::clamp(sanitized(size.width()), qreal(minimum.width()), MaxSize);
    const qreal height = std::clamp(sanitized(size.height()), qreal(minimum.height()), MaxSize);

    prepareGeometryChange();
    m_size = QSizeF(roundUpToGrid(width), roundUpToGrid(height));

    m_proxy->setGeometry(QRectF(QPointF(0, 0), m_size));
    if (QWidget *widget = m_proxy->widget()) {
        widget->resize(m_size.toSize());
        // Only on change: each call re-sends size hints to the platform window.
        if (widget->minimumSize() != minimum)
            widget->setMinimumSize(minimum);
        if (widget->maximumSize() != QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX))
            widget->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        widget->update();
    }
    m_overlay->setRect(QRectF(0, 0, m_size.width(), m_size.height()));
    restackOverlay();
    update();
}

DashboardWidget *DashboardItem::dashboardWidget() const
{
    return m_proxy ? qobject_cast<DashboardWidget *>(m_proxy->widget()) : nullptr;
}

// The scene's distinct z values, this item's own among them even off a scene.
QList<qreal> DashboardItem::zValuesWithOwn() const
{
    QList<qreal> values = parentItem() ? QList<qreal>() : DesignScene::itemZValuesOf(scene());
    const auto at = std::lower_bound(values.begin(), values.end(), zValue());
    if (at == values.end() || *at != zValue())
        values.insert(at, zValue());
    return values;
}

void DashboardItem::bringToFront()
{
    setZAndRestack(zValuesWithOwn().last() + 1.0);
}

void DashboardItem::sendToBack()
{
    setZAndRestack(zValuesWithOwn().first() - 1.0);
}

// The half steps move the item past exactly one neighbour without renumbering the others.
void DashboardItem::bringForward()
{
    const QList<qreal> values = zValuesWithOwn();
    const qsizetype i = values.indexOf(zValue());
    if (i >= 0 && i < values.size() - 1)
        setZAndRestack(values.at(i + 1) + 0.5);
}

void DashboardItem::sendBackward()
{
    const QList<qreal> values = zValuesWithOwn();
    const qsizetype i = values.indexOf(zValue());
    if (i > 0)
        setZAndRestack(values.at(i - 1) - 0.5);
}

void DashboardItem::setZAndRestack(qreal z)
{
    setZValue(z); // itemChange() restacks the overlay
    update();
}

bool DashboardItem::configure()
{
    DashboardWidget *widget = dashboardWidget();
    if (!widget)
        return false;
    DashboardWidgetConfigDialog dialog(widget);
    const bool accepted = dialog.exec() == QDialog::Accepted;
    update();
    return accepted;
}

bool DashboardItem::requestDelete()
{
    if (!scene())
        return false;
    const auto answer = QMessageBox::question(QApplication::activeWindow(), QStringLiteral("Delete Widget"),
                                              QStringLiteral("Are you sure you want to delete this widget?"),
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::NoButton);
    if (answer != QMessageBox::Yes)
        return false;
    removeFromScene();
    return true;
}

void DashboardItem::removeFromScene()
{
    if (m_removed)
        return;
    m_removed = true;

    QWidget *widget = m_proxy->widget();
    if (widget) {
        const QList<QDialog *> dialogs = widget->findChildren<QDialog *>();
        for (QDialog *dialog : dialogs)
            dialog->close();
        widget->setAcceptDrops(false);
        widget->clearFocus();
    }
    m_moving = false;
    m_resizing = false;
    restoreOverrideCursor();
    if (scene())
        scene()->removeItem(this);
    if (widget) {
        widget->hide(); // detached, it would otherwise become a top-level window
        m_proxy->setWidget(nullptr);
    }

    QPointer<QWidget> guarded(widget);
    QTimer::singleShot(0, [this, guarded] {
        delete this;
        delete guarded.data();
    });
}

QRectF DashboardItem::resizeHandle() const
{
    return QRectF(m_size.width() - HandleSize, m_size.height() - HandleSize, HandleSize, HandleSize);
}

void DashboardItem::restackOverlay()
{
    if (!m_overlay)
        return;
    // Above every other top-level item: (largest other z) - (own z) + 1.
    // That formula alone can go to zero or below when this item is the topmost
    // one, which would put the overlay under its sibling proxy and hand the mouse
    // to the embedded widget; a child's z only orders it among its siblings, so
    // the overlay is also kept above the proxy.
    const qreal largestOther = DesignScene::largestZBesides(scene(), this).value_or(zValue());
    m_overlay->setZValue(std::max(largestOther - zValue() + 1.0, m_proxy->zValue() + 1.0));
}

void DashboardItem::trackZ()
{
    if (m_zScene)
        m_zScene->removeItemZ(m_trackedZ);
    m_zScene = parentItem() ? nullptr : qobject_cast<DesignScene *>(scene());
    m_trackedZ = zValue();
    if (m_zScene)
        m_zScene->addItemZ(m_trackedZ);
}

bool DashboardItem::sceneEventFilter(QGraphicsItem *watched, QEvent *event)
{
    if (watched != m_overlay)
        return false;
    switch (event->type()) {
    case QEvent::GraphicsSceneHoverEnter:
        // Entering sets the cursor just as moving over the item does.
        hoverMoveEvent(static_cast<QGraphicsSceneHoverEvent *>(event));
        return true;
    case QEvent::GraphicsSceneMousePress:
    case QEvent::GraphicsSceneMouseDoubleClick:
    case QEvent::GraphicsSceneMouseMove:
    case QEvent::GraphicsSceneMouseRelease:
    case QEvent::GraphicsSceneHoverMove:
    case QEvent::GraphicsSceneContextMenu:
        // The overlay's events are the item's own; sceneEvent() hands each to
        // its handler (a double click arrives as a press).
        return sceneEvent(event);
    default:
        return false;
    }
}

QVariant DashboardItem::itemChange(GraphicsItemChange change, const QVariant &value)
{
    if (change == ItemZValueHasChanged || change == ItemSceneHasChanged || change == ItemParentHasChanged)
        trackZ();
    if (change == ItemZValueHasChanged || change == ItemSceneHasChanged)
        restackOverlay();
    // Before leaving a scene and after joining one, the scene tells its listeners.
    if (change == ItemSceneChange || change == ItemSceneHasChanged) {
        if (auto *design = qobject_cast<DesignScene *>(scene()))
            Q_EMIT design->dashboardItemsChanged();
    }
    return QGraphicsItem::itemChange(change, value);
}

void DashboardItem::contextMenuEvent(QGraphicsSceneContextMenuEvent *event)
{
    if (!m_designMode || !dashboardWidget()) {
        event->ignore();
        return;
    }
    event->accept();

    QMenu menu;
    QAction *configureAction = menu.addAction(QStringLiteral("Configure Widget..."));
    QAction *frontAction = menu.addAction(QStringLiteral("Bring to Front"));
    QAction *backAction = menu.addAction(QStringLiteral("Send to Back"));
    QAction *forwardAction = menu.addAction(QStringLiteral("Bring Forward"));
    QAction *backwardAction = menu.addAction(QStringLiteral("Send Backward"));
    menu.addSeparator();
    QAction *deleteAction = menu.addAction(QStringLiteral("Delete"));

    QAction *chosen = menu.exec(event->screenPos());
    if (!chosen)
        return;
    if (chosen == configureAction)
        configure();
    else if (chosen == frontAction)
        bringToFront();
    else if (chosen == backAction)
        sendToBack();
    else if (chosen == forwardAction)
        bringForward();
    else if (chosen == backwardAction)
        sendBackward();
    else if (chosen == deleteAction)
        requestDelete();
}

void DashboardItem::hoverMoveEvent(QGraphicsSceneHoverEvent *event)
{
    if (!m_designMode) {
        unsetCursor();
        QGraphicsItem::hoverMoveEvent(event);
        return;
    }
    updateCursor(mapFromScene(event->scenePos()));
}

void DashboardItem::updateCursor(const QPointF &pos)
{
    const Qt::CursorShape shape = resizeHandle().contains(pos) ? Qt::SizeFDiagCursor : Qt::OpenHandCursor;
    setCursor(shape);
    m_overlay->setCursor(shape);
}

void DashboardItem::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (!m_designMode || event->button() != Qt::LeftButton) {
        QGraphicsItem::mousePressEvent(event);
        return;
    }
    m_pressPos = mapFromScene(event->scenePos());
    if (resizeHandle().contains(m_pressPos)) {
        m_resizing = true;
        setOverrideCursor(Qt::SizeFDiagCursor);
    } else {
        m_moving = true;
        setOverrideCursor(Qt::ClosedHandCursor);
    }
    event->accept();
}

void DashboardItem::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (!m_designMode || (!m_moving && !m_resizing)) {
        QGraphicsItem::mouseMoveEvent(event);
        return;
    }
    // Mapped here rather than taken from event->pos(): events reach the item
    // through its overlay, whose cached scene transform may lag behind a move.
    const QPointF mouse = mapFromScene(event->scenePos());
    if (m_resizing) {
        setSize(QSizeF(roundUpToGrid(mouse.x()), roundUpToGrid(mouse.y())));
    } else {
        const QPointF target = pos() + (mouse - m_pressPos);
        setPos(snapToGrid(target.x()), snapToGrid(target.y()));
    }
    event->accept();
}

void DashboardItem::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    QGraphicsItem::mouseReleaseEvent(event);
    m_moving = false;
    m_resizing = false;
    restoreOverrideCursor();
}

void DashboardItem::setOverrideCursor(Qt::CursorShape shape)
{
    if (m_cursorOverridden)
        QApplication::changeOverrideCursor(shape);
    else
        QApplication::setOverrideCursor(shape);
    m_cursorOverridden = true;
}

void DashboardItem::restoreOverrideCursor()
{
    if (!m_cursorOverridden)
        return;
    QApplication::restoreOverrideCursor();
    m_cursorOverridden = false;
}
