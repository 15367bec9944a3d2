#pragma once

#include "WidgetView.h"

// The window's view of the dashboard: the scene rectangle follows the
// viewport, and the view magnifies from MinZoom to MaxZoom (1 shows the
// surface as laid out).
class DashboardView : public WidgetView
{
    Q_OBJECT

public:
    explicit DashboardView(QGraphicsScene *scene, QWidget *parent = nullptr);

    static constexpr double MinZoom = 0.25;
    static constexpr double MaxZoom = 4.0;
    static constexpr double ZoomStep = 1.25;
    double zoom() const { return m_zoom; }
    void setZoom(double zoom);
    void zoomIn() { setZoom(m_zoom * ZoomStep); }
    void zoomOut() { setZoom(m_zoom / ZoomStep); }

protected:
    bool viewportEvent(QEvent *event) override;

private:
    // The viewport's area in scene units; zoomed in, also every item, so
    // that the scroll bars reach them.
    void updateSceneRect();

    double m_zoom = 1.0;
};
