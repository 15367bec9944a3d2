#include "DashboardWidgetConfigDialog.h"

#include "DashboardWidget.h"
#include "SignalDefinitions.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QListWidget>
#include <QVBoxLayout>

namespace {

QList<SignalDef> catalogueSignals()
{
    const SignalDefinitions *defs = SignalDefinitions::current();
    return defs ? defs->signals() : QList<SignalDef>();
}

} // namespace

DashboardWidgetConfigDialog::DashboardWidgetConfigDialog(DashboardWidget *widget, QWidget *parent)
    : QDialog(parent)
    , m_widget(widget)
{
    setWindowTitle(QStringLiteral("Configure Widget"));
    m_layout = new QVBoxLayout(this);
    m_form = new QFormLayout;
    m_layout->addLayout(m_form);

    if (m_widget->supportsMultipleSignals())
        buildSignalList();
    else if (m_widget->usesSignals())
        buildSignalCombo();

    m_widget->buildConfigForm(m_form, this);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &DashboardWidgetConfigDialog::applyConfig);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_layout->addWidget(buttons);
}

void DashboardWidgetConfigDialog::buildSignalList()
{
    m_signalList = new QListWidget(this);
    m_signalList->setSelectionMode(QAbstractItemView::MultiSelection);
    for (const SignalDef &def : catalogueSignals()) {
        auto *item = new QListWidgetItem(QStringLiteral("%1 (%2)").arg(def.name, def.label), m_signalList);
        item->setData(Qt::UserRole, def.name);
    }
    const QStringList bound = m_widget->signalNames();
    for (int row = 0; row < m_signalList->count(); ++row) {
        QListWidgetItem *item = m_signalList->item(row);
        if (bound.contains(item->data(Qt::UserRole).toString()))
            item->setSelected(true);
    }
    m_form->addRow(QStringLiteral("Signals:"), m_signalList);
}

void DashboardWidgetConfigDialog::buildSignalCombo()
{
    m_signalCombo = new QComboBox(this);
    for (const SignalDef &def : catalogueSignals())
        m_signalCombo->addItem(QStringLiteral("%1 : %2").arg(def.name, def.label), def.name);

    const QStringList bound = m_widget->signalNames();
    const QString current = bound.isEmpty() ? QString() : bound.first();
    // By name first, so "rpm" never lands on "rpm_max"; the text match is a fallback.
    int index = m_signalCombo->findData(current, Qt::UserRole, Qt::MatchCaseSensitive);
    if (index < 0)
        index = m_signalCombo->findText(current, Qt::MatchContains);
    if (index >= 0)
        m_signalCombo->setCurrentIndex(index);
    m_form->addRow(QStringLiteral("Signal:"), m_signalCombo);
}

void DashboardWidgetConfigDialog::applyConfig()
{
    if (m_signalList) {
        QStringList names;
        const QList<QListWidgetItem *> selected = m_signalList->selectedItems();
        for (const QListWidgetItem *item : selected)
            names.append(item->data(Qt::UserRole).toString());
        m_widget->setSignalNames(names);
    } else if (m_signalCombo) {
        m_widget->setSignalNames(QStringList{m_signalCombo->currentData(Qt::UserRole).toString()});
    }
    m_widget->applyConfigForm();
    accept();
}
