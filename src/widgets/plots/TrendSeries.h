#pragma once

#include "TrendSample.h"

#include <utility>
#include <vector>

/**
 * The sample buffer of one trend channel, a double-ended queue oldest first.
 * Samples are appended in arrival order and never sorted; trimming removes
 * from the front.
 *
 * Times and values lie in two blocks of memory (the front is dropped by
 * moving a start index, and the blocks are compacted once most of them is
 * dropped), so that a paint runs through hundreds of thousands of values
 * reading little more than the values themselves.
 *
 * The smallest and largest value of every block of BlockSize samples are
 * kept as well, so that the extremes of a range of samples (one pixel
 * column, the visible window) cost a visit per block rather than per sample.
 *
 * Times are normally non-decreasing, which lets lookups by time use binary
 * search. The buffer counts the neighbouring pairs stored out of time order,
 * so that it knows at any moment whether that holds; when it does not, the
 * lookups scan instead.
 */
class TrendSeries
{
public:
    static constexpr qsizetype BlockSize = 64;

    void append(const TrendSample &sample);
    void clear();

    bool isEmpty() const { return size() == 0; }
    qsizetype size() const { return qsizetype(m_times.size() - m_head); }
    TrendSample at(qsizetype index) const { return {times()[index], values()[index]}; }
    TrendSample front() const { return at(0); }
    TrendSample back() const { return {m_times.back(), m_values.back()}; }
    /// The times and the values of the held samples, oldest first, size() each.
    const qint64 *times() const { return m_times.data() + m_head; }
    const double *values() const { return m_values.data() + m_head; }

    /// True while every sample is at or after the one stored before it.
    bool isTimeOrdered() const { return m_outOfOrderPairs == 0; }

    /// Drops the oldest sample while the second-oldest is older than cutoffMs:
    /// exactly one sample at or before the cutoff stays, and the buffer is
    /// never emptied.
    void trimBefore(qint64 cutoffMs);
    /// Drops the newest samples while they are later than tMs (a jump back in
    /// time); may empty the buffer.
    void dropAfter(qint64 tMs);

    /// Index of the first sample with tMs >= t in a time-ordered buffer
    /// (size() when there is none). Only meaningful when isTimeOrdered().
    qsizetype lowerBound(qint64 t) const;
    /// Index of the last stored sample with tMs <= t, or -1.
    qsizetype lastAtOrBefore(qint64 t) const;

    /// The smallest and largest value of the samples [from, to); from < to.
    std::pair<double, double> extremes(qsizetype from, qsizetype to) const;

private:
    void popFront();
    void popBack();
    void summariseBlock(size_t block);

    std::vector<qint64> m_times;
    std::vector<double> m_values;
    std::vector<double> m_blockMin; // per BlockSize samples of m_values, from its start
    std::vector<double> m_blockMax;
    size_t m_head = 0; // index of the oldest sample still held
    qsizetype m_outOfOrderPairs = 0;
};
