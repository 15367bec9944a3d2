#include "BarGraphWidget.h"

#include "BarGraphPainter.h"
#include "SignalDefinitions.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QIcon>
#include <QJsonObject>
#include <QPainter>
#include <QPixmap>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace {

const QLatin1String AutoRangeKey("autoRange");
const QLatin1String MinKey("min");
const QLatin1String MaxKey("max");
const QLatin1String OrientationKey("orientation");
const QLatin1String ColorKey("barColor");
const QLatin1String DecimalsKey("decimalPlaces");
const QLatin1String Vertical("vertical");
const QLatin1String Horizontal("horizontal");

struct NamedColor
{
    const char *name;
    QColor color;
};

// Told apart by most readers, colour-blind ones included.
const NamedColor Swatches[] = {
    {QT_TRANSLATE_NOOP("BarGraphWidget", "Blue"), QColor(0, 114, 178)},
    {QT_TRANSLATE_NOOP("BarGraphWidget", "Vermillion"), QColor(213, 94, 0)},
    {QT_TRANSLATE_NOOP("BarGraphWidget", "Green"), QColor(0, 158, 115)},
    {QT_TRANSLATE_NOOP("BarGraphWidget", "Purple"), QColor(204, 121, 167)},
    {QT_TRANSLATE_NOOP("BarGraphWidget", "Sky Blue"), QColor(86, 180, 233)},
    {QT_TRANSLATE_NOOP("BarGraphWidget", "Orange"), QColor(230, 159, 0)},
    {QT_TRANSLATE_NOOP("BarGraphWidget", "Gray"), QColor(100, 100, 100)},
};

QIcon swatchIcon(const QColor &color)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(color);
    return QIcon(pixmap);
}

// "rpm:1/min" is fed by "rpm": the name is cut at the first ':', as values
// are routed.
QString routedName(const QString &entry)
{
    return entry.section(QLatin1Char(':'), 0, 0).trimmed();
}

QString unitOf(const QString &entry)
{
    const qsizetype colon = entry.indexOf(QLatin1Char(':'));
    return colon < 0 ? QString() : entry.mid(colon + 1).trimmed();
}

QString numberText(double value, int decimals)
{
    if (std::isnan(value))
        return QStringLiteral("NaN");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("\u221e") : QStringLiteral("-\u221e");
    return QString::number(value, 'f', decimals);
}

} // namespace

BarGraphWidget::BarGraphWidget(QWidget *parent)
    : DashboardWidget(parent)
{
    setMinimumSize(120, 100);
    // Every way of binding (the dialog, a layout's record, a config) ends here.
    connect(this, &DashboardWidget::signalNamesChanged, this, &BarGraphWidget::rebuildBars);
}

QColor BarGraphWidget::defaultBarColor()
{
    return Swatches[0].color;
}

void BarGraphWidget::setValue(double value)
{
    if (!m_bars.empty())
        setValueForSignal(m_bars.front().name, value);
}

QString BarGraphWidget::typeName() const
{
    return QStringLiteral("BarGraph");
}

void BarGraphWidget::setValueForSignal(const QString &name, double value)
{
    bool shown = false;
    for (Bar &bar : m_bars) {
        if (bar.name != name)
            continue;
        bar.value = value;
        bar.hasValue = true;
        shown = true;
    }
    if (!shown)
        return;
    m_range.observe(value);
    markDirty();
}

bool BarGraphWidget::supportsMultipleSignals() const
{
    return true;
}

void BarGraphWidget::rebuildBars()
{
    // An entry bound before keeps its last value.
    std::vector<Bar> bars;
    for (const QString &entry : std::as_const(m_signals)) {
        Bar bar{entry, routedName(entry), unitOf(entry)};
        if (bar.name.isEmpty())
            continue;
        const auto old = std::find_if(m_bars.cbegin(), m_bars.cend(),
                                      [&entry](const Bar &kept) { return kept.entry == entry; });
        if (old != m_bars.cend()) {
            bar.value = old->value;
            bar.hasValue = old->hasValue;
        }
        bars.push_back(bar);
    }
    m_bars = std::move(bars);
    m_captionsValid = false;
    restartAutomaticRange();
}

void BarGraphWidget::restartAutomaticRange()
{
    m_range.reset();
    for (const Bar &bar : m_bars) {
        if (bar.hasValue)
            m_range.observe(bar.value);
    }
    update();
}

void BarGraphWidget::refreshCaptions() const
{
    const SignalDefinitions *defs = SignalDefinitions::current();
    if (m_captionsValid && defs == m_captionsFrom)
        return;
    m_captions.clear();
    for (const Bar &bar : m_bars)
        m_captions.append(defs ? defs->displayNameFor(bar.name) : bar.name);
    m_captionsFrom = defs;
    m_captionsValid = true;
}

QString BarGraphWidget::barCaption(int bar) const
{
    refreshCaptions();
    return m_captions.at(bar);
}

QString BarGraphWidget::barValueText(int bar) const
{
    const Bar &shown = m_bars.at(size_t(bar));
    if (!shown.hasValue)
        return QStringLiteral("\u2014");
    const QString number = numberText(shown.value, m_decimals);
    return shown.unit.isEmpty() ? number : number + QLatin1Char(' ') + shown.unit;
}

void BarGraphWidget::setAutomaticRange(bool on)
{
    m_range.setAutomatic(on);
    update();
}

void BarGraphWidget::setFixedRange(double min, double max)
{
    m_range.setFixed(min, max);
    update();
}

void BarGraphWidget::setOrientation(Qt::Orientation orientation)
{
    m_orientation = orientation;
    update();
}

void BarGraphWidget::setBarColor(const QColor &color)
{
    if (!color.isValid())
        return;
    m_color = color;
    update();
}

void BarGraphWidget::setDecimals(int decimals)
{
    m_decimals = std::clamp(decimals, 0, MaxDecimals);
    update();
}

void BarGraphWidget::loadConfig(const QJsonObject &config)
{
    setAutomaticRange(config.value(AutoRangeKey).toBool(m_range.isAutomatic()));
    setFixedRange(config.value(MinKey).toDouble(m_range.fixedMin()), config.value(MaxKey).toDouble(m_range.fixedMax()));
    const QString orientation = config.value(OrientationKey).toString();
    if (orientation == Vertical || orientation == Horizontal)
        setOrientation(orientation == Horizontal ? Qt::Horizontal : Qt::Vertical);
    const QJsonValue color = config.value(ColorKey);
    if (color.isString())
        setBarColor(QColor::fromString(color.toString()));
    const QJsonValue decimals = config.value(DecimalsKey);
    if (decimals.isDouble())
        setDecimals(int(std::clamp(std::round(decimals.toDouble()), 0.0, double(MaxDecimals))));
}

QJsonObject BarGraphWidget::saveConfig() const
{
    return QJsonObject{{AutoRangeKey, m_range.isAutomatic()},
                       {MinKey, m_range.fixedMin()},
                       {MaxKey, m_range.fixedMax()},
                       {OrientationKey, m_orientation == Qt::Horizontal ? Horizontal : Vertical},
                       {ColorKey, m_color.name()},
                       {DecimalsKey, m_decimals}};
}

void BarGraphWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_autoEdit = new QCheckBox(parent);
    m_autoEdit->setChecked(m_range.isAutomatic());
    auto limitEditor = [parent, this](double value) {
        auto *editor = new QDoubleSpinBox(parent);
        editor->setRange(-BarRange::Limit, BarRange::Limit);
        editor->setDecimals(4);
        editor->setValue(value);
        editor->setEnabled(!m_range.isAutomatic());
        connect(m_autoEdit, &QCheckBox::toggled, editor, [editor](bool on) { editor->setEnabled(!on); });
        return editor;
    };
    m_minEdit = limitEditor(m_range.fixedMin());
    m_maxEdit = limitEditor(m_range.fixedMax());

    m_orientationEdit = new QComboBox(parent);
    m_orientationEdit->addItem(tr("Vertical"), int(Qt::Vertical));
    m_orientationEdit->addItem(tr("Horizontal"), int(Qt::Horizontal));
    m_orientationEdit->setCurrentIndex(m_orientation == Qt::Horizontal ? 1 : 0);

    m_colorEdit = new QComboBox(parent);
    for (const NamedColor &swatch : Swatches)
        m_colorEdit->addItem(swatchIcon(swatch.color), tr(swatch.name), swatch.color);
    // A colour written into the file by hand is offered as it is.
    if (m_colorEdit->findData(m_color) < 0)
        m_colorEdit->addItem(swatchIcon(m_color), m_color.name(), m_color);
    m_colorEdit->setCurrentIndex(m_colorEdit->findData(m_color));

    m_decimalsEdit = new QSpinBox(parent);
    m_decimalsEdit->setRange(0, MaxDecimals);
    m_decimalsEdit->setValue(m_decimals);

    form->addRow(tr("Automatic Range:"), m_autoEdit);
    form->addRow(tr("Min Value:"), m_minEdit);
    form->addRow(tr("Max Value:"), m_maxEdit);
    form->addRow(tr("Orientation:"), m_orientationEdit);
    form->addRow(tr("Bar Color:"), m_colorEdit);
    form->addRow(tr("Decimal Places:"), m_decimalsEdit);
}

void BarGraphWidget::applyConfigForm()
{
    if (m_autoEdit)
        m_range.setAutomatic(m_autoEdit->isChecked());
    if (m_minEdit && m_maxEdit)
        m_range.setFixed(m_minEdit->value(), m_maxEdit->value());
    if (m_orientationEdit)
        setOrientation(Qt::Orientation(m_orientationEdit->currentData().toInt()));
    if (m_colorEdit)
        setBarColor(m_colorEdit->currentData().value<QColor>());
    if (m_decimalsEdit)
        setDecimals(m_decimalsEdit->value());
    // Settings applied again are a fresh start for an automatic scale.
    restartAutomaticRange();
}

void BarGraphWidget::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * ratio).toSize();
    // A graph larger than the screen draws everything where it is, keeping nothing.
    if (!fitsCacheLimit(pixels)) {
        m_backdrop = QPixmap();
        m_backdropKey.clear();
        QPainter painter(this);
        BarGraphPainter(*this, painter).paint();
        return;
    }
    const QString key = backdropKey();
    if (key != m_backdropKey || m_backdrop.size() != pixels) {
        m_backdrop = QPixmap(pixels);
        m_backdrop.setDevicePixelRatio(ratio);
        m_backdrop.fill(Qt::transparent);
        QPainter backdrop(&m_backdrop);
        BarGraphPainter(*this, backdrop).paint(BarGraphPainter::Backdrop);
        m_backdropKey = key;
    }
    QPainter painter(this);
    painter.drawPixmap(0, 0, m_backdrop);
    BarGraphPainter(*this, painter).paint(BarGraphPainter::Values);
}

QString BarGraphWidget::backdropKey() const
{
    refreshCaptions();
    QString key = m_captions.join(u'\n');
    for (const double limit : {m_range.lower(), m_range.upper(), m_range.baseline()})
        key += u'\n' + QString::number(limit, 'g', 17);
    key += u'\n' + font().key() + u'\n' + QString::number(palette().color(QPalette::WindowText).rgba())
        + u'\n' + QString::number(int(m_orientation));
    return key;
}
