#include "BarGraphPainter.h"

#include "BarGraphWidget.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

constexpr double Margin = 4.0;
constexpr double TextGap = 2.0;
// Of each bar's slot, the share left empty on either side.
constexpr double SlotGap = 0.15;
const QColor TrackColor(225, 225, 225);
const QColor BaselineColor(110, 110, 110);

} // namespace

QColor BarGraphPainter::markColor()
{
    return QColor(200, 30, 30);
}

BarGraphPainter::BarGraphPainter(const BarGraphWidget &graph, QPainter &painter)
    : m_graph(graph)
    , m_painter(painter)
    , m_range(graph.range())
    , m_metrics(graph.font())
    , m_vertical(graph.orientation() == Qt::Vertical)
{
}

void BarGraphPainter::paint(int parts)
{
    m_backdrop = parts & Backdrop;
    m_values = parts & Values;
    m_painter.setRenderHint(QPainter::Antialiasing);
    m_painter.setFont(m_graph.font());
    const QRectF area = QRectF(m_graph.rect()).adjusted(Margin, Margin, -Margin, -Margin);
    if (m_graph.barCount() == 0) {
        if (m_backdrop)
            drawText(area, Qt::AlignCenter | Qt::TextWordWrap,
                     BarGraphWidget::tr("No signals \u2014 configure to choose some"));
        return;
    }
    if (m_vertical)
        paintVertical(area);
    else
        paintHorizontal(area);
}

void BarGraphPainter::paintVertical(const QRectF &area)
{
    const double line = m_metrics.height();
    const QString upper = scaleText(m_range.upper());
    const QString lower = scaleText(m_range.lower());
    const double scaleWidth = std::max(m_metrics.horizontalAdvance(upper), m_metrics.horizontalAdvance(lower)) + TextGap;
    const QRectF plot = area.adjusted(scaleWidth + TextGap, line + TextGap, 0, -(line + TextGap));
    if (plot.width() < 1.0 || plot.height() < 1.0)
        return;

    const QRectF scale(area.left(), plot.top() - line / 2, scaleWidth, plot.height() + line);
    if (m_backdrop) {
        drawText(scale, Qt::AlignRight | Qt::AlignTop, upper);
        drawText(scale, Qt::AlignRight | Qt::AlignBottom, lower);
        if (showsBaselineLabel(plot.height())) {
            const double y = span(plot, 0.0, m_range.position(m_range.baseline())).top();
            drawText(QRectF(scale.left(), y - line / 2, scaleWidth, line), Qt::AlignRight | Qt::AlignVCenter,
                     scaleText(m_range.baseline()));
        }
    }

    const double slot = plot.width() / m_graph.barCount();
    for (int bar = 0; bar < m_graph.barCount(); ++bar) {
        const double left = plot.left() + bar * slot;
        if (m_values)
            drawText(QRectF(left, area.top(), slot, line), Qt::AlignCenter, m_graph.barValueText(bar));
        drawTrack(QRectF(left + slot * SlotGap, plot.top(), slot * (1.0 - 2 * SlotGap), plot.height()), bar);
        if (m_backdrop)
            drawText(QRectF(left, plot.bottom() + TextGap, slot, line), Qt::AlignCenter, m_graph.barCaption(bar));
    }
}

void BarGraphPainter::paintHorizontal(const QRectF &area)
{
    const double line = m_metrics.height();
    const QRectF plot = area.adjusted(0, 0, 0, -(line + TextGap));
    if (plot.width() < 1.0 || plot.height() < 1.0)
        return;

    const QRectF scale(plot.left(), plot.bottom() + TextGap, plot.width(), line);
    if (m_backdrop) {
        drawText(scale, Qt::AlignLeft | Qt::AlignVCenter, scaleText(m_range.lower()));
        drawText(scale, Qt::AlignRight | Qt::AlignVCenter, scaleText(m_range.upper()));
        if (showsBaselineLabel(plot.width())) {
            const double x = span(plot, 0.0, m_range.position(m_range.baseline())).right();
            drawText(QRectF(x - plot.width() / 2, scale.top(), plot.width(), line), Qt::AlignCenter,
                     scaleText(m_range.baseline()));
        }
    }

    const double row = plot.height() / m_graph.barCount();
    for (int bar = 0; bar < m_graph.barCount(); ++bar) {
        const double top = plot.top() + bar * row;
        const QRectF text(plot.left(), top, plot.width(), line);
        // The name is cut to leave room for the value, so both change with it.
        if (m_values) {
            const QString value = m_graph.barValueText(bar);
            drawText(text, Qt::AlignRight | Qt::AlignVCenter, value);
            const double valueWidth = m_metrics.horizontalAdvance(value) + 2 * TextGap;
            drawText(text.adjusted(0, 0, -valueWidth, 0), Qt::AlignLeft | Qt::AlignVCenter, m_graph.barCaption(bar));
        }
        const double trackTop = top + line + TextGap;
        const double trackHeight = std::max(1.0, row - line - TextGap - row * SlotGap);
        drawTrack(QRectF(plot.left(), trackTop, plot.width(), trackHeight), bar);
    }
}

void BarGraphPainter::drawTrack(const QRectF &track, int bar)
{
    if (m_backdrop)
        m_painter.fillRect(track, TrackColor);
    if (!m_values)
        return;
    const double base = m_range.position(m_range.baseline());
    const double value = m_graph.barValue(bar);
    const bool shown = m_graph.barHasValue(bar) && !std::isnan(value);
    if (shown)
        m_painter.fillRect(span(track, base, m_range.position(value)), m_graph.barColor());
    // The baseline stays visible across an empty or a negative bar.
    const QRectF baseline = span(track, base, base);
    m_painter.setPen(QPen(BaselineColor, 1.0));
    m_painter.drawLine(baseline.topLeft(), m_vertical ? baseline.topRight() : baseline.bottomLeft());
    if (shown)
        drawMark(track, m_range.clip(value));
}

void BarGraphPainter::drawMark(const QRectF &track, BarRange::Clip clip)
{
    if (clip == BarRange::Clip::None)
        return;
    const bool above = clip == BarRange::Clip::Above;
    // A triangle inside the track's end, its tip on the end, pointing past it.
    const double across = m_vertical ? track.width() : track.height();
    const double along = m_vertical ? track.height() : track.width();
    const double half = std::min(across * 0.4, 8.0);
    const double depth = std::min(half * 1.5, along / 2);
    QPointF tip;
    QPointF base;
    QPointF side;
    if (m_vertical) {
        tip = QPointF(track.center().x(), above ? track.top() : track.bottom());
        base = tip + QPointF(0, above ? depth : -depth);
        side = QPointF(half, 0);
    } else {
        tip = QPointF(above ? track.right() : track.left(), track.center().y());
        base = tip + QPointF(above ? -depth : depth, 0);
        side = QPointF(0, half);
    }
    QPainterPath triangle(tip);
    triangle.lineTo(base + side);
    triangle.lineTo(base - side);
    triangle.closeSubpath();
    // A white rim keeps the mark apart from a bar of a similar colour.
    m_painter.setPen(QPen(Qt::white, 1.5));
    m_painter.setBrush(markColor());
    m_painter.drawPath(triangle);
}

QRectF BarGraphPainter::span(const QRectF &track, double from, double to) const
{
    const double low = std::min(from, to);
    const double high = std::max(from, to);
    if (m_vertical)
        return QRectF(track.left(), track.bottom() - high * track.height(), track.width(), (high - low) * track.height());
    return QRectF(track.left() + low * track.width(), track.top(), (high - low) * track.width(), track.height());
}

void BarGraphPainter::drawText(const QRectF &box, int flags, const QString &text)
{
    m_painter.setPen(m_graph.palette().color(QPalette::WindowText));
    const QString shown = (flags & Qt::TextWordWrap) ? text : m_metrics.elidedText(text, Qt::ElideRight, box.width());
    m_painter.drawText(box, flags, shown);
}

QString BarGraphPainter::scaleText(double value) const
{
    return QString::number(value, 'g', 6);
}

bool BarGraphPainter::showsBaselineLabel(double extent) const
{
    const double base = m_range.baseline();
    if (base == m_range.lower() || base == m_range.upper())
        return false;
    const double position = m_range.position(base) * extent;
    const double room = m_vertical ? m_metrics.height() : m_metrics.horizontalAdvance(scaleText(base)) * 2;
    return position > room && extent - position > room;
}
