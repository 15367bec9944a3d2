#include "ErrorConsoleWidget.h"

ErrorConsoleWidget::ErrorConsoleWidget(QWidget *parent)
    : ConsoleWidget(parent)
{
}

QString ErrorConsoleWidget::typeName() const
{
    return QStringLiteral("ErrorConsole");
}

void ErrorConsoleWidget::appendError(double tSec, const QString &id, const QString &description)
{
    appendLine(formatLine(tSec, id, description));
}

QString ErrorConsoleWidget::formatLine(double tSec, const QString &id, const QString &description)
{
    if (description.isEmpty())
        return timeStamp(tSec) + QLatin1Char(' ') + id;
    return timeStamp(tSec) + QLatin1Char(' ') + id + QLatin1String(" : ") + description;
}
