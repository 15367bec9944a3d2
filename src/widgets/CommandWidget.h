#pragma once

#include "DashboardWidget.h"

#include <QMetaObject>

class CommandSink;
QT_BEGIN_NAMESPACE
class QLabel;
QT_END_NAMESPACE

// Base of the widgets that send commands to the device (buttons, setpoints).
// They act only while a source is open; otherwise they are disabled and say
// why in their status line. The window hands every one of them its command
// sink; a dashboard without a window (a rendered picture) has none.
class CommandWidget : public DashboardWidget
{
    Q_OBJECT

public:
    explicit CommandWidget(QWidget *parent = nullptr);
    ~CommandWidget() override;

    static CommandSink *commandSink();
    // Every command widget, present and future, sends through sink (or
    // nothing, for nullptr).
    static void setCommandSink(CommandSink *sink);

    // Whether the widget can send now; when not, *reason says why.
    bool canSend(QString *reason = nullptr) const;
    // What the status line shows: the reason it is disabled, the last refusal,
    // or nothing.
    QString statusText() const;

Q_SIGNALS:
    void commandFailed(const QString &reason);

protected:
    // Sends text with the sink's ending; a refusal goes to the status line.
    bool send(const QString &text);
    // Called when sending becomes possible or impossible.
    virtual void setSendingEnabled(bool enabled) = 0;
    // Follows the sink's availability from now on; subclasses call it last
    // in their constructor, once their controls exist.
    void attachSink();
    QLabel *statusLabel() const { return m_status; }

private:
    void updateAvailability();
    void showStatus(const QString &text);

    QLabel *m_status = nullptr;
    QMetaObject::Connection m_sinkConnection;
};
