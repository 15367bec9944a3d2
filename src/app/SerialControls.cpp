#include "SerialControls.h"

#include "MainToolBars.h"
#include "PortReconnector.h"
#include "SerialManager.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDebug>
#include <QKeyEvent>
#include <QLabel>
#include <QStatusBar>
#include <QTime>
#include <QToolButton>

SerialControls::SerialControls(SerialManager *serial, MainToolBars *toolBars, QStatusBar *statusBar, QObject *parent)
    : QObject(parent)
    , m_serial(serial)
    , m_toolBars(toolBars)
    , m_statusBar(statusBar)
    , m_portBox(toolBars->portBox)
    , m_reconnector(new PortReconnector(serial, this))
    , m_staleLabel(new QLabel(tr("Port lost — values are stale"), statusBar))
{
    m_staleLabel->setObjectName(QStringLiteral("staleLabel"));
    // Dark on amber: the warning stands out without looking like an error of the dashboard.
    m_staleLabel->setStyleSheet(QStringLiteral("QLabel { background: #ffb300; color: #000000; padding: 1px 6px; }"));
    m_staleLabel->hide();
    m_statusBar->insertPermanentWidget(0, m_staleLabel);

    connect(m_toolBars->connectButton, &QToolButton::clicked, this, &SerialControls::onConnectClicked);
    connect(m_toolBars->reconnectBox, &QCheckBox::toggled, this, &SerialControls::onReconnectToggled);
    connect(m_serial, &SerialManager::portsChanged, m_toolBars, &MainToolBars::setPorts);
    connect(m_serial, &SerialManager::errorOccurred, this, &SerialControls::onSerialError);
    connect(m_serial, &SerialManager::portLost, this, &SerialControls::onPortLost);
    connect(m_serial, &SerialManager::overlongLineDropped, this, &SerialControls::onOverlongLine);
    connect(m_reconnector, &PortReconnector::reconnected, this, &SerialControls::onReconnected);
    // Devices come and go while the window is open: the list is read again
    // each time it is opened, not only at start.
    m_toolBars->portBox->installEventFilter(this);
}

bool SerialControls::eventFilter(QObject *watched, QEvent *event)
{
    // While the window is destroyed, the box still sends events after the
    // MainToolBars that held it is gone, so m_toolBars is not used here.
    if (watched == m_portBox) {
        bool opening = event->type() == QEvent::MouseButtonPress;
        if (event->type() == QEvent::KeyPress) {
            const auto *key = static_cast<QKeyEvent *>(event);
            opening = key->key() == Qt::Key_F4 || (key->key() == Qt::Key_Down && key->modifiers() & Qt::AltModifier);
        }
        if (opening)
            m_serial->refreshPorts();
    }
    return QObject::eventFilter(watched, event);
}

void SerialControls::onConnectClicked()
{
    qDebug() << "Connect clicked";
    if (m_serial->isOpen() || m_reconnector->isWaiting()) {
        disconnectPort();
        return;
    }
    connectPort(m_toolBars->portName(), m_toolBars->baudRate());
}

bool SerialControls::connectPort(const QString &portName, int baudRate)
{
    m_reconnector->stop(); // the user's choice replaces the lost port
    m_toolBars->setPortName(portName);
    m_toolBars->setBaudRate(baudRate);
    SerialSettings settings;
    settings.portName = portName;
    settings.baudRate = baudRate;
    const bool opened = !portName.isEmpty() && m_serial->open(settings);
    if (!opened) {
        qDebug() << "Not open";
        if (portName.isEmpty())
            m_statusBar->showMessage(tr("Choose a serial port first."), 5000);
    } else {
        setStale(false);
    }
    updateButton();
    return opened;
}

void SerialControls::disconnectPort()
{
    const bool wasOpen = m_serial->isOpen();
    m_reconnector->stop();
    m_serial->close();
    setStale(false);
    updateButton();
    if (wasOpen)
        Q_EMIT portClosed(m_serial->portName());
}

void SerialControls::onSerialError(const QString &message)
{
    // The port's own texts ("Permission denied") do not say which port.
    m_statusBar->showMessage(tr("Serial port error on %1: %2").arg(m_serial->portName(), message), 10000);
    if (!m_serial->isOpen()) {
        updateButton();
        return;
    }
    // The port is only read: any error while open means the stream is broken
    // (a hung-up device may report a read error rather than a resource error).
    const QString name = m_serial->portName();
    m_serial->close();
    onPortLost(name);
}

void SerialControls::onPortLost(const QString &portName)
{
    setStale(true, portName);
    if (m_toolBars->reconnectBox->isChecked()) {
        m_reconnector->start(m_serial->settings());
        m_statusBar->showMessage(tr("Port %1 lost; it is opened again when it is back.").arg(portName));
    } else {
        m_statusBar->showMessage(tr("Port %1 lost.").arg(portName));
    }
    updateButton();
    Q_EMIT portLost(portName);
}

// Checked after a loss, it waits for the port lost last; unchecked, it stops waiting.
void SerialControls::onReconnectToggled(bool on)
{
    if (!on)
        m_reconnector->stop();
    else if (m_stale && !m_serial->isOpen())
        m_reconnector->start(m_serial->settings());
    updateButton();
}

void SerialControls::onReconnected(const QString &portName)
{
    setStale(false);
    updateButton();
    m_statusBar->showMessage(tr("Port %1 is back and open again.").arg(portName), 5000);
}

void SerialControls::onOverlongLine(double, qint64 maxBytes)
{
    m_statusBar->showMessage(tr("Port %1: line longer than %2 bytes dropped").arg(m_serial->portName()).arg(maxBytes),
                             10000);
}

void SerialControls::setStale(bool stale, const QString &portName)
{
    m_stale = stale;
    if (stale) {
        m_staleLabel->setToolTip(tr("%1 was lost at %2. The dashboard shows the last values it sent.")
                                     .arg(portName, QTime::currentTime().toString(Qt::ISODate)));
    }
    m_staleLabel->setVisible(stale);
}

void SerialControls::updateButton()
{
    const bool waiting = m_reconnector->isWaiting();
    m_toolBars->setConnected(m_serial->isOpen() || waiting);
    m_toolBars->connectButton->setToolTip(
        waiting ? tr("Waiting for %1 to come back; click to stop waiting.").arg(m_reconnector->portName()) : QString());
}
