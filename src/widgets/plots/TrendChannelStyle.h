#pragma once

#include <QColor>

QT_BEGIN_NAMESPACE
class QPainter;
class QPointF;
QT_END_NAMESPACE

/**
 * How the channels of a trend plot tell themselves apart: the eight colours
 * of the Okabe-Ito palette, which stay distinct for the common forms of
 * colour blindness, each with a symbol of its own that is repeated along the
 * line and shown in the legend, so that lines can be told apart by shape
 * alone (in grey print, or where two colours still look alike). Channels
 * beyond the eighth repeat the cycle.
 */
class TrendChannelStyle
{
public:
    static constexpr int Count = 8;

    static QColor color(int channel);
    /// The channel's symbol, filled in its colour with a darker outline, centred on `centre`.
    static void drawSymbol(QPainter &painter, int channel, const QPointF &centre, double size = 7.0);
};
