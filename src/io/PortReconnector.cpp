#include "PortReconnector.h"

#include "DevicePaths.h"
#include "SerialManager.h"
#include "SourceAddress.h"

#include <QTimer>

PortReconnector::PortReconnector(SerialManager *serial, QObject *parent)
    : QObject(parent)
    , m_serial(serial)
    , m_timer(new QTimer(this))
{
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &PortReconnector::tryOpen);
    connect(m_serial, &SerialManager::sourceOpened, this, &PortReconnector::onOpened);
    connect(m_serial, &SerialManager::openFailed, this, &PortReconnector::onOpenFailed);
}

void PortReconnector::start(const SerialSettings &settings)
{
    m_settings = settings;
    m_polling = SourceAddress::schemeOf(settings.portName).isEmpty();
    m_delayMs = m_polling ? PollIntervalMs : FirstRetryMs;
    m_waiting = true;
    m_trying = false;
    m_timer->start(m_delayMs);
}

void PortReconnector::stop()
{
    m_waiting = false;
    m_trying = false;
    m_timer->stop();
}

bool PortReconnector::isWaiting() const
{
    return m_waiting;
}

int PortReconnector::nextTryMs() const
{
    return m_delayMs;
}

void PortReconnector::tryOpen()
{
    if (m_serial->isOpen() || m_serial->isOpening()) {
        stop(); // opened by hand meanwhile
        return;
    }
    // Opening a port that is not there yet would only report that it is not.
    if (m_polling && !DevicePaths::isPresent(m_settings.portName)) {
        m_timer->start(m_delayMs);
        return;
    }
    // A failure (a port present but not ready yet, a refused connection)
    // comes back through openFailed, at once or later.
    m_trying = true;
    m_serial->open(m_settings);
}

void PortReconnector::onOpened()
{
    if (!m_waiting)
        return;
    const bool ours = m_trying;
    stop(); // opened by hand meanwhile, when not ours
    if (ours)
        Q_EMIT reconnected(m_settings.portName);
}

void PortReconnector::onOpenFailed()
{
    if (m_waiting && m_trying)
        retryLater();
}

void PortReconnector::retryLater()
{
    m_trying = false;
    if (!m_waiting)
        return;
    if (!m_polling)
        m_delayMs = qMin(m_delayMs * 2, MaxRetryMs);
    m_timer->start(m_delayMs);
}
