#pragma once

#include "CommandSink.h"
#include "SerialSettings.h"

#include <QString>

class PortReconnector;
class RecordingWriter;
class SerialManager;

// The live path from a device, shared by the window and ombrix-cli: the
// source a name picks (SerialManager), the recording of what it sends
// (RecordingWriter, fed every state, error, value set and message in the
// order the line carried them), commands back to the device (written into
// the recording as messages starting with "> "), and bringing a lost source
// back when asked to.
//
// Whoever owns it reads the parsed lines from serial() (to show them) and
// starts and stops recordings on recorder(); it decides what a lost source
// means for a recording running then.
class LivePipeline : public CommandSink
{
    Q_OBJECT

public:
    explicit LivePipeline(QObject *parent = nullptr);

    SerialManager *serial() const { return m_serial; }
    RecordingWriter *recorder() const { return m_recorder; }
    PortReconnector *reconnector() const { return m_reconnector; }

    // The project's definitions, which a simulated device ("sim:") speaks.
    void setDefinitionsPath(const QString &path);

    // Opens the source settings.portName names (see SerialManager::open()),
    // ending a wait for a lost one.
    bool open(const SerialSettings &settings);
    // Closes the source, or ends the wait for a lost one.
    void close();
    bool isOpen() const;
    bool isOpening() const;

    // On: a source that is lost is opened again once it is back (see
    // PortReconnector); turned on after a loss, it waits for the source lost
    // last. Off: a lost source stays closed, and a wait ends.
    void setReconnect(bool on);
    bool reconnect() const { return m_reconnect; }
    bool isWaitingToReconnect() const;
    // Open, connecting or waiting to reconnect: what Disconnect would end.
    bool isActive() const { return isOpen() || isOpening() || isWaitingToReconnect(); }
    // The source waited for, or lost last.
    QString lostSourceName() const;

    bool sendCommand(const QString &text, LineEnding ending, QString *error) override;
    bool canSendCommands(QString *reason = nullptr) const override;

    // Prefixed to a command in the recording.
    static inline const QString CommandPrefix = QStringLiteral("> ");

Q_SIGNALS:
    // The open source went away and was closed; reason says how. Waiting to
    // reconnect has started when reconnect() is on.
    void sourceLost(const QString &name, const QString &reason);
    // close() closed an open source or ended a connection attempt.
    void sourceClosed(const QString &name);
    // A lost source is open again.
    void reconnected(const QString &name);

private:
    void onLost(const QString &name, const QString &reason);
    void onReconnected(const QString &name);
    void updateAvailability();

    SerialManager *m_serial = nullptr;
    RecordingWriter *m_recorder = nullptr;
    PortReconnector *m_reconnector = nullptr;
    SerialSettings m_lost; // portName empty while no loss stands
    bool m_reconnect = false;
    bool m_available = false;
};
