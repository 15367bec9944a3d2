#pragma once

#include "ConsoleWidget.h"
#include "IMessageConsumer.h"

/// Lists free-text messages, one line each: "[t] text".
class MessagesConsoleWidget : public ConsoleWidget, public IMessageConsumer
{
    Q_OBJECT

public:
    explicit MessagesConsoleWidget(QWidget *parent = nullptr);

    QString typeName() const override;

    void appendMessage(double tSec, const QString &text) override;
    void clearMessages() override { clear(); }

    static QString formatLine(double tSec, const QString &text);
};
