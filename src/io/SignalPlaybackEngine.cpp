#include "SignalPlaybackEngine.h"

#include <QDebug>
#include <QFileInfo>
#include <QScopedValueRollback>
#include <QTimer>

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

namespace {
constexpr int TickIntervalMs = 50;
// A longer gap between ticks means the application stalled or the clock
// restarted; it must not jump the play time forward.
constexpr qint64 MaxStepMs = 2000;
}

SignalPlaybackEngine::SignalPlaybackEngine(QObject *parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setTimerType(Qt::PreciseTimer);
    m_timer->setInterval(TickIntervalMs);
    connect(m_timer, &QTimer::timeout, this, &SignalPlaybackEngine::tick);
}

bool SignalPlaybackEngine::load(const QString &path, const Recording::Progress &progress)
{
    if (isLoaded(path))
        return true;
    if (!m_frames.load(path, progress))
        return false;
    const QFileInfo info(path);
    m_loadedPath = info.absoluteFilePath();
    m_loadedSize = info.size();
    m_loadedModified = info.lastModified();
    m_maxTimestamp = m_frames.duration();
    return true;
}

void SignalPlaybackEngine::load(const Recording &recording)
{
    m_frames = recording;
    m_loadedPath.clear();
    m_maxTimestamp = m_frames.duration();
}

bool SignalPlaybackEngine::isLoaded(const QString &path) const
{
    if (m_loadedPath.isEmpty())
        return false;
    const QFileInfo info(path);
    return info.absoluteFilePath() == m_loadedPath && info.size() == m_loadedSize
            && info.lastModified() == m_loadedModified;
}

bool SignalPlaybackEngine::isPlaying() const
{
    return m_timer->isActive();
}

void SignalPlaybackEngine::setPlaybackRate(double rate)
{
    if (std::isnan(rate))
        return;
    m_playbackRate = std::clamp(rate, 0.01, 100.0);
}

void SignalPlaybackEngine::setPreviewWindow(double seconds)
{
    if (std::isnan(seconds))
        return;
    m_previewWindow = std::clamp(seconds, 0.1, 60.0);
}

void SignalPlaybackEngine::setKnownGroups(const QStringList &groups)
{
    m_knownGroups = groups;
}

void SignalPlaybackEngine::setSliderSteps(int steps)
{
    m_sliderSteps = std::max(0, steps);
}

void SignalPlaybackEngine::setClockSource(const ClockSource &source)
{
    m_clockSource = source;
}

void SignalPlaybackEngine::restartClock()
{
    if (m_clockSource)
        m_clockOrigin = m_clockSource();
    else
        m_clock.start();
}

qint64 SignalPlaybackEngine::clockReading() const
{
    if (m_clockSource)
        return m_clockSource() - m_clockOrigin;
    return m_clock.isValid() ? m_clock.elapsed() : 0;
}

void SignalPlaybackEngine::start()
{
    const int count = m_frames.frameCount();
    const double firstDt = count >= 2 ? m_frames.timeAt(1) - m_frames.timeAt(0) : -1.0;
    qDebug() << "[Playback] frames:" << count << "maxTimestamp:" << m_maxTimestamp
             << "playbackRate:" << m_playbackRate << "first dt:" << firstDt;
    if (m_index < count && m_frames.positionAt(m_index) >= m_currentTime)
        Q_EMIT signalValuesUpdatedAt(m_frames.timeAt(m_index), m_frames.valuesAt(m_index));
    restartClock();
    m_lastElapsed = 0;
    m_playTime = m_currentTime;
    beginRun(m_playTime);
    Q_EMIT playbackTimeAdvanced(m_currentTime);
    m_timer->start();
}

void SignalPlaybackEngine::beginRun(double fromTime)
{
    m_runBase = fromTime;
    m_runMs = 0;
    m_runRate = m_playbackRate;
}

void SignalPlaybackEngine::pause()
{
    m_timer->stop();
}

void SignalPlaybackEngine::reset()
{
    m_index = 0;
    m_currentTime = 0.0;
    m_playTime = 0.0;
    beginRun(0.0);
    m_clock.invalidate();
    // Still playing: an invalid clock would stop the ticks from advancing, so
    // it restarts and the next tick steps normally from 0.
    if (isPlaying()) {
        restartClock();
        m_lastElapsed = 0;
    }
    if (m_sliderSteps > 0)
        Q_EMIT sliderPositionChanged(0);
}

void SignalPlaybackEngine::tick()
{
    const int count = m_frames.frameCount();
    if (m_index < count) {
        const qint64 reading = clockReading();
        const qint64 dt = reading - m_lastElapsed;
        m_lastElapsed = reading;
        if (dt >= 1 && dt < MaxStepMs) {
            if (m_playbackRate != m_runRate)
                beginRun(m_playTime);
            m_runMs += dt;
            m_playTime = m_runBase + m_runMs / 1000.0 * m_runRate;
        }
        m_currentTime = m_playTime;

        while (m_index < count && m_playTime >= m_frames.positionAt(m_index))
            emitFrame(m_index++);

        Q_EMIT playbackTimeAdvanced(m_playTime);
        updateSlider();
        if (m_index < count)
            return;
    }
    m_timer->stop();
    Q_EMIT playbackFinished();
}

void SignalPlaybackEngine::updateSlider()
{
    if (m_sliderSteps <= 0)
        return;
    const double position = m_sliderSteps * m_playTime / std::max(m_maxTimestamp, 1e-9);
    Q_EMIT sliderPositionChanged(int(std::clamp(position, double(INT_MIN), double(INT_MAX))));
}

void SignalPlaybackEngine::emitFrame(int frame)
{
    const double t = m_frames.timeAt(frame);
    const QMap<QString, double> values = m_frames.valuesAt(frame);
    Q_EMIT signalValuesUpdated(values);
    Q_EMIT signalValuesUpdatedAt(t, values);

    const QStringList &words = m_frames.words();
    const auto &states = m_frames.stateEntries();
    for (int i = Recording::countUpTo(states, frame - 1), end = Recording::countUpTo(states, frame); i < end; ++i)
        Q_EMIT stateEvent(t, words.at(states.at(i).group), words.at(states.at(i).state));
    emitEvents(m_frames.errorEntries(), words, frame, frame, &SignalPlaybackEngine::errorEvent);
    emitEvents(m_frames.messageEntries(), m_frames.messages(), frame, frame, &SignalPlaybackEngine::messageEvent);
}

void SignalPlaybackEngine::emitEvents(const QList<Recording::IdEntry> &entries, const QStringList &texts,
                                      int firstFrame, int lastFrame, EventSignal signal)
{
    const int end = Recording::countUpTo(entries, lastFrame);
    for (int i = Recording::countUpTo(entries, firstFrame - 1); i < end; ++i)
        Q_EMIT (this->*signal)(m_frames.timeAt(entries.at(i).frame), texts.at(entries.at(i).id));
}

void SignalPlaybackEngine::seek(double tSec)
{
    if (std::isnan(tSec))
        return;
    const QScopedValueRollback<bool> seeking(m_seeking, true);
    m_index = m_frames.indexAtOrAfter(tSec);
    if (!isPlaying())
        emitPreviewHistory(tSec);
    m_currentTime = tSec;
    // The play clock moves too: left behind, the next tick would either wait
    // for it to catch up or replay every frame between it and the new
    // position, and the consoles would no longer end at tSec.
    if (isPlaying()) {
        m_playTime = tSec;
        beginRun(tSec);
    }

    // -1: no frame, nothing in force but the cleared known groups.
    const int last = m_frames.isEmpty() ? -1 : std::max(0, m_index - 1);
    // The last value set up to there: the frame itself may hold only events.
    if (last >= 0) {
        const int values = m_frames.valueFrameUpTo(last);
        Q_EMIT signalValuesUpdated(m_frames.valuesAt(values >= 0 ? values : last));
    }
    announceStatesUpTo(last);
    Q_EMIT errorReset();
    emitEvents(m_frames.errorEntries(), m_frames.words(), 0, last, &SignalPlaybackEngine::errorEvent);
    Q_EMIT messageReset();
    emitEvents(m_frames.messageEntries(), m_frames.messages(), 0, last, &SignalPlaybackEngine::messageEvent);
}

void SignalPlaybackEngine::emitPreviewHistory(double tSec)
{
    const double from = std::max(0.0, tSec - m_previewWindow);
    Q_EMIT dataReset();
    for (int i = m_frames.indexAtOrAfter(from); i < m_index; ++i)
        Q_EMIT signalValuesUpdatedAt(m_frames.timeAt(i), m_frames.valuesAt(i));
}

void SignalPlaybackEngine::announceStatesUpTo(int last)
{
    const double t = last >= 0 ? m_frames.timeAt(last) : 0.0;
    const QStringList &words = m_frames.words();
    const auto &states = m_frames.stateEntries();
    // Latest state per group, by word index: no string work while walking.
    std::vector<int> stateOfGroup(words.size(), -1);
    const int end = last >= 0 ? Recording::countUpTo(states, last) : 0;
    for (int i = 0; i < end; ++i)
        stateOfGroup[states.at(i).group] = states.at(i).state;

    QMap<QString, QString> inForce;
    for (int w = 0; w < int(stateOfGroup.size()); ++w) {
        if (stateOfGroup[w] >= 0)
            inForce.insert(words.at(w), words.at(stateOfGroup[w]));
    }
    for (const QString &group : std::as_const(m_knownGroups)) {
        if (!inForce.contains(group))
            Q_EMIT stateEvent(t, group, QString());
    }
    for (auto it = inForce.cbegin(); it != inForce.cend(); ++it)
        Q_EMIT stateEvent(t, it.key(), it.value());
}
