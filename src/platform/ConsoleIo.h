#pragma once

#include <QByteArray>

// Standard output and stop requests for command-line loops that run without
// an event loop (the simulated device streaming at full speed).
namespace ConsoleIo {

// Ctrl+C, a termination request or a closed terminal sets stopRequested();
// a blocked write or wait returns at once instead of resuming. A reader that
// goes away makes writes fail rather than ending the process.
void installStopHandlers();
bool stopRequested();

// Writes all of bytes to standard output, unchanged (no line-end
// translation); false when the reader went away or a stop was requested.
bool writeStdout(const QByteArray &bytes);

} // namespace ConsoleIo
