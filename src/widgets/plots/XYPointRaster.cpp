#include "XYPointRaster.h"

#include "XYPointHistory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace {

// A dot about two and a half pixels across: full at the centre, fading to
// the sides and corners.
constexpr quint8 Centre = 255;
constexpr quint8 Side = 150;
constexpr quint8 Corner = 60;

// 1 / n for the short lines that most joins are (0 for 0): a division
// costs more than drawing a short line.
const std::array<double, 1024> Reciprocals = [] {
    std::array<double, 1024> table{};
    for (size_t n = 1; n < table.size(); ++n)
        table[n] = 1.0 / double(n);
    return table;
}();

const void *lastHit(const quint8 *hits, size_t count)
{
#ifdef __GLIBC__
    return memrchr(hits, 1, count);
#else
    for (size_t i = count; i > 0; --i) {
        if (hits[i - 1])
            return hits + i - 1;
    }
    return nullptr;
#endif
}

// The pixels of the plot area that hold a dot's centre, with an empty
// border all round so that every pixel has eight neighbours.
class DotCentres
{
public:
    DotCentres(int width, int height)
        : m_width(width)
        , m_height(height)
        , m_stride(size_t(width) + 2)
        , m_hits(m_stride * (size_t(height) + 2), 0)
    {
    }

    void mark(int x, int y) { m_hits[(size_t(y) + 1) * m_stride + size_t(x) + 1] = 1; }

    // The pixels from (x0, y0) to (x1, y1), both inside the area: one per
    // step along the longer axis.
    void line(int x0, int y0, int x1, int y1)
    {
        const int steps = std::max(std::abs(x1 - x0), std::abs(y1 - y0));
        const double inverse = steps < int(Reciprocals.size()) ? Reciprocals[size_t(steps)] : 1.0 / steps;
        const double stepX = (x1 - x0) * inverse;
        const double stepY = (y1 - y0) * inverse;
        double x = x0 + 0.5;
        double y = y0 + 0.5;
        for (int i = 0; i <= steps; ++i) {
            mark(int(x), int(y));
            x += stepX;
            y += stepY;
        }
    }

    // Each pixel takes the strongest part of the dots around it.
    QImage toImage(const QColor &color) const
    {
        std::array<QRgb, 256> shades;
        for (int a = 0; a < 256; ++a)
            shades[size_t(a)] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), a));
        QImage image(m_width, m_height, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < m_height; ++y) {
            auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
            const quint8 *up = m_hits.data() + size_t(y) * m_stride + 1;
            const quint8 *mid = up + m_stride;
            const quint8 *down = mid + m_stride;
            // Only pixels next to a centre get colour: a sparse plot costs
            // a fill per line, not a look at every pixel.
            const auto [first, last] = hitSpan(y);
            std::fill(line, line + std::max(first, 0), QRgb(0));
            std::fill(line + std::min(last + 1, m_width), line + m_width, QRgb(0));
            for (int x = std::max(first, 0); x <= std::min(last, m_width - 1); ++x) {
                const bool side = up[x] | down[x] | mid[x - 1] | mid[x + 1];
                const bool corner = up[x - 1] | up[x + 1] | down[x - 1] | down[x + 1];
                line[x] = shades[mid[x] ? Centre : side ? Side : corner ? Corner : 0];
            }
        }
        return image;
    }

private:
    // The columns of line y that may get colour: one either side of the
    // centres on the line and its two neighbours; first > last when none.
    std::pair<int, int> hitSpan(int y) const
    {
        int first = m_width;
        int last = -1;
        for (int row = y; row <= y + 2; ++row) {
            const quint8 *hits = m_hits.data() + size_t(row) * m_stride;
            const void *front = std::memchr(hits, 1, m_stride);
            if (!front)
                continue;
            const void *back = lastHit(hits, m_stride);
            // Border columns count from -1, so a centre at stride column c
            // colours frame columns c - 2 to c.
            first = std::min(first, int(static_cast<const quint8 *>(front) - hits) - 2);
            last = std::max(last, int(static_cast<const quint8 *>(back) - hits));
        }
        return {first, last};
    }

    int m_width;
    int m_height;
    size_t m_stride;
    std::vector<quint8> m_hits;
};

// Cuts the segment a-b to the box [0, w] x [0, h]; false when nothing is left.
bool clip(QPointF &a, QPointF &b, double w, double h)
{
    double t0 = 0.0;
    double t1 = 1.0;
    const double dx = b.x() - a.x();
    const double dy = b.y() - a.y();
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {a.x(), w - a.x(), a.y(), h - a.y()};
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0.0) {
            if (q[i] < 0.0)
                return false;
            continue;
        }
        const double t = q[i] / p[i];
        if (p[i] < 0.0)
            t0 = std::max(t0, t);
        else
            t1 = std::min(t1, t);
    }
    if (t0 > t1)
        return false;
    const QPointF start = a;
    a = start + QPointF(dx, dy) * t0;
    b = start + QPointF(dx, dy) * t1;
    return true;
}

} // namespace

XYPointRaster::XYPointRaster(const QRect &area, const Ranges &ranges)
    : m_area(area.width() > 0 && area.height() > 0 ? area : QRect(area.topLeft(), QSize(1, 1)))
    , m_ranges(ranges)
    , m_xScale(m_area.width() / (ranges.xHi - ranges.xLo))
    , m_yScale(m_area.height() / (ranges.yHi - ranges.yLo))
{
}

QPointF XYPointRaster::map(const QPointF &point) const
{
    const QPointF p = local(point);
    // Far-off points are held where drawing them still works.
    return QPointF(m_area.left() + std::clamp(p.x(), -1.0e6, 1.0e6), m_area.top() + std::clamp(p.y(), -1.0e6, 1.0e6));
}

QRect XYPointRaster::window(const QRect &part) const
{
    const QRect whole(QPoint(0, 0), m_area.size());
    if (part.isEmpty())
        return whole;
    const QRect inside = part.translated(-m_area.topLeft()) & whole;
    return inside.isEmpty() ? QRect(0, 0, 1, 1) : inside;
}

QImage XYPointRaster::dots(const XYPointHistory &points, const QColor &color, const QRect &part) const
{
    const QRect shown = window(part);
    const QPointF origin = shown.topLeft();
    const int w = shown.width();
    const int h = shown.height();
    DotCentres centres(w, h);
    for (const QPointF &point : points.slots()) {
        const QPointF p = local(point) - origin;
        // The upper end of a range lies on the last pixel, not past it.
        if (p.x() >= 0.0 && p.x() <= w && p.y() >= 0.0 && p.y() <= h)
            centres.mark(std::min(int(p.x()), w - 1), std::min(int(p.y()), h - 1));
    }
    return centres.toImage(color);
}

QImage XYPointRaster::trace(const XYPointHistory &points, const QColor &color, const QRect &part) const
{
    if (points.size() == 1)
        return dots(points, color, part);
    const QRect shown = window(part);
    const QPointF origin = shown.topLeft();
    const int w = shown.width();
    const int h = shown.height();
    DotCentres centres(w, h);
    const auto pixel = [](double v, int size) { return std::clamp(int(v), 0, size - 1); };
    const auto inside = [w, h](const QPointF &p) { return p.x() >= 0.0 && p.x() <= w && p.y() >= 0.0 && p.y() <= h; };
    // Oldest first: from the ring's write index round to the slot before it.
    const QList<QPointF> &slots = points.slots();
    const int n = int(slots.size());
    const int oldest = points.writeIndex();
    QPointF previous = local(slots.at(oldest)) - origin;
    for (int age = 1; age < n; ++age) {
        const int slot = oldest + age < n ? oldest + age : oldest + age - n;
        const QPointF next = local(slots.at(slot)) - origin;
        QPointF a = previous;
        QPointF b = next;
        if ((inside(a) && inside(b)) || clip(a, b, w, h))
            centres.line(pixel(a.x(), w), pixel(a.y(), h), pixel(b.x(), w), pixel(b.y(), h));
        previous = next;
    }
    return centres.toImage(color);
}
