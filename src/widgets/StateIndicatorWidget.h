#pragma once

#include "DashboardWidget.h"
#include "IStateConsumer.h"

#include <QColor>
#include <QFont>
#include <QPointer>

QT_BEGIN_NAMESPACE
class QComboBox;
QT_END_NAMESPACE

/**
 * The current state of one state group: a caption naming the group and a
 * rounded pill coloured by the state's meaning, carrying the state's label.
 *
 * Its binding is the group id, not a signal. The caption is the group's label
 * from SignalDefinitions::current() when declared, else the id itself.
 *
 * Config keys: "groupId" (string) and "corner" (integer, pill corner radius).
 */
class StateIndicatorWidget : public DashboardWidget, public IStateConsumer
{
    Q_OBJECT

public:
    explicit StateIndicatorWidget(QWidget *parent = nullptr);

    /// State indicators take states, not values.
    void setValue(double value) override;
    QString typeName() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    /// Binds to a group (trimmed); setting the current id again does nothing,
    /// so the catalogue is only read when the group changes.
    void setGroupId(const QString &id);
    /// Shows a state; an empty label shows the state id.
    void setState(const QString &stateId, const QString &label) override;

    QString groupId() const override { return m_groupId; }
    QString title() const { return m_title; }
    QString stateId() const { return m_stateId; }
    QString stateLabel() const { return m_stateLabel; }
    int corner() const { return m_corner; }
    /// The text inside the pill: the label, else the id, else an em dash.
    QString pillText() const;
    QColor stateColor() const { return colorForState(m_stateId); }

    /// Colour family by substring of the upper-cased id, red tested first:
    /// STOP/OUT/FAIL red, GO/IN/PASS green, PAUSE amber, anything else slate.
    static QColor colorForState(const QString &stateId);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_groupId;
    QString m_title;
    QString m_stateId;
    QString m_stateLabel;
    QFont m_font;
    int m_margin = 8;
    int m_corner = 10;
    QPointer<QComboBox> m_groupCombo;
};
