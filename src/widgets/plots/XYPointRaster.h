#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QRect>

class XYPointHistory;

/**
 * Draws an XY plot's points into an image of its plot area. The cost of a
 * paint follows the area and the number of points, not what QPainter would
 * spend per shape: each point (or each pixel of a joining line) only marks
 * its pixel, and one pass over the area then gives every marked pixel a
 * small soft dot, however many points fell on it.
 */
class XYPointRaster
{
public:
    /// The axis ranges: a coordinate at `lo` maps to the left or bottom
    /// edge, at `hi` to the right or top edge.
    struct Ranges
    {
        double xLo = -1.0;
        double xHi = 1.0;
        double yLo = -1.0;
        double yHi = 1.0;
    };

    XYPointRaster(const QRect &area, const Ranges &ranges);

    /// The points as dots; points outside the ranges are left out. The image
    /// covers `part` of the area (widget coordinates; empty: all of it), so
    /// that an area larger than the screen is only drawn where it is seen.
    /// A point's soft edge may be missing on the sides of `part` that lie
    /// inside the area: give a margin of two pixels around what is painted.
    QImage dots(const XYPointHistory &points, const QColor &color, const QRect &part = QRect()) const;
    /// The points joined oldest to newest, clipped to the area (or `part`).
    QImage trace(const XYPointHistory &points, const QColor &color, const QRect &part = QRect()) const;
    /// Where a point lies in widget coordinates.
    QPointF map(const QPointF &point) const;

private:
    /// `part` within the area, relative to the area's top-left corner.
    QRect window(const QRect &part) const;

    /// Fractional pixel position from the area's top-left corner.
    QPointF local(const QPointF &point) const
    {
        return QPointF((point.x() - m_ranges.xLo) * m_xScale, (m_ranges.yHi - point.y()) * m_yScale);
    }

    QRect m_area;
    Ranges m_ranges;
    double m_xScale = 1.0;
    double m_yScale = 1.0;
};
