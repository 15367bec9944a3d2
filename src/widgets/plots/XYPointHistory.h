#pragma once

#include <QList>
#include <QPointF>

/**
 * The bounded point history of an XY plot. Appends until `capacity` points
 * are held, then overwrites the oldest point at writeIndex(), a ring buffer
 * that never shifts its contents.
 *
 * The extent of each coordinate over the held points is cached and kept up
 * to date on appends; it is worked out again only when a point that held an
 * extreme is overwritten or the cache is invalidated.
 */
class XYPointHistory
{
public:
    struct Extent
    {
        double lo = 1e300;
        double hi = -1e300;

        bool isEmpty() const { return lo > hi; }
        void include(double v);
    };

    explicit XYPointHistory(int capacity = 2000);

    int capacity() const { return m_capacity; }
    /// At least 1. A history larger than the new capacity keeps its newest
    /// points; afterwards the points are held oldest first and writeIndex() is 0.
    void setCapacity(int capacity);
    void append(const QPointF &point);
    void clear();

    int size() const { return int(m_points.size()); }
    bool isEmpty() const { return m_points.isEmpty(); }
    int writeIndex() const { return m_writeIndex; }
    /// The points in storage order (ring slots).
    const QList<QPointF> &slots() const { return m_points; }
    /// The point `age` places after the oldest one.
    const QPointF &chronological(int age) const;
    const QPointF &newest() const { return chronological(size() - 1); }

    Extent xExtent() const;
    Extent yExtent() const;
    /// Forgets the cached extents.
    void invalidateExtents();

private:
    void linearize();

    QList<QPointF> m_points;
    int m_capacity;
    int m_writeIndex = 0;
    mutable Extent m_x;
    mutable Extent m_y;
    mutable bool m_extentValid[2] = {false, false};
};
