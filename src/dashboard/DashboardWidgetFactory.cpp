#include "DashboardWidgetFactory.h"

#include "AnalogGaugeWidget.h"
#include "DashboardWidget.h"
#include "DigitalDisplayWidget.h"
#include "ErrorConsoleWidget.h"
#include "MessagesConsoleWidget.h"
#include "StateIndicatorWidget.h"
#include "TrendPlotWidget.h"
#include "XYPlotWidget.h"

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

namespace {
template<typename W>
DashboardWidget *make()
{
    return new W;
}
} // namespace

void DashboardWidgetFactory::registerBuiltInTypes()
{
    // The icons are compiled into the static core library, whose resource
    // object the linker drops unless something references it.
    Q_INIT_RESOURCE(resources);
    // Rows in palette order; each widget type adds its row here as it lands.
    registerType(QStringLiteral("AnalogGauge"), make<AnalogGaugeWidget>, QIcon(QStringLiteral(":/icons/gauge.png")));
    registerType(QStringLiteral("DigitalDisplay"), make<DigitalDisplayWidget>, QIcon(QStringLiteral(":/icons/display.png")));
    registerType(QStringLiteral("TrendPlot"), make<TrendPlotWidget>, QIcon(QStringLiteral(":/icons/line_chart.png")));
    registerType(QStringLiteral("StateIndicator"), make<StateIndicatorWidget>, QIcon(QStringLiteral(":/icons/state.png")));
    registerType(QStringLiteral("ErrorConsole"), make<ErrorConsoleWidget>, QIcon(QStringLiteral(":/icons/error_console.png")));
    registerType(QStringLiteral("MessagesConsole"), make<MessagesConsoleWidget>, QIcon(QStringLiteral(":/icons/message-console.png")));
    registerType(QStringLiteral("XYPlot"), make<XYPlotWidget>, QIcon(QStringLiteral(":/icons/xy_plot.png")));
}
