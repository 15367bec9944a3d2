#include "TrendPlotRenderer.h"

#include "TrendChannelStyle.h"
#include "TrendDecimator.h"
#include "TrendMarker.h"
#include "TrendTimeMap.h"

#include <QPainter>

#include <cmath>
#include <limits>

namespace {

constexpr double LineWidth = 1.0;
constexpr int TickLength = 4;
// Symbols are repeated along each line this many pixels apart, staggered by
// channel so that coinciding lines still show every symbol.
constexpr int SymbolSpacing = 90;
constexpr int SymbolStagger = 11;
const QColor GridColor(228, 228, 228);
const QColor AxisColor(90, 90, 90);
const QColor TextColor(50, 50, 50);
const QColor ZeroLineColor(60, 60, 60);

} // namespace

TrendPlotRenderer::TrendPlotRenderer(const TrendPlotWidget &plot, QPainter &painter)
    : m_plot(plot)
    , m_painter(painter)
    , m_area(plot.plotRect())
    , m_areaF(m_area)
{
}

void TrendPlotRenderer::paint()
{
    m_painter.setRenderHint(QPainter::Antialiasing);
    m_painter.setFont(m_plot.plotFont());
    if (m_plot.signalNames().isEmpty()) {
        m_painter.fillRect(m_plot.rect(), m_plot.palette().window());
        m_painter.setPen(TextColor);
        m_painter.drawText(m_plot.rect(), Qt::AlignCenter, QStringLiteral("No signals"));
        return;
    }
    QList<int> channels;
    QList<TrendTrace> traces = buildTraces(channels);
    const TrendPlotWidget::ValueRange range = rangeOf(traces);
    drawBackdrop();
    drawZeroLine(range);
    drawLines(traces, channels, range);
    drawValueLabels(range);
    drawMarkers();
    drawHoverReadout();
}

QString TrendPlotRenderer::backdropKey() const
{
    // Everything the backdrop shows depends on; text is dear to draw, and
    // live the tick labels never change.
    QStringList parts{QString::number(m_plot.width()), QString::number(m_plot.height()),
                      QString::number(m_plot.devicePixelRatioF()), QString::number(m_plot.settings().gridLines),
                      QString::number(int(m_plot.settings().showGrid)), m_plot.plotFont().toString(),
                      m_plot.palette().window().color().name()};
    for (int i = 0; i <= m_plot.settings().gridLines; ++i)
        parts.append(m_plot.tickLabel(double(i) / m_plot.settings().gridLines));
    for (const TrendLegend::Entry &entry : m_plot.legend().entries())
        parts << entry.name << QString::number(int(m_plot.hiddenChannels().contains(entry.name)));
    return parts.join(QLatin1Char('\n'));
}

void TrendPlotRenderer::drawBackdrop()
{
    TrendPlotWidget::Backdrop &backdrop = m_plot.backdrop();
    const qreal ratio = m_plot.devicePixelRatioF();
    const QSize pixels = m_plot.size() * ratio;
    // A plot larger than the screen draws its backdrop where it is exposed.
    if (!m_plot.fitsCacheLimit(pixels)) {
        backdrop = TrendPlotWidget::Backdrop();
        m_painter.save();
        m_painter.fillRect(m_plot.rect(), m_plot.palette().window().color());
        paintBackdrop(m_painter);
        m_painter.restore();
        return;
    }
    const QString key = backdropKey();
    if (backdrop.key != key || backdrop.pixmap.isNull()) {
        backdrop.pixmap = QPixmap(pixels);
        backdrop.pixmap.setDevicePixelRatio(ratio);
        backdrop.pixmap.fill(m_plot.palette().window().color());
        QPainter painter(&backdrop.pixmap);
        paintBackdrop(painter);
        backdrop.key = key;
    }
    m_painter.drawPixmap(0, 0, backdrop.pixmap);
}

void TrendPlotRenderer::paintBackdrop(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(m_plot.plotFont());
    TrendPlotRenderer layer(m_plot, painter);
    painter.fillRect(m_area, Qt::white);
    if (m_plot.settings().showGrid)
        layer.drawGrid();
    layer.drawAxes();
    layer.drawTimeTicks();
    m_plot.legend().paint(painter, m_plot.hiddenChannels());
}

QList<TrendTrace> TrendPlotRenderer::buildTraces(QList<int> &channels) const
{
    const TrendTimeMap map = m_plot.timeMap();
    const QStringList names = m_plot.signalNames();
    const QSet<QString> hidden = m_plot.hiddenChannels();
    QList<TrendTrace> traces;
    for (int channel = 0; channel < names.size(); ++channel) {
        const TrendSeries *series = m_plot.series(names.at(channel));
        if (!series || hidden.contains(names.at(channel)))
            continue;
        const bool step = m_plot.settings().sampleAndHold;
        traces.append(TrendDecimator::trace(*series, map, m_plot.nowMs(), step, m_plot.decimation()));
        channels.append(channel);
    }
    return traces;
}

TrendPlotWidget::ValueRange TrendPlotRenderer::rangeOf(const QList<TrendTrace> &traces) const
{
    if (!m_plot.settings().autoscale)
        return m_plot.valueRange();
    double lo = std::numeric_limits<double>::infinity();
    double hi = -lo;
    for (const TrendTrace &trace : traces) {
        lo = std::min(lo, trace.lo);
        hi = std::max(hi, trace.hi);
    }
    return TrendPlotWidget::ValueRange::fromExtremes(lo, hi);
}

double TrendPlotRenderer::yOf(double value, const TrendPlotWidget::ValueRange &range) const
{
    return m_areaF.bottom() - m_areaF.height() * (value - range.lower) / (range.upper - range.lower);
}

void TrendPlotRenderer::drawGrid()
{
    m_painter.save();
    m_painter.setRenderHint(QPainter::Antialiasing, false);
    m_painter.setPen(QPen(GridColor, 1.0));
    const int divisions = m_plot.settings().gridLines;
    for (int i = 1; i < divisions; ++i) {
        const int x = m_area.left() + int(std::lround(double(m_area.width()) * i / divisions));
        const int y = m_area.top() + int(std::lround(double(m_area.height()) * i / divisions));
        m_painter.drawLine(x, m_area.top(), x, m_area.bottom());
        m_painter.drawLine(m_area.left(), y, m_area.right(), y);
    }
    m_painter.restore();
}

void TrendPlotRenderer::drawAxes()
{
    m_painter.setPen(QPen(AxisColor, 1.0));
    m_painter.drawLine(m_areaF.bottomLeft(), m_areaF.topLeft());
    m_painter.drawLine(m_areaF.bottomLeft(), m_areaF.bottomRight());
}

void TrendPlotRenderer::drawZeroLine(const TrendPlotWidget::ValueRange &range)
{
    if (range.lower < 0.0 && 0.0 < range.upper) {
        const double y = yOf(0.0, range);
        m_painter.setPen(QPen(ZeroLineColor, 2.0, Qt::DashLine));
        m_painter.drawLine(QPointF(m_areaF.left(), y), QPointF(m_areaF.right(), y));
    }
}

void TrendPlotRenderer::drawValueLabels(const TrendPlotWidget::ValueRange &range)
{
    m_painter.setPen(TextColor);
    drawValueLabel(m_areaF.top(), QString::number(range.upper, 'g', 6));
    drawValueLabel(m_areaF.bottom(), QString::number(range.lower, 'g', 6));
    const double y = yOf(0.0, range);
    const int h = QFontMetrics(m_plot.plotFont()).height();
    // The zero line's label, where it stays clear of the end labels.
    if (range.lower < 0.0 && 0.0 < range.upper && y - m_areaF.top() >= h && m_areaF.bottom() - y >= h)
        drawValueLabel(y, QStringLiteral("0"));
}

// Right-aligned left of the axis; a label wider than that strip is written
// just inside the plot instead, on a pale box, so that no digit is cut off.
void TrendPlotRenderer::drawValueLabel(double y, const QString &text)
{
    const QFontMetrics metrics(m_plot.plotFont());
    const int h = metrics.height();
    const int width = metrics.horizontalAdvance(text);
    const int strip = m_area.left() - 4;
    if (width <= strip) {
        m_painter.drawText(QRect(0, int(y) - h / 2, strip, h), Qt::AlignRight | Qt::AlignVCenter, text);
        return;
    }
    const int top = std::clamp(int(y) - h / 2, m_area.top() + 1, std::max(m_area.top() + 1, m_area.bottom() - h));
    const QRect box(m_area.left() + 3, top, width + 4, h);
    m_painter.fillRect(box, QColor(255, 255, 255, 210));
    m_painter.drawText(box, Qt::AlignCenter, text);
}

void TrendPlotRenderer::drawTimeTicks()
{
    const QFontMetrics metrics(m_plot.plotFont());
    const int divisions = m_plot.settings().gridLines;
    const int top = m_area.bottom() + 1;
    QRect lastLabel;
    for (int i = 0; i <= divisions; ++i) {
        const double frac = double(i) / divisions;
        const double x = m_areaF.left() + m_areaF.width() * frac;
        m_painter.setPen(QPen(AxisColor, 1.0));
        m_painter.drawLine(QPointF(x, top), QPointF(x, top + TickLength));
        const QString text = m_plot.tickLabel(frac);
        const int width = metrics.horizontalAdvance(text);
        QRect label(int(x) - width / 2, top + TickLength, width, metrics.height());
        label.moveLeft(std::clamp(label.left(), 0, std::max(0, m_plot.width() - width)));
        // Labels that would run into the previous one are left out.
        if (lastLabel.isValid() && label.left() < lastLabel.right() + 6)
            continue;
        m_painter.setPen(TextColor);
        m_painter.drawText(label, Qt::AlignCenter, text);
        lastLabel = label;
    }
}

void TrendPlotRenderer::drawLines(QList<TrendTrace> &traces, const QList<int> &channels,
                                  const TrendPlotWidget::ValueRange &range)
{
    m_painter.save();
    m_painter.setClipRect(m_area);
    const QStringList names = m_plot.signalNames();
    for (int i = 0; i < traces.size(); ++i) {
        TrendTrace &trace = traces[i];
        trace.mapValues(m_areaF.bottom(), m_areaF.height(), range.lower, range.upper);
        QPen pen(TrendChannelStyle::color(channels.at(i)), LineWidth);
        pen.setCapStyle(Qt::RoundCap);
        pen.setJoinStyle(Qt::RoundJoin);
        m_painter.setPen(pen);
        m_painter.drawPolyline(trace.points);
        drawSymbols(channels.at(i), names.at(channels.at(i)), range);
    }
    m_painter.restore();
}

void TrendPlotRenderer::drawSymbols(int channel, const QString &name, const TrendPlotWidget::ValueRange &range)
{
    const TrendSeries *series = m_plot.series(name);
    const TrendTimeMap map = m_plot.timeMap();
    for (int column = SymbolSpacing / 2 + channel * SymbolStagger; column < m_area.width(); column += SymbolSpacing) {
        const bool step = m_plot.settings().sampleAndHold;
        const std::optional<double> value = TrendDecimator::valueAtColumn(*series, map, column, step);
        if (value)
            TrendChannelStyle::drawSymbol(m_painter, channel, QPointF(map.columnX(column), yOf(*value, range)));
    }
}

void TrendPlotRenderer::drawMarkers()
{
    const TrendTimeMap map = m_plot.timeMap();
    m_painter.save();
    m_painter.setClipRect(m_area);
    for (const TrendMarker &marker : m_plot.markers()) {
        const bool data = marker.kind == TrendMarker::Data;
        const double exact = data ? map.exactX(marker.tMs) : m_areaF.left() + marker.xFrac * m_areaF.width();
        // A data marker leaves with its moment.
        if (!(exact >= m_areaF.left() && exact < m_areaF.right()))
            continue;
        const double x = std::floor(exact) + 0.5; // a crisp line through the pixel column
        const QColor color = data ? m_plot.dataMarkerColor() : m_plot.screenMarkerColor();
        m_painter.setPen(QPen(color, 1.5, data ? Qt::SolidLine : Qt::DashLine));
        m_painter.drawLine(QPointF(x, m_areaF.top()), QPointF(x, m_areaF.bottom()));
        if (!marker.label.isEmpty())
            drawMarkerLabel(x, marker.label, color);
    }
    m_painter.restore();
}

void TrendPlotRenderer::drawMarkerLabel(double x, const QString &label, const QColor &color)
{
    const QFontMetrics metrics(m_plot.plotFont());
    QRectF box(0, m_areaF.top() + 3, metrics.horizontalAdvance(label) + 8, metrics.height() + 2);
    box.moveLeft(x + 4);
    if (box.right() > m_areaF.right())
        box.moveRight(x - 4);
    m_painter.setPen(QPen(color, 1.0));
    m_painter.setBrush(QColor(255, 255, 255, 230));
    m_painter.drawRect(box);
    m_painter.setPen(TextColor);
    m_painter.drawText(box, Qt::AlignCenter, label);
    m_painter.setBrush(Qt::NoBrush);
}

void TrendPlotRenderer::drawHoverReadout()
{
    const QStringList lines = m_plot.hoverReadout();
    if (lines.isEmpty())
        return;
    const QPoint pos = m_plot.hoverPos();
    m_painter.setPen(QPen(QColor(120, 120, 120), 1.0, Qt::DotLine));
    m_painter.drawLine(QPointF(pos.x() + 0.5, m_areaF.top()), QPointF(pos.x() + 0.5, m_areaF.bottom()));

    const QFontMetrics metrics(m_plot.plotFont());
    int width = 0;
    for (const QString &line : lines)
        width = std::max(width, metrics.horizontalAdvance(line));
    QRect box(pos + QPoint(12, 12), QSize(width + 12, int(lines.size()) * metrics.height() + 8));
    // Kept inside the widget: flipped to the other side of the cursor when needed.
    if (box.right() > m_plot.width() - 2)
        box.moveRight(pos.x() - 12);
    if (box.bottom() > m_plot.height() - 2)
        box.moveBottom(pos.y() - 12);
    m_painter.setPen(QPen(QColor(160, 160, 160), 1.0));
    m_painter.setBrush(QColor(255, 255, 255, 235));
    m_painter.drawRect(box);
    m_painter.setBrush(Qt::NoBrush);
    m_painter.setPen(TextColor);
    QRect line(box.left() + 6, box.top() + 4, width, metrics.height());
    for (const QString &text : lines) {
        m_painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, text);
        line.translate(0, metrics.height());
    }
}
