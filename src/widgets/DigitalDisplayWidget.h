#pragma once

#include "DashboardWidget.h"

#include <QPointer>

QT_BEGIN_NAMESPACE
class QDoubleSpinBox;
class QLabel;
class QPainter;
QT_END_NAMESPACE

/**
 * One value as large centred digits with a fixed number of decimals, and the
 * first bound signal as a two-line caption under them.
 *
 * Two name stores are kept apart on purpose: the bound list (setSignalNames,
 * "signals") feeds the caption, while setSignalName() and the "signal" config
 * key only set the name primarySignal() returns.
 *
 * Config keys: "signal" (string) and "decimalPlaces" (integer, default 1; a
 * file may go beyond the editor's 0..8, up to 20).
 */
class DigitalDisplayWidget : public DashboardWidget
{
    Q_OBJECT

public:
    explicit DigitalDisplayWidget(QWidget *parent = nullptr);

    void setValue(double value) override;
    QString typeName() const override;
    QString primarySignal() const override;
    /// Sets the name primarySignal() returns; the bound list is left alone.
    void setSignalName(const QString &name) override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    int decimals() const { return m_decimals; }
    void setDecimals(int decimals);
    /// The digits as shown.
    QString valueText() const;

    static constexpr int MaxFileDecimals = 20;

protected:
    void paintEvent(QPaintEvent *event) override;
    void updateFrame() override;

private:
    void drawDigits(QPainter &painter) const;
    QRect digitsArea() const;
    QRect captionArea() const;
    QFont captionFont() const;

    QLabel *m_valueLabel = nullptr;
    QString m_signal;
    int m_decimals = 1;
    QPointer<QDoubleSpinBox> m_decimalsEdit;
};
