#pragma once

#include <QList>
#include <QObject>
#include <QPointF>
#include <QSizeF>

class DashboardItem;
class DashboardWidget;
class DesignScene;
class IPlaybackPlot;

// The dashboard without a window: the design scene and the operations
// applied to all its items at once (design mode, plot clearing and
// freezing, redrawing after a catalogue change). Whoever shows it gives the
// scene a view.
class Dashboard : public QObject
{
    Q_OBJECT

public:
    explicit Dashboard(QObject *parent = nullptr);

    DesignScene *scene() const { return m_scene; }

    // Top-level DashboardItems in scene order.
    QList<DashboardItem *> items() const;
    QList<DashboardWidget *> widgets() const;

    void setDesignMode(bool on);
    bool designMode() const { return m_designMode; }

    // A new item of the registered type at the first free grid position,
    // editable in design mode; nullptr for an unknown type.
    DashboardItem *addWidget(const QString &typeName);
    QPointF freePosition(const QSizeF &size) const;

    // The plots among the widgets, in scene order.
    QList<IPlaybackPlot *> plots() const;
    // Trend and XY plots drop their data.
    void clearPlots();
    // Time-driven plots follow the recording's clock (playback and
    // scrubbing) instead of the wall clock (live).
    void setTrendPlotsTimeDriven(bool on);
    // Plots show the position ms from the start of the recording.
    void moveTrendPlotsTo(qint64 ms);
    // The largest time window (ms) among the plots; 0 when none.
    double largestTrendWindowMs() const;
    // How much history a seek re-sends for plots of that largest window:
    // 10 s when no plot has one, at most 30 s, within 0.1 .. 60 s.
    static double previewWindowSeconds(double largestWindowMs);
    double previewWindowSeconds() const { return previewWindowSeconds(largestTrendWindowMs()); }
    // Repaints every widget, e.g. after the catalogue changed.
    void updateWidgets();

private:
    DesignScene *m_scene = nullptr;
    bool m_designMode = false;
};
