#pragma once

#include <QElapsedTimer>
#include <QtGlobal>

// Paces a stream of lines: how many are due now, and whether the run is over.
class LinePacer
{
public:
    // Lines built per burst at full speed.
    static constexpr int LinesPerChunk = 4096;

    // rate: lines per second (0: as fast as possible); duration: seconds and
    // count: lines, each negative for no limit.
    LinePacer(double rate, double duration, qint64 count);

    bool finished(qint64 linesSent) const;
    // Lines to produce now, given how many were produced so far: never more
    // than one chunk, so that a huge rate cannot build an endless burst, and
    // at most a second's worth when catching up after a stall.
    qint64 due(qint64 produced) const;
    // Milliseconds until the next line is due (at most 20).
    int waitMs() const;

private:
    double m_rate = 0.0;
    double m_duration = -1.0;
    qint64 m_count = -1;
    QElapsedTimer m_clock;
};
