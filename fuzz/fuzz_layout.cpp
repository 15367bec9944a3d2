// Feeds arbitrary bytes to the layout loader (LayoutFile::loadFromBytes, the
// code behind LayoutFile::load): the top level, every item record
// (DashboardItem::fromJson) and every built-in widget's configuration,
// the trend plot's markers included. The dashboard it builds then gets data
// as the window routes it (values, states, errors, messages) and is drawn
// into a small image; the same bytes go through the layout checker.
//
// Runs on Qt's offscreen platform with the demo project's catalogue, so
// that bound names, state groups and the image widget's pictures resolve.
// The work per input is bounded by the input's length: no timers run and
// nothing waits.
#include "DashboardItem.h"
#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"
#include "LayoutChecker.h"
#include "LayoutFile.h"
#include "QuietMessages.h"
#include "SignalDefinitions.h"
#include "SignalRouter.h"

#include <QApplication>
#include <QEvent>
#include <QImage>
#include <QPainter>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

const SignalDefinitions *s_defs = nullptr;

// Numbers a device may send, the awkward ones included.
const double SampleValues[] = {0.0, 42.5, -1.0e300, 1.0e300, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(), 7.0};

void routeData(DesignScene &scene)
{
    SignalRouter router(&scene);
    router.setDefinitions(s_defs);
    QMap<QString, double> values;
    for (DashboardWidget *widget : router.dashboardWidgets()) {
        for (const QString &name : widget->signalNames())
            values.insert(SignalRouter::routingName(name), 0.0);
    }
    double t = 0.0;
    for (const double value : SampleValues) {
        for (auto it = values.begin(); it != values.end(); ++it)
            it.value() = value;
        router.beginBurst();
        router.routeValues(values, t);
        router.endBurst();
        t += 0.25;
    }
    for (const QString &group : s_defs->stateGroupIds()) {
        for (const StateDef &state : s_defs->statesOf(group))
            router.routeState(group, state.stateId);
        router.routeState(group, QStringLiteral("UNDECLARED"));
    }
    router.routeError(t, QStringLiteral("E_OVERTEMP"));
    router.routeError(t, QStringLiteral("UNDECLARED"));
    router.routeMessage(t, QStringLiteral("brake engaged"));
}

void draw(DesignScene &scene)
{
    QImage image(320, 240, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    scene.render(&painter);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    quietQtMessages();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "fuzz_layout";
    static char *argv[] = {name, nullptr};
    static QApplication app(argc, argv);
    DashboardWidgetFactory::instance().registerBuiltInTypes();
    const QString demo = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo");
    DashboardWidget::setProjectFolder(demo);
    static SignalDefinitions defs(demo + QStringLiteral("/dashboard_signals.def"));
    SignalDefinitions::setCurrent(&defs);
    s_defs = &defs;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), qsizetype(size));
    {
        DesignScene scene;
        const bool design = size % 2 != 0;
        scene.setDesignMode(design);
        LayoutFile(&scene).loadFromBytes(json, QStringLiteral("input"), design);
        routeData(scene);
        draw(scene);
    }
    LayoutChecker(s_defs).check(json);
    // Widgets hand some objects to the event loop to delete.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return 0;
}
