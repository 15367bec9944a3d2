#include "WidgetView.h"

WidgetView::WidgetView(QWidget *parent)
    : QGraphicsView(parent)
{
    setUp();
}

WidgetView::WidgetView(QGraphicsScene *scene, QWidget *parent)
    : QGraphicsView(scene, parent)
{
    setUp();
}

void WidgetView::setUp()
{
    setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // Embedded widgets and plots repaint small areas often; the grid must not
    // be cached, since leaving design mode repaints the background at once.
    setViewportUpdateMode(QGraphicsView::SmartViewportUpdate);
    setCacheMode(QGraphicsView::CacheNone);
    setDragMode(QGraphicsView::NoDrag);
}
