#pragma once

#include "Recording.h"

#include <QString>

class SignalDefinitions;

// Writes every state change, error and message of a recording as CSV, one
// row per event in recording order; within a frame states come first, then
// errors, then messages:
//
//   time,type,key,value,display
//   1.500000,STATE,"MODE","RUN","Running"
//   1.500000,ERROR,"E_HOT",,"Overheated"
//   2.000000,MESSAGE,,"boot ""ok""",
//
// The display column holds the state's label or the error's text from the
// catalogue; it stays empty for an event the catalogue does not declare (or
// declares with an empty text), and when no catalogue is given.
class EventsCsvExporter
{
public:
    // Called every few thousand frames with (frames done, frame count);
    // return false to cancel.
    using Progress = Recording::Progress;

    // Writes the file atomically: it appears complete or not at all, and an
    // existing file of that name is only replaced by a finished export.
    // On failure or cancellation returns false and sets *error.
    static bool exportTo(const QString &path, const Recording &recording,
                         const SignalDefinitions *defs, const Progress &progress = {},
                         QString *error = nullptr);

    static QString header() { return QStringLiteral("time,type,key,value,display\n"); }
    // The field with every double quote doubled, wrapped in double quotes.
    static QString quoted(const QString &field);

private:
    // The next state, error and message entry of the recording to write.
    struct EventCursors
    {
        int state = 0;
        int error = 0;
        int message = 0;
    };
    // The rows of one frame, states first, then errors, then messages.
    static void appendRows(QString &out, const Recording &recording, int frame, EventCursors &at,
                           const SignalDefinitions *defs);
};
