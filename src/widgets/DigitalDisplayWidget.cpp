#include "DigitalDisplayWidget.h"

#include "SignalCaption.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

DigitalDisplayWidget::DigitalDisplayWidget(QWidget *parent)
    : DashboardWidget(parent)
    , m_valueLabel(new QLabel(QStringLiteral("0"), this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_valueLabel);

    QFont font = m_valueLabel->font();
    font.setPointSize(28);
    m_valueLabel->setFont(font);
    m_valueLabel->setAlignment(Qt::AlignCenter);
}

void DigitalDisplayWidget::setValue(double value)
{
    m_valueLabel->setText(QString::number(value, 'f', m_decimals));
}

QString DigitalDisplayWidget::typeName() const
{
    return QStringLiteral("DigitalDisplay");
}

QString DigitalDisplayWidget::primarySignal() const
{
    return m_signal;
}

void DigitalDisplayWidget::setSignalName(const QString &name)
{
    m_signal = name;
}

void DigitalDisplayWidget::loadConfig(const QJsonObject &config)
{
    const QJsonValue signal = config.value(QLatin1String("signal"));
    if (!signal.isUndefined())
        m_signal = signal.toString();
    const QJsonValue decimals = config.value(QLatin1String("decimalPlaces"));
    if (!decimals.isUndefined())
        setDecimals(decimals.toInt(0));
}

QJsonObject DigitalDisplayWidget::saveConfig() const
{
    return QJsonObject{{QStringLiteral("signal"), m_signal}, {QStringLiteral("decimalPlaces"), m_decimals}};
}

void DigitalDisplayWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_decimalsEdit = new QDoubleSpinBox(parent);
    m_decimalsEdit->setRange(0, 8);
    m_decimalsEdit->setDecimals(0);
    m_decimalsEdit->setValue(m_decimals);
    form->addRow(tr("Decimal Places:"), m_decimalsEdit);
}

void DigitalDisplayWidget::applyConfigForm()
{
    if (m_decimalsEdit)
        setDecimals(int(std::lround(m_decimalsEdit->value())));
}

void DigitalDisplayWidget::setDecimals(int decimals)
{
    m_decimals = std::clamp(decimals, 0, int(MaxFileDecimals));
}

QString DigitalDisplayWidget::valueText() const
{
    return m_valueLabel->text();
}

void DigitalDisplayWidget::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    if (m_signals.isEmpty())
        return;
    const SignalCaption caption(m_signals.first());
    QPainter painter(this);
    QFont font = painter.font();
    font.setPointSize(10);
    painter.setFont(font);
    painter.setPen(Qt::black);
    const int w = width();
    const int h = height();
    if (!caption.upper().isEmpty())
        painter.drawText(QRect(0, 25, w, h + 25), Qt::AlignCenter, caption.upper());
    painter.drawText(QRect(0, 35, w, h + 35), Qt::AlignCenter, caption.lower());
}
