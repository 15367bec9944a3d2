#pragma once

#include "SignalsCsvExporter.h"

#include <QDialog>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QListWidget;
QT_END_NAMESPACE

class SignalDefinitions;

// Asks which signals to export, at which rate and in which units. Every
// signal of the recording is listed by its display name and preselected;
// OK stays disabled while none is checked. The dialog only collects the
// choice: the caller picks the file and runs SignalsCsvExporter.
class SignalsExportDialog : public QDialog
{
    Q_OBJECT

public:
    explicit SignalsExportDialog(const QStringList &signalNames, const SignalDefinitions *defs,
                                 QWidget *parent = nullptr);

    // The checked signals in list order, the rate and the mapping choice.
    SignalsExportOptions options() const;

    // Samples per second offered at most by the rate box.
    static constexpr double MaxRateHz = 100000.0;

public Q_SLOTS:
    void selectAll();
    void selectNone();

private:
    void fillList(const QStringList &signalNames, const SignalDefinitions *defs);
    void setAllChecked(bool checked);
    void updateOkButton();

    QListWidget *m_list = nullptr;
    QDoubleSpinBox *m_rate = nullptr;
    QCheckBox *m_mapped = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
};
