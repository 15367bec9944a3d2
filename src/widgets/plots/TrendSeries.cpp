#include "TrendSeries.h"

#include <algorithm>

namespace {

// Dropped samples are only moved out once they outnumber the kept ones.
constexpr size_t MinCompaction = 256;

} // namespace

void TrendSeries::append(const TrendSample &sample)
{
    if (!isEmpty() && sample.tMs < m_times.back())
        ++m_outOfOrderPairs;
    m_times.push_back(sample.tMs);
    m_values.push_back(sample.value);
}

void TrendSeries::clear()
{
    m_times.clear();
    m_values.clear();
    m_head = 0;
    m_outOfOrderPairs = 0;
}

void TrendSeries::popFront()
{
    if (size() >= 2 && times()[1] < times()[0])
        --m_outOfOrderPairs;
    ++m_head;
    if (m_head >= MinCompaction && m_head * 2 >= m_times.size()) {
        m_times.erase(m_times.begin(), m_times.begin() + qsizetype(m_head));
        m_values.erase(m_values.begin(), m_values.begin() + qsizetype(m_head));
        m_head = 0;
    }
}

void TrendSeries::popBack()
{
    const qsizetype n = size();
    if (n >= 2 && times()[n - 1] < times()[n - 2])
        --m_outOfOrderPairs;
    m_times.pop_back();
    m_values.pop_back();
    if (isEmpty())
        clear();
}

void TrendSeries::trimBefore(qint64 cutoffMs)
{
    while (size() >= 2 && times()[1] < cutoffMs)
        popFront();
}

void TrendSeries::dropAfter(qint64 tMs)
{
    while (!isEmpty() && m_times.back() > tMs)
        popBack();
}

qsizetype TrendSeries::lowerBound(qint64 t) const
{
    return qsizetype(std::lower_bound(times(), times() + size(), t) - times());
}

qsizetype TrendSeries::lastAtOrBefore(qint64 t) const
{
    if (isTimeOrdered())
        return qsizetype(std::upper_bound(times(), times() + size(), t) - times()) - 1;
    for (qsizetype i = size() - 1; i >= 0; --i) {
        if (times()[i] <= t)
            return i;
    }
    return -1;
}
