#pragma once

#include "SerialSettings.h"

#include <QObject>
#include <QString>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

class SerialManager;

// Brings a lost port back: while waiting, looks every PollIntervalMs for the
// port's device file and, once it is there, opens the port with the settings
// it had. Waiting ends when the port opens, by whatever means, or on stop().
class PortReconnector : public QObject
{
    Q_OBJECT

public:
    static constexpr int PollIntervalMs = 500;

    explicit PortReconnector(SerialManager *serial, QObject *parent = nullptr);

    // Starts waiting for the port of settings (replacing an earlier wait).
    void start(const SerialSettings &settings);
    void stop();
    bool isWaiting() const;
    QString portName() const { return m_settings.portName; }

Q_SIGNALS:
    // The port was opened again; emitted once per wait.
    void reconnected(const QString &portName);

private:
    void poll();

    SerialManager *m_serial = nullptr;
    QTimer *m_poll = nullptr;
    SerialSettings m_settings;
};
