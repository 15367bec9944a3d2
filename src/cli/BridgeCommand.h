#pragma once

#include <QStringList>

// ombrix-cli bridge --port SOURCE --to mqtt://HOST[:PORT]/TOPIC [--queue N]:
// forwards every line of a source (a serial port, tcp://, udp://, sim:) to
// an MQTT topic and writes every message on the command topic (?cmd=TOPIC,
// else TOPIC/cmd) to the device, until SIGINT or SIGTERM. Both sides are
// opened again when they go away; while the broker is away, up to N lines
// wait (see MqttBridge).
//
// Exit codes: 0 after a clean stop, 1 when the source or the broker cannot
// be reached at the start, 2 for bad arguments.
class BridgeCommand
{
public:
    static int run(const QStringList &args);

    // How long a stop waits for the broker to take what is queued.
    static constexpr int StopTimeoutMs = 5000;
};
