#include "TrendPlotSettings.h"

#include <algorithm>

namespace {

const QLatin1String WindowKey("timeWindowMs");
const QLatin1String MarginKey("margin");
const QLatin1String AutoscaleKey("autoscale");
const QLatin1String YMinKey("yMin");
const QLatin1String YMaxKey("yMax");
const QLatin1String ShowGridKey("showGrid");
const QLatin1String GridLinesKey("gridLines");
const QLatin1String LeftAxisKey("leftAxis");
const QLatin1String BottomPadKey("bottomPad");
const QLatin1String SampleAndHoldKey("sampleAndHold");

} // namespace

void TrendPlotSettings::load(const QJsonObject &config)
{
    timeWindowMs = std::max(1, config.value(WindowKey).toInt(timeWindowMs));
    margin = config.value(MarginKey).toInt(margin);
    autoscale = config.value(AutoscaleKey).toBool(autoscale);
    yMin = config.value(YMinKey).toDouble(yMin);
    yMax = config.value(YMaxKey).toDouble(yMax);
    showGrid = config.value(ShowGridKey).toBool(showGrid);
    gridLines = std::max(1, config.value(GridLinesKey).toInt(gridLines));
    leftAxis = config.value(LeftAxisKey).toInt(leftAxis);
    bottomPad = config.value(BottomPadKey).toInt(bottomPad);
    // Written as a number; a hand-written true or false is taken as well.
    const QJsonValue hold = config.value(SampleAndHoldKey);
    sampleAndHold = hold.isBool() ? hold.toBool() : hold.toInt(sampleAndHold ? 1 : 0) != 0;
}

void TrendPlotSettings::save(QJsonObject &config) const
{
    config.insert(WindowKey, timeWindowMs);
    config.insert(MarginKey, margin);
    config.insert(AutoscaleKey, autoscale);
    config.insert(YMinKey, yMin);
    config.insert(YMaxKey, yMax);
    config.insert(ShowGridKey, showGrid);
    config.insert(GridLinesKey, gridLines);
    config.insert(LeftAxisKey, leftAxis);
    config.insert(BottomPadKey, bottomPad);
    config.insert(SampleAndHoldKey, sampleAndHold ? 1 : 0);
}
