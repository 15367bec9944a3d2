#pragma once

#include "ConsoleWidget.h"

/**
 * Lists errors, one line each: "[t] id : description", or "[t] id" when the
 * description is empty (an error without a declared text shows its id alone).
 */
class ErrorConsoleWidget : public ConsoleWidget
{
    Q_OBJECT

public:
    explicit ErrorConsoleWidget(QWidget *parent = nullptr);

    QString typeName() const override;

    void appendError(double tSec, const QString &id, const QString &description);

    static QString formatLine(double tSec, const QString &id, const QString &description);
};
