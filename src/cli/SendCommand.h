#pragma once

#include <QStringList>

// ombrix-cli send --port SOURCE [--ending lf|crlf|cr|none] TEXT...: sends
// one line per TEXT to the device through the same source a recording would
// read (a serial port, tcp://, udp:// answering the last sender or
// ?reply=HOST:PORT, sim:) and exits once everything has been handed over.
//
// Exit codes: 0 when every line was written, 1 when the source cannot be
// opened or a line cannot be written (naming the source and the reason),
// 2 for bad arguments.
class SendCommand
{
public:
    static int run(const QStringList &args);

    // How long written lines may take to leave before the command gives up.
    static constexpr int WriteTimeoutMs = 10000;
    // How long the source stays open once everything left, so that a device
    // that streams does not see the connection reset under its commands.
    static constexpr int SettleMs = 100;
};
