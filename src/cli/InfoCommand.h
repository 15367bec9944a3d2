#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class Recording;

// ombrix-cli info FILE.rec: a summary of a recording on stdout, as an
// aligned text table: duration, frames, counts of states, errors and
// messages, and every signal with its number of samples, min and max.
class InfoCommand
{
public:
    struct SignalStats
    {
        QString name;
        qint64 samples = 0;
        double min = 0.0;
        double max = 0.0;
    };

    struct Summary
    {
        double duration = 0.0;
        int frames = 0;
        qint64 states = 0;
        qint64 errors = 0;
        qint64 messages = 0;
        QList<SignalStats> signalStats; // ascending by name
    };

    static int run(const QStringList &args);

    static Summary summarize(const Recording &recording);
    static QString format(const QString &path, const Summary &summary);
};
