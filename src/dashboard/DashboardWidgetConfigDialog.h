#pragma once

#include <QDialog>

QT_BEGIN_NAMESPACE
class QComboBox;
class QFormLayout;
class QListWidget;
class QVBoxLayout;
QT_END_NAMESPACE

class DashboardWidget;

// Binds a widget to signals of the current catalogue (a multi-selection list
// for multi-signal widgets, a single choice otherwise, nothing for widgets
// that use no signals) and hosts the widget's own settings rows. Nothing
// reaches the widget before the dialog is accepted.
class DashboardWidgetConfigDialog : public QDialog
{
    Q_OBJECT

public:
    // `widget` is not owned and must outlive the dialog.
    explicit DashboardWidgetConfigDialog(DashboardWidget *widget, QWidget *parent = nullptr);

    // The signal selectors; at most one of them exists.
    QListWidget *signalList() const { return m_signalList; }
    QComboBox *signalCombo() const { return m_signalCombo; }

public Q_SLOTS:
    // Writes the selection and the widget's own rows back, then accepts.
    void applyConfig();

private:
    void buildSignalList();
    void buildSignalCombo();

    QFormLayout *m_form = nullptr;
    DashboardWidget *m_widget = nullptr;
    QListWidget *m_signalList = nullptr;
    QComboBox *m_signalCombo = nullptr;
    QVBoxLayout *m_layout = nullptr;
};
