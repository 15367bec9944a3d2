#include "DashboardSnapshot.h"

#include "Dashboard.h"
#include "DashboardCore.h"
#include "DashboardItem.h"
#include "DashboardWidget.h"
#include "DesignScene.h"
#include "FrameClock.h"
#include "LayoutFile.h"
#include "ProjectFolder.h"
#include "SignalPlaybackEngine.h"
#include "WidgetView.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPainter>

#include <cmath>

namespace {

bool fail(QString *error, const QString &message)
{
    if (error)
        *error = message;
    return false;
}

QSize extentOf(const Dashboard &dashboard)
{
    // The items from the scene's origin, and a grid step of margin.
    QRectF items(0, 0, 1, 1);
    for (const DashboardItem *item : dashboard.items())
        items |= item->sceneBoundingRect();
    return QSize(int(std::ceil(items.right())) + 10, int(std::ceil(items.bottom())) + 10);
}

QString layoutProblem(LayoutFile::Result result)
{
    return result == LayoutFile::Result::InvalidFormat ? QStringLiteral("Invalid layout format.")
                                                       : QStringLiteral("Could not load layout.");
}

bool moveToMoment(DashboardCore &core, const DashboardSnapshot::Request &request, QString *error)
{
    const QString path = request.recordingPath;
    if (!QFileInfo(path).isFile())
        return fail(error, QStringLiteral("recording not found: %1").arg(path));
    SignalPlaybackEngine *engine = core.engine();
    if (!engine->load(path))
        return fail(error, QStringLiteral("cannot play %1: Could not load recording: %2").arg(path, engine->errorString()));
    if (engine->frames().isEmpty())
        return fail(error, QStringLiteral("cannot play %1: it holds no data").arg(path));
    const double at = request.atSeconds;
    if (!std::isfinite(at) || at < 0.0 || at > engine->duration())
        return fail(error, QStringLiteral("%1 s is outside the recording, which runs from 0 to %2 s")
                               .arg(QString::number(at), QString::number(engine->duration(), 'f', 3)));
    core.showMoment(at);
    return true;
}

} // namespace

bool DashboardSnapshot::render(const Request &request, QImage *image, QString *error)
{
    if (!ProjectFolder::isValid(request.projectDir))
        return fail(error, QStringLiteral("not a project folder (no dashboard_signals.def in it): %1")
                               .arg(request.projectDir));
    if (!QFileInfo(request.layoutPath).isFile())
        return fail(error, QStringLiteral("layout not found: %1").arg(request.layoutPath));

    DashboardCore core;
    QString reason;
    if (!core.loadDefinitions(ProjectFolder::definitionsPath(request.projectDir), &reason))
        return fail(error, QStringLiteral("cannot open the project %1: %2").arg(request.projectDir, reason));
    // Pictures are found as the window finds them.
    DashboardWidget::setProjectFolder(QFileInfo(request.projectDir).absoluteFilePath());
    const LayoutFile::Result loaded = core.layout().load(request.layoutPath, false);
    if (loaded != LayoutFile::Result::Ok)
        return fail(error, QStringLiteral("cannot load the layout %1: %2 %3")
                               .arg(request.layoutPath, layoutProblem(loaded), core.layout().errorString()));
    // Shown in a view on the platform the application runs on (offscreen
    // unattended), so that the widgets lay themselves out as in the window.
    WidgetView view(core.scene());
    view.show();
    QCoreApplication::processEvents();
    if (!request.recordingPath.isEmpty() && !moveToMoment(core, request, error))
        return false;

    FrameClock::instance().finishFrame();
    QCoreApplication::processEvents();
    const QSize size = request.size.isEmpty() ? extentOf(*core.dashboard()) : request.size;
    if (size.width() > MaxSide || size.height() > MaxSide)
        return fail(error, QStringLiteral("a picture of %1 x %2 is larger than %3 x %3")
                               .arg(size.width())
                               .arg(size.height())
                               .arg(MaxSide));
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(view.palette().window().color());
    QPainter painter(&picture);
    painter.setRenderHints(view.renderHints());
    const QRectF area(QPointF(0, 0), QSizeF(size));
    core.scene()->render(&painter, area, area);
    painter.end();
    *image = picture;
    return true;
}
