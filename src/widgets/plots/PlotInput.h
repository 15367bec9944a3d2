#pragma once

#include <QString>

// What the plots share about their input: names and clocks.
namespace PlotInput {

/// The part of a name that values are routed by, cut at the first colon
/// and trimmed: "SPEED :rpm" -> "SPEED".
QString routedName(const QString &name);
/// Whole milliseconds of a time in seconds, truncated toward zero; the
/// binary representation of a decimal time (4.35 s is 4.34999...) does not
/// cost a millisecond.
qint64 msFromSeconds(double seconds);
qint64 wallClockMs();

} // namespace PlotInput
