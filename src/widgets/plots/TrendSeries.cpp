#include "TrendSeries.h"

#include <algorithm>
#include <limits>

namespace {

// Dropped samples are only moved out once they outnumber the kept ones.
constexpr size_t MinCompaction = 256;
constexpr size_t Block = size_t(TrendSeries::BlockSize);

// The smallest and largest of n > 0 values, in four independent chains so
// that the comparisons do not wait on each other.
std::pair<double, double> scan(const double *values, size_t n)
{
    double lo[4] = {values[0], values[0], values[0], values[0]};
    double hi[4] = {values[0], values[0], values[0], values[0]};
    size_t i = 0;
    for (; n - i >= 4; i += 4) {
        for (int k = 0; k < 4; ++k) {
            const double value = values[i + k];
            lo[k] = value < lo[k] ? value : lo[k];
            hi[k] = value > hi[k] ? value : hi[k];
        }
    }
    for (; i < n; ++i) {
        lo[0] = values[i] < lo[0] ? values[i] : lo[0];
        hi[0] = values[i] > hi[0] ? values[i] : hi[0];
    }
    return {std::min({lo[0], lo[1], lo[2], lo[3]}), std::max({hi[0], hi[1], hi[2], hi[3]})};
}

} // namespace

void TrendSeries::append(const TrendSample &sample)
{
    if (!isEmpty() && sample.tMs < m_times.back())
        ++m_outOfOrderPairs;
    m_times.push_back(sample.tMs);
    m_values.push_back(sample.value);
    const size_t block = (m_values.size() - 1) / Block;
    if (block == m_blockMin.size()) {
        m_blockMin.push_back(sample.value);
        m_blockMax.push_back(sample.value);
    } else {
        m_blockMin[block] = std::min(m_blockMin[block], sample.value);
        m_blockMax[block] = std::max(m_blockMax[block], sample.value);
    }
}

void TrendSeries::clear()
{
    m_times.clear();
    m_values.clear();
    m_blockMin.clear();
    m_blockMax.clear();
    m_head = 0;
    m_outOfOrderPairs = 0;
}

void TrendSeries::popFront()
{
    if (size() >= 2 && times()[1] < times()[0])
        --m_outOfOrderPairs;
    ++m_head;
    if (m_head >= MinCompaction && m_head * 2 >= m_times.size()) {
        // Whole blocks only, so that the block summaries stay aligned.
        const size_t blocks = m_head / Block;
        const auto drop = qsizetype(blocks * Block);
        m_times.erase(m_times.begin(), m_times.begin() + drop);
        m_values.erase(m_values.begin(), m_values.begin() + drop);
        m_blockMin.erase(m_blockMin.begin(), m_blockMin.begin() + qsizetype(blocks));
        m_blockMax.erase(m_blockMax.begin(), m_blockMax.begin() + qsizetype(blocks));
        m_head -= size_t(drop);
    }
}

void TrendSeries::popBack()
{
    const qsizetype n = size();
    if (n >= 2 && times()[n - 1] < times()[n - 2])
        --m_outOfOrderPairs;
    m_times.pop_back();
    m_values.pop_back();
    if (isEmpty()) {
        clear();
        return;
    }
    const size_t blocks = (m_values.size() + Block - 1) / Block;
    m_blockMin.resize(blocks);
    m_blockMax.resize(blocks);
    summariseBlock(blocks - 1);
}

void TrendSeries::summariseBlock(size_t block)
{
    const size_t begin = block * Block;
    const auto [lo, hi] = scan(m_values.data() + begin, std::min(Block, m_values.size() - begin));
    m_blockMin[block] = lo;
    m_blockMax[block] = hi;
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

std::pair<double, double> TrendSeries::extremes(qsizetype from, qsizetype to) const
{
    const size_t begin = m_head + size_t(from);
    const size_t end = m_head + size_t(to);
    const size_t firstWhole = (begin + Block - 1) / Block;
    const size_t endWhole = end / Block;
    if (firstWhole >= endWhole)
        return scan(m_values.data() + begin, end - begin);
    // The part before the first whole block, the whole blocks, the rest.
    double lo = std::numeric_limits<double>::infinity();
    double hi = -lo;
    const auto include = [&](std::pair<double, double> part) {
        lo = std::min(lo, part.first);
        hi = std::max(hi, part.second);
    };
    if (begin < firstWhole * Block)
        include(scan(m_values.data() + begin, firstWhole * Block - begin));
    for (size_t block = firstWhole; block < endWhole; ++block)
        include({m_blockMin[block], m_blockMax[block]});
    if (end > endWhole * Block)
        include(scan(m_values.data() + endWhole * Block, end - endWhole * Block));
    return {lo, hi};
}
