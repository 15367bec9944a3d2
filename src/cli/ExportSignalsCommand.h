#pragma once

#include <QStringList>

// ombrix-cli export-signals FILE.rec [--signals A,B] [--rate HZ] [--mapped]
// [--def FILE] -o OUT.csv: recorded signal values as CSV, byte for byte what
// the window's "Signals" export writes for the same choices. Without
// --signals every signal of the recording is exported, ascending by name.
class ExportSignalsCommand
{
public:
    static int run(const QStringList &args);
};
