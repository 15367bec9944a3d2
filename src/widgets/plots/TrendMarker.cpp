#include "TrendMarker.h"

#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace {

const QLatin1String KindKey("kind");
const QLatin1String TimeKey("t");
const QLatin1String PlaceKey("xFrac");
const QLatin1String LabelKey("label");
const QLatin1String ScreenKind("screen");
const QLatin1String DataKind("data");

// Whole milliseconds toward zero, kept inside the 64-bit range.
qint64 truncatedMs(double ms)
{
    if (!std::isfinite(ms))
        return 0;
    return qint64(std::trunc(std::clamp(ms, -9.0e18, 9.0e18)));
}

} // namespace

QJsonArray TrendMarker::toJson(const QList<TrendMarker> &markers)
{
    QJsonArray array;
    for (const TrendMarker &marker : markers) {
        array.append(QJsonObject{{KindKey, marker.kind == Screen ? ScreenKind : DataKind},
                                 {TimeKey, double(marker.tMs)},
                                 {PlaceKey, marker.xFrac},
                                 {LabelKey, marker.label}});
    }
    return array;
}

QList<TrendMarker> TrendMarker::fromJson(const QJsonArray &array)
{
    QList<TrendMarker> markers;
    for (const QJsonValue &value : array) {
        const QJsonObject object = value.toObject();
        TrendMarker marker;
        marker.kind = object.value(KindKey).toString() == ScreenKind ? Screen : Data;
        marker.tMs = truncatedMs(object.value(TimeKey).toDouble(0.0));
        marker.xFrac = object.value(PlaceKey).toDouble(0.0);
        marker.label = object.value(LabelKey).toString();
        markers.append(marker);
    }
    return markers;
}
