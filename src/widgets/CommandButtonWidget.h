#pragma once

#include "CommandWidget.h"

#include <QColor>
#include <QPointer>

QT_BEGIN_NAMESPACE
class QComboBox;
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE

/**
 * A button that sends one command to the device, after an optional
 * confirmation question.
 *
 * Config keys: "caption", "command", "confirm" (the question; empty asks
 * nothing) and "color" (a name from colorNames()).
 */
class CommandButtonWidget : public CommandWidget
{
    Q_OBJECT

public:
    explicit CommandButtonWidget(QWidget *parent = nullptr);

    void setValue(double value) override;
    QString typeName() const override;
    bool usesSignals() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    QString caption() const;
    void setCaption(const QString &caption);
    QString command() const { return m_command; }
    void setCommand(const QString &command) { m_command = command; }
    QString confirmation() const { return m_confirmation; }
    void setConfirmation(const QString &question) { m_confirmation = question; }
    QString colorName() const { return m_colorName; }
    // Names outside colorNames() are "Gray".
    void setColorName(const QString &name);

    static QStringList colorNames();

    QPushButton *button() const { return m_button; }

public Q_SLOTS:
    // What a click does: asks the question if there is one, then sends.
    void trigger();

protected:
    void setSendingEnabled(bool enabled) override;

private:
    QPushButton *m_button;
    QString m_command = QStringLiteral("START");
    QString m_confirmation;
    QString m_colorName = QStringLiteral("Gray");
    QPointer<QLineEdit> m_captionEdit;
    QPointer<QLineEdit> m_commandEdit;
    QPointer<QLineEdit> m_confirmEdit;
    QPointer<QComboBox> m_colorEdit;
};
