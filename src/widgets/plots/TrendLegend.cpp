#include "TrendLegend.h"

#include "TrendChannelStyle.h"

#include <QFontMetrics>
#include <QPainter>

namespace {

constexpr int SwatchWidth = 22;
constexpr int TextGap = 4;
constexpr int EntryGap = 12;

} // namespace

void TrendLegend::layOut(const QStringList &names, const QRect &area, const QFontMetrics &metrics, int rowHeight)
{
    m_entries.clear();
    m_height = 0;
    if (names.isEmpty())
        return;
    int x = area.left();
    int y = area.top();
    for (const QString &name : names) {
        const int width = SwatchWidth + TextGap + metrics.horizontalAdvance(name);
        if (x > area.left() && x + width > area.right()) {
            x = area.left();
            y += rowHeight;
        }
        m_entries.append(Entry{name, QRect(x, y, width, rowHeight)});
        x += width + EntryGap;
    }
    m_height = y + rowHeight - area.top();
}

QRect TrendLegend::rectOf(const QString &name) const
{
    for (const Entry &entry : m_entries) {
        if (entry.name == name)
            return entry.rect;
    }
    return QRect();
}

QString TrendLegend::channelAt(const QPoint &pos) const
{
    for (const Entry &entry : m_entries) {
        if (entry.rect.contains(pos))
            return entry.name;
    }
    return QString();
}

void TrendLegend::paint(QPainter &painter, const QSet<QString> &hidden) const
{
    for (int channel = 0; channel < m_entries.size(); ++channel) {
        const Entry &entry = m_entries.at(channel);
        const bool shown = !hidden.contains(entry.name);
        const QRect &r = entry.rect;
        const double midY = r.center().y() + 0.5;
        painter.setOpacity(shown ? 1.0 : 0.35);
        painter.setPen(QPen(TrendChannelStyle::color(channel), 2.0));
        painter.drawLine(QPointF(r.left() + 1, midY), QPointF(r.left() + SwatchWidth - 1, midY));
        TrendChannelStyle::drawSymbol(painter, channel, QPointF(r.left() + SwatchWidth / 2.0, midY));
        painter.setPen(shown ? QColor(40, 40, 40) : QColor(120, 120, 120));
        const QRect textRect = r.adjusted(SwatchWidth + TextGap, 0, 0, 0);
        painter.drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter, entry.name);
        if (!shown)
            painter.drawLine(QPointF(textRect.left(), midY), QPointF(textRect.right(), midY));
    }
    painter.setOpacity(1.0);
}
