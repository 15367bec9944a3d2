#pragma once

#include "CommandWidget.h"

#include <QPointer>

QT_BEGIN_NAMESPACE
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QSlider;
class QSpinBox;
QT_END_NAMESPACE

/**
 * A setpoint sent to the device: a spin box and a slider over
 * [minimum, maximum] in steps, sending the command template with "{value}"
 * replaced by the value (for example "LOAD_SET={value}") on Enter in the spin
 * box or when the slider is let go. An optional bound signal's live value is
 * shown beside it, so the setpoint and what the device reports sit together.
 *
 * Config keys: "caption", "min", "max", "step", "decimals" and "template";
 * the bound signal (none or one) is the item's.
 */
class SetpointControlWidget : public CommandWidget
{
    Q_OBJECT

public:
    static constexpr int MaxDecimals = 6;

    explicit SetpointControlWidget(QWidget *parent = nullptr);

    // The bound signal's live value.
    void setValue(double value) override;
    QString typeName() const override;
    // The signal is chosen among this widget's own rows, where "none" is offered.
    bool usesSignals() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    QString caption() const;
    void setCaption(const QString &caption);
    double minimum() const { return m_minimum; }
    double maximum() const { return m_maximum; }
    double step() const { return m_step; }
    int decimals() const { return m_decimals; }
    // A maximum below the minimum is raised to it; a step that is not above
    // 0 becomes one unit of the last decimal.
    void setRange(double minimum, double maximum, double step, int decimals);
    QString commandTemplate() const { return m_template; }
    void setCommandTemplate(const QString &text) { m_template = text; }

    double setpoint() const;
    void setSetpoint(double value);
    // The command for the current setpoint.
    QString command() const;
    QString liveText() const;

    QDoubleSpinBox *spinBox() const { return m_spin; }
    QSlider *slider() const { return m_slider; }

public Q_SLOTS:
    bool sendSetpoint();

protected:
    void setSendingEnabled(bool enabled) override;
    void updateFrame() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void syncSlider();
    void syncSpinFromSlider(int position);
    int sliderSteps() const;

    QLabel *m_caption;
    QDoubleSpinBox *m_spin;
    QSlider *m_slider;
    QLabel *m_live;
    double m_minimum = 0.0;
    double m_maximum = 100.0;
    double m_step = 1.0;
    int m_decimals = 0;
    QString m_template = QStringLiteral("SET={value}");
    double m_liveValue = 0.0;
    bool m_hasLiveValue = false;
    QPointer<QLineEdit> m_captionEdit;
    QPointer<QComboBox> m_signalEdit;
    QPointer<QDoubleSpinBox> m_minEdit;
    QPointer<QDoubleSpinBox> m_maxEdit;
    QPointer<QDoubleSpinBox> m_stepEdit;
    QPointer<QSpinBox> m_decimalsEdit;
    QPointer<QLineEdit> m_templateEdit;
};
