#pragma once

#include <QtGlobal>

// One stored value of a trend series. tMs is wall-clock milliseconds since
// the epoch when live, milliseconds of recording time during playback.
struct TrendSample
{
    qint64 tMs = 0;
    double value = 0.0;
};
