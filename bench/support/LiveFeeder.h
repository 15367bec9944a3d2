#pragma once

#include "DeviceSimulator.h"
#include "PseudoTerminal.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <thread>

class SignalDefinitions;

// Writes the simulated device's lines on a thread of its own, as fast as the
// reader takes them (rate 0) or at a fixed rate: into a pseudo-terminal, to
// the one TCP client of a listening socket on 127.0.0.1, or as datagrams of
// whole lines to a UDP port on 127.0.0.1.
// With a probe name, each line also carries the time it was written, in µs
// of the monotonic clock (monotonicUs()), as that signal.
class LiveFeeder
{
public:
    enum class Transport { PseudoTerminal, Tcp, Udp };

    explicit LiveFeeder(const SignalDefinitions &defs, const QByteArray &probeSignal = QByteArray(),
                        Transport transport = Transport::PseudoTerminal);
    ~LiveFeeder();
    LiveFeeder(const LiveFeeder &) = delete;
    LiveFeeder &operator=(const LiveFeeder &) = delete;

    QString path() const { return m_terminal.slavePath(); }
    // The source a reader opens: "tcp://127.0.0.1:PORT" (start() takes the
    // next client to connect), "udp://127.0.0.1:PORT" (where datagrams go).
    QString address() const;
    quint16 port() const { return m_port; }
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
    void openSocket();
    bool acceptClient();
    bool writeSome(QByteArray &pending);
    void waitWritable(int ms);
    void closeClient();

    PseudoTerminal m_terminal;
    DeviceSimulator m_simulator;
    QByteArray m_probe;
    std::thread m_thread;
    std::atomic<bool> m_running{false};
    std::atomic<qint64> m_lines{0};
    double m_rate = 0.0;
    Transport m_transport;
    int m_socket = -1; // listening (TCP) or sending (UDP)
    int m_client = -1; // the accepted TCP client
    quint16 m_port = 0;
};
