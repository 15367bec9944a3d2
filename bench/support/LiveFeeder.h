#pragma once

#include "DeviceSimulator.h"
#include "PseudoTerminal.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <thread>

class SignalDefinitions;

// Writes the simulated device's lines into a pseudo-terminal on a thread of
// its own, as fast as the reader takes them (rate 0) or at a fixed rate.
// With a probe name, each line also carries the time it was written, in µs
// of the monotonic clock (monotonicUs()), as that signal.
class LiveFeeder
{
public:
    explicit LiveFeeder(const SignalDefinitions &defs, const QByteArray &probeSignal = QByteArray());
    ~LiveFeeder();
    LiveFeeder(const LiveFeeder &) = delete;
    LiveFeeder &operator=(const LiveFeeder &) = delete;

    QString path() const { return m_terminal.slavePath(); }
    void start(double linesPerSecond);
    void stop();
    // Lines the terminal took since start().
    qint64 lines() const { return m_lines; }
    // CPU seconds the running feeder thread has used.
    double cpu() const;

    static qint64 monotonicUs();

private:
    void appendLine(QByteArray &out);
    void run();

    PseudoTerminal m_terminal;
    DeviceSimulator m_simulator;
    QByteArray m_probe;
    std::thread m_thread;
    std::atomic<bool> m_running{false};
    std::atomic<qint64> m_lines{0};
    double m_rate = 0.0;
};
