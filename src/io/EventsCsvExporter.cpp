#include "EventsCsvExporter.h"

#include "CsvFileWriter.h"
#include "SignalDefinitions.h"

namespace {

QString stateDisplay(const SignalDefinitions *defs, const QString &group, const QString &state)
{
    if (!defs)
        return {};
    const auto def = defs->stateFor(group, state);
    return def ? def->label : QString();
}

QString errorDisplay(const SignalDefinitions *defs, const QString &id)
{
    if (!defs)
        return {};
    const auto def = defs->errorFor(id);
    return def ? def->text : QString();
}

} // namespace

QString EventsCsvExporter::quoted(const QString &field)
{
    QString out = field;
    out.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') % out % QLatin1Char('"');
}

void EventsCsvExporter::appendRows(QString &out, const PlaybackFrame &frame, const SignalDefinitions *defs)
{
    if (frame.states.isEmpty() && frame.errors.isEmpty() && frame.messages.isEmpty())
        return;
    const QString time = QString::number(frame.t, 'f', 6);
    for (const auto &state : frame.states) {
        out += time % QLatin1String(",STATE,") % quoted(state.first) % QLatin1Char(',')
            % quoted(state.second) % QLatin1Char(',')
            % quoted(stateDisplay(defs, state.first, state.second)) % QLatin1Char('\n');
    }
    for (const QString &id : frame.errors) {
        out += time % QLatin1String(",ERROR,") % quoted(id) % QLatin1String(",,")
            % quoted(errorDisplay(defs, id)) % QLatin1Char('\n');
    }
    for (const QString &text : frame.messages)
        out += time % QLatin1String(",MESSAGE,,") % quoted(text) % QLatin1String(",\n");
}

bool EventsCsvExporter::exportTo(const QString &path, const Recording &recording,
                                 const SignalDefinitions *defs, const Progress &progress,
                                 QString *error)
{
    CsvFileWriter writer(path, progress);
    if (!writer.open(error))
        return false;
    QString chunk = header();
    const int count = recording.frameCount();
    for (int i = 0; i < count; ++i) {
        appendRows(chunk, recording.frameAt(i), defs);
        if (!writer.flushChunk(chunk, i + 1, count, error))
            return false;
    }
    return writer.commit(chunk, count, error);
}
