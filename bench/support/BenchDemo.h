#pragma once

#include <QString>

// What the live benchmarks share: a copy of the demo project, waiting in the
// event loop, and the process's CPU and memory.
namespace BenchDemo {

// Copies examples/demo into folder; false on failure.
bool copyDemo(const QString &folder);
// Runs the event loop for ms milliseconds.
void runFor(int ms);
// User + system CPU seconds of the whole process.
double processCpuSeconds();
// Resident memory of the process in MB (VmRSS).
double residentMb();

} // namespace BenchDemo
