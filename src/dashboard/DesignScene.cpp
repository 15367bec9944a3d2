#include "DesignScene.h"

#include "DashboardItem.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>

#include <algorithm>
#include <cmath>

DesignScene::DesignScene(QObject *parent)
    : QGraphicsScene(parent)
{
}

DesignScene::~DesignScene()
{
    // The items tell this scene when they go: delete them while it is whole.
    clear();
}

QList<DashboardItem *> DesignScene::dashboardItemsOf(const QGraphicsScene *scene)
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

QList<qreal> DesignScene::itemZValuesOf(const QGraphicsScene *scene)
{
    QList<qreal> values;
    if (auto *design = qobject_cast<const DesignScene *>(scene)) {
        for (const auto &[z, count] : design->m_itemZCounts)
            values.append(z);
        return values;
    }
    for (const DashboardItem *item : dashboardItemsOf(scene))
        values.append(item->zValue());
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

std::optional<qreal> DesignScene::largestZBesides(const QGraphicsScene *scene, const QGraphicsItem *item)
{
    if (auto *design = qobject_cast<const DesignScene *>(scene))
        return design->largestItemZBesides(item->zValue());
    std::optional<qreal> largest;
    if (!scene)
        return largest;
    const QList<QGraphicsItem *> items = scene->items();
    for (const QGraphicsItem *other : items) {
        if (other != item && !other->parentItem())
            largest = largest ? std::max(*largest, other->zValue()) : other->zValue();
    }
    return largest;
}

void DesignScene::addItemZ(qreal z)
{
    if (!std::isnan(z))
        ++m_itemZCounts[z];
}

void DesignScene::removeItemZ(qreal z)
{
    const auto it = m_itemZCounts.find(z);
    if (it != m_itemZCounts.end() && --it->second == 0)
        m_itemZCounts.erase(it);
}

std::optional<qreal> DesignScene::largestItemZ() const
{
    if (m_itemZCounts.empty())
        return std::nullopt;
    return m_itemZCounts.rbegin()->first;
}

std::optional<qreal> DesignScene::largestItemZBesides(qreal ownZ) const
{
    auto top = m_itemZCounts.rbegin();
    if (top == m_itemZCounts.rend())
        return std::nullopt;
    if (top->first != ownZ || top->second > 1)
        return top->first;
    if (++top == m_itemZCounts.rend())
        return std::nullopt;
    return top->first;
}

void DesignScene::setDesignMode(bool on)
{
    m_designMode = on;
    update(QRectF());
}

void DesignScene::drawBackground(QPainter *painter, const QRectF &rect)
{
    painter->save();
    if (m_designMode) {
        painter->fillRect(rect, Qt::white);
        drawGrid(painter, rect);
    } else {
        painter->fillRect(rect, QApplication::palette().color(QPalette::Window));
    }
    painter->restore();
}

void DesignScene::drawGrid(QPainter *painter, const QRectF &rect) const
{
    // Crisp one-pixel lines even when the view antialiases.
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(QBrush(QColor(220, 220, 220, 255)), 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    const int left = int(std::floor(rect.left()));
    const int right = int(std::ceil(rect.right()));
    const int top = int(std::floor(rect.top()));
    const int bottom = int(std::ceil(rect.bottom()));

    // % truncates toward zero, so the first line is always a multiple of the grid:
    // 15 starts at 10, -15 at -10.
    for (int x = left - left % m_gridSize; x < right; x += m_gridSize)
        painter->drawLine(x, top, x, bottom);
    for (int y = top - top % m_gridSize; y < bottom; y += m_gridSize)
        painter->drawLine(left, y, right, y);
}
