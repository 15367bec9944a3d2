#include "TrendPlotSettingsForm.h"

#include "TrendPlotSettings.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QSpinBox>

namespace {

constexpr double RangeEditorLimit = 1e12;

QCheckBox *checkBox(QWidget *parent, bool on)
{
    auto *box = new QCheckBox(parent);
    box->setChecked(on);
    return box;
}

QSpinBox *spinBox(QWidget *parent, int min, int max, int value)
{
    auto *box = new QSpinBox(parent);
    box->setRange(min, max);
    box->setValue(value);
    return box;
}

QDoubleSpinBox *limitEditor(QWidget *parent, double value)
{
    auto *editor = new QDoubleSpinBox(parent);
    editor->setRange(-RangeEditorLimit, RangeEditorLimit);
    editor->setDecimals(4);
    editor->setValue(value);
    return editor;
}

template<typename Editor, typename Value, typename Read>
void readBack(const QPointer<Editor> &editor, Value &field, Read read)
{
    if (editor)
        field = (editor.data()->*read)();
}

} // namespace

void TrendPlotSettingsForm::build(QFormLayout *form, QWidget *parent, const TrendPlotSettings &settings)
{
    m_window = spinBox(parent, 200, 600000, settings.timeWindowMs);
    m_window->setSingleStep(100);
    m_autoscale = checkBox(parent, settings.autoscale);
    m_yMin = limitEditor(parent, settings.yMin);
    m_yMax = limitEditor(parent, settings.yMax);
    m_grid = checkBox(parent, settings.showGrid);
    m_gridLines = spinBox(parent, 2, 12, settings.gridLines);
    m_step = checkBox(parent, settings.sampleAndHold);

    // The fixed range only counts while autoscale is off.
    const auto enableLimits = [yMin = m_yMin, yMax = m_yMax](bool autoscaleOn) {
        yMin->setEnabled(!autoscaleOn);
        yMax->setEnabled(!autoscaleOn);
    };
    enableLimits(settings.autoscale);
    QObject::connect(m_autoscale, &QCheckBox::toggled, m_yMin, enableLimits);

    form->addRow(QStringLiteral("Time window (ms):"), m_window);
    form->addRow(QStringLiteral("Autoscale Y:"), m_autoscale);
    form->addRow(QStringLiteral("Y min:"), m_yMin);
    form->addRow(QStringLiteral("Y max:"), m_yMax);
    form->addRow(QStringLiteral("Show grid:"), m_grid);
    form->addRow(QStringLiteral("Grid lines:"), m_gridLines);
    form->addRow(QStringLiteral("Step plot style:"), m_step);
}

void TrendPlotSettingsForm::apply(TrendPlotSettings &settings) const
{
    readBack(m_window, settings.timeWindowMs, &QSpinBox::value);
    readBack(m_autoscale, settings.autoscale, &QCheckBox::isChecked);
    readBack(m_yMin, settings.yMin, &QDoubleSpinBox::value);
    readBack(m_yMax, settings.yMax, &QDoubleSpinBox::value);
    readBack(m_grid, settings.showGrid, &QCheckBox::isChecked);
    readBack(m_gridLines, settings.gridLines, &QSpinBox::value);
    readBack(m_step, settings.sampleAndHold, &QCheckBox::isChecked);
}
