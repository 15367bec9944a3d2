#include "XYPointHistory.h"

#include <algorithm>

void XYPointHistory::Extent::include(double v)
{
    lo = std::min(lo, v);
    hi = std::max(hi, v);
}

XYPointHistory::XYPointHistory(int capacity)
    : m_capacity(std::max(1, capacity))
{
}

void XYPointHistory::linearize()
{
    std::rotate(m_points.begin(), m_points.begin() + m_writeIndex, m_points.end());
    m_writeIndex = 0;
}

void XYPointHistory::setCapacity(int capacity)
{
    capacity = std::max(1, capacity);
    if (capacity == m_capacity)
        return;
    linearize();
    if (m_points.size() > capacity)
        m_points.remove(0, m_points.size() - capacity);
    m_capacity = capacity;
    invalidateExtents();
}

void XYPointHistory::append(const QPointF &point)
{
    if (m_points.size() < m_capacity) {
        m_points.append(point);
    } else {
        QPointF &slot = m_points[m_writeIndex];
        // An overwritten extreme may have been the only one.
        if (slot.x() <= m_x.lo || slot.x() >= m_x.hi)
            m_extentValid[0] = false;
        if (slot.y() <= m_y.lo || slot.y() >= m_y.hi)
            m_extentValid[1] = false;
        slot = point;
        m_writeIndex = (m_writeIndex + 1) % int(m_points.size());
    }
    m_x.include(point.x());
    m_y.include(point.y());
}

void XYPointHistory::clear()
{
    m_points.clear();
    m_writeIndex = 0;
    invalidateExtents();
}

const QPointF &XYPointHistory::chronological(int age) const
{
    return m_points.at((m_writeIndex + age) % size());
}

XYPointHistory::Extent XYPointHistory::xExtent() const
{
    if (!m_extentValid[0]) {
        m_x = Extent();
        for (const QPointF &point : m_points)
            m_x.include(point.x());
        m_extentValid[0] = true;
    }
    return m_x;
}

XYPointHistory::Extent XYPointHistory::yExtent() const
{
    if (!m_extentValid[1]) {
        m_y = Extent();
        for (const QPointF &point : m_points)
            m_y.include(point.y());
        m_extentValid[1] = true;
    }
    return m_y;
}

void XYPointHistory::invalidateExtents()
{
    m_extentValid[0] = m_extentValid[1] = false;
    m_x = Extent();
    m_y = Extent();
}
