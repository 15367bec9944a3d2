#include "TrendChannelStyle.h"

#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QtMath>

#include <array>

namespace {

// Ordered so that neighbouring channels differ in hue and in lightness;
// the pale yellow comes last.
const std::array<QColor, TrendChannelStyle::Count> Palette{
    QColor(0, 114, 178),   // blue
    QColor(213, 94, 0),    // vermillion
    QColor(0, 158, 115),   // bluish green
    QColor(204, 121, 167), // reddish purple
    QColor(86, 180, 233),  // sky blue
    QColor(230, 159, 0),   // orange
    QColor(0, 0, 0),       // black
    QColor(240, 228, 66),  // yellow
};

QPolygonF regularPolygon(int corners, double radius, double startDegrees)
{
    QPolygonF polygon;
    for (int i = 0; i < corners; ++i) {
        const double angle = qDegreesToRadians(startDegrees + 360.0 * i / corners);
        polygon << QPointF(radius * std::cos(angle), radius * std::sin(angle));
    }
    return polygon;
}

QPolygonF star(double radius)
{
    QPolygonF polygon;
    for (int i = 0; i < 10; ++i) {
        const double r = i % 2 ? radius * 0.45 : radius;
        const double angle = qDegreesToRadians(-90.0 + 36.0 * i);
        polygon << QPointF(r * std::cos(angle), r * std::sin(angle));
    }
    return polygon;
}

QPolygonF plus(double radius)
{
    const double a = radius / 3.0;
    const double r = radius;
    return QPolygonF({{-a, -r}, {a, -r}, {a, -a}, {r, -a}, {r, a}, {a, a}, {a, r},
                      {-a, r}, {-a, a}, {-r, a}, {-r, -a}, {-a, -a}});
}

// Centred on the origin, about 2 * r across.
QPainterPath symbolPath(int symbol, double r)
{
    QPainterPath path;
    switch (symbol) {
    case 0:
        path.addEllipse(QPointF(0, 0), r * 0.85, r * 0.85);
        break;
    case 1:
        path.addRect(QRectF(-r * 0.8, -r * 0.8, r * 1.6, r * 1.6));
        break;
    case 2:
        path.addPolygon(regularPolygon(3, r, -90.0));
        break;
    case 3:
        path.addPolygon(regularPolygon(4, r, 0.0));
        break;
    case 4:
        path.addPolygon(regularPolygon(3, r, 90.0));
        break;
    case 5:
        path.addPolygon(plus(r));
        break;
    case 6:
        path.addPolygon(QTransform().rotate(45.0).map(plus(r)));
        break;
    default:
        path.addPolygon(star(r * 1.1));
        break;
    }
    path.closeSubpath();
    return path;
}

int wrapped(int channel)
{
    return ((channel % TrendChannelStyle::Count) + TrendChannelStyle::Count) % TrendChannelStyle::Count;
}

} // namespace

QColor TrendChannelStyle::color(int channel)
{
    return Palette[size_t(wrapped(channel))];
}

void TrendChannelStyle::drawSymbol(QPainter &painter, int channel, const QPointF &centre, double size)
{
    const QColor fill = color(channel);
    painter.save();
    painter.translate(centre);
    painter.setPen(QPen(fill.darker(170), 1.0));
    painter.setBrush(fill);
    painter.drawPath(symbolPath(wrapped(channel), size / 2.0));
    painter.restore();
}
