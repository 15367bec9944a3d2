#include "LinePacer.h"

#include <algorithm>
#include <cmath>

LinePacer::LinePacer(double rate, double duration, qint64 count)
    : m_rate(rate)
    , m_duration(duration)
    , m_count(count)
{
    m_clock.start();
}

bool LinePacer::finished(qint64 linesSent) const
{
    if (m_count >= 0 && linesSent >= m_count)
        return true;
    return m_duration >= 0 && double(m_clock.nsecsElapsed()) >= m_duration * 1e9;
}

qint64 LinePacer::due(qint64 produced) const
{
    double lines = LinesPerChunk;
    if (m_rate > 0) {
        const double target = std::floor(double(m_clock.nsecsElapsed()) * 1e-9 * m_rate) + 1;
        lines = std::min({lines, target - double(produced), m_rate + 1});
    }
    if (m_count >= 0)
        lines = std::min(lines, double(m_count - produced));
    return lines > 0 ? qint64(lines) : 0;
}

int LinePacer::waitMs() const
{
    return m_rate > 0 ? int(qBound(1.0, 1000.0 / m_rate, 20.0)) : 0;
}
