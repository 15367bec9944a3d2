#pragma once

#include "ConsoleWidget.h"
#include "IErrorConsumer.h"

/**
 * Lists errors, one line each: "[t] id : description", or "[t] id" when the
 * description is empty (an error without a declared text shows its id alone).
 */
class ErrorConsoleWidget : public ConsoleWidget, public IErrorConsumer
{
    Q_OBJECT

public:
    explicit ErrorConsoleWidget(QWidget *parent = nullptr);

    QString typeName() const override;

    void appendError(double tSec, const QString &id, const QString &description) override;
    void clearErrors() override { clear(); }

    static QString formatLine(double tSec, const QString &id, const QString &description);
};
