#pragma once

#include "DashboardWidget.h"

#include <QColor>
#include <QFont>
#include <QPointer>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;
QT_END_NAMESPACE

/**
 * A fixed piece of text, a title or a caption. Text too long for the item is
 * cut at its edges, not wrapped. It binds no signal and ignores values.
 *
 * Its colour table is its own, not the line's: there is no "Light Gray", and
 * what is not in it falls back to black, where a line falls back to grey.
 *
 * Config keys: "text", "color" (a name from colorNames()), "point" (font
 * point size), "bold" (boolean) and "align" ("Left", "Right" or "Center").
 */
class TextLabelWidget : public DashboardWidget
{
    Q_OBJECT

public:
    explicit TextLabelWidget(QWidget *parent = nullptr);

    /// A label shows no value.
    void setValue(double value) override;
    QString typeName() const override;
    bool usesSignals() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    QString text() const { return m_text; }
    void setText(const QString &text);
    QColor color() const { return m_color; }
    void setColor(const QColor &color);
    /// The font the text is painted in (the widget's font() is not used).
    QFont labelFont() const { return m_font; }
    /// Sizes below 1 are ignored.
    void setPointSize(int pointSize);
    void setBold(bool bold);
    Qt::Alignment alignment() const { return m_alignment; }
    void setAlignment(Qt::Alignment alignment);

    /// The colour names in the editor's order.
    static QStringList colorNames();
    /// Exact, case-sensitive; any other name is black.
    static QColor colorForName(const QString &name);
    /// Any colour outside the table is named "Black".
    static QString nameForColor(const QColor &color);
    /// "Left" and "Right" keep the text vertically centred; any other name
    /// centres it both ways.
    static Qt::Alignment alignmentForName(const QString &name);
    static QString nameForAlignment(Qt::Alignment alignment);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_text = QStringLiteral("Label");
    QColor m_color = Qt::black;
    QFont m_font;
    Qt::Alignment m_alignment = Qt::AlignCenter;
    QPointer<QLineEdit> m_textEdit;
    QPointer<QComboBox> m_colorEdit;
    QPointer<QSpinBox> m_sizeEdit;
    QPointer<QCheckBox> m_boldEdit;
    QPointer<QComboBox> m_alignEdit;
};
