#pragma once

#include <QPolygonF>

#include <limits>
#include <optional>

class TrendSeries;
class TrendTimeMap;

/// One channel's line before its values are mapped to y: points hold
/// (x in pixels, value), and lo/hi the extremes of the samples at or after
/// the window's start (the value range counts no older sample).
struct TrendTrace
{
    QPolygonF points;
    double lo = std::numeric_limits<double>::infinity();
    double hi = -std::numeric_limits<double>::infinity();

    /// Replaces each value by its y: bottom at `lower`, top at `upper`.
    void mapValues(double bottom, double height, double lower, double upper);
};

/**
 * Turns a series into what a trend plot draws, in time order from the last
 * sample before the window to the right edge, where the newest value is
 * carried on (a steady signal stores no new samples).
 *
 * Every sample of a pixel column sits at the column's centre, so the part
 * of the line inside a column is the vertical span from the column's minimum
 * to its maximum, entered at its first value and left at its last.
 * Decimated, each column keeps just those four values: the pixels drawn are
 * those of every sample, at a cost that follows the plot's width. With
 * `step`, each value is held up to the next sample's column, then the line
 * jumps.
 */
class TrendDecimator
{
public:
    static TrendTrace trace(const TrendSeries &series, const TrendTimeMap &map, qint64 nowMs, bool step,
                            bool decimate);
    /// Where the drawn line passes the centre of `column`, as a value; none
    /// before the first sample or when the series is out of time order.
    static std::optional<double> valueAtColumn(const TrendSeries &series, const TrendTimeMap &map, double column,
                                               bool step);
};
