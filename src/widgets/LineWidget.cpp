#include "LineWidget.h"

#include <QComboBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QPainter>
#include <QSpinBox>

#include <algorithm>
#include <array>

namespace {

struct NamedColor
{
    QLatin1String name;
    QColor color;
};

// In the editor's order. "Green" is Qt's dark green, which reads on a light
// window where pure green glares.
const std::array<NamedColor, 7> &colorTable()
{
    static const std::array<NamedColor, 7> table{{
        {QLatin1String("Gray"), QColor(120, 120, 120)},
        {QLatin1String("Light Gray"), QColor(180, 180, 180)},
        {QLatin1String("Black"), QColor(Qt::black)},
        {QLatin1String("White"), QColor(Qt::white)},
        {QLatin1String("Red"), QColor(Qt::red)},
        {QLatin1String("Blue"), QColor(Qt::blue)},
        {QLatin1String("Green"), QColor(Qt::darkGreen)},
    }};
    return table;
}

constexpr int MaxEditorThickness = 20;

QString orientationName(Qt::Orientation orientation)
{
    return orientation == Qt::Vertical ? QStringLiteral("Vertical") : QStringLiteral("Horizontal");
}

Qt::Orientation orientationForName(const QString &name)
{
    return name == QLatin1String("Vertical") ? Qt::Vertical : Qt::Horizontal;
}

} // namespace

LineWidget::LineWidget(QWidget *parent)
    : DashboardWidget(parent)
{
    setMinimumSize(20, 20);
}

void LineWidget::setValue(double value)
{
    Q_UNUSED(value);
}

QString LineWidget::typeName() const
{
    return QStringLiteral("Line");
}

bool LineWidget::usesSignals() const
{
    return false;
}

void LineWidget::loadConfig(const QJsonObject &config)
{
    const QJsonValue orientation = config.value(QLatin1String("orientation"));
    if (!orientation.isUndefined())
        m_orientation = orientationForName(orientation.toString());
    const QJsonValue thickness = config.value(QLatin1String("thickness"));
    if (!thickness.isUndefined())
        m_thickness = std::max(1, thickness.toInt(m_thickness));
    const QJsonValue color = config.value(QLatin1String("color"));
    if (!color.isUndefined())
        m_color = colorForName(color.toString(nameForColor(m_color)));
    update();
}

QJsonObject LineWidget::saveConfig() const
{
    return QJsonObject{{QStringLiteral("orientation"), orientationName(m_orientation)},
                       {QStringLiteral("thickness"), m_thickness},
                       {QStringLiteral("color"), nameForColor(m_color)}};
}

void LineWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_orientationEdit = new QComboBox(parent);
    m_orientationEdit->addItems({orientationName(Qt::Horizontal), orientationName(Qt::Vertical)});
    m_orientationEdit->setCurrentText(orientationName(m_orientation));

    m_thicknessEdit = new QSpinBox(parent);
    m_thicknessEdit->setRange(1, MaxEditorThickness);
    m_thicknessEdit->setValue(m_thickness);

    m_colorEdit = new QComboBox(parent);
    m_colorEdit->addItems(colorNames());
    m_colorEdit->setCurrentText(nameForColor(m_color));

    form->addRow(tr("Orientation:"), m_orientationEdit);
    form->addRow(tr("Thickness:"), m_thicknessEdit);
    form->addRow(tr("Color:"), m_colorEdit);
}

void LineWidget::applyConfigForm()
{
    if (m_orientationEdit)
        m_orientation = orientationForName(m_orientationEdit->currentText());
    if (m_thicknessEdit)
        m_thickness = m_thicknessEdit->value();
    if (m_colorEdit)
        m_color = colorForName(m_colorEdit->currentText());
    update();
}

void LineWidget::setOrientation(Qt::Orientation orientation)
{
    m_orientation = orientation;
    update();
}

void LineWidget::setThickness(int thickness)
{
    m_thickness = std::max(1, thickness);
    update();
}

void LineWidget::setColor(const QColor &color)
{
    m_color = color;
    update();
}

QStringList LineWidget::colorNames()
{
    QStringList names;
    for (const NamedColor &entry : colorTable())
        names.append(entry.name);
    return names;
}

QColor LineWidget::colorForName(const QString &name)
{
    for (const NamedColor &entry : colorTable()) {
        if (name == entry.name)
            return entry.color;
    }
    return QColor(120, 120, 120);
}

QString LineWidget::nameForColor(const QColor &color)
{
    for (const NamedColor &entry : colorTable()) {
        if (color == entry.color)
            return entry.name;
    }
    return QStringLiteral("Gray");
}

void LineWidget::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QBrush(m_color), m_thickness, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    if (m_orientation == Qt::Vertical)
        painter.drawLine(QPoint(width() / 2, 0), QPoint(width() / 2, height()));
    else
        painter.drawLine(QPoint(0, height() / 2), QPoint(width(), height() / 2));
}
