#include "InfoCommand.h"

#include "CliCommand.h"
#include "Recording.h"
#include "TerminationNotifier.h"

#include <QMap>
#include <QTextStream>

#include <algorithm>
#include <cstdio>

namespace {

QString number(double value)
{
    return QString::number(value, 'g', 12);
}

// Rows of cells, first column left-aligned, the others right-aligned.
QString alignedTable(const QList<QStringList> &rows)
{
    QList<qsizetype> widths;
    for (const QStringList &row : rows) {
        for (qsizetype c = 0; c < row.size(); ++c) {
            if (widths.size() <= c)
                widths.append(0);
            widths[c] = std::max(widths[c], row.at(c).size());
        }
    }
    QString out;
    for (const QStringList &row : rows) {
        QString line;
        for (qsizetype c = 0; c < row.size(); ++c) {
            if (c == 0)
                line += row.at(c).leftJustified(widths[c]);
            else
                line += QLatin1String("  ") % row.at(c).rightJustified(widths[c]);
        }
        out += line.trimmed() % QLatin1Char('\n');
    }
    return out;
}

} // namespace

InfoCommand::Summary InfoCommand::summarize(const Recording &recording)
{
    Summary summary;
    summary.frames = recording.frameCount();
    summary.duration = recording.duration();
    QMap<QString, SignalStats> stats;
    for (int i = 0; i < summary.frames; ++i) {
        const PlaybackFrame frame = recording.frameAt(i);
        summary.states += frame.states.size();
        summary.errors += frame.errors.size();
        summary.messages += frame.messages.size();
        for (auto it = frame.values.cbegin(); it != frame.values.cend(); ++it) {
            SignalStats &s = stats[it.key()];
            if (s.samples == 0) {
                s.name = it.key();
                s.min = s.max = it.value();
            } else {
                s.min = std::min(s.min, it.value());
                s.max = std::max(s.max, it.value());
            }
            ++s.samples;
        }
    }
    summary.signalStats = stats.values();
    return summary;
}

QString InfoCommand::format(const QString &path, const Summary &summary)
{
    const QList<QStringList> overview = {
        {QStringLiteral("File:"), path},
        {QStringLiteral("Duration:"), QString::number(summary.duration, 'f', 6) % QLatin1String(" s")},
        {QStringLiteral("Frames:"), QString::number(summary.frames)},
        {QStringLiteral("Signals:"), QString::number(summary.signalStats.size())},
        {QStringLiteral("States:"), QString::number(summary.states)},
        {QStringLiteral("Errors:"), QString::number(summary.errors)},
        {QStringLiteral("Messages:"), QString::number(summary.messages)},
    };
    QString out;
    for (const QStringList &row : overview)
        out += row.at(0).leftJustified(10) % row.at(1) % QLatin1Char('\n');
    if (summary.signalStats.isEmpty())
        return out;

    QList<QStringList> table = {
        {QStringLiteral("Signal"), QStringLiteral("Samples"), QStringLiteral("Min"), QStringLiteral("Max")}};
    for (const SignalStats &s : summary.signalStats)
        table.append({s.name, QString::number(s.samples), number(s.min), number(s.max)});
    return out % QLatin1Char('\n') % alignedTable(table);
}

int InfoCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("info"), QStringLiteral("FILE.rec"),
                   QStringLiteral("Summarise a recording: duration, frames, signals with their "
                                  "min and max, and counts of states, errors and messages."));
    cli.parser().addPositionalArgument(QStringLiteral("FILE.rec"), QStringLiteral("The recording (.rec)."));
    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({QStringLiteral("FILE.rec")}, &positionals))
        return cli.exitCode();

    TerminationNotifier termination;
    Recording recording;
    if (!cli.loadRecording(recording, positionals.at(0)))
        return cli.exitCode();
    QTextStream(stdout) << format(positionals.at(0), summarize(recording));
    return 0;
}
