#pragma once

#include "SerialSettings.h"

#include <QObject>
#include <QString>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

class SerialManager;

// Brings a lost source back with the settings it had. A serial port is
// looked for every PollIntervalMs and opened once its device file is there;
// a network source, which cannot be seen before it is tried, is tried again
// after a delay that doubles from FirstRetryMs up to MaxRetryMs, so that an
// address that stays away is not hammered. Waiting ends when the source
// opens, by whatever means, or on stop().
class PortReconnector : public QObject
{
    Q_OBJECT

public:
    static constexpr int PollIntervalMs = 500;
    static constexpr int FirstRetryMs = 500;
    static constexpr int MaxRetryMs = 10000;

    explicit PortReconnector(SerialManager *serial, QObject *parent = nullptr);

    // Starts waiting for the source of settings (replacing an earlier wait).
    void start(const SerialSettings &settings);
    void stop();
    bool isWaiting() const;
    QString portName() const { return m_settings.portName; }
    // Milliseconds until the next try.
    int nextTryMs() const;

Q_SIGNALS:
    // The source was opened again; emitted once per wait.
    void reconnected(const QString &portName);

private:
    void tryOpen();
    void onOpened();
    void onOpenFailed();
    void retryLater();

    SerialManager *m_serial = nullptr;
    QTimer *m_timer = nullptr;
    SerialSettings m_settings;
    int m_delayMs = FirstRetryMs;
    bool m_polling = false;  // a serial port: look for its device file
    bool m_waiting = false;
    bool m_trying = false;   // a connection attempt of ours is under way
};
