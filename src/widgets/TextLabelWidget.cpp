#include "TextLabelWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QLineEdit>
#include <QPainter>
#include <QSpinBox>

#include <array>

namespace {

struct NamedColor
{
    QLatin1String name;
    QColor color;
};

// In the editor's order. "Green" is Qt's dark green, as on a line.
const std::array<NamedColor, 6> &colorTable()
{
    static const std::array<NamedColor, 6> table{{
        {QLatin1String("Black"), QColor(Qt::black)},
        {QLatin1String("Gray"), QColor(120, 120, 120)},
        {QLatin1String("White"), QColor(Qt::white)},
        {QLatin1String("Red"), QColor(Qt::red)},
        {QLatin1String("Blue"), QColor(Qt::blue)},
        {QLatin1String("Green"), QColor(Qt::darkGreen)},
    }};
    return table;
}

constexpr int MaxEditorPointSize = 200;
// The editor sets 400 or 700; a weight set otherwise counts as bold when
// heavier than medium.
constexpr int BoldThreshold = 500;

} // namespace

TextLabelWidget::TextLabelWidget(QWidget *parent)
    : DashboardWidget(parent)
    , m_font(font())
{
    m_font.setPointSize(12);
    m_font.setWeight(QFont::Normal);
    setMinimumSize(40, 20);
}

void TextLabelWidget::setValue(double value)
{
    Q_UNUSED(value);
}

QString TextLabelWidget::typeName() const
{
    return QStringLiteral("TextLabel");
}

bool TextLabelWidget::usesSignals() const
{
    return false;
}

void TextLabelWidget::loadConfig(const QJsonObject &config)
{
    const QJsonValue text = config.value(QLatin1String("text"));
    if (!text.isUndefined())
        setText(text.toString(m_text));
    const QJsonValue color = config.value(QLatin1String("color"));
    if (!color.isUndefined())
        setColor(colorForName(color.toString(nameForColor(m_color))));
    const QJsonValue point = config.value(QLatin1String("point"));
    if (!point.isUndefined())
        setPointSize(point.toInt(m_font.pointSize()));
    const QJsonValue bold = config.value(QLatin1String("bold"));
    if (!bold.isUndefined())
        setBold(bold.toBool(m_font.weight() > BoldThreshold));
    const QJsonValue align = config.value(QLatin1String("align"));
    if (!align.isUndefined())
        setAlignment(alignmentForName(align.toString(nameForAlignment(m_alignment))));
}

QJsonObject TextLabelWidget::saveConfig() const
{
    return QJsonObject{{QStringLiteral("text"), m_text},
                       {QStringLiteral("color"), nameForColor(m_color)},
                       {QStringLiteral("point"), m_font.pointSize()},
                       {QStringLiteral("bold"), m_font.weight() > BoldThreshold},
                       {QStringLiteral("align"), nameForAlignment(m_alignment)}};
}

void TextLabelWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_textEdit = new QLineEdit(m_text, parent);

    m_colorEdit = new QComboBox(parent);
    m_colorEdit->addItems(colorNames());
    m_colorEdit->setCurrentText(nameForColor(m_color));

    m_sizeEdit = new QSpinBox(parent);
    m_sizeEdit->setRange(1, MaxEditorPointSize);
    m_sizeEdit->setValue(m_font.pointSize());

    m_boldEdit = new QCheckBox(tr("Bold"), parent);
    m_boldEdit->setChecked(m_font.weight() > BoldThreshold);

    m_alignEdit = new QComboBox(parent);
    m_alignEdit->addItems({QStringLiteral("Center"), QStringLiteral("Left"), QStringLiteral("Right")});
    m_alignEdit->setCurrentText(nameForAlignment(m_alignment));

    form->addRow(tr("Text:"), m_textEdit);
    form->addRow(tr("Color:"), m_colorEdit);
    form->addRow(tr("Size:"), m_sizeEdit);
    form->addRow(QString(), m_boldEdit);
    form->addRow(tr("Align:"), m_alignEdit);
}

void TextLabelWidget::applyConfigForm()
{
    if (m_textEdit)
        setText(m_textEdit->text());
    if (m_colorEdit)
        setColor(colorForName(m_colorEdit->currentText()));
    if (m_sizeEdit)
        setPointSize(m_sizeEdit->value());
    if (m_boldEdit)
        setBold(m_boldEdit->isChecked());
    if (m_alignEdit)
        setAlignment(alignmentForName(m_alignEdit->currentText()));
}

void TextLabelWidget::setText(const QString &text)
{
    m_text = text;
    update();
}

void TextLabelWidget::setColor(const QColor &color)
{
    m_color = color;
    update();
}

void TextLabelWidget::setPointSize(int pointSize)
{
    // QFont refuses sizes below 1 with a warning; keep the current size quietly.
    if (pointSize < 1)
        return;
    m_font.setPointSize(pointSize);
    update();
}

void TextLabelWidget::setBold(bool bold)
{
    m_font.setWeight(bold ? QFont::Bold : QFont::Normal);
    update();
}

void TextLabelWidget::setAlignment(Qt::Alignment alignment)
{
    m_alignment = alignment;
    update();
}

QStringList TextLabelWidget::colorNames()
{
    QStringList names;
    for (const NamedColor &entry : colorTable())
        names.append(entry.name);
    return names;
}

QColor TextLabelWidget::colorForName(const QString &name)
{
    for (const NamedColor &entry : colorTable()) {
        if (name == entry.name)
            return entry.color;
    }
    return QColor(Qt::black);
}

QString TextLabelWidget::nameForColor(const QColor &color)
{
    for (const NamedColor &entry : colorTable()) {
        if (color == entry.color)
            return entry.name;
    }
    return QStringLiteral("Black");
}

Qt::Alignment TextLabelWidget::alignmentForName(const QString &name)
{
    if (name == QLatin1String("Left"))
        return Qt::AlignLeft | Qt::AlignVCenter;
    if (name == QLatin1String("Right"))
        return Qt::AlignRight | Qt::AlignVCenter;
    return Qt::AlignCenter;
}

QString TextLabelWidget::nameForAlignment(Qt::Alignment alignment)
{
    if (alignment & Qt::AlignLeft)
        return QStringLiteral("Left");
    if (alignment & Qt::AlignRight)
        return QStringLiteral("Right");
    return QStringLiteral("Center");
}

void TextLabelWidget::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.setPen(m_color);
    painter.setFont(m_font);
    painter.drawText(rect().adjusted(4, 2, -4, -2), int(m_alignment), m_text);
}
