#include "PortReconnector.h"

#include "DevicePaths.h"
#include "SerialManager.h"

#include <QTimer>

PortReconnector::PortReconnector(SerialManager *serial, QObject *parent)
    : QObject(parent)
    , m_serial(serial)
    , m_poll(new QTimer(this))
{
    m_poll->setInterval(PollIntervalMs);
    connect(m_poll, &QTimer::timeout, this, &PortReconnector::poll);
}

void PortReconnector::start(const SerialSettings &settings)
{
    m_settings = settings;
    m_poll->start();
}

void PortReconnector::stop()
{
    m_poll->stop();
}

bool PortReconnector::isWaiting() const
{
    return m_poll->isActive();
}

void PortReconnector::poll()
{
    if (m_serial->isOpen()) {
        stop(); // opened by hand meanwhile
        return;
    }
    // Opening a port that is not there yet would only report that it is not.
    if (!DevicePaths::isPresent(m_settings.portName))
        return;
    if (!m_serial->open(m_settings))
        return; // present but not ready (permissions still being set): try again
    stop();
    Q_EMIT reconnected(m_settings.portName);
}
