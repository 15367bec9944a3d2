#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <limits>

/**
 * Time to x within a trend plot: the window [startMs, startMs + windowMs]
 * spans the plot area's width, x = left + (t - startMs) / windowMs * width.
 *
 * Lines are drawn through pixel-column centres: every sample of one column
 * lands on the same x, so the samples of a column can be reduced to their
 * first, minimum, maximum and last value without changing the picture.
 */
class TrendTimeMap
{
public:
    TrendTimeMap() = default;
    TrendTimeMap(double left, int width, qint64 startMs, qint64 windowMs)
        : m_left(left)
        , m_width(std::max(1, width))
        , m_startMs(startMs)
        , m_windowMs(std::max<qint64>(1, windowMs))
        , m_pixelsPerMs(double(m_width) / double(m_windowMs))
    {
    }

    double left() const { return m_left; }
    int width() const { return m_width; }
    qint64 startMs() const { return m_startMs; }
    qint64 endMs() const { return m_startMs + m_windowMs; }
    qint64 windowMs() const { return m_windowMs; }

    double exactX(qint64 tMs) const { return m_left + double(tMs - m_startMs) * m_pixelsPerMs; }
    qint64 timeAt(double x) const { return m_startMs + qint64(std::floor((x - m_left) / m_pixelsPerMs)); }

    /// The pixel column of a time, counted from the left edge; far-away times
    /// are held a million columns out, where a line's slope no longer shows.
    double column(qint64 tMs) const
    {
        return std::clamp(std::floor(double(tMs - m_startMs) * m_pixelsPerMs), -MaxColumn, MaxColumn);
    }
    double columnX(double column) const { return m_left + column + 0.5; }
    /// The earliest time whose column lies right of `column`; the columns of
    /// a time-ordered series can so be walked without working out the
    /// column of every sample.
    qint64 columnEndMs(double column) const
    {
        if (column >= MaxColumn)
            return std::numeric_limits<qint64>::max();
        qint64 t = m_startMs + qint64(std::ceil((column + 1.0) / m_pixelsPerMs));
        while (this->column(t - 1) > column)
            --t;
        while (this->column(t) <= column)
            ++t;
        return t;
    }

    static constexpr double MaxColumn = 1.0e6;

private:
    double m_left = 0.0;
    int m_width = 1;
    qint64 m_startMs = 0;
    qint64 m_windowMs = 1;
    double m_pixelsPerMs = 1.0;
};
