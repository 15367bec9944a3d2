#include "TrendDecimator.h"

#include "TrendSeries.h"
#include "TrendTimeMap.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

// The samples of one pixel column that follow each other in storage order.
struct Column
{
    double column = 0.0;
    double first = 0.0;
    double min = 0.0;
    double max = 0.0;
    double last = 0.0;

    void start(double c, double value)
    {
        column = c;
        first = min = max = last = value;
    }
    void add(double value)
    {
        min = std::min(min, value);
        max = std::max(max, value);
        last = value;
    }
};

// Appends a column's points at its centre: first, minimum, maximum, last.
// The vertical moves between them cover the column's span from minimum to
// maximum as every sample's line does; with `step` the previous value is
// first held up to the column.
class PolylineEmitter
{
public:
    PolylineEmitter(QPolygonF &points, const TrendTimeMap &map, bool step)
        : m_points(points)
        , m_map(map)
        , m_step(step)
    {
    }

    // Whichever extreme is nearer the first value is visited first: the
    // line covers the same span with less of it drawn twice.
    void add(const Column &c)
    {
        const double x = m_map.columnX(c.column);
        const bool minFirst = (c.first - c.min) + (c.max - c.last) <= (c.max - c.first) + (c.last - c.min);
        point(x, c.first);
        point(x, minFirst ? c.min : c.max);
        point(x, minFirst ? c.max : c.min);
        point(x, c.last);
    }

    void carryTo(double x)
    {
        if (!m_points.isEmpty())
            point(x, m_points.constLast().y());
    }

private:
    void point(double x, double value)
    {
        if (!m_points.isEmpty()) {
            const QPointF last = m_points.constLast();
            if (last.x() == x && last.y() == value)
                return;
            if (m_step && last.x() != x)
                m_points.append(QPointF(x, last.y()));
        }
        m_points.append(QPointF(x, value));
    }

    QPolygonF &m_points;
    const TrendTimeMap &m_map;
    bool m_step;
};

void include(TrendTrace &trace, double lo, double hi)
{
    trace.lo = std::min(trace.lo, lo);
    trace.hi = std::max(trace.hi, hi);
}

// The index of the first time at or after tEnd, searched from `from` in
// steps that double: a column's samples cost a few comparisons to find.
qsizetype firstFrom(const qint64 *times, qsizetype from, qsizetype size, qint64 tEnd)
{
    qsizetype low = from;
    qsizetype step = 1;
    while (size - low > step && times[low + step] < tEnd) {
        low += step;
        step *= 2;
    }
    const qsizetype high = std::min(size, low + step + 1);
    return qsizetype(std::lower_bound(times + low, times + high, tEnd) - times);
}

// In time order, a column's samples are found by time alone; the walk ends
// with the first column past the right edge.
void decimateOrdered(const TrendSeries &series, qsizetype first, const TrendTimeMap &map, PolylineEmitter &emitter,
                     TrendTrace &trace)
{
    const qint64 *times = series.times();
    const double *values = series.values();
    const qsizetype size = series.size();
    qsizetype i = first;
    while (i < size) {
        Column column;
        column.start(map.column(times[i]), values[i]);
        const qsizetype next = firstFrom(times, i + 1, size, map.columnEndMs(column.column));
        std::tie(column.min, column.max) = series.extremes(i, next);
        column.last = values[next - 1];
        i = next;
        emitter.add(column);
        if (column.column >= 0.0)
            include(trace, column.min, column.max);
        if (column.column >= map.width())
            break;
    }
    if (i < size) {
        const auto [lo, hi] = series.extremes(i, size);
        include(trace, lo, hi);
    }
}

void decimateUnordered(const TrendSeries &series, const TrendTimeMap &map, PolylineEmitter &emitter,
                       TrendTrace &trace)
{
    Column column;
    for (qsizetype i = 0; i < series.size(); ++i) {
        const TrendSample sample = series.at(i);
        if (sample.tMs >= map.startMs())
            include(trace, sample.value, sample.value);
        const double c = map.column(sample.tMs);
        if (i > 0 && c == column.column) {
            column.add(sample.value);
            continue;
        }
        if (i > 0)
            emitter.add(column);
        column.start(c, sample.value);
    }
    emitter.add(column);
}

// The reference: a polyline through every sample that can reach the plot.
void polylineOfEverySample(const TrendSeries &series, qsizetype first, const TrendTimeMap &map, qint64 nowMs,
                           bool step, TrendTrace &trace)
{
    const bool ordered = series.isTimeOrdered();
    QPolygonF &points = trace.points;
    for (qsizetype i = first; i < series.size(); ++i) {
        const TrendSample sample = series.at(i);
        if (sample.tMs >= map.startMs())
            include(trace, sample.value, sample.value);
        if (ordered && i > first && series.times()[i - 1] > nowMs)
            continue;
        const double x = map.columnX(map.column(sample.tMs));
        if (step && !points.isEmpty() && points.constLast().x() != x)
            points.append(QPointF(x, points.constLast().y()));
        points.append(QPointF(x, sample.value));
    }
    if (!points.isEmpty() && series.back().tMs < nowMs)
        points.append(QPointF(map.columnX(map.column(nowMs)), series.back().value));
}

} // namespace

void TrendTrace::mapValues(double bottom, double height, double lower, double upper)
{
    const double scale = height / (upper - lower);
    for (QPointF &point : points)
        point.setY(bottom - (point.y() - lower) * scale);
}

TrendTrace TrendDecimator::trace(const TrendSeries &series, const TrendTimeMap &map, qint64 nowMs, bool step,
                                 bool decimate)
{
    TrendTrace trace;
    if (series.isEmpty())
        return trace;
    // In time order, samples before the last one ahead of the window are out of sight.
    const bool ordered = series.isTimeOrdered();
    const qsizetype first = ordered ? std::max<qsizetype>(0, series.lowerBound(map.startMs()) - 1) : 0;
    if (!decimate) {
        polylineOfEverySample(series, first, map, nowMs, step, trace);
        return trace;
    }
    trace.points.reserve(5 * (qsizetype(map.width()) + 4)); // four points and a hold per column
    PolylineEmitter emitter(trace.points, map, step);
    if (ordered)
        decimateOrdered(series, first, map, emitter, trace);
    else
        decimateUnordered(series, map, emitter, trace);
    if (series.back().tMs < nowMs)
        emitter.carryTo(map.columnX(map.column(nowMs)));
    return trace;
}

std::optional<double> TrendDecimator::valueAtColumn(const TrendSeries &series, const TrendTimeMap &map,
                                                    double column, bool step)
{
    if (series.isEmpty() || !series.isTimeOrdered())
        return std::nullopt;
    const qint64 *times = series.times();
    const qint64 *next = std::partition_point(times, times + series.size(),
                                              [&](qint64 t) { return map.column(t) <= column; });
    if (next == times)
        return std::nullopt;
    const TrendSample held = series.at(next - times - 1);
    const double heldColumn = map.column(held.tMs);
    if (step || next == times + series.size() || heldColumn == column)
        return held.value;
    // Straight lines: the segment from the held sample to the next one.
    const TrendSample after = series.at(next - times);
    const double f = (column - heldColumn) / (map.column(after.tMs) - heldColumn);
    return held.value + (after.value - held.value) * f;
}
