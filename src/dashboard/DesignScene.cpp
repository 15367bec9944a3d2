#include "DesignScene.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>

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
