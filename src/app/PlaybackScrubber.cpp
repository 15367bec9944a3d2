#include "PlaybackScrubber.h"

#include "Dashboard.h"
#include "SignalPlaybackEngine.h"

#include <QSlider>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace {
constexpr double PreviewResendThreshold = 0.1;
}

PlaybackScrubber::PlaybackScrubber(QSlider *slider, SignalPlaybackEngine *engine, QObject *parent)
    : QObject(parent)
    , m_slider(slider)
    , m_engine(engine)
    , m_scrubTimer(new QTimer(this))
{
    m_scrubTimer->setInterval(ScrubIntervalMs);
    m_scrubTimer->setSingleShot(true);
    connect(m_scrubTimer, &QTimer::timeout, this, &PlaybackScrubber::scrubTick);
    if (!m_slider)
        return;
    m_slider->setRange(0, SliderMaxSteps);
    if (m_engine) {
        // The engine announces where it stands; the slider follows.
        m_engine->setSliderSteps(SliderMaxSteps);
        connect(m_engine, &SignalPlaybackEngine::sliderPositionChanged, m_slider, &QSlider::setValue);
    }
    connect(m_slider, &QSlider::sliderPressed, this, &PlaybackScrubber::onPressed);
    connect(m_slider, &QSlider::sliderMoved, this, &PlaybackScrubber::onMoved);
    connect(m_slider, &QSlider::actionTriggered, this, &PlaybackScrubber::onActionTriggered);
    connect(m_slider, &QSlider::sliderReleased, this, &PlaybackScrubber::onReleased);
    connect(m_slider, &QSlider::valueChanged, this, &PlaybackScrubber::onValueChanged);
}

void PlaybackScrubber::setTimeWindowProvider(const std::function<double()> &largestWindowMs)
{
    m_largestWindowMs = largestWindowMs;
}

void PlaybackScrubber::setPlayModeQuery(const std::function<bool()> &isPlayMode)
{
    m_isPlayMode = isPlayMode;
}

int PlaybackScrubber::sliderValue() const
{
    return m_slider ? m_slider->value() : 0;
}

bool PlaybackScrubber::isScrubTimerActive() const
{
    return m_scrubTimer->isActive();
}

double PlaybackScrubber::previewWindowSeconds() const
{
    return Dashboard::previewWindowSeconds(m_largestWindowMs ? m_largestWindowMs() : 0.0);
}

double PlaybackScrubber::secondsAt(int sliderPosition) const
{
    const double duration = m_engine ? m_engine->duration() : 0.0;
    return duration * (sliderPosition / double(SliderMaxSteps));
}

void PlaybackScrubber::onPressed()
{
    if (!m_engine || !m_slider)
        return;
    if (m_engine->isPlaying())
        m_engine->pause();
    m_dragging = true;
    m_pendingPosition = m_slider->value();
    Q_EMIT scrubStarted();
    if (!m_scrubTimer->isActive())
        m_scrubTimer->start();
}

void PlaybackScrubber::onMoved(int value)
{
    if (m_dragging)
        m_pendingPosition = value;
}

void PlaybackScrubber::onActionTriggered(int action)
{
    if (!m_slider || action == QAbstractSlider::SliderNoAction)
        return;
    if (m_dragging) {
        m_pendingPosition = m_slider->sliderPosition();
        return;
    }
    // A click on the groove, a key or the wheel: the slider has its new
    // position already, so the engine follows at once.
    if (m_engine) {
        sendPreviewWindow(false);
        seekTo(m_slider->sliderPosition());
    }
}

void PlaybackScrubber::scrubTick()
{
    if (!m_engine)
        return;
    sendPreviewWindow(true);
    seekTo(m_pendingPosition >= 0 ? m_pendingPosition : (m_slider ? m_slider->value() : 0));
    if (m_dragging)
        m_scrubTimer->start();
}

void PlaybackScrubber::onReleased()
{
    m_dragging = false;
    m_scrubTimer->stop();
    if (!m_engine)
        return;
    const int position = m_pendingPosition >= 0 ? m_pendingPosition : (m_slider ? m_slider->value() : 0);
    m_pendingPosition = -1;
    sendPreviewWindow(false);
    seekTo(position);
    if (m_isPlayMode && m_isPlayMode())
        m_engine->start();
}

void PlaybackScrubber::onValueChanged(int value)
{
    Q_EMIT timeTextChanged(QString::number(secondsAt(value), 'f', 3));
}

void PlaybackScrubber::seekTo(int sliderPosition)
{
    const double ms = secondsAt(sliderPosition) * 1000.0;
    m_engine->seek(ms / 1000.0);
    Q_EMIT positionScrubbed(qint64(std::llround(ms)));
}

void PlaybackScrubber::sendPreviewWindow(bool onlyWhenChanged)
{
    const double seconds = previewWindowSeconds();
    if (onlyWhenChanged && m_lastPreviewSent >= 0.0 && std::abs(seconds - m_lastPreviewSent) <= PreviewResendThreshold)
        return;
    m_engine->setPreviewWindow(seconds);
    m_lastPreviewSent = seconds;
}
