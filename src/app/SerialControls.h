#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QComboBox;
class QLabel;
class QStatusBar;
QT_END_NAMESPACE

class MainToolBars;
class PortReconnector;
class SerialManager;

// The serial controls of the tool bar: the port list, the baud box, the
// connect button and the "Reconnect" check box, kept in step with the serial
// link. Failures show in the status bar; the window stays usable whatever
// the port does.
//
// A lost port leaves the last values on the dashboard: a permanent label in
// the status bar says they are stale until the port opens again or the user
// disconnects. With "Reconnect" checked the lost port is opened again once
// its device is back; meanwhile the button offers "Disconnect", which stops
// waiting.
class SerialControls : public QObject
{
    Q_OBJECT

public:
    SerialControls(SerialManager *serial, MainToolBars *toolBars, QStatusBar *statusBar, QObject *parent = nullptr);

    // Opens a port (any device path) at a baud rate, as the connect button does.
    bool connectPort(const QString &portName, int baudRate);
    // Closes the port, or stops waiting for a lost one to come back.
    void disconnectPort();

Q_SIGNALS:
    // The open port went away and was closed.
    void portLost(const QString &portName);
    // The port was closed on request (the Disconnect button).
    void portClosed(const QString &portName);

protected:
    // Refills the port list when the user opens it.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void onConnectClicked();
    void onSerialError(const QString &message);
    void onPortLost(const QString &portName);
    void onReconnectToggled(bool on);
    void onReconnected(const QString &portName);
    void onOverlongLine(double timestamp, qint64 maxBytes);
    void setStale(bool stale, const QString &portName = QString());
    void updateButton();

    SerialManager *m_serial = nullptr;
    MainToolBars *m_toolBars = nullptr;
    QStatusBar *m_statusBar = nullptr;
    // Only compared with, never dereferenced: see eventFilter().
    const QComboBox *m_portBox = nullptr;
    PortReconnector *m_reconnector = nullptr;
    QLabel *m_staleLabel = nullptr;
    bool m_stale = false; // the port was lost and nothing has replaced it
};
