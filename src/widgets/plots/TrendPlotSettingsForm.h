#pragma once

#include <QPointer>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QDoubleSpinBox;
class QFormLayout;
class QSpinBox;
class QWidget;
QT_END_NAMESPACE

struct TrendPlotSettings;

/**
 * A trend plot's rows in the configuration form: "Time window (ms):",
 * "Autoscale Y:", "Y min:" and "Y max:" (enabled only while autoscale is
 * off), "Show grid:", "Grid lines:" and "Step plot style:". The margins are
 * set in the configuration file only.
 */
class TrendPlotSettingsForm
{
public:
    void build(QFormLayout *form, QWidget *parent, const TrendPlotSettings &settings);
    /// Copies back the editors that still exist; the form may be gone.
    void apply(TrendPlotSettings &settings) const;

private:
    QPointer<QSpinBox> m_window;
    QPointer<QCheckBox> m_autoscale;
    QPointer<QDoubleSpinBox> m_yMin;
    QPointer<QDoubleSpinBox> m_yMax;
    QPointer<QCheckBox> m_grid;
    QPointer<QSpinBox> m_gridLines;
    QPointer<QCheckBox> m_step;
};
