#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QComboBox;
class QLabel;
class QStatusBar;
QT_END_NAMESPACE

class LivePipeline;
class MainToolBars;
class SerialManager;

// The source controls of the tool bar: the port box (the serial ports the
// system reports; any device path or network source can be typed in), the
// baud box, the connect button and the "Reconnect" check box, kept in step
// with the live pipeline. Failures show in the status bar, naming the
// source; the window stays usable whatever the source does.
//
// A lost source leaves the last values on the dashboard: a permanent label
// in the status bar says they are stale until the source opens again or the
// user disconnects. With "Reconnect" checked the lost source is opened again
// once it is back; meanwhile the button offers "Disconnect", which stops
// waiting.
class SerialControls : public QObject
{
    Q_OBJECT

public:
    SerialControls(LivePipeline *pipeline, MainToolBars *toolBars, QStatusBar *statusBar, QObject *parent = nullptr);

    // Opens a source (a serial port by any device path, at a baud rate, or a
    // network or simulated source) as the connect button does. A network
    // source may still be connecting on return.
    bool connectPort(const QString &portName, int baudRate);
    // Closes the source, or stops waiting for a lost one to come back.
    void disconnectPort();

Q_SIGNALS:
    // The open source went away and was closed.
    void portLost(const QString &portName);
    // The source was closed on request (the Disconnect button).
    void portClosed(const QString &portName);

protected:
    // Refills the port list when the user opens it.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void onConnectClicked();
    void onSerialError(const QString &message);
    void onSourceLost(const QString &portName);
    void onReconnectToggled(bool on);
    void onReconnected(const QString &portName);
    void onOverlongLine(double timestamp, qint64 maxBytes);
    void onOversizedInput(qint64 maxBytes, qint64 total);
    void setStale(bool stale, const QString &portName = QString());
    void updateButton();

    LivePipeline *m_pipeline = nullptr;
    SerialManager *m_serial = nullptr;
    MainToolBars *m_toolBars = nullptr;
    QStatusBar *m_statusBar = nullptr;
    // Only compared with, never dereferenced: see eventFilter().
    const QComboBox *m_portBox = nullptr;
    QLabel *m_staleLabel = nullptr;
};
