#include "CommandButtonWidget.h"

#include <QComboBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

namespace {

struct ButtonColor
{
    QLatin1String name;
    QLatin1String background;
    QLatin1String text;
};

// In the editor's order: neutral first, then the usual meanings (go, stop,
// information, caution).
constexpr std::array<ButtonColor, 5> ButtonColors{{
    {QLatin1String("Gray"), QLatin1String("#e0e0e0"), QLatin1String("#000000")},
    {QLatin1String("Green"), QLatin1String("#3aa655"), QLatin1String("#ffffff")},
    {QLatin1String("Red"), QLatin1String("#d32f2f"), QLatin1String("#ffffff")},
    {QLatin1String("Blue"), QLatin1String("#1e6fd9"), QLatin1String("#ffffff")},
    {QLatin1String("Amber"), QLatin1String("#ffb300"), QLatin1String("#000000")},
}};

const ButtonColor &colorEntry(const QString &name)
{
    for (const ButtonColor &entry : ButtonColors) {
        if (name == entry.name)
            return entry;
    }
    return ButtonColors.front();
}

} // namespace

CommandButtonWidget::CommandButtonWidget(QWidget *parent)
    : CommandWidget(parent)
    , m_button(new QPushButton(tr("Start"), this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(2);
    m_button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    layout->addWidget(m_button, 1);
    layout->addWidget(statusLabel());
    setColorName(m_colorName);
    connect(m_button, &QPushButton::clicked, this, &CommandButtonWidget::trigger);
    attachSink();
}

void CommandButtonWidget::setValue(double value)
{
    Q_UNUSED(value);
}

QString CommandButtonWidget::typeName() const
{
    return QStringLiteral("CommandButton");
}

bool CommandButtonWidget::usesSignals() const
{
    return false;
}

void CommandButtonWidget::loadConfig(const QJsonObject &config)
{
    setCaption(config.value(QLatin1String("caption")).toString(caption()));
    setCommand(config.value(QLatin1String("command")).toString(m_command));
    setConfirmation(config.value(QLatin1String("confirm")).toString(m_confirmation));
    setColorName(config.value(QLatin1String("color")).toString(m_colorName));
}

QJsonObject CommandButtonWidget::saveConfig() const
{
    return QJsonObject{{QStringLiteral("caption"), caption()},
                       {QStringLiteral("command"), m_command},
                       {QStringLiteral("confirm"), m_confirmation},
                       {QStringLiteral("color"), m_colorName}};
}

void CommandButtonWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_captionEdit = new QLineEdit(caption(), parent);
    m_commandEdit = new QLineEdit(m_command, parent);
    m_confirmEdit = new QLineEdit(m_confirmation, parent);
    m_confirmEdit->setPlaceholderText(tr("Ask nothing"));
    m_colorEdit = new QComboBox(parent);
    m_colorEdit->addItems(colorNames());
    m_colorEdit->setCurrentText(m_colorName);
    form->addRow(tr("Caption:"), m_captionEdit);
    form->addRow(tr("Command:"), m_commandEdit);
    form->addRow(tr("Confirmation:"), m_confirmEdit);
    form->addRow(tr("Color:"), m_colorEdit);
}

void CommandButtonWidget::applyConfigForm()
{
    if (m_captionEdit)
        setCaption(m_captionEdit->text());
    if (m_commandEdit)
        setCommand(m_commandEdit->text());
    if (m_confirmEdit)
        setConfirmation(m_confirmEdit->text());
    if (m_colorEdit)
        setColorName(m_colorEdit->currentText());
}

QString CommandButtonWidget::caption() const
{
    return m_button->text();
}

void CommandButtonWidget::setCaption(const QString &caption)
{
    m_button->setText(caption);
}

void CommandButtonWidget::setColorName(const QString &name)
{
    const ButtonColor &entry = colorEntry(name);
    m_colorName = entry.name;
    m_button->setStyleSheet(QStringLiteral("QPushButton { background: %1; color: %2; font-weight: bold; }"
                                           "QPushButton:disabled { background: #f0f0f0; color: #9e9e9e; }")
                                .arg(entry.background, entry.text));
}

QStringList CommandButtonWidget::colorNames()
{
    QStringList names;
    for (const ButtonColor &entry : ButtonColors)
        names.append(entry.name);
    return names;
}

void CommandButtonWidget::trigger()
{
    if (!m_confirmation.isEmpty()
        // A window of its own: a box parented to a widget on the scene would be drawn into the scene.
        && QMessageBox::question(nullptr, caption(), m_confirmation, QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
               != QMessageBox::Yes) {
        return;
    }
    send(m_command);
}

void CommandButtonWidget::setSendingEnabled(bool enabled)
{
    m_button->setEnabled(enabled);
}
