#pragma once

#include "BarRange.h"

#include <QFontMetricsF>
#include <QRectF>

QT_BEGIN_NAMESPACE
class QPainter;
QT_END_NAMESPACE

class BarGraphWidget;

/**
 * Draws a bar graph as it stands: per bar a grey track spanning the scale,
 * the bar from the baseline to the value in the bar colour, the value text
 * and the signal's display name, and the scale's limits.
 *
 * Vertical bars stand side by side with the value above and the name below
 * each; horizontal bars lie one under the other with name and value on a
 * line above each. A value past the scale gets a red triangle at the end of
 * the track, pointing past it.
 */
class BarGraphPainter
{
public:
    // What changes only with the size, the scale and the names (the tracks,
    // the scale's limits, the names under vertical bars), and what changes
    // with every value; a widget can keep the first in a pixmap.
    enum Part { Backdrop = 0x1, Values = 0x2, Everything = Backdrop | Values };

    static QColor markColor();

    BarGraphPainter(const BarGraphWidget &graph, QPainter &painter);
    void paint(int parts = Everything);

private:
    void paintVertical(const QRectF &area);
    void paintHorizontal(const QRectF &area);
    void drawTrack(const QRectF &track, int bar);
    void drawMark(const QRectF &track, BarRange::Clip clip);
    // The part of the track between two scale positions (0..1).
    QRectF span(const QRectF &track, double from, double to) const;
    void drawText(const QRectF &box, int flags, const QString &text);
    QString scaleText(double value) const;
    // The baseline's label, unless it would crowd a limit's.
    bool showsBaselineLabel(double extent) const;

    const BarGraphWidget &m_graph;
    QPainter &m_painter;
    const BarRange &m_range;
    QFontMetricsF m_metrics;
    bool m_vertical;
    bool m_backdrop = true;
    bool m_values = true;
};
