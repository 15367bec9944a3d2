#include "AnalogGaugeWidget.h"

#include "SignalCaption.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QPaintEvent>
#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double EditorLimit = 1000000000.0;
constexpr double StartAngle = -135.0;
constexpr double SweepAngle = 270.0;
constexpr int TickCount = 11;

// Fractional limits load truncated toward zero (0.5 -> 0, 250.75 -> 250);
// non-numbers read as 0. QJsonValue::toInt() is not used: in Qt 6 it turns
// every fractional number into its default, not into its whole part.
double truncatedLimit(const QJsonValue &value)
{
    const double number = value.toDouble(0.0);
    if (!std::isfinite(number))
        return 0.0;
    const double limit = double(std::numeric_limits<int>::max());
    return std::trunc(std::clamp(number, -limit, limit));
}

} // namespace

AnalogGaugeWidget::AnalogGaugeWidget(QWidget *parent)
    : DashboardWidget(parent)
{
    setMinimumSize(120, 120);
}

void AnalogGaugeWidget::setValue(double value)
{
    if (value > m_max)
        value = m_max;
    if (!(value > m_min))
        value = m_min;
    m_value = value;
    markDirty();
}

void AnalogGaugeWidget::updateFrame()
{
    // Only the needle moved: repaint where it was painted and where it is now.
    update(m_paintedNeedle | needleArea());
}

QRect AnalogGaugeWidget::needleArea() const
{
    const double scale = std::min(width(), height()) / 200.0;
    const QPointF centre(width() / 2.0, height() / 2.0);
    const double radians = qDegreesToRadians(needleAngle());
    const QPointF tip = centre + QPointF(std::sin(radians), -std::cos(radians)) * (70.0 * scale);
    const double hub = 5.0 * scale;
    const double margin = 3.0 * scale + 2.0; // pen width and antialiasing
    const QRectF area = QRectF(centre, tip).normalized().united(QRectF(centre - QPointF(hub, hub), centre + QPointF(hub, hub)));
    return area.adjusted(-margin, -margin, margin, margin).toAlignedRect();
}

QRect AnalogGaugeWidget::captionArea() const
{
    const double scale = std::min(width(), height()) / 200.0;
    // The caption lines start 105 dial units below the centre; the dial's
    // circle ends at 100.
    return QRect(0, int(height() / 2.0 + 100.0 * scale), width(), height());
}

QString AnalogGaugeWidget::typeName() const
{
    return QStringLiteral("AnalogGauge");
}

QString AnalogGaugeWidget::primarySignal() const
{
    return m_label;
}

void AnalogGaugeWidget::loadConfig(const QJsonObject &config)
{
    const QLatin1String minKey("min");
    const QLatin1String maxKey("max");
    if (!config.contains(minKey) || !config.contains(maxKey))
        return;
    setRange(truncatedLimit(config.value(minKey)), truncatedLimit(config.value(maxKey)));
}

QJsonObject AnalogGaugeWidget::saveConfig() const
{
    return QJsonObject{{QStringLiteral("min"), m_min}, {QStringLiteral("max"), m_max}};
}

void AnalogGaugeWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    auto makeEditor = [parent](double value) {
        auto *editor = new QDoubleSpinBox(parent);
        editor->setRange(-EditorLimit, EditorLimit);
        editor->setDecimals(1);
        editor->setValue(value);
        return editor;
    };
    m_minEdit = makeEditor(m_min);
    m_maxEdit = makeEditor(m_max);
    form->addRow(tr("Min Value:"), m_minEdit);
    form->addRow(tr("Max Value:"), m_maxEdit);
}

void AnalogGaugeWidget::applyConfigForm()
{
    if (m_minEdit && m_maxEdit)
        setRange(m_minEdit->value(), m_maxEdit->value());
}

void AnalogGaugeWidget::setRange(double min, double max)
{
    m_min = min;
    m_max = max;
    dropDialCache();
    update();
}

void AnalogGaugeWidget::setLabel(const QString &label)
{
    m_label = label;
    update();
}

double AnalogGaugeWidget::needleAngle() const
{
    const double span = m_max - m_min;
    if (!(span > 0.0) || !std::isfinite(span))
        return StartAngle;
    // A value shown before the range was narrowed or moved stays on the scale.
    return std::clamp((m_value - m_min) * SweepAngle / span, 0.0, SweepAngle) + StartAngle;
}

int AnalogGaugeWidget::labelDecimals() const
{
    const double span = m_max - m_min;
    if (span <= 2.0)
        return 2;
    return span <= 20.0 ? 1 : 0;
}

QStringList AnalogGaugeWidget::tickLabels() const
{
    const double span = m_max - m_min;
    const int decimals = labelDecimals();
    const double factor = decimals == 2 ? 100.0 : 10.0;
    QStringList labels;
    for (int i = 0; i < TickCount; ++i) {
        double value = i * span / 10.0 + m_min;
        if (std::abs(value) <= 1e-12)
            value = 0.0;
        if (decimals > 0)
            value = std::round(value * factor) / factor;
        labels.append(QString::number(value, 'f', decimals));
    }
    return labels;
}

void AnalogGaugeWidget::dropDialCache()
{
    m_background = QPixmap();
    m_backgroundSize = QSize();
}

void AnalogGaugeWidget::rebuildDial(int side)
{
    ++m_dialRebuilds;
    m_background = QPixmap(side, side);
    m_background.fill(Qt::transparent);
    m_backgroundSize = QSize(side, side);

    QPainter painter(&m_background);
    drawDial(painter, side);
}

// Face and ticks of a dial `side` across, from the painter's origin.
void AnalogGaugeWidget::drawDial(QPainter &painter, int side) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(side / 2, side / 2);
    painter.scale(side / 200.0, side / 200.0);

    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::lightGray);
    painter.drawEllipse(QPointF(0, 0), 100, 100);
    drawTicks(painter);
}

void AnalogGaugeWidget::drawTicks(QPainter &painter) const
{
    painter.setPen(Qt::black);
    QFont font = painter.font();
    font.setPointSize(12);
    painter.setFont(font);

    const QStringList labels = tickLabels();
    for (int i = 0; i < TickCount; ++i) {
        const double angle = i * 27.0 + StartAngle;
        painter.save();
        painter.rotate(angle);
        painter.drawLine(QPointF(0, -88), QPointF(0, -100));
        painter.restore();

        const double radians = qDegreesToRadians(angle - 90.0);
        const int x = -15 + int(70 * std::cos(radians));
        const int y = -10 + int(70 * std::sin(radians));
        // Wide labels (four digits and more) spill over the box instead of being cut.
        painter.drawText(QRect(x, y, 30, 20), Qt::AlignCenter | Qt::TextDontClip, labels.at(i));
    }
}

void AnalogGaugeWidget::paintEvent(QPaintEvent *event)
{
    const int side = std::min(width(), height());
    if (side <= 0)
        return;
    // A dial larger than the screen is drawn where it is exposed, not kept.
    const bool kept = fitsCacheLimit(QSize(side, side));
    if (!kept)
        dropDialCache();
    else if (m_backgroundSize != QSize(side, side))
        rebuildDial(side);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (kept) {
        painter.drawPixmap((width() - side) / 2, (height() - side) / 2, m_background);
    } else {
        painter.save();
        painter.translate((width() - side) / 2, (height() - side) / 2);
        drawDial(painter, side);
        painter.restore();
    }

    painter.translate(width() / 2.0, height() / 2.0);
    painter.scale(side / 200.0, side / 200.0);

    painter.save();
    painter.rotate(needleAngle());
    painter.setPen(QPen(QBrush(Qt::red), 3.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.drawLine(QPointF(0, 0), QPointF(0, -70));
    painter.restore();

    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawEllipse(QPointF(0, 0), 5, 5);
    m_paintedNeedle = needleArea();

    // Text is the dearest part of a frame; a needle update does not reach it.
    if (event->rect().intersects(captionArea()))
        drawCaption(painter);
}

void AnalogGaugeWidget::drawCaption(QPainter &painter) const
{
    if (m_signals.isEmpty())
        return;
    const SignalCaption caption(m_signals.first());
    QFont font = painter.font();
    font.setPointSize(10);
    painter.setFont(font);
    painter.setPen(Qt::black);
    const int w = width();
    if (!caption.upper().isEmpty())
        painter.drawText(QRect(-w / 2, 105, w, 20), Qt::AlignCenter, caption.upper());
    painter.drawText(QRect(-w / 2, 115, w, 30), Qt::AlignCenter, caption.lower());
}
