#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

class DashboardWidget;

/**
 * Paints the dashboard at the display's pace, whatever the data's.
 *
 * A widget that stored a new value calls markDirty(), which lists it here;
 * at most once per frame (1000 / framesPerSecond() ms, 60 per second by
 * default) every listed widget brings its view up to date, once, showing
 * the state it holds then, so the last value of a burst is the one shown.
 * A widget that nothing changed is not touched. While nothing is listed the
 * clock does not tick at all.
 *
 * One clock serves the process, like the widget registry. Tests that look
 * at pixels call finishFrame() to paint at once.
 */
class FrameClock : public QObject
{
    Q_OBJECT

public:
    static constexpr int DefaultFramesPerSecond = 60;
    static constexpr int MaxFramesPerSecond = 240;

    static FrameClock &instance();

    int framesPerSecond() const { return m_framesPerSecond; }
    /// Limited to 1 .. MaxFramesPerSecond.
    void setFramesPerSecond(int fps);

    /// Lists a widget for the next frame; a listed widget stays listed once.
    void schedule(DashboardWidget *widget);
    /// Forgets a widget (it is being destroyed).
    void cancel(DashboardWidget *widget);
    int pendingCount() const { return int(m_pending.size()); }

    /// Brings every listed widget up to date now.
    void finishFrame();

    /// A stopped clock paints nothing; what changes meanwhile stays listed
    /// and is painted by the first frame after start().
    void stop();
    void start();
    bool isRunning() const { return m_running; }

    /// Frames that brought at least one widget up to date, since start-up.
    qint64 framesPainted() const { return m_framesPainted; }

Q_SIGNALS:
    /// A frame brought its widgets up to date (their paint events follow).
    void frameFinished();

private:
    FrameClock();
    void scheduleTick();

    QTimer m_timer;
    QElapsedTimer m_sinceFrame;
    QList<DashboardWidget *> m_pending;
    QList<DashboardWidget *> m_painting;
    int m_framesPerSecond = DefaultFramesPerSecond;
    bool m_running = true;
    qint64 m_framesPainted = 0;
};
