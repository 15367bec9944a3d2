#pragma once

#include "TrendPlotWidget.h"

#include <QRectF>

QT_BEGIN_NAMESPACE
class QPainter;
QT_END_NAMESPACE

struct TrendTrace;

/**
 * Paints one frame of a trend plot: grid, axes and their labels, the zero
 * line, one line per visible channel with its symbols, the legend, the
 * markers and the hover read-out. The value range comes from the same pass
 * over the samples that builds the lines.
 */
class TrendPlotRenderer
{
public:
    TrendPlotRenderer(const TrendPlotWidget &plot, QPainter &painter);

    void paint();

private:
    QList<TrendTrace> buildTraces(QList<int> &channels) const;
    TrendPlotWidget::ValueRange rangeOf(const QList<TrendTrace> &traces) const;
    double yOf(double value, const TrendPlotWidget::ValueRange &range) const;
    QString backdropKey() const;
    void drawBackdrop();
    void paintBackdrop(QPainter &painter) const;
    void drawGrid();
    void drawAxes();
    void drawZeroLine(const TrendPlotWidget::ValueRange &range);
    void drawValueLabels(const TrendPlotWidget::ValueRange &range);
    void drawValueLabel(double y, const QString &text);
    void drawTimeTicks();
    void drawLines(QList<TrendTrace> &traces, const QList<int> &channels, const TrendPlotWidget::ValueRange &range);
    void drawSymbols(int channel, const QString &name, const TrendPlotWidget::ValueRange &range);
    void drawMarkers();
    void drawMarkerLabel(double x, const QString &label, const QColor &color);
    void drawHoverReadout();

    const TrendPlotWidget &m_plot;
    QPainter &m_painter;
    QRect m_area;
    QRectF m_areaF;
};
