#pragma once

#include "ConsoleWidget.h"

/// Lists free-text messages, one line each: "[t] text".
class MessagesConsoleWidget : public ConsoleWidget
{
    Q_OBJECT

public:
    explicit MessagesConsoleWidget(QWidget *parent = nullptr);

    QString typeName() const override;

    void appendMessage(double tSec, const QString &text);

    static QString formatLine(double tSec, const QString &text);
};
