#include "SignalsExportDialog.h"

#include "SignalDefinitions.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

SignalsExportDialog::SignalsExportDialog(const QStringList &signalNames,
                                         const SignalDefinitions *defs, QWidget *parent)
    : QDialog(parent)
    , m_list(new QListWidget(this))
    , m_rate(new QDoubleSpinBox(this))
    , m_mapped(new QCheckBox(tr("Apply mappings (physical units)"), this))
    , m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this))
{
    setWindowTitle(tr("Export Signals CSV"));
    fillList(signalNames, defs);

    auto *allButton = new QPushButton(tr("Select All"), this);
    auto *noneButton = new QPushButton(tr("Select None"), this);
    auto *selectionRow = new QHBoxLayout;
    selectionRow->addWidget(allButton);
    selectionRow->addWidget(noneButton);
    selectionRow->addStretch();

    m_rate->setRange(0.0, MaxRateHz);
    m_rate->setDecimals(3);
    m_rate->setValue(0.0);
    m_rate->setSuffix(tr(" Hz"));
    m_rate->setSpecialValueText(tr("Recorded times"));
    m_rate->setToolTip(tr("Samples per second; 0 keeps the recorded times."));

    auto *form = new QFormLayout;
    form->addRow(tr("Rate:"), m_rate);
    form->addRow(m_mapped);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(selectionRow);
    layout->addLayout(form);
    layout->addWidget(m_buttons);

    connect(allButton, &QPushButton::clicked, this, &SignalsExportDialog::selectAll);
    connect(noneButton, &QPushButton::clicked, this, &SignalsExportDialog::selectNone);
    connect(m_list, &QListWidget::itemChanged, this, &SignalsExportDialog::updateOkButton);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    updateOkButton();
}

void SignalsExportDialog::fillList(const QStringList &signalNames, const SignalDefinitions *defs)
{
    for (const QString &name : signalNames) {
        const QString shown = defs ? defs->displayNameFor(name) : name;
        auto *item = new QListWidgetItem(shown, m_list);
        item->setData(Qt::UserRole, name);
        if (shown != name)
            item->setToolTip(name);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Checked);
    }
}

SignalsExportOptions SignalsExportDialog::options() const
{
    SignalsExportOptions result;
    for (int i = 0; i < m_list->count(); ++i) {
        const QListWidgetItem *item = m_list->item(i);
        if (item->checkState() == Qt::Checked)
            result.signalNames.append(item->data(Qt::UserRole).toString());
    }
    result.rateHz = m_rate->value();
    result.applyMappings = m_mapped->isChecked();
    return result;
}

void SignalsExportDialog::selectAll()
{
    setAllChecked(true);
}

void SignalsExportDialog::selectNone()
{
    setAllChecked(false);
}

void SignalsExportDialog::setAllChecked(bool checked)
{
    for (int i = 0; i < m_list->count(); ++i)
        m_list->item(i)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

void SignalsExportDialog::updateOkButton()
{
    bool any = false;
    for (int i = 0; i < m_list->count() && !any; ++i)
        any = m_list->item(i)->checkState() == Qt::Checked;
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(any);
}
