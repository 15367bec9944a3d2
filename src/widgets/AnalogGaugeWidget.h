#pragma once

#include "DashboardWidget.h"

#include <QPixmap>
#include <QPointer>
#include <QSize>

QT_BEGIN_NAMESPACE
class QDoubleSpinBox;
class QPainter;
QT_END_NAMESPACE

/**
 * One signal as a needle on a circular dial with a 270° scale, from -135°
 * (scale start) to +135° (scale end), clockwise from 12 o'clock.
 *
 * The dial (face, ticks, tick labels) is cached in a pixmap and redrawn only
 * when the widget's size changes or the range is set; value changes only
 * redraw the needle. A dial larger than the screen is not cached.
 *
 * Config keys: "min" and "max" (numbers, default 0 and 100). Loading needs
 * both keys and truncates fractional limits toward zero (a saved 0.5 loads
 * back as 0).
 */
class AnalogGaugeWidget : public DashboardWidget
{
    Q_OBJECT

public:
    explicit AnalogGaugeWidget(QWidget *parent = nullptr);

    /// Limited to [min, max]; NaN shows as min.
    void setValue(double value) override;
    QString typeName() const override;
    /// The gauge's own name field (label()), not the bound list; empty
    /// until setLabel() fills it.
    QString primarySignal() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    double value() const { return m_value; }
    double minimum() const { return m_min; }
    double maximum() const { return m_max; }
    /// Sets the scale and drops the cached dial.
    void setRange(double min, double max);
    QString label() const { return m_label; }
    /// No config key fills the label; whoever shows the gauge may name it.
    void setLabel(const QString &label);

    /// Needle rotation in degrees, within -135..135; -135 when the range is empty.
    double needleAngle() const;
    /// The eleven tick label texts, start to end.
    QStringList tickLabels() const;
    /// How often the cached dial has been drawn since construction.
    int dialRebuildCount() const { return m_dialRebuilds; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void updateFrame() override;

private:
    void dropDialCache();
    void rebuildDial(int side);
    void drawDial(QPainter &painter, int side) const;
    void drawTicks(QPainter &painter) const;
    void drawCaption(QPainter &painter) const;
    // Where the needle and the hub are painted now, with room for antialiasing.
    QRect needleArea() const;
    // Below the dial: where the caption may be painted.
    QRect captionArea() const;
    int labelDecimals() const;

    double m_value = 0.0;
    double m_min = 0.0;
    double m_max = 100.0;
    QPixmap m_background;
    QSize m_backgroundSize;
    QString m_label;
    QPointer<QDoubleSpinBox> m_minEdit;
    QPointer<QDoubleSpinBox> m_maxEdit;
    int m_dialRebuilds = 0;
    QRect m_paintedNeedle;
};
