#pragma once

#include <QtGlobal>

/**
 * What the window does to a plot as recording and playback move on: the
 * typed counterpart of ITimeStampedConsumer for the clock and the history.
 *
 * Implemented by the trend plot (every hook) and the XY plot (clearData()
 * only; the other hooks keep their no-op defaults). The window finds plots
 * with dynamic_cast, never by type name.
 */
class IPlaybackPlot
{
public:
    virtual ~IPlaybackPlot() = default;

    /// Drops every stored sample (Idle, and before a seek refills the history).
    virtual void clearData() = 0;
    /// On: the plot's clock is the playback time given by setPlaybackTimeMs()
    /// and the frame times, and it stops scrolling by itself (frozen while
    /// the slider is held, following the recording while it plays). Off: the
    /// wall clock drives it (live).
    virtual void setTimeDriven(bool on) { Q_UNUSED(on); }
    /// The playback clock in ms from the start of the recording.
    virtual void setPlaybackTimeMs(qint64 tMs) { Q_UNUSED(tMs); }
    /// Re-aligns the history to a new playback position in ms.
    virtual void seekTo(qint64 nowMs) { Q_UNUSED(nowMs); }
    /// The visible time window in ms; 0 for plots that are not time based.
    /// The largest one sets how much history a seek re-sends.
    virtual qint64 timeWindowMs() const { return 0; }
    /// A frame of many values follows; repaint once at endBatch().
    virtual void beginBatch() {}
    virtual void endBatch() {}
};
