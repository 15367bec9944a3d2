// The widget library's registration of its types with the dashboard's
// registry: the one place where the concrete widget classes are listed.
#include "DashboardWidgetFactory.h"

#include "AnalogGaugeWidget.h"
#include "BarGraphWidget.h"
#include "CommandButtonWidget.h"
#include "DigitalDisplayWidget.h"
#include "ErrorConsoleWidget.h"
#include "ImageWidget.h"
#include "LineWidget.h"
#include "MessagesConsoleWidget.h"
#include "SetpointControlWidget.h"
#include "StateIndicatorWidget.h"
#include "TextLabelWidget.h"
#include "TrendPlotWidget.h"
#include "XYPlotWidget.h"

namespace {

template<typename W>
DashboardWidget *make()
{
    return new W;
}

} // namespace

void DashboardWidgetFactory::registerBuiltInTypes()
{
    // The icons are compiled into a static library, whose resource object
    // the linker drops unless something references it.
    Q_INIT_RESOURCE(resources);
    // Rows in palette order.
    registerType(QStringLiteral("AnalogGauge"), make<AnalogGaugeWidget>, QIcon(QStringLiteral(":/icons/gauge.png")));
    registerType(QStringLiteral("DigitalDisplay"), make<DigitalDisplayWidget>, QIcon(QStringLiteral(":/icons/display.png")));
    registerType(QStringLiteral("BarGraph"), make<BarGraphWidget>, QIcon(QStringLiteral(":/icons/bar_chart.png")));
    registerType(QStringLiteral("Line"), make<LineWidget>, QIcon(QStringLiteral(":/icons/line.png")));
    registerType(QStringLiteral("TextLabel"), make<TextLabelWidget>, QIcon(QStringLiteral(":/icons/text.png")));
    registerType(QStringLiteral("TrendPlot"), make<TrendPlotWidget>, QIcon(QStringLiteral(":/icons/line_chart.png")));
    registerType(QStringLiteral("StateIndicator"), make<StateIndicatorWidget>, QIcon(QStringLiteral(":/icons/state.png")));
    registerType(QStringLiteral("ErrorConsole"), make<ErrorConsoleWidget>, QIcon(QStringLiteral(":/icons/error_console.png")));
    registerType(QStringLiteral("MessagesConsole"), make<MessagesConsoleWidget>, QIcon(QStringLiteral(":/icons/message-console.png")));
    registerType(QStringLiteral("Image"), make<ImageWidget>, QIcon(QStringLiteral(":/icons/image-icon.png")));
    registerType(QStringLiteral("XYPlot"), make<XYPlotWidget>, QIcon(QStringLiteral(":/icons/xy_plot.png")));
    // The controls that talk back to the device come after the displays.
    registerType(QStringLiteral("CommandButton"), make<CommandButtonWidget>, QIcon(QStringLiteral(":/icons/command_button.png")));
    registerType(QStringLiteral("SetpointControl"), make<SetpointControlWidget>, QIcon(QStringLiteral(":/icons/setpoint.png")));
}
