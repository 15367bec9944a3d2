#pragma once

#include <QJsonObject>

/**
 * The configurable part of a trend plot, as kept in its "config" object:
 * "gridLines", "showGrid", "leftAxis", "bottomPad", "margin",
 * "timeWindowMs", "autoscale", "yMin", "yMax" and "sampleAndHold" (written
 * as an integer, non-zero meaning on).
 */
struct TrendPlotSettings
{
    int gridLines = 5;
    bool showGrid = true;
    int leftAxis = 40;   // strip left of the plot for the value labels, px
    int bottomPad = 20;  // strip under the plot for the time labels, px
    int margin = 6;      // around everything, px
    int timeWindowMs = 10000;
    bool autoscale = true;
    double yMin = -1.0;  // the value axis while autoscale is off
    double yMax = 1.0;
    bool sampleAndHold = true;

    /// Reads the keys present; a missing key keeps the current value.
    void load(const QJsonObject &config);
    void save(QJsonObject &config) const;
};
