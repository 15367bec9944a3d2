#include "DashboardView.h"

#include <QEvent>

DashboardView::DashboardView(QGraphicsScene *scene, QWidget *parent)
    : WidgetView(scene, parent)
{
    setObjectName(QStringLiteral("dashboardView"));
    updateSceneRect();
}

void DashboardView::setZoom(double zoom)
{
    // Steps of 1.25 from 1 land back on 1 only up to rounding.
    zoom = qBound(MinZoom, zoom, MaxZoom);
    m_zoom = qFuzzyCompare(zoom, 1.0) ? 1.0 : zoom;
    setTransform(QTransform::fromScale(m_zoom, m_zoom));
    updateSceneRect();
}

bool DashboardView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::Resize)
        updateSceneRect();
    return WidgetView::viewportEvent(event);
}

void DashboardView::updateSceneRect()
{
    QRectF rect(QPointF(0, 0), QSizeF(viewport()->size()) / m_zoom);
    if (m_zoom > 1.0)
        rect = rect.united(QRectF(QPointF(0, 0), scene()->itemsBoundingRect().bottomRight()));
    scene()->setSceneRect(rect);
}
