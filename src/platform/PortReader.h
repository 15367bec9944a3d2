#pragma once

#include <QtGlobal>

// Reads what an open serial port holds without waiting, past the port
// object's own buffering: a fast device leaves more than one chunk waiting
// per wake-up, and taking it all at once saves a trip through the event loop
// (and the system's poll of the terminal) per chunk.
namespace PortReader {

// Up to size bytes from the port's native handle into buffer: the count
// read, 0 when nothing waits (or the system has no such reading), -1 on an
// error, which the port object itself reports on its next read.
qint64 readWaiting(qintptr handle, char *buffer, qint64 size);

} // namespace PortReader
