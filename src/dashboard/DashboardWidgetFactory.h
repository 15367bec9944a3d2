#pragma once

#include <QHashFunctions>
#include <QIcon>
#include <QString>
#include <QStringList>

#include <functional>
#include <unordered_map>

class DashboardWidget;

// Process-wide registry: widget type name -> creator and palette icon.
class DashboardWidgetFactory
{
public:
    using Creator = std::function<DashboardWidget *()>;

    static DashboardWidgetFactory &instance();

    // A name already present keeps its place and gets the new creator and icon.
    void registerType(const QString &typeName, Creator creator, const QIcon &icon);
    // A new parentless widget, or nullptr when the name is not registered.
    DashboardWidget *create(const QString &typeName) const;
    QIcon iconFor(const QString &typeName) const;
    // Registered names in registration order, for the widget palette.
    QStringList typeNames() const { return m_order; }

    // Registers every widget type the application ships with. Defined by the
    // widget library (BuiltInWidgetTypes.cpp), so that this registry knows no
    // concrete widget.
    void registerBuiltInTypes();

    DashboardWidgetFactory(const DashboardWidgetFactory &) = delete;
    DashboardWidgetFactory &operator=(const DashboardWidgetFactory &) = delete;

private:
    DashboardWidgetFactory();

    struct Entry
    {
        Creator creator;
        QIcon icon;
    };
    struct NameHash
    {
        size_t operator()(const QString &name) const { return qHash(QStringView(name)); }
    };

    std::unordered_map<QString, Entry, NameHash> m_entries;
    QStringList m_order;
};
