#include "MessagesConsoleWidget.h"

MessagesConsoleWidget::MessagesConsoleWidget(QWidget *parent)
    : ConsoleWidget(parent)
{
}

QString MessagesConsoleWidget::typeName() const
{
    return QStringLiteral("MessagesConsole");
}

void MessagesConsoleWidget::appendMessage(double tSec, const QString &text)
{
    appendLine(formatLine(tSec, text));
}

QString MessagesConsoleWidget::formatLine(double tSec, const QString &text)
{
    return timeStamp(tSec) + QLatin1Char(' ') + text;
}
