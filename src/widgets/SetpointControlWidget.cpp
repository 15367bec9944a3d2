#include "SetpointControlWidget.h"

#include "SignalDefinitions.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonObject>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cmath>

namespace {

// A slider has int positions; finer steps than this many are left to the spin box.
constexpr int MaxSliderSteps = 100000;
constexpr double EditorLimit = 1.0e9;

QDoubleSpinBox *limitEditor(double value, QWidget *parent)
{
    auto *edit = new QDoubleSpinBox(parent);
    edit->setDecimals(SetpointControlWidget::MaxDecimals);
    edit->setRange(-EditorLimit, EditorLimit);
    edit->setValue(value);
    return edit;
}

} // namespace

SetpointControlWidget::SetpointControlWidget(QWidget *parent)
    : CommandWidget(parent)
    , m_caption(new QLabel(tr("Setpoint"), this))
    , m_spin(new QDoubleSpinBox(this))
    , m_slider(new QSlider(Qt::Horizontal, this))
    , m_live(new QLabel(this))
{
    m_caption->setAlignment(Qt::AlignCenter);
    m_live->setObjectName(QStringLiteral("liveValue"));
    m_live->setMinimumWidth(48);
    m_live->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_spin->setKeyboardTracking(false);
    m_spin->installEventFilter(this);

    auto *row = new QHBoxLayout;
    row->addWidget(m_spin, 1);
    row->addWidget(m_live);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(2);
    layout->addWidget(m_caption);
    layout->addLayout(row);
    layout->addWidget(m_slider);
    layout->addWidget(statusLabel());

    setRange(m_minimum, m_maximum, m_step, m_decimals);
    connect(m_spin, &QDoubleSpinBox::valueChanged, this, &SetpointControlWidget::syncSlider);
    connect(m_slider, &QSlider::valueChanged, this, &SetpointControlWidget::syncSpinFromSlider);
    connect(m_slider, &QSlider::sliderReleased, this, &SetpointControlWidget::sendSetpoint);
    attachSink();
}

void SetpointControlWidget::setValue(double value)
{
    m_liveValue = value;
    m_hasLiveValue = true;
    markDirty();
}

void SetpointControlWidget::updateFrame()
{
    m_live->setText(liveText());
}

QString SetpointControlWidget::liveText() const
{
    return m_hasLiveValue && !m_signals.isEmpty() ? QString::number(m_liveValue, 'f', m_decimals) : QString();
}

QString SetpointControlWidget::typeName() const
{
    return QStringLiteral("SetpointControl");
}

bool SetpointControlWidget::usesSignals() const
{
    return false;
}

void SetpointControlWidget::loadConfig(const QJsonObject &config)
{
    // The bound signal comes with the item's "signals"; one at most is shown.
    if (m_signals.size() > 1)
        setSignalNames(m_signals.mid(0, 1));
    setCaption(config.value(QLatin1String("caption")).toString(caption()));
    setRange(config.value(QLatin1String("min")).toDouble(m_minimum), config.value(QLatin1String("max")).toDouble(m_maximum),
             config.value(QLatin1String("step")).toDouble(m_step), config.value(QLatin1String("decimals")).toInt(m_decimals));
    setCommandTemplate(config.value(QLatin1String("template")).toString(m_template));
}

QJsonObject SetpointControlWidget::saveConfig() const
{
    QJsonObject config;
    config.insert(QStringLiteral("caption"), caption());
    config.insert(QStringLiteral("min"), m_minimum);
    config.insert(QStringLiteral("max"), m_maximum);
    config.insert(QStringLiteral("step"), m_step);
    config.insert(QStringLiteral("decimals"), m_decimals);
    config.insert(QStringLiteral("template"), m_template);
    return config;
}

void SetpointControlWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_captionEdit = new QLineEdit(caption(), parent);
    m_signalEdit = new QComboBox(parent);
    m_signalEdit->addItem(tr("(none)"), QString());
    if (const SignalDefinitions *defs = SignalDefinitions::current()) {
        for (const SignalDef &def : defs->signals())
            m_signalEdit->addItem(QStringLiteral("%1 : %2").arg(def.name, def.label), def.name);
    }
    const int bound = m_signalEdit->findData(primarySignal());
    m_signalEdit->setCurrentIndex(qMax(0, bound));
    m_minEdit = limitEditor(m_minimum, parent);
    m_maxEdit = limitEditor(m_maximum, parent);
    m_stepEdit = limitEditor(m_step, parent);
    m_decimalsEdit = new QSpinBox(parent);
    m_decimalsEdit->setRange(0, MaxDecimals);
    m_decimalsEdit->setValue(m_decimals);
    m_templateEdit = new QLineEdit(m_template, parent);
    m_templateEdit->setToolTip(tr("{value} is replaced by the setpoint"));
    form->addRow(tr("Caption:"), m_captionEdit);
    form->addRow(tr("Signal:"), m_signalEdit);
    form->addRow(tr("Minimum:"), m_minEdit);
    form->addRow(tr("Maximum:"), m_maxEdit);
    form->addRow(tr("Step:"), m_stepEdit);
    form->addRow(tr("Decimals:"), m_decimalsEdit);
    form->addRow(tr("Command:"), m_templateEdit);
}

void SetpointControlWidget::applyConfigForm()
{
    if (m_captionEdit)
        setCaption(m_captionEdit->text());
    if (m_signalEdit) {
        const QString name = m_signalEdit->currentData().toString();
        setSignalNames(name.isEmpty() ? QStringList() : QStringList{name});
    }
    if (m_minEdit && m_maxEdit && m_stepEdit && m_decimalsEdit)
        setRange(m_minEdit->value(), m_maxEdit->value(), m_stepEdit->value(), m_decimalsEdit->value());
    if (m_templateEdit)
        setCommandTemplate(m_templateEdit->text());
}

QString SetpointControlWidget::caption() const
{
    return m_caption->text();
}

void SetpointControlWidget::setCaption(const QString &caption)
{
    m_caption->setText(caption);
}

void SetpointControlWidget::setRange(double minimum, double maximum, double step, int decimals)
{
    m_decimals = qBound(0, decimals, MaxDecimals);
    m_minimum = std::isfinite(minimum) ? minimum : 0.0;
    m_maximum = std::isfinite(maximum) ? qMax(maximum, m_minimum) : m_minimum;
    m_step = std::isfinite(step) && step > 0.0 ? step : std::pow(10.0, -m_decimals);
    const double current = m_spin->value();
    m_spin->setDecimals(m_decimals);
    m_spin->setRange(m_minimum, m_maximum);
    m_spin->setSingleStep(m_step);
    m_slider->setRange(0, sliderSteps());
    setSetpoint(current);
    m_live->setText(liveText());
}

int SetpointControlWidget::sliderSteps() const
{
    const double steps = std::floor((m_maximum - m_minimum) / m_step + 1e-9);
    return int(qBound(0.0, steps, double(MaxSliderSteps)));
}

double SetpointControlWidget::setpoint() const
{
    return m_spin->value();
}

void SetpointControlWidget::setSetpoint(double value)
{
    m_spin->setValue(value);
    syncSlider();
}

QString SetpointControlWidget::command() const
{
    QString text = m_template;
    return text.replace(QLatin1String("{value}"), QString::number(setpoint(), 'f', m_decimals));
}

bool SetpointControlWidget::sendSetpoint()
{
    return send(command());
}

void SetpointControlWidget::setSendingEnabled(bool enabled)
{
    m_spin->setEnabled(enabled);
    m_slider->setEnabled(enabled);
}

bool SetpointControlWidget::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_spin && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            m_spin->interpretText();
            sendSetpoint();
            return true;
        }
    }
    return CommandWidget::eventFilter(watched, event);
}

void SetpointControlWidget::syncSlider()
{
    const int steps = sliderSteps();
    if (steps == 0)
        return;
    const double fraction = (setpoint() - m_minimum) / (m_maximum - m_minimum);
    const QSignalBlocker blocker(m_slider);
    m_slider->setValue(int(std::lround(fraction * steps)));
}

void SetpointControlWidget::syncSpinFromSlider(int position)
{
    const int steps = sliderSteps();
    if (steps == 0)
        return;
    const double value = m_minimum + (m_maximum - m_minimum) * position / steps;
    const QSignalBlocker blocker(m_spin);
    m_spin->setValue(value);
}
