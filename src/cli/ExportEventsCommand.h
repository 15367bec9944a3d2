#pragma once

#include <QStringList>

// ombrix-cli export-events FILE.rec [--def FILE] -o OUT.csv: the states,
// errors and messages of a recording as CSV, byte for byte what the
// window's "Events" export writes. Display texts come from --def, else from
// the recording's companion definitions.
class ExportEventsCommand
{
public:
    static int run(const QStringList &args);
};
