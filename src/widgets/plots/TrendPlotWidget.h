#pragma once

#include "DashboardWidget.h"
#include "IPlaybackPlot.h"
#include "ITimeStampedConsumer.h"
#include "TrendLegend.h"
#include "TrendMarker.h"
#include "TrendPlotSettings.h"
#include "TrendPlotSettingsForm.h"
#include "TrendSeries.h"

#include <QColor>
#include <QFont>
#include <QHash>
#include <QHashFunctions>
#include <QPixmap>
#include <QSet>

#include <unordered_map>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

class TrendMarkerList;
class TrendTimeMap;

/**
 * The recent history of one or more signals against time, one line per
 * signal over a sliding window of timeWindowMs.
 *
 * Live, values arrive through setValueForSignal() and the wall clock is the
 * time axis; a 100 ms timer keeps the plot scrolling while no data comes.
 * During playback (setTimeDriven(true)) values arrive with their frame
 * times through setValueForSignalAt() and the recording's time is the axis.
 * Values are stored at once and painted with the next display frame.
 *
 * Storage is bounded by time: a repeated value is not stored again (without
 * sample-and-hold a steady value is stored every minRepeatMs of frame time),
 * and each buffer keeps one sample before the window, so that its line
 * enters from the left border.
 *
 * Alt+left in the plot adds a marker (a screen marker live, a data marker in
 * playback), Alt+Shift+left adds one and opens its label editor, Alt+right
 * offers to delete markers, Alt+left on a legend entry hides or shows that
 * channel; presses without Alt go on to the base (selecting and dragging).
 *
 * Config keys: "timeWindowMs", "margin", "autoscale", "yMin", "yMax",
 * "showGrid", "gridLines", "leftAxis", "bottomPad", "sampleAndHold" (an
 * integer, non-zero meaning on) and "markers"; a missing key keeps the
 * current value.
 */
class TrendPlotWidget : public DashboardWidget, public ITimeStampedConsumer, public IPlaybackPlot
{
    Q_OBJECT

public:
    struct ValueRange
    {
        double lower = -1.0;
        double upper = 1.0;

        /// From the extremes of the counted samples: [-1, 1] when none were
        /// counted, +-1 around a single value, else ten per cent of the span
        /// added above and below.
        static ValueRange fromExtremes(double lo, double hi);
    };

    explicit TrendPlotWidget(QWidget *parent = nullptr);

    /// A value of the first bound signal.
    void setValue(double value) override;
    QString typeName() const override;
    /// A trend plot shows several signals at once.
    bool supportsMultipleSignals() const override;
    /// Live input, stamped with the wall clock (the playback clock when time-driven).
    void setValueForSignal(const QString &name, double value) override;
    /// Input with its frame time; tSec is used when time-driven, else the wall clock.
    void setValueForSignalAt(const QString &name, double value, double tSec) override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;
    qint64 timeWindowMs() const override { return m_settings.timeWindowMs; }

    bool isTimeDriven() const { return m_timeDriven; }
    qint64 nowMs() const { return m_nowMs; }
    qint64 playbackNowMs() const { return m_playbackNowMs; }
    qint64 lastTrimMs() const { return m_lastTrimMs; }
    const TrendPlotSettings &settings() const { return m_settings; }
    QFont plotFont() const { return m_font; }
    QColor dataMarkerColor() const { return m_dataMarkerColor; }
    QColor screenMarkerColor() const { return m_screenMarkerColor; }
    /// The samples stored for a bound name, or nullptr.
    const TrendSeries *series(const QString &name) const;
    /// The value axis: configured, or derived from the visible samples of the window.
    ValueRange valueRange() const;
    /// The area the lines are drawn in, below the legend.
    QRect plotRect() const;
    const TrendLegend &legend() const;
    /// Time to x over the plot area for the current window.
    TrendTimeMap timeMap() const;

    QSet<QString> hiddenChannels() const { return m_hidden; }
    /// Hides a shown channel, shows a hidden one.
    void toggleChannel(const QString &name);
    QList<TrendMarker> markers() const;
    /// The markers with their deletion menu and label editor.
    TrendMarkerList *markerList() const { return m_markers; }
    /// "t = ... s" and one "name: value" per visible channel for the time under
    /// the mouse; empty while the mouse is not over the plot area.
    QStringList hoverReadout() const;

    /// Decimation is on by default; off, every sample is drawn (the slow
    /// reference the decimated picture equals).
    void setDecimation(bool on);
    bool decimation() const { return m_decimation; }

    /// The label of the time tick at `frac` (0 left, 1 right) of the width:
    /// live, seconds before now ("-10.000s" .. "0.000s"); in playback, the
    /// recording time of the tick, so that features can be found in it.
    QString tickLabel(double frac) const;
    /// The time under the mouse in the read-out, in seconds, counted like the tick labels.
    double readoutSeconds(qint64 tMs) const;
    bool isHovering() const { return m_hovering; }
    QPoint hoverPos() const { return m_hoverPos; }

    /// What the plot draws under its data that changes only with the size,
    /// the settings, the channels and the tick labels (background, grid,
    /// axes, ticks, legend), painted once and kept for the next frames.
    struct Backdrop
    {
        QPixmap pixmap;
        QString key;
    };
    Backdrop &backdrop() const { return m_backdrop; }

    // What the window does to the plot as recording and playback move on.
    void clearData() override;
    void setTimeDriven(bool on) override;
    void setPlaybackTimeMs(qint64 tMs) override;
    /// Drops the samples later than nowMs, trims to the window ending there and repaints.
    void seekTo(qint64 nowMs) override;
    void beginBatch() override;
    void endBatch() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct NameHash
    {
        size_t operator()(const QString &name) const { return qHash(QStringView(name)); }
    };

    QString resolvedName(const QString &name) const;
    void rebuildNameIndex();
    TrendSeries &seriesFor(const QString &name);
    void trim();
    void onRefreshTimer();
    qint64 clockMs() const;
    void ensureLayout() const;
    void invalidateLayout();
    void addMarkerAt(const QPoint &pos, bool editLabel, const QPoint &globalPos);

    TrendPlotSettings m_settings;
    int m_legendRowHeight = 24;
    QFont m_font;
    std::unordered_map<QString, TrendSeries, NameHash> m_series;
    qint64 m_lastTrimMs = 0;
    bool m_deferRepaint = false;
    bool m_timeDriven = false;
    qint64 m_playbackNowMs = 0;
    QSet<QString> m_hidden;
    bool m_hovering = false;
    QPoint m_hoverPos;
    QColor m_dataMarkerColor = QColor(200, 80, 0);
    QColor m_screenMarkerColor = QColor(20, 120, 200);
    TrendMarkerList *m_markers = nullptr;
    double m_valueEpsilon = 1e-9;
    int m_minRepeatMs = 50;
    QTimer *m_refreshTimer = nullptr;
    mutable Backdrop m_backdrop;
    qint64 m_nowMs = 0;
    qint64 m_lastUpdateMs = 0;
    int m_minRepaintMs = 200;
    int m_timerIntervalMs = 100;

    bool m_decimation = true;
    QHash<QString, QString> m_nameIndex; // incoming name -> bound name it is stored under
    mutable bool m_layoutValid = false;
    mutable QSize m_layoutSize;
    mutable TrendLegend m_legend;
    mutable QRect m_plotRect;
    TrendPlotSettingsForm m_form;
};
