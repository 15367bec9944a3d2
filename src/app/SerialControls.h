#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QComboBox;
class QStatusBar;
QT_END_NAMESPACE

class MainToolBars;
class SerialManager;

// The serial controls of the tool bar: the port list, the baud box and the
// connect button, kept in step with the serial link. Failures show in the
// status bar; the window stays usable whatever the port does.
class SerialControls : public QObject
{
    Q_OBJECT

public:
    SerialControls(SerialManager *serial, MainToolBars *toolBars, QStatusBar *statusBar, QObject *parent = nullptr);

    // Opens a port (any device path) at a baud rate, as the connect button does.
    bool connectPort(const QString &portName, int baudRate);
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

    SerialManager *m_serial = nullptr;
    MainToolBars *m_toolBars = nullptr;
    QStatusBar *m_statusBar = nullptr;
    // Only compared with, never dereferenced: see eventFilter().
    const QComboBox *m_portBox = nullptr;
};
