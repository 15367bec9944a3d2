#include "SerialControls.h"

#include "LineSource.h"
#include "LivePipeline.h"
#include "MainToolBars.h"
#include "SerialManager.h"
#include "SourceAddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDebug>
#include <QKeyEvent>
#include <QLabel>
#include <QStatusBar>
#include <QTime>
#include <QToolButton>

SerialControls::SerialControls(LivePipeline *pipeline, MainToolBars *toolBars, QStatusBar *statusBar,
                               QObject *parent)
    : QObject(parent)
    , m_pipeline(pipeline)
    , m_serial(pipeline->serial())
    , m_toolBars(toolBars)
    , m_statusBar(statusBar)
    , m_portBox(toolBars->portBox)
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
    connect(m_serial, &SerialManager::sourceOpened, this, &SerialControls::updateButton);
    connect(m_serial, &SerialManager::overlongLineDropped, this, &SerialControls::onOverlongLine);
    connect(m_serial, &SerialManager::oversizedInputDropped, this, &SerialControls::onOversizedInput);
    connect(m_pipeline, &LivePipeline::sourceLost, this, &SerialControls::onSourceLost);
    connect(m_pipeline, &LivePipeline::reconnected, this, &SerialControls::onReconnected);
    connect(m_pipeline, &LivePipeline::sourceClosed, this, &SerialControls::portClosed);
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
    if (m_pipeline->isActive()) {
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
    settings.portName = portName.trimmed();
    settings.baudRate = baudRate;
    const bool opened = !settings.portName.isEmpty() && m_pipeline->open(settings);
    if (!opened) {
        qDebug() << "Not open";
        if (settings.portName.isEmpty())
            m_statusBar->showMessage(tr("Choose a serial port first."), 5000);
    } else {
        setStale(false);
    }
    updateButton();
    return opened;
}

void SerialControls::disconnectPort()
{
    m_pipeline->close();
    setStale(false);
    updateButton();
}

void SerialControls::onSerialError(const QString &message)
{
    // The system's texts ("Permission denied", "Connection refused") do not say which source.
    const QString name = m_serial->portName();
    const QString text = SourceAddress::schemeOf(name).isEmpty() ? tr("Serial port error on %1: %2")
                                                                 : tr("Error on %1: %2");
    m_statusBar->showMessage(text.arg(name, message), 10000);
    updateButton();
}

void SerialControls::onSourceLost(const QString &portName)
{
    setStale(true, portName);
    if (m_pipeline->isWaitingToReconnect())
        m_statusBar->showMessage(tr("Port %1 lost; it is opened again when it is back.").arg(portName));
    else
        m_statusBar->showMessage(tr("Port %1 lost.").arg(portName));
    updateButton();
    Q_EMIT portLost(portName);
}

// Checked after a loss, it waits for the source lost last; unchecked, it stops waiting.
void SerialControls::onReconnectToggled(bool on)
{
    m_pipeline->setReconnect(on);
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

void SerialControls::onOversizedInput(qint64 maxBytes, qint64 total)
{
    const QString unit = m_serial->source() ? m_serial->source()->inputUnitName() : QStringLiteral("input");
    m_statusBar->showMessage(tr("%1: %2 larger than %3 bytes dropped (%4 so far)")
                                 .arg(m_serial->portName(), unit)
                                 .arg(maxBytes)
                                 .arg(total),
                             10000);
}

void SerialControls::setStale(bool stale, const QString &portName)
{
    if (stale) {
        m_staleLabel->setToolTip(tr("%1 was lost at %2. The dashboard shows the last values it sent.")
                                     .arg(portName, QTime::currentTime().toString(Qt::ISODate)));
    }
    m_staleLabel->setVisible(stale);
}

void SerialControls::updateButton()
{
    const bool waiting = m_pipeline->isWaitingToReconnect();
    m_toolBars->setConnected(m_pipeline->isOpen() || m_pipeline->isOpening() || waiting);
    QString tip;
    if (waiting)
        tip = tr("Waiting for %1 to come back; click to stop waiting.").arg(m_pipeline->lostSourceName());
    else if (m_pipeline->isOpening())
        tip = tr("Connecting to %1; click to give up.").arg(m_serial->portName());
    m_toolBars->connectButton->setToolTip(tip);
}
