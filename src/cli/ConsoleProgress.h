#pragma once

#include "Recording.h"

#include <QElapsedTimer>
#include <QString>

// A progress line on stderr ("\rLoading 42%") for long work of the command
// line tool. It appears only once the work has run for longer than half a
// second, and the callback cancels the work after SIGINT or SIGTERM when a
// TerminationNotifier is installed.
class ConsoleProgress
{
public:
    explicit ConsoleProgress(const QString &label);
    ~ConsoleProgress();
    ConsoleProgress(const ConsoleProgress &) = delete;
    ConsoleProgress &operator=(const ConsoleProgress &) = delete;

    // Valid as long as this object lives.
    Recording::Progress callback();
    bool update(qint64 done, qint64 total);
    // Ends the progress line, if one was printed.
    void finish();

    static constexpr int ShowAfterMs = 500;

private:
    QString m_label;
    QElapsedTimer m_clock;
    int m_shownPercent = -1;
};
