#pragma once

#include "LineEnding.h"

#include <QObject>
#include <QString>

// Where commands for the device go: what a command bar, a button or a
// setpoint on the dashboard talks to, without knowing the source behind it.
class CommandSink : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Sends one line of text, ended by ending. False with *error set to the
    // reason when it cannot go (no source open, a source that cannot write,
    // text holding a line break).
    virtual bool sendCommand(const QString &text, LineEnding ending, QString *error) = 0;
    // Whether a command could go now; when not, *reason (if given) says why.
    virtual bool canSendCommands(QString *reason = nullptr) const = 0;

    // What ends the commands of those who do not choose (buttons, setpoints):
    // the device's ending, as the command bar sets it.
    LineEnding commandEnding() const { return m_commandEnding; }
    void setCommandEnding(LineEnding ending) { m_commandEnding = ending; }

Q_SIGNALS:
    // canSendCommands() may answer differently now.
    void commandsAvailableChanged(bool available);
    // A command went to the device.
    void commandSent(const QString &text);

private:
    LineEnding m_commandEnding = LineEnding::Lf;
};
