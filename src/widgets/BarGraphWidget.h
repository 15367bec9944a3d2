#pragma once

#include "BarRange.h"
#include "DashboardWidget.h"

#include <QColor>
#include <QPixmap>
#include <QPointer>

#include <vector>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QSpinBox;
QT_END_NAMESPACE

class SignalDefinitions;

/**
 * Several signals as bars side by side, one per bound entry, each with its
 * display name (the catalogue's label, else the name) and its value.
 *
 * A bound entry "NAME:unit" is fed by the values of NAME and shows the unit
 * after the value. Bars grow from zero, or from the limit nearest to it when
 * the scale does not include zero. A value beyond the scale is drawn up to
 * the scale's end with a triangle pointing past it; a bar that has had no
 * value yet, or whose last value was NaN, shows no bar at all. An automatic
 * scale starts again from the values shown whenever the binding changes or
 * the settings are applied from the form.
 *
 * Values are stored as they arrive and painted with the next frame, however
 * many come in between.
 *
 * Config keys: "autoRange" (bool, default true), "min" and "max" (numbers,
 * default 0 and 100, used while autoRange is off), "orientation"
 * ("vertical" or "horizontal"), "barColor" (colour name such as "#0072b2")
 * and "decimalPlaces" (integer 0..8, default 1). A missing key, or one of
 * the wrong type, keeps the current setting.
 */
class BarGraphWidget : public DashboardWidget
{
    Q_OBJECT

public:
    static constexpr int MaxDecimals = 8;

    explicit BarGraphWidget(QWidget *parent = nullptr);

    /// A value without a name goes to the first bar.
    void setValue(double value) override;
    QString typeName() const override;
    /// Goes to every bar whose entry, cut at its first ':', is `name`.
    void setValueForSignal(const QString &name, double value) override;
    bool supportsMultipleSignals() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    const BarRange &range() const { return m_range; }
    void setAutomaticRange(bool on);
    void setFixedRange(double min, double max);
    Qt::Orientation orientation() const { return m_orientation; }
    void setOrientation(Qt::Orientation orientation);
    QColor barColor() const { return m_color; }
    /// An invalid colour is ignored.
    void setBarColor(const QColor &color);
    int decimals() const { return m_decimals; }
    /// Limited to 0..MaxDecimals.
    void setDecimals(int decimals);

    int barCount() const { return int(m_bars.size()); }
    /// The display name of the bar's signal, from the current catalogue.
    QString barCaption(int bar) const;
    /// "12.5 rpm"; an em dash until the first value arrives.
    QString barValueText(int bar) const;
    bool barHasValue(int bar) const { return m_bars.at(size_t(bar)).hasValue; }
    double barValue(int bar) const { return m_bars.at(size_t(bar)).value; }

    static QColor defaultBarColor();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Bar
    {
        QString entry; // as bound, "NAME:unit"
        QString name;  // what values arrive under
        QString unit;
        double value = 0.0;
        bool hasValue = false;
    };

    void rebuildBars();
    void restartAutomaticRange();
    void refreshCaptions() const;
    // What the kept backdrop was drawn from, besides the size.
    QString backdropKey() const;

    std::vector<Bar> m_bars;
    BarRange m_range;
    Qt::Orientation m_orientation = Qt::Vertical;
    QColor m_color = defaultBarColor();
    int m_decimals = 1;
    // Display names, looked up again when the catalogue is replaced.
    mutable QStringList m_captions;
    mutable const SignalDefinitions *m_captionsFrom = nullptr;
    mutable bool m_captionsValid = false;
    // The tracks, limits and names, drawn again only when the key changes.
    QPixmap m_backdrop;
    QString m_backdropKey;

    QPointer<QCheckBox> m_autoEdit;
    QPointer<QDoubleSpinBox> m_minEdit;
    QPointer<QDoubleSpinBox> m_maxEdit;
    QPointer<QComboBox> m_orientationEdit;
    QPointer<QComboBox> m_colorEdit;
    QPointer<QSpinBox> m_decimalsEdit;
};
