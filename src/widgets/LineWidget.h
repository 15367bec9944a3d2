#pragma once

#include "DashboardWidget.h"

#include <QColor>
#include <QPointer>

QT_BEGIN_NAMESPACE
class QComboBox;
class QSpinBox;
QT_END_NAMESPACE

/**
 * A straight line, horizontal or vertical, across the middle of its item,
 * that divides a dashboard into areas. It binds no signal and ignores values.
 *
 * Config keys: "orientation" ("Horizontal" or "Vertical"), "thickness"
 * (integer pen width, at least 1; a file may go beyond the editor's 1..20)
 * and "color" (a name from colorNames()).
 */
class LineWidget : public DashboardWidget
{
    Q_OBJECT

public:
    explicit LineWidget(QWidget *parent = nullptr);

    /// A line shows no value.
    void setValue(double value) override;
    QString typeName() const override;
    bool usesSignals() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    Qt::Orientation orientation() const { return m_orientation; }
    void setOrientation(Qt::Orientation orientation);
    int thickness() const { return m_thickness; }
    /// Raised to at least 1.
    void setThickness(int thickness);
    QColor color() const { return m_color; }
    void setColor(const QColor &color);

    /// The colour names in the editor's order.
    static QStringList colorNames();
    /// Exact, case-sensitive; any other name is Gray.
    static QColor colorForName(const QString &name);
    /// Any colour outside the table is named "Gray".
    static QString nameForColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Qt::Orientation m_orientation = Qt::Horizontal;
    int m_thickness = 2;
    QColor m_color = QColor(120, 120, 120);
    QPointer<QComboBox> m_orientationEdit;
    QPointer<QSpinBox> m_thicknessEdit;
    QPointer<QComboBox> m_colorEdit;
};
