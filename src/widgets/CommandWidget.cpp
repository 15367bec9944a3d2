#include "CommandWidget.h"

#include "CommandSink.h"

#include <QLabel>
#include <QList>
#include <QPointer>

namespace {

QPointer<CommandSink> s_sink;
QList<CommandWidget *> s_widgets;

} // namespace

CommandWidget::CommandWidget(QWidget *parent)
    : DashboardWidget(parent)
    , m_status(new QLabel(this))
{
    m_status->setObjectName(QStringLiteral("commandStatus"));
    m_status->setAlignment(Qt::AlignCenter);
    m_status->setWordWrap(true);
    QFont small = m_status->font();
    small.setPointSize(8);
    m_status->setFont(small);
    m_status->setStyleSheet(QStringLiteral("color: #6b6b6b;"));
    s_widgets.append(this);
}

CommandWidget::~CommandWidget()
{
    s_widgets.removeOne(this);
}

CommandSink *CommandWidget::commandSink()
{
    return s_sink;
}

void CommandWidget::setCommandSink(CommandSink *sink)
{
    s_sink = sink;
    for (CommandWidget *widget : std::as_const(s_widgets))
        widget->attachSink();
}

bool CommandWidget::canSend(QString *reason) const
{
    if (!s_sink) {
        if (reason)
            *reason = tr("no source is open");
        return false;
    }
    return s_sink->canSendCommands(reason);
}

QString CommandWidget::statusText() const
{
    return m_status->text();
}

bool CommandWidget::send(const QString &text)
{
    QString error;
    bool sent = false;
    if (s_sink)
        sent = s_sink->sendCommand(text, s_sink->commandEnding(), &error);
    else
        canSend(&error); // says why nothing can go
    if (sent) {
        showStatus(QString());
        return true;
    }
    showStatus(tr("Not sent: %1").arg(error));
    Q_EMIT commandFailed(error);
    return false;
}

void CommandWidget::attachSink()
{
    disconnect(m_sinkConnection);
    if (s_sink) {
        m_sinkConnection = connect(s_sink.data(), &CommandSink::commandsAvailableChanged, this,
                                   &CommandWidget::updateAvailability);
    }
    updateAvailability();
}

void CommandWidget::updateAvailability()
{
    QString reason;
    const bool available = canSend(&reason);
    setSendingEnabled(available);
    showStatus(available ? QString() : tr("Disabled: %1").arg(reason));
}

void CommandWidget::showStatus(const QString &text)
{
    m_status->setText(text);
    m_status->setToolTip(text);
    m_status->setVisible(!text.isEmpty());
}
