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

void EventsCsvExporter::appendRows(QString &out, const Recording &recording, int frame, EventCursors &at,
                                   const SignalDefinitions *defs)
{
    const auto &states = recording.stateEntries();
    const auto &errors = recording.errorEntries();
    const auto &messages = recording.messageEntries();
    const auto inFrame = [frame](const auto &entries, int i) { return i < entries.size() && entries.at(i).frame == frame; };
    if (!inFrame(states, at.state) && !inFrame(errors, at.error) && !inFrame(messages, at.message))
        return;
    const QStringList &words = recording.words();
    const QString time = QString::number(recording.timeAt(frame), 'f', 6);
    for (; inFrame(states, at.state); ++at.state) {
        const QString &group = words.at(states.at(at.state).group);
        const QString &state = words.at(states.at(at.state).state);
        out += time % QLatin1String(",STATE,") % quoted(group) % QLatin1Char(',') % quoted(state)
            % QLatin1Char(',') % quoted(stateDisplay(defs, group, state)) % QLatin1Char('\n');
    }
    for (; inFrame(errors, at.error); ++at.error) {
        const QString &id = words.at(errors.at(at.error).id);
        out += time % QLatin1String(",ERROR,") % quoted(id) % QLatin1String(",,")
            % quoted(errorDisplay(defs, id)) % QLatin1Char('\n');
    }
    for (; inFrame(messages, at.message); ++at.message) {
        out += time % QLatin1String(",MESSAGE,,") % quoted(recording.messages().at(messages.at(at.message).id))
            % QLatin1String(",\n");
    }
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
    // The event lists are sorted by frame: one pass, no frame (or its values) rebuilt.
    EventCursors at;
    for (int i = 0; i < count; ++i) {
        appendRows(chunk, recording, i, at, defs);
        if (!writer.flushChunk(chunk, i + 1, count, error))
            return false;
    }
    return writer.commit(chunk, count, error);
}
