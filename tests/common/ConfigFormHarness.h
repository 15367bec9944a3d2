#pragma once

#include "DashboardWidget.h"

#include <QFormLayout>
#include <QLabel>
#include <QWidget>

#include <memory>

// A widget's own configuration rows built into a throwaway parent, as the
// configuration dialog builds them; close() plays the dialog going away.
class ConfigFormHarness
{
public:
    explicit ConfigFormHarness(DashboardWidget &widget)
        : m_parent(std::make_unique<QWidget>())
        , m_form(new QFormLayout(m_parent.get()))
    {
        widget.buildConfigForm(m_form, m_parent.get());
    }

    int rowCount() const { return m_form->rowCount(); }
    // The editor of `row`, whether it sits beside a label or spans the row.
    template<typename Editor>
    Editor *editor(int row) const
    {
        QLayoutItem *item = m_form->itemAt(row, QFormLayout::FieldRole);
        if (!item)
            item = m_form->itemAt(row, QFormLayout::SpanningRole);
        return item ? qobject_cast<Editor *>(item->widget()) : nullptr;
    }
    // The text of `row`'s label, empty for a spanning row.
    QString label(int row) const
    {
        QLayoutItem *item = m_form->itemAt(row, QFormLayout::LabelRole);
        auto *text = item ? qobject_cast<QLabel *>(item->widget()) : nullptr;
        return text ? text->text() : QString();
    }
    void close() { m_parent.reset(); }

private:
    std::unique_ptr<QWidget> m_parent;
    QFormLayout *m_form = nullptr;
};
