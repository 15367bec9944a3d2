#include "Dashboard.h"

#include "DashboardItem.h"
#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"
#include "IPlaybackPlot.h"
#include "LayoutFormat.h"

#include <QDebug>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

constexpr qreal kGap = 2 * LayoutFormat::GridSize;
// Below this a new item is no longer searched a place for.
constexpr qreal kSearchDepth = 100000.0;

// The first multiple of kGap at or after `value`.
qreal stepUp(qreal value)
{
    return std::ceil(value / kGap) * kGap;
}

// The first multiple of kGap from kGap on where `itemWidth` fits within
// `width` without overlapping any of `across`, or none. Each obstacle met
// is jumped at once instead of step by step.
std::optional<qreal> freeX(const QList<QRectF> &across, qreal itemWidth, qreal width)
{
    for (qreal x = kGap; x + itemWidth <= width;) {
        const auto blocking = std::find_if(across.cbegin(), across.cend(), [&](const QRectF &rect) {
            return rect.left() < x + itemWidth && x < rect.right();
        });
        if (blocking == across.cend())
            return x;
        x = qMax(x + kGap, stepUp(blocking->right()));
    }
    return std::nullopt;
}

} // namespace

Dashboard::Dashboard(QObject *parent)
    : QObject(parent)
    , m_scene(new DesignScene(this))
{
}

QList<DashboardItem *> Dashboard::items() const
{
    return m_scene->dashboardItems();
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
    const qreal topZ = qMax(0.0, m_scene->largestItemZ().value_or(0.0));
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
        taken.append(item->sceneBoundingRect().adjusted(-LayoutFormat::GridSize, -LayoutFormat::GridSize,
                                                        LayoutFormat::GridSize, LayoutFormat::GridSize));
    const qreal width = qMax(m_scene->sceneRect().width(), size.width() + 2 * kGap);
    // Row by row over the visible width, then further down.
    for (qreal y = kGap; y <= kSearchDepth;) {
        const QRectF row(QPointF(0, y), QSizeF(width, size.height()));
        QList<QRectF> across;
        for (const QRectF &rect : std::as_const(taken)) {
            if (rect.top() < row.bottom() && row.top() < rect.bottom())
                across.append(rect);
        }
        const std::optional<qreal> x = freeX(across, size.width(), width);
        if (x)
            return QPointF(*x, y);
        // Until the first of them ends, the row stays as full as it is.
        qreal firstEnd = across.first().bottom();
        for (const QRectF &rect : std::as_const(across))
            firstEnd = qMin(firstEnd, rect.bottom());
        y = qMax(y + kGap, stepUp(firstEnd));
    }
    return QPointF(kGap, kGap);
}

QList<IPlaybackPlot *> Dashboard::plots() const
{
    QList<IPlaybackPlot *> result;
    for (DashboardWidget *widget : widgets()) {
        if (auto *plot = dynamic_cast<IPlaybackPlot *>(widget))
            result.append(plot);
    }
    return result;
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
        if (auto *plot = dynamic_cast<IPlaybackPlot *>(dashboardItem->dashboardWidget()))
            plot->clearData();
    }
}

void Dashboard::setTrendPlotsTimeDriven(bool on)
{
    for (IPlaybackPlot *plot : plots())
        plot->setTimeDriven(on);
}

void Dashboard::moveTrendPlotsTo(qint64 ms)
{
    for (IPlaybackPlot *plot : plots()) {
        plot->setPlaybackTimeMs(ms);
        plot->seekTo(ms);
    }
}

double Dashboard::largestTrendWindowMs() const
{
    qint64 largest = 0;
    for (IPlaybackPlot *plot : plots())
        largest = qMax(largest, plot->timeWindowMs());
    return double(largest);
}

double Dashboard::previewWindowSeconds(double largestWindowMs)
{
    constexpr double DefaultWindowMs = 10000.0;
    constexpr double MaxWindowMs = 30000.0;
    const double ms = largestWindowMs > 0.0 ? std::min(largestWindowMs, MaxWindowMs) : DefaultWindowMs;
    return std::clamp(ms / 1000.0, 0.1, 60.0);
}

void Dashboard::updateWidgets()
{
    for (DashboardWidget *widget : widgets())
        widget->update();
}
