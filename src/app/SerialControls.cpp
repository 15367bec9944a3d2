#include "SerialControls.h"

#include "MainToolBars.h"
#include "SerialManager.h"

#include <QComboBox>
#include <QDebug>
#include <QKeyEvent>
#include <QStatusBar>
#include <QToolButton>

SerialControls::SerialControls(SerialManager *serial, MainToolBars *toolBars, QStatusBar *statusBar, QObject *parent)
    : QObject(parent)
    , m_serial(serial)
    , m_toolBars(toolBars)
    , m_statusBar(statusBar)
    , m_portBox(toolBars->portBox)
{
    connect(m_toolBars->connectButton, &QToolButton::clicked, this, &SerialControls::onConnectClicked);
    connect(m_serial, &SerialManager::portsChanged, m_toolBars, &MainToolBars::setPorts);
    connect(m_serial, &SerialManager::errorOccurred, this, &SerialControls::onSerialError);
    connect(m_serial, &SerialManager::portLost, this, &SerialControls::onPortLost);
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
    if (m_serial->isOpen()) {
        disconnectPort();
        return;
    }
    connectPort(m_toolBars->portName(), m_toolBars->baudRate());
}

bool SerialControls::connectPort(const QString &portName, int baudRate)
{
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
    }
    m_toolBars->setConnected(opened);
    return opened;
}

void SerialControls::disconnectPort()
{
    const bool wasOpen = m_serial->isOpen();
    m_serial->close();
    m_toolBars->setConnected(false);
    if (wasOpen)
        Q_EMIT portClosed(m_serial->portName());
}

void SerialControls::onSerialError(const QString &message)
{
    // The port's own texts ("Permission denied") do not say which port.
    m_statusBar->showMessage(tr("Serial port error on %1: %2").arg(m_serial->portName(), message), 10000);
    if (!m_serial->isOpen()) {
        m_toolBars->setConnected(false);
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
    m_toolBars->setConnected(false);
    m_statusBar->showMessage(tr("Port %1 lost.").arg(portName));
    Q_EMIT portLost(portName);
}
