#include "FrameClock.h"

#include "DashboardWidget.h"

#include <algorithm>

FrameClock &FrameClock::instance()
{
    static FrameClock clock;
    return clock;
}

FrameClock::FrameClock()
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &FrameClock::finishFrame);
    m_pending.reserve(64);
    m_painting.reserve(64);
}

void FrameClock::setFramesPerSecond(int fps)
{
    m_framesPerSecond = std::clamp(fps, 1, MaxFramesPerSecond);
}

void FrameClock::schedule(DashboardWidget *widget)
{
    m_pending.append(widget);
    if (!m_timer.isActive())
        scheduleTick();
}

void FrameClock::scheduleTick()
{
    if (!m_running)
        return;
    // The first change after a quiet spell is painted at once; later ones
    // wait for the rest of the frame (rounded up, so that the rate stays at
    // or below framesPerSecond()).
    const qint64 frameNs = 1000000000 / m_framesPerSecond;
    const qint64 sinceNs = m_sinceFrame.isValid() ? m_sinceFrame.nsecsElapsed() : frameNs;
    const qint64 waitNs = std::max<qint64>(0, frameNs - sinceNs);
    m_timer.start(int((waitNs + 999999) / 1000000));
}

void FrameClock::cancel(DashboardWidget *widget)
{
    m_pending.removeAll(widget);
    // A widget destroyed by another's frame update must not be touched after it.
    std::replace(m_painting.begin(), m_painting.end(), widget, static_cast<DashboardWidget *>(nullptr));
}

void FrameClock::finishFrame()
{
    m_timer.stop();
    if (m_pending.isEmpty())
        return;
    m_sinceFrame.start();
    // Widgets that change again while this frame runs go into the next one.
    m_painting.swap(m_pending);
    for (qsizetype i = 0; i < m_painting.size(); ++i) {
        if (DashboardWidget *widget = m_painting.at(i))
            widget->finishFrame();
    }
    m_painting.clear();
    ++m_framesPainted;
    Q_EMIT frameFinished();
}

void FrameClock::stop()
{
    m_running = false;
    m_timer.stop();
}

void FrameClock::start()
{
    m_running = true;
    if (!m_pending.isEmpty() && !m_timer.isActive())
        scheduleTick();
}
