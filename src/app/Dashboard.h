#pragma once

#include <QList>
#include <QObject>
#include <QPointF>
#include <QSizeF>

QT_BEGIN_NAMESPACE
class QGraphicsScene;
class QGraphicsView;
class QWidget;
QT_END_NAMESPACE

class DashboardItem;
class DashboardWidget;
class DesignScene;
class IPlaybackPlot;

// The design surface of the main window: the scene, its view, and the
// operations the window applies to all items at once (design mode, plot
// clearing and freezing, redrawing after a catalogue change). The scene
// rectangle follows the view's viewport.
class Dashboard : public QObject
{
    Q_OBJECT

public:
    explicit Dashboard(QWidget *viewParent);

    DesignScene *scene() const { return m_scene; }
    QGraphicsView *view() const { return m_view; }

    // Top-level DashboardItems in scene order.
    QList<DashboardItem *> items() const;
    static QList<DashboardItem *> topLevelItems(const QGraphicsScene *scene);
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
    // Repaints every widget, e.g. after the catalogue changed.
    void updateWidgets();

    // The view's magnification, MinZoom to MaxZoom; 1 shows the surface as laid out.
    static constexpr double MinZoom = 0.25;
    static constexpr double MaxZoom = 4.0;
    static constexpr double ZoomStep = 1.25;
    double zoom() const { return m_zoom; }
    void setZoom(double zoom);
    void zoomIn() { setZoom(m_zoom * ZoomStep); }
    void zoomOut() { setZoom(m_zoom / ZoomStep); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // The viewport's area in scene units; zoomed in, also every item, so
    // that the scroll bars reach them.
    void updateSceneRect();

    DesignScene *m_scene = nullptr;
    QGraphicsView *m_view = nullptr;
    bool m_designMode = false;
    double m_zoom = 1.0;
};
