#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

QT_BEGIN_NAMESPACE
class QSlider;
class QTimer;
QT_END_NAMESPACE

class SignalPlaybackEngine;

/**
 * The transport slider's behaviour: dragging scrubs through the recording.
 *
 * The constructor sets the slider's range to 0 .. SliderMaxSteps and moves
 * it wherever the engine announces it stands while playing. Pressing the slider stops
 * the engine and emits scrubStarted() (the window freezes its trend plots);
 * while the slider is held, a 100 ms scrub timer seeks the engine to the
 * pending position and emits positionScrubbed(ms) (the window moves and
 * repaints its trend plots). Releasing seeks once more and restarts the
 * engine when the window is in Play mode. A click on the groove, a key or
 * the wheel seeks at once, without a drag.
 *
 * The preview window given to the engine is the largest trend-plot time
 * window (10 s when no plot has a positive one, at most 30 s), clamped to
 * 0.1 .. 60 s; while dragging it is re-sent only when it changed by more
 * than 0.1 s.
 *
 * Neither the slider nor the engine is owned.
 */
class PlaybackScrubber : public QObject
{
    Q_OBJECT

public:
    static constexpr int SliderMaxSteps = 1000;
    static constexpr int ScrubIntervalMs = 100;

    PlaybackScrubber(QSlider *slider, SignalPlaybackEngine *engine, QObject *parent = nullptr);

    /// The largest time window (ms) among the trend plots on the scene; the
    /// window supplies it. Without a provider 10 s is used.
    void setTimeWindowProvider(const std::function<double()> &largestWindowMs);
    /// True while the window is in Play mode; release resumes playback only then.
    void setPlayModeQuery(const std::function<bool()> &isPlayMode);

    bool isDragging() const { return m_dragging; }
    /// Where the slider stands, 0 .. SliderMaxSteps.
    int sliderValue() const;
    int pendingPosition() const { return m_pendingPosition; }
    bool isScrubTimerActive() const;
    /// The preview window in seconds that the next seek would use.
    double previewWindowSeconds() const;
    /// Seconds from the start for a slider position.
    double secondsAt(int sliderPosition) const;

public Q_SLOTS:
    /// One scrub step: seek to the pending position (the timer calls it).
    void scrubTick();

Q_SIGNALS:
    /// The user took hold of the slider; plots should stop following time.
    void scrubStarted();
    /// The engine was moved to ms from the start of the recording.
    void positionScrubbed(qint64 ms);
    /// The time label's text: the position in seconds with 3 decimals.
    void timeTextChanged(const QString &text);

private:
    void onPressed();
    void onMoved(int value);
    void onActionTriggered(int action);
    void onReleased();
    void onValueChanged(int value);
    void seekTo(int sliderPosition);
    void sendPreviewWindow(bool onlyWhenChanged);

    QPointer<QSlider> m_slider;
    QPointer<SignalPlaybackEngine> m_engine;
    QTimer *m_scrubTimer = nullptr;
    std::function<double()> m_largestWindowMs;
    std::function<bool()> m_isPlayMode;
    bool m_dragging = false;
    int m_pendingPosition = -1;
    double m_lastPreviewSent = -1.0;
};
