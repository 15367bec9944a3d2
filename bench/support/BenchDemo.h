#pragma once

#include <QString>

// What the live benchmarks share: a copy of the demo project, waiting in the
// event loop, and the process's CPU and memory.
namespace BenchDemo {

// Copies examples/demo into folder; false on failure.
bool copyDemo(const QString &folder);
// Before the application is made: the offscreen platform unless another is
// asked for, and Qt's test locations instead of the user's settings.
void useOffscreenTestMode();
// Runs the event loop for ms milliseconds.
void runFor(int ms);
// User + system CPU seconds of the whole process.
double processCpuSeconds();
// Resident memory of the process in MB (VmRSS).
double residentMb();

} // namespace BenchDemo
