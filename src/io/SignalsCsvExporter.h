#pragma once

#include "Recording.h"

#include <QString>
#include <QStringList>

class SignalDefinitions;

// What a signals export writes: which columns, at which instants, in which units.
struct SignalsExportOptions
{
    QStringList signalNames;     // the columns after "time", in this order
    double rateHz = 0.0;         // 0: the recorded times; R > 0: t = i / R up to the duration
    bool applyMappings = false;  // physical = raw * scale + offset where a mapping exists
};

// Writes recorded signal values as CSV:
//
//   time,RPM,TEMP
//   0.000000,3000,
//   0.100000,3010,71.2
//
// With rate 0 there is one row per recorded time at which a chosen signal
// is set; with a rate R one row per instant i / R (i = 0, 1, ...) up to and
// including the recording's duration. Each cell holds the signal's latest
// value at or before the row's time, empty before its first value. Times
// have six decimals, values twelve significant digits.
class SignalsCsvExporter
{
public:
    // Called every few thousand rows with (rows done, row count); return
    // false to cancel.
    using Progress = Recording::Progress;

    // Written atomically like the events export: complete or not at all.
    // False with *error set on failure, cancellation, or an empty choice of
    // signals or a negative or non-finite rate.
    static bool exportTo(const QString &path, const Recording &recording,
                         const SignalDefinitions *defs, const SignalsExportOptions &options,
                         const Progress &progress = {}, QString *error = nullptr);

    // "time," and the names, each quoted only when it needs to be.
    static QString header(const QStringList &signalNames);
    // The number of rows a rate R > 0 yields for a recording of that duration.
    static qint64 sampleCount(double duration, double rateHz);
};
