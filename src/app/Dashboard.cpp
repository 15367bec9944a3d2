#include "Dashboard.h"

#include "DashboardItem.h"
#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"

#include <QDebug>
#include <QEvent>
#include "WidgetView.h"

#include <QGraphicsView>
#include <QMetaMethod>
#include <QtMath>

#include <algorithm>

namespace {

const QString kTrendPlot = QStringLiteral("TrendPlot");
const QString kXYPlot = QStringLiteral("XYPlot");
constexpr qreal kGrid = 10.0;
constexpr qreal kGap = 20.0;

} // namespace

Dashboard::Dashboard(QWidget *viewParent)
    : QObject(viewParent)
    , m_scene(new DesignScene(this))
    , m_view(new WidgetView(m_scene, viewParent))
{
    m_view->setObjectName(QStringLiteral("dashboardView"));
    m_view->viewport()->installEventFilter(this);
    m_scene->setSceneRect(QRectF(QPointF(0, 0), m_view->viewport()->size()));
}

bool Dashboard::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_view->viewport() && event->type() == QEvent::Resize)
        m_scene->setSceneRect(QRectF(QPointF(0, 0), m_view->viewport()->size()));
    return QObject::eventFilter(watched, event);
}

QList<DashboardItem *> Dashboard::items() const
{
    return topLevelItems(m_scene);
}

QList<DashboardItem *> Dashboard::topLevelItems(const QGraphicsScene *scene)
{
    QList<DashboardItem *> result;
    if (!scene)
        return result;
    const QList<QGraphicsItem *> items = scene->items();
    for (QGraphicsItem *item : items) {
        if (item->parentItem())
            continue;
        if (auto *dashboardItem = qgraphicsitem_cast<DashboardItem *>(item))
            result.append(dashboardItem);
    }
    return result;
}

QList<DashboardWidget *> Dashboard::widgets() const
{
    QList<DashboardWidget *> result;
    for (DashboardItem *item : items()) {
        if (DashboardWidget *widget = item->dashboardWidget())
            result.append(widget);
    }
    return result;
}

QList<DashboardWidget *> Dashboard::widgetsOfType(const QString &typeName) const
{
    QList<DashboardWidget *> result;
    for (DashboardWidget *widget : widgets()) {
        if (widget->typeName() == typeName)
            result.append(widget);
    }
    return result;
}

void Dashboard::setDesignMode(bool on)
{
    m_designMode = on;
    m_scene->setDesignMode(on);
    for (DashboardItem *item : items())
        item->setDesignMode(on);
}

DashboardItem *Dashboard::addWidget(const QString &typeName)
{
    DashboardWidget *widget = DashboardWidgetFactory::instance().create(typeName);
    if (!widget)
        return nullptr;
    auto *item = new DashboardItem(widget);
    qreal topZ = 0.0;
    for (DashboardItem *other : items())
        topZ = qMax(topZ, other->zValue());
    item->setPos(freePosition(item->size()));
    m_scene->addItem(item);
    item->setZValue(topZ + 1.0);
    item->setDesignMode(m_designMode);
    return item;
}

QPointF Dashboard::freePosition(const QSizeF &size) const
{
    QList<QRectF> taken;
    for (DashboardItem *item : items())
        taken.append(item->sceneBoundingRect().adjusted(-kGrid, -kGrid, kGrid, kGrid));
    const qreal width = qMax(m_scene->sceneRect().width(), size.width() + 2 * kGap);
    // Row by row over the visible width, then further down without limit.
    for (qreal y = kGap;; y += kGap) {
        for (qreal x = kGap; x + size.width() <= width; x += kGap) {
            const QRectF candidate(QPointF(x, y), size);
            const bool free = std::none_of(taken.cbegin(), taken.cend(),
                                           [&](const QRectF &rect) { return rect.intersects(candidate); });
            if (free)
                return candidate.topLeft();
        }
        if (y > 100000.0)
            return QPointF(kGap, kGap);
    }
}

bool Dashboard::invoke(DashboardWidget *widget, const char *signature, QGenericArgument argument)
{
    const QMetaObject *meta = widget->metaObject();
    const int index = meta->indexOfMethod(QMetaObject::normalizedSignature(signature).constData());
    if (index < 0)
        return false;
    return meta->method(index).invoke(widget, Qt::DirectConnection, argument);
}

void Dashboard::clearPlots()
{
    for (QGraphicsItem *item : m_scene->items()) {
        if (item->parentItem())
            continue;
        auto *dashboardItem = qgraphicsitem_cast<DashboardItem *>(item);
        if (!dashboardItem) {
            qDebug() << "No DashboardItem";
            continue;
        }
        DashboardWidget *widget = dashboardItem->dashboardWidget();
        if (widget && (widget->typeName() == kTrendPlot || widget->typeName() == kXYPlot)) {
            if (!invoke(widget, "clearData()"))
                invoke(widget, "clear()");
            widget->update();
        }
    }
}

void Dashboard::setTrendPlotsTimeDriven(bool on)
{
    for (DashboardWidget *widget : widgetsOfType(kTrendPlot))
        invoke(widget, "setTimeDriven(bool)", Q_ARG(bool, on));
}

void Dashboard::moveTrendPlotsTo(qint64 ms)
{
    for (DashboardWidget *widget : widgetsOfType(kTrendPlot)) {
        invoke(widget, "setPlaybackTimeMs(qint64)", Q_ARG(qint64, ms));
        invoke(widget, "seekTo(qint64)", Q_ARG(qint64, ms));
        widget->update();
    }
}

double Dashboard::largestTrendWindowMs() const
{
    double largest = 0.0;
    for (DashboardWidget *widget : widgetsOfType(kTrendPlot))
        largest = qMax(largest, widget->saveConfig().value(QStringLiteral("timeWindowMs")).toDouble());
    return largest;
}

void Dashboard::updateWidgets()
{
    for (DashboardWidget *widget : widgets())
        widget->update();
}
