#pragma once

#include "Recording.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

/**
 * Replays a loaded recording in real time, scaled by a playback rate.
 *
 * A 50 ms precise timer advances the play clock by wall-clock time x rate
 * and emits, for every frame whose time has been reached, the same kinds of
 * events live acquisition produces. seek() jumps anywhere: it re-announces
 * the values, states, errors and messages in force at the new position and,
 * while stopped, re-emits the preceding history (the preview window) so that
 * time-based plots can be refilled.
 *
 * A seek costs O(log frames) to find its place plus the events it has to
 * re-announce; it never walks frames that carry no event.
 */
class SignalPlaybackEngine : public QObject
{
    Q_OBJECT

public:
    /// Milliseconds from an arbitrary origin, never decreasing.
    using ClockSource = std::function<qint64()>;

    explicit SignalPlaybackEngine(QObject *parent = nullptr);

    /// Replaces the recording and its duration; false (and nothing
    /// replaced) when the file cannot be read or the load was cancelled.
    /// The position is kept, so that Play after Pause resumes where it
    /// stopped; call reset() to rewind. Loading the file that is already
    /// loaded, unchanged on disk, costs nothing.
    bool load(const QString &path, const Recording::Progress &progress = {});
    /// Takes an already loaded recording; the position is kept.
    void load(const Recording &recording);
    const Recording &frames() const { return m_frames; }
    QString errorString() const { return m_frames.errorString(); }

    void start();
    /// Stops the timer; the position is kept.
    void pause();
    void reset();
    void seek(double tSec);
    /// Time of the last frame in seconds.
    double duration() const { return m_maxTimestamp; }
    double currentTime() const { return m_currentTime; }
    /// Index of the next frame to emit.
    int index() const { return m_index; }
    bool isPlaying() const;
    // True while seek() re-announces the position, so that listeners can
    // tell its values in force from the frames a running tick emits.
    bool isSeeking() const { return m_seeking; }

    /// Clamped to 0.01 .. 100.
    void setPlaybackRate(double rate);
    double playbackRate() const { return m_playbackRate; }
    /// Seconds of history a stopped seek re-emits; clamped to 0.1 .. 60.
    void setPreviewWindow(double seconds);
    double previewWindow() const { return m_previewWindow; }
    /// Groups whose indicators a seek clears when no frame has set them yet.
    void setKnownGroups(const QStringList &groups);

    /// The number of steps of the position slider: as time advances the
    /// engine announces the slider position steps x playTime / duration
    /// with sliderPositionChanged(). 0 (the default) announces nothing.
    void setSliderSteps(int steps);
    int sliderSteps() const { return m_sliderSteps; }

    /// Replaces the wall clock that drives the ticks (tests drive time with
    /// it); an empty source restores the wall clock.
    void setClockSource(const ClockSource &source);

public Q_SLOTS:
    /// One step of the play clock; the 50 ms timer calls it.
    void tick();

Q_SIGNALS:
    void signalValuesUpdated(const QMap<QString, double> &values);
    void signalValuesUpdatedAt(double timeSec, const QMap<QString, double> &values);
    /// The last frame was emitted (or there was none); the timer is stopped.
    void playbackFinished();
    void stateEvent(double timestamp, const QString &groupId, const QString &stateId);
    void errorEvent(double timestamp, const QString &errorId);
    /// Error consoles are to be emptied; a seek re-announces what follows.
    void errorReset();
    void messageEvent(double timestamp, const QString &text);
    void messageReset();
    /// Plots are to drop their history; a stopped seek refills them.
    void dataReset();
    void playbackTimeAdvanced(double tSec);
    /// Where the position slider stands now (after a tick and a reset),
    /// in 0 .. sliderSteps() and beyond at the end of data.
    void sliderPositionChanged(int position);

private:
    bool isLoaded(const QString &path) const;
    void emitFrame(int frame);
    void emitPreviewHistory(double tSec);
    void announceStatesUpTo(int last);
    using EventSignal = void (SignalPlaybackEngine::*)(double, const QString &);
    // One signal per entry of frames firstFrame .. lastFrame, with its frame's time.
    void emitEvents(const QList<Recording::IdEntry> &entries, const QStringList &texts, int firstFrame,
                    int lastFrame, EventSignal signal);
    void restartClock();
    qint64 clockReading() const;
    void updateSlider();
    void beginRun(double fromTime);

    Recording m_frames;
    QTimer *m_timer = nullptr;
    QElapsedTimer m_clock;
    double m_playTime = 0.0;
    qint64 m_lastElapsed = 0;
    int m_sliderSteps = 0;
    int m_index = 0;
    bool m_seeking = false;
    double m_currentTime = 0.0;
    double m_maxTimestamp = 0.0;
    double m_playbackRate = 1.0;
    QStringList m_knownGroups;
    double m_previewWindow = 10.0;

    QString m_loadedPath;
    qint64 m_loadedSize = -1;
    QDateTime m_loadedModified;

    ClockSource m_clockSource;
    qint64 m_clockOrigin = 0;
    // playTime = m_runBase + m_runMs / 1000 * m_runRate: summing whole
    // milliseconds keeps long runs free of rounding drift.
    double m_runBase = 0.0;
    qint64 m_runMs = 0;
    double m_runRate = 1.0;
};
