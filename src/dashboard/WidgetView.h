#pragma once

#include <QGraphicsView>

// Shows the design scene: anchored at the top-left corner, antialiased,
// repainting only what changed.
class WidgetView : public QGraphicsView
{
    Q_OBJECT

public:
    explicit WidgetView(QWidget *parent = nullptr);
    explicit WidgetView(QGraphicsScene *scene, QWidget *parent = nullptr);

private:
    void setUp();
};
