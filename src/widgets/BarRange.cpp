#include "BarRange.h"

#include <algorithm>
#include <cmath>

namespace {

double limited(double value, double fallback)
{
    return std::isfinite(value) ? std::clamp(value, -BarRange::Limit, BarRange::Limit) : fallback;
}

} // namespace

void BarRange::setAutomatic(bool on)
{
    m_automatic = on;
    updateLimits();
}

void BarRange::setFixed(double min, double max)
{
    min = limited(min, m_fixedMin);
    max = limited(max, m_fixedMax);
    if (max < min)
        std::swap(min, max);
    if (max == min)
        max = min + 1.0;
    m_fixedMin = min;
    m_fixedMax = max;
    updateLimits();
}

void BarRange::reset()
{
    m_seenMin = 0.0;
    m_seenMax = 0.0;
    updateLimits();
}

void BarRange::observe(double value)
{
    if (!std::isfinite(value) || (value >= m_seenMin && value <= m_seenMax))
        return;
    m_seenMin = std::min(m_seenMin, value);
    m_seenMax = std::max(m_seenMax, value);
    updateLimits();
}

double BarRange::baseline() const
{
    return std::clamp(0.0, m_lower, m_upper);
}

double BarRange::position(double value) const
{
    if (std::isnan(value))
        return value;
    return (std::clamp(value, m_lower, m_upper) - m_lower) / (m_upper - m_lower);
}

BarRange::Clip BarRange::clip(double value) const
{
    if (value > m_upper)
        return Clip::Above;
    return value < m_lower ? Clip::Below : Clip::None;
}

double BarRange::niceCeil(double x)
{
    const double power = std::pow(10.0, std::floor(std::log10(x)));
    for (double step : {1.0, 2.0, 5.0, 10.0}) {
        // A hair of tolerance: 0.3 / 0.1 is not quite 3 in doubles.
        if (step * power >= x * (1.0 - 1e-12))
            return std::isfinite(step * power) ? step * power : x;
    }
    return x;
}

void BarRange::updateLimits()
{
    if (!m_automatic) {
        m_lower = m_fixedMin;
        m_upper = m_fixedMax;
        return;
    }
    m_lower = m_seenMin < 0.0 ? -niceCeil(-m_seenMin) : 0.0;
    m_upper = m_seenMax > 0.0 ? niceCeil(m_seenMax) : 0.0;
    if (m_lower == m_upper)
        m_upper = 1.0;
}
