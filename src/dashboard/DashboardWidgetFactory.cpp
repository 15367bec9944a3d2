#include "DashboardWidgetFactory.h"

#include "DashboardWidget.h"

DashboardWidgetFactory &DashboardWidgetFactory::instance()
{
    static DashboardWidgetFactory factory;
    return factory;
}

DashboardWidgetFactory::DashboardWidgetFactory()
    : m_entries(8)
{
    m_entries.max_load_factor(1.0f);
}

void DashboardWidgetFactory::registerType(const QString &typeName, Creator creator, const QIcon &icon)
{
    if (!m_entries.count(typeName))
        m_order.append(typeName);
    m_entries[typeName] = Entry{std::move(creator), icon};
}

DashboardWidget *DashboardWidgetFactory::create(const QString &typeName) const
{
    const auto it = m_entries.find(typeName);
    return it == m_entries.end() ? nullptr : it->second.creator();
}

QIcon DashboardWidgetFactory::iconFor(const QString &typeName) const
{
    const auto it = m_entries.find(typeName);
    return it == m_entries.end() ? QIcon(QStringLiteral(":/icons/default.png")) : it->second.icon;
}
