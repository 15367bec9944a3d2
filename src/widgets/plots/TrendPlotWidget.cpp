#include "TrendPlotWidget.h"

#include "PlotInput.h"
#include "TrendMarkerList.h"
#include "TrendPlotRenderer.h"
#include "TrendTimeMap.h"

#include <QGuiApplication>
#include <QJsonObject>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>

#include <cmath>
#include <limits>

namespace {

const QLatin1String MarkersKey("markers");

using PlotInput::routedName;
using PlotInput::wallClockMs;

} // namespace

TrendPlotWidget::ValueRange TrendPlotWidget::ValueRange::fromExtremes(double lo, double hi)
{
    if (!(lo <= hi))
        return {-1.0, 1.0};
    if (hi - lo < 1e-12) {
        const double mid = (lo + hi) * 0.5;
        return {mid - 1.0, mid + 1.0};
    }
    const double pad = (hi - lo) * 0.1;
    return {lo - pad, hi + pad};
}

TrendPlotWidget::TrendPlotWidget(QWidget *parent)
    : DashboardWidget(parent)
    , m_series(8)
    , m_markers(new TrendMarkerList(this))
{
    m_series.max_load_factor(1.0f);
    m_font = font();
    m_font.setPointSize(9);
    m_nowMs = wallClockMs();
    m_lastUpdateMs = m_nowMs;
    setMinimumSize(220, 140);
    setMouseTracking(true);
    setToolTip(QStringLiteral("Alt+Left in plot: add marker\nAlt+Shift+Left in plot: add labeled marker\n"
                              "Alt+Left on legend: hide/show channel"));

    m_refreshTimer = new QTimer(this);
    m_refreshTimer->setTimerType(Qt::PreciseTimer);
    m_refreshTimer->setInterval(m_timerIntervalMs);
    connect(m_refreshTimer, &QTimer::timeout, this, &TrendPlotWidget::onRefreshTimer);
    if (!m_timeDriven)
        m_refreshTimer->start();

    connect(m_markers, &TrendMarkerList::changed, this, &TrendPlotWidget::markDirty);
    connect(this, &DashboardWidget::signalNamesChanged, this, [this] {
        rebuildNameIndex();
        invalidateLayout();
        markDirty();
    });
}

void TrendPlotWidget::setValue(double value)
{
    if (!m_signals.isEmpty())
        setValueForSignal(m_signals.first(), value);
}

QString TrendPlotWidget::typeName() const
{
    return QStringLiteral("TrendPlot");
}

bool TrendPlotWidget::supportsMultipleSignals() const
{
    return true;
}

// Incoming names are matched as they stand, then cut at their first ":";
// bound names likewise, so "SPEED:rpm" on either side meets "SPEED".
void TrendPlotWidget::rebuildNameIndex()
{
    m_nameIndex.clear();
    for (const QString &bound : std::as_const(m_signals)) {
        if (!m_nameIndex.contains(bound))
            m_nameIndex.insert(bound, bound);
    }
    for (const QString &bound : std::as_const(m_signals)) {
        const QString cut = routedName(bound);
        if (!m_nameIndex.contains(cut))
            m_nameIndex.insert(cut, bound);
    }
    for (auto it = m_series.begin(); it != m_series.end();)
        it = m_signals.contains(it->first) ? std::next(it) : m_series.erase(it);
    m_hidden.removeIf([this](const QString &name) { return !m_signals.contains(name); });
}

QString TrendPlotWidget::resolvedName(const QString &name) const
{
    auto it = m_nameIndex.constFind(name);
    if (it == m_nameIndex.constEnd())
        it = m_nameIndex.constFind(routedName(name));
    return it == m_nameIndex.constEnd() ? QString() : it.value();
}

TrendSeries &TrendPlotWidget::seriesFor(const QString &name)
{
    return m_series[name];
}

const TrendSeries *TrendPlotWidget::series(const QString &name) const
{
    const auto it = m_series.find(name);
    return it == m_series.end() ? nullptr : &it->second;
}

qint64 TrendPlotWidget::clockMs() const
{
    return m_timeDriven ? m_playbackNowMs : wallClockMs();
}

void TrendPlotWidget::setValueForSignal(const QString &name, double value)
{
    const QString key = resolvedName(name);
    if (key.isEmpty() || !std::isfinite(value))
        return;
    TrendSeries &series = seriesFor(key);
    const qint64 t = m_timeDriven ? m_playbackNowMs : wallClockMs();
    m_nowMs = t;
    // A steady live value adds nothing: the drawing carries it to the right edge.
    if (!series.isEmpty() && std::abs(series.back().value - value) <= m_valueEpsilon)
        return;
    series.append({t, value});
    m_lastUpdateMs = t;
    trim();
    markDirty();
}

void TrendPlotWidget::setValueForSignalAt(const QString &name, double value, double tSec)
{
    const QString key = resolvedName(name);
    if (key.isEmpty() || !std::isfinite(value) || !std::isfinite(tSec))
        return;
    TrendSeries &series = seriesFor(key);
    qint64 t = wallClockMs();
    if (m_timeDriven) {
        // The frames move the playback clock on as they are played.
        t = PlotInput::msFromSeconds(tSec);
        m_playbackNowMs = t;
    }
    m_nowMs = t;
    // Without sample-and-hold a steady value is stored again every
    // minRepeatMs, so that a straight line stays sampled.
    const bool store = series.isEmpty() || std::abs(series.back().value - value) > m_valueEpsilon
                       || (!m_settings.sampleAndHold && t - series.back().tMs >= m_minRepeatMs);
    if (!store)
        return;
    series.append({t, value});
    m_lastUpdateMs = t;
    trim();
    if (!m_deferRepaint)
        markDirty();
}

void TrendPlotWidget::trim()
{
    const qint64 now = clockMs();
    const qint64 cutoff = now - m_settings.timeWindowMs;
    for (auto &entry : m_series)
        entry.second.trimBefore(cutoff);
    m_lastTrimMs = now;
}

void TrendPlotWidget::seekTo(qint64 nowMs)
{
    for (auto &entry : m_series) {
        entry.second.dropAfter(nowMs);
        entry.second.trimBefore(nowMs - m_settings.timeWindowMs);
    }
    m_nowMs = nowMs;
    m_playbackNowMs = nowMs;
    markDirty();
}

// Live, the wall clock moves the window on while no data arrives.
void TrendPlotWidget::onRefreshTimer()
{
    if (m_timeDriven)
        return;
    const qint64 now = wallClockMs();
    if (now - m_lastUpdateMs < m_minRepaintMs)
        return;
    m_nowMs = now;
    m_lastUpdateMs = now;
    trim();
    markDirty();
}

void TrendPlotWidget::clearData()
{
    m_series.clear();
    markDirty();
}

void TrendPlotWidget::setTimeDriven(bool on)
{
    m_timeDriven = on;
    if (on)
        m_refreshTimer->stop();
    else
        m_refreshTimer->start();
    markDirty();
}

void TrendPlotWidget::setPlaybackTimeMs(qint64 tMs)
{
    m_playbackNowMs = tMs;
}

void TrendPlotWidget::beginBatch()
{
    m_deferRepaint = true;
}

void TrendPlotWidget::endBatch()
{
    m_deferRepaint = false;
    markDirty();
}

TrendPlotWidget::ValueRange TrendPlotWidget::valueRange() const
{
    if (!m_settings.autoscale) {
        // A range that cannot be drawn (empty or reversed) becomes +-1 around its lower end.
        const double lower = m_settings.yMin;
        const double upper = m_settings.yMax;
        return upper > lower ? ValueRange{lower, upper} : ValueRange::fromExtremes(lower, lower);
    }
    double lo = std::numeric_limits<double>::infinity();
    double hi = -lo;
    const qint64 startMs = m_nowMs - m_settings.timeWindowMs;
    for (const QString &name : m_signals) {
        const TrendSeries *samples = series(name);
        if (!samples || m_hidden.contains(name))
            continue;
        if (samples->isTimeOrdered()) {
            // The window's samples are one range: summed up block by block.
            const qsizetype first = samples->lowerBound(startMs);
            if (first < samples->size()) {
                const auto [low, high] = samples->extremes(first, samples->size());
                lo = std::min(lo, low);
                hi = std::max(hi, high);
            }
            continue;
        }
        for (qsizetype i = 0; i < samples->size(); ++i) {
            if (samples->times()[i] >= startMs) {
                lo = std::min(lo, samples->values()[i]);
                hi = std::max(hi, samples->values()[i]);
            }
        }
    }
    return ValueRange::fromExtremes(lo, hi);
}

QString TrendPlotWidget::tickLabel(double frac) const
{
    const double window = m_settings.timeWindowMs;
    const double ms = m_timeDriven ? double(m_nowMs) - window + window * frac : window * frac - window;
    return QString::number(ms / 1000.0, 'f', 3) + QLatin1Char('s');
}

double TrendPlotWidget::readoutSeconds(qint64 tMs) const
{
    return (m_timeDriven ? double(tMs) : double(tMs - m_nowMs)) / 1000.0;
}

void TrendPlotWidget::setDecimation(bool on)
{
    m_decimation = on;
    markDirty();
}

void TrendPlotWidget::invalidateLayout()
{
    m_layoutValid = false;
}

void TrendPlotWidget::ensureLayout() const
{
    if (m_layoutValid && m_layoutSize == size())
        return;
    const int margin = m_settings.margin;
    const int leftAxis = m_settings.leftAxis;
    const QRect inner = rect().adjusted(margin, margin, -margin, -margin);
    const QRect legendArea(inner.left() + leftAxis, inner.top(), inner.width() - leftAxis, 0);
    m_legend.layOut(m_signals, legendArea, QFontMetrics(m_font), m_legendRowHeight);
    m_plotRect = QRect(QPoint(legendArea.left(), inner.top() + m_legend.height()),
                       QPoint(inner.right(), inner.bottom() - m_settings.bottomPad));
    m_layoutSize = size();
    m_layoutValid = true;
}

QRect TrendPlotWidget::plotRect() const
{
    ensureLayout();
    return m_plotRect;
}

const TrendLegend &TrendPlotWidget::legend() const
{
    ensureLayout();
    return m_legend;
}

TrendTimeMap TrendPlotWidget::timeMap() const
{
    const QRect area = plotRect();
    return TrendTimeMap(area.left(), area.width(), m_nowMs - m_settings.timeWindowMs, m_settings.timeWindowMs);
}

void TrendPlotWidget::resizeEvent(QResizeEvent *event)
{
    invalidateLayout();
    DashboardWidget::resizeEvent(event);
}

void TrendPlotWidget::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    TrendPlotRenderer(*this, painter).paint();
}

void TrendPlotWidget::loadConfig(const QJsonObject &config)
{
    m_settings.load(config);
    if (config.contains(MarkersKey))
        m_markers->replace(TrendMarker::fromJson(config.value(MarkersKey).toArray()));
    invalidateLayout();
    markDirty();
}

QJsonObject TrendPlotWidget::saveConfig() const
{
    QJsonObject config;
    m_settings.save(config);
    config.insert(MarkersKey, TrendMarker::toJson(m_markers->markers()));
    return config;
}

void TrendPlotWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_form.build(form, parent, m_settings);
}

void TrendPlotWidget::applyConfigForm()
{
    m_form.apply(m_settings);
    invalidateLayout();
    markDirty();
}

QList<TrendMarker> TrendPlotWidget::markers() const
{
    return m_markers->markers();
}

void TrendPlotWidget::toggleChannel(const QString &name)
{
    if (!m_hidden.remove(name))
        m_hidden.insert(name);
    markDirty();
}

void TrendPlotWidget::mousePressEvent(QMouseEvent *event)
{
    // Offscreen and in synthesized input the application may not know the
    // modifiers of the event, so both are asked.
    const Qt::KeyboardModifiers modifiers = event->modifiers() | QGuiApplication::keyboardModifiers();
    const bool marking = modifiers.testFlag(Qt::AltModifier)
                         && (event->button() == Qt::LeftButton || event->button() == Qt::RightButton);
    if (!marking) {
        DashboardWidget::mousePressEvent(event);
        return;
    }
    event->accept();
    const QPointF global = event->globalPosition();
    const QPoint globalPos(int(std::lround(global.x())), int(std::lround(global.y())));
    if (event->button() == Qt::RightButton) {
        m_markers->execDeleteMenu(globalPos);
        return;
    }
    const QPoint pos = event->position().toPoint();
    const QString channel = legend().channelAt(pos);
    if (!channel.isEmpty())
        toggleChannel(channel);
    else if (plotRect().contains(pos))
        addMarkerAt(pos, modifiers.testFlag(Qt::ShiftModifier), globalPos);
}

// Live, a marker marks a place on the running display; in playback, a
// moment of the recording.
void TrendPlotWidget::addMarkerAt(const QPoint &pos, bool editLabel, const QPoint &globalPos)
{
    const QRect area = plotRect();
    const qint64 left = clockMs() - m_settings.timeWindowMs;
    TrendMarker marker;
    marker.kind = m_timeDriven ? TrendMarker::Data : TrendMarker::Screen;
    marker.xFrac = double(pos.x() - area.left()) / std::max(1, area.width());
    marker.tMs = left + std::llround(marker.xFrac * m_settings.timeWindowMs);
    m_markers->append(marker);
    if (!editLabel)
        return;
    // Opened once the press has been handled.
    const int index = int(m_markers->markers().size()) - 1;
    QTimer::singleShot(0, m_markers, [markers = m_markers, index, globalPos] { markers->editLabel(index, globalPos); });
}

QStringList TrendPlotWidget::hoverReadout() const
{
    if (!m_hovering || !plotRect().contains(m_hoverPos))
        return {};
    const qint64 t = timeMap().timeAt(m_hoverPos.x() + 0.5);
    QStringList lines{QStringLiteral("t = %1 s").arg(QString::number(readoutSeconds(t), 'f', 3))};
    for (const QString &name : m_signals) {
        const TrendSeries *samples = series(name);
        if (!samples || m_hidden.contains(name))
            continue;
        const qsizetype index = samples->lastAtOrBefore(t);
        if (index >= 0)
            lines.append(QStringLiteral("%1: %2").arg(name, QString::number(samples->at(index).value, 'g', 6)));
    }
    return lines;
}

void TrendPlotWidget::enterEvent(QEnterEvent *event)
{
    m_hovering = true;
    m_hoverPos = event->position().toPoint();
    markDirty();
    DashboardWidget::enterEvent(event);
}

void TrendPlotWidget::mouseMoveEvent(QMouseEvent *event)
{
    m_hoverPos = event->position().toPoint();
    markDirty();
    DashboardWidget::mouseMoveEvent(event);
}

void TrendPlotWidget::leaveEvent(QEvent *event)
{
    m_hovering = false;
    markDirty();
    DashboardWidget::leaveEvent(event);
}
