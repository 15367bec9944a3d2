#include "PlotInput.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace PlotInput {

QString routedName(const QString &name)
{
    const qsizetype colon = name.indexOf(QLatin1Char(':'));
    return colon < 0 ? name : name.left(colon).trimmed();
}

qint64 msFromSeconds(double seconds)
{
    const double ms = seconds * 1000.0;
    const double nudged = ms + std::copysign(1e-6, ms);
    return qint64(std::trunc(std::clamp(nudged, -9.0e18, 9.0e18)));
}

qint64 wallClockMs()
{
    return QDateTime::currentMSecsSinceEpoch();
}

} // namespace PlotInput
