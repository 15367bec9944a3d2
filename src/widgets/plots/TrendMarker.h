#pragma once

#include <QJsonArray>
#include <QList>
#include <QString>

/**
 * A vertical marker pinned onto a trend plot. A data marker belongs to a
 * moment of the data and scrolls with it; a screen marker stays at a place
 * on the plot, a fraction of the plot area's width from its left edge.
 *
 * Saved as {"kind": "data" | "screen", "t": ms, "xFrac": 0..1, "label": text}.
 */
struct TrendMarker
{
    enum Kind { Data = 0, Screen = 1 };

    int kind = Data;
    qint64 tMs = 0;
    double xFrac = 0.0;
    QString label;

    static QJsonArray toJson(const QList<TrendMarker> &markers);
    /// "kind" other than "screen" reads as a data marker; a missing "t" or
    /// "xFrac" reads as 0 and "t" is truncated to whole milliseconds.
    static QList<TrendMarker> fromJson(const QJsonArray &array);
};
