// Plot paints: what one display frame costs when a plot holds a lot of data.
// A trend plot 800 px wide with 8 channels of 100,000 samples in its window,
// decimated and drawing every sample side by side, and an XY plot holding
// 200,000 points, as dots and as a connected trace.
#include "TrendPlotWidget.h"
#include "XYPlotWidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QJsonObject>
#include <QRandomGenerator>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int Rounds = 15;
constexpr double TargetMs = 5.0;
constexpr int Channels = 8;
constexpr int SamplesPerChannel = 100000;
constexpr int XYPoints = 200000;

double paintMs(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    widget.render(&image); // warm-up
    std::vector<double> times;
    for (int round = 0; round < Rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        widget.render(&image);
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void printRow(const char *name, double ms, bool hasTarget = true)
{
    if (hasTarget)
        std::printf("| %s | %.2f ms (median of %d) | < %.0f ms %s |\n", name, ms, Rounds, TargetMs,
                    ms < TargetMs ? "(met)" : "(MISSED)");
    else
        std::printf("| %s | %.2f ms (median of %d) | reference |\n", name, ms, Rounds);
}

// One playback frame per millisecond; every value differs from the one
// before, so every sample is stored.
void fillTrend(TrendPlotWidget &plot)
{
    QStringList names;
    for (int channel = 0; channel < Channels; ++channel)
        names.append(QStringLiteral("CH%1").arg(channel + 1));
    plot.setSignalNames(names);
    plot.loadConfig(QJsonObject{{QStringLiteral("timeWindowMs"), SamplesPerChannel}});
    plot.setTimeDriven(true);
    QRandomGenerator random(7);
    for (int i = 0; i < SamplesPerChannel; ++i) {
        plot.beginBatch();
        for (int channel = 0; channel < Channels; ++channel) {
            const double value = std::sin(i * 0.0005 * (channel + 1)) * 10.0 + channel * 5.0 + random.bounded(1.0);
            plot.setValueForSignalAt(names.at(channel), value, i / 1000.0);
        }
        plot.endBatch();
    }
}

void fillXY(XYPlotWidget &plot)
{
    plot.loadConfig(QJsonObject{{QStringLiteral("xSignal"), QStringLiteral("SPEED")},
                                {QStringLiteral("ySignal"), QStringLiteral("TORQUE")},
                                {QStringLiteral("maxPoints"), XYPoints}});
    QRandomGenerator random(11);
    for (int i = 0; i < XYPoints; ++i) {
        const double t = i * 0.02;
        const double speed = 1500.0 + 1200.0 * std::sin(t * 0.05) + random.bounded(40.0);
        const double torque = 25.0 + 20.0 * std::sin(t * 0.031) + random.bounded(2.0);
        plot.setValueForSignalAt(QStringLiteral("SPEED"), speed, t);
        plot.setValueForSignalAt(QStringLiteral("TORQUE"), torque, t);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    TrendPlotWidget trend;
    trend.resize(800, 300);
    fillTrend(trend);
    printRow("Trend plot 800 px, 8 x 100,000 samples in the window: one paint, decimated", paintMs(trend));
    trend.setDecimation(false);
    printRow("Trend plot 800 px, 8 x 100,000 samples in the window: one paint, every sample drawn", paintMs(trend),
             false);

    XYPlotWidget xy;
    xy.resize(500, 400);
    fillXY(xy);
    if (xy.points().size() != XYPoints)
        std::printf("XY plot holds %d points, not %d\n", xy.points().size(), XYPoints);
    printRow("XY plot 500 x 400 px, 200,000 points as dots: one paint", paintMs(xy));
    xy.loadConfig(QJsonObject{{QStringLiteral("drawLines"), true}});
    printRow("XY plot 500 x 400 px, 200,000 points connected: one paint", paintMs(xy));
    return 0;
}
