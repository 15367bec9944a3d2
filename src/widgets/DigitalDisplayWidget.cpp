#include "DigitalDisplayWidget.h"

#include "SignalCaption.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QLabel>
#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>
#include <QStyle>
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
    // The label holds the digits and keeps its place, but this widget paints
    // them, with the next frame: a shown label would repaint itself (and ask
    // for a new layout) with every value the device sends.
    QSizePolicy policy = m_valueLabel->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_valueLabel->setSizePolicy(policy);
    m_valueLabel->hide();
    // A label without a name of its own announces every new text to
    // accessibility, which costs a look-up per value even with no reader.
    m_valueLabel->setAccessibleName(tr("Value"));
}

void DigitalDisplayWidget::setValue(double value)
{
    m_valueLabel->setText(QString::number(value, 'f', m_decimals));
    markDirty();
}

void DigitalDisplayWidget::updateFrame()
{
    update(digitsArea());
}

QRect DigitalDisplayWidget::digitsArea() const
{
    // The digits' line, centred in the label, with room for antialiasing.
    const QRect label = m_valueLabel->geometry();
    const int half = QFontMetrics(m_valueLabel->font()).height() / 2 + 2;
    return QRect(0, label.center().y() - half, width(), 2 * half + 2);
}

QRect DigitalDisplayWidget::captionArea() const
{
    // The upper caption line is centred 37.5 pixels below the middle.
    const int half = QFontMetrics(captionFont()).height() / 2 + 2;
    return QRect(0, int(height() / 2.0 + 37.5) - half, width(), height());
}

QFont DigitalDisplayWidget::captionFont() const
{
    QFont font = this->font();
    font.setPointSize(10);
    return font;
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
    QPainter painter(this);
    drawDigits(painter);
    // New digits alone do not reach the caption, the dearer text.
    if (m_signals.isEmpty() || !event->rect().intersects(captionArea()))
        return;
    const SignalCaption caption(m_signals.first());
    painter.setFont(captionFont());
    painter.setPen(Qt::black);
    const int w = width();
    const int h = height();
    if (!caption.upper().isEmpty())
        painter.drawText(QRect(0, 25, w, h + 25), Qt::AlignCenter, caption.upper());
    painter.drawText(QRect(0, 35, w, h + 35), Qt::AlignCenter, caption.lower());
}

void DigitalDisplayWidget::drawDigits(QPainter &painter) const
{
    // As the label would paint itself.
    painter.save();
    painter.setFont(m_valueLabel->font());
    style()->drawItemText(&painter, m_valueLabel->geometry(), int(m_valueLabel->alignment()), m_valueLabel->palette(),
                          isEnabled(), m_valueLabel->text(), m_valueLabel->foregroundRole());
    painter.restore();
}
