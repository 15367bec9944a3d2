#include "DashboardSnapshot.h"

#include "Dashboard.h"
#include "DashboardItem.h"
#include "DesignScene.h"
#include "FrameClock.h"
#include "Ombrix.h"
#include "PlaybackScrubber.h"
#include "PlaybackSession.h"
#include "Project.h"
#include "SignalPlaybackEngine.h"
#include "UserPrompts.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QGraphicsView>
#include <QPainter>

#include <cmath>
#include <memory>

namespace {

// Nobody answers questions here: every warning is kept as the reason.
class UnattendedPrompts : public UserPrompts
{
public:
    void warning(QWidget *, const QString &, const QString &text, const QString &details) override
    {
        remember(details.isEmpty() ? text : text + QLatin1Char(' ') + details);
    }
    void information(QWidget *, const QString &, const QString &text) override { remember(text); }
    QString openFileName(QWidget *, const QString &, const QString &, const QString &) override { return {}; }
    QString saveFileName(QWidget *, const QString &, const QString &, const QString &) override { return {}; }
    QString existingDirectory(QWidget *, const QString &, const QString &) override { return {}; }
    bool acceptProjectIntro(QWidget *) override { return false; }

    QString last;

private:
    void remember(const QString &text) { last = QString(text).replace(QLatin1Char('\n'), QLatin1Char(' ')); }
};

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

bool moveToMoment(Ombrix &window, const DashboardSnapshot::Request &request, UnattendedPrompts &prompts,
                  QString *error)
{
    const QString path = request.recordingPath;
    if (!QFileInfo(path).isFile())
        return fail(error, QStringLiteral("recording not found: %1").arg(path));
    window.setPlaybackFile(path);
    SignalPlaybackEngine *engine = window.engine();
    if (engine->frames().isEmpty()) {
        const QString reason = prompts.last.isEmpty() ? QStringLiteral("it holds no data") : prompts.last;
        return fail(error, QStringLiteral("cannot play %1: %2").arg(path, reason));
    }
    const double at = request.atSeconds;
    if (!std::isfinite(at) || at < 0.0 || at > engine->duration())
        return fail(error, QStringLiteral("%1 s is outside the recording, which runs from 0 to %2 s")
                               .arg(QString::number(at), QString::number(engine->duration(), 'f', 3)));
    // As a slider released there while paused: the history before the
    // moment fills the plots, then everything in force is shown.
    Dashboard *dashboard = window.dashboard();
    dashboard->setTrendPlotsTimeDriven(true);
    engine->setPreviewWindow(window.playback()->scrubber()->previewWindowSeconds());
    engine->seek(at);
    dashboard->moveTrendPlotsTo(qint64(std::llround(at * 1000.0)));
    return true;
}

} // namespace

bool DashboardSnapshot::render(const Request &request, QImage *image, QString *error)
{
    if (!Project::isValidProjectDir(request.projectDir))
        return fail(error, QStringLiteral("not a project folder (no dashboard_signals.def in it): %1")
                               .arg(request.projectDir));
    if (!QFileInfo(request.layoutPath).isFile())
        return fail(error, QStringLiteral("layout not found: %1").arg(request.layoutPath));

    Ombrix window;
    auto owned = std::make_unique<UnattendedPrompts>();
    UnattendedPrompts &prompts = *owned;
    window.setPrompts(std::move(owned));
    if (!window.setProjectDir(request.projectDir))
        return fail(error, QStringLiteral("cannot open the project %1: %2").arg(request.projectDir, prompts.last));
    if (!window.loadLayoutFrom(request.layoutPath))
        return fail(error, QStringLiteral("cannot load the layout %1: %2").arg(request.layoutPath, prompts.last));
    // Shown on the platform the application runs on (offscreen unattended),
    // so that the widgets lay themselves out as in the window.
    window.show();
    QCoreApplication::processEvents();
    if (!request.recordingPath.isEmpty() && !moveToMoment(window, request, prompts, error))
        return false;

    FrameClock::instance().finishFrame();
    QCoreApplication::processEvents();
    const QSize size = request.size.isEmpty() ? extentOf(*window.dashboard()) : request.size;
    if (size.width() > MaxSide || size.height() > MaxSide)
        return fail(error, QStringLiteral("a picture of %1 x %2 is larger than %3 x %3")
                               .arg(size.width())
                               .arg(size.height())
                               .arg(MaxSide));
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(window.dashboard()->view()->palette().window().color());
    QPainter painter(&picture);
    painter.setRenderHints(window.dashboard()->view()->renderHints());
    const QRectF area(QPointF(0, 0), QSizeF(size));
    window.dashboard()->scene()->render(&painter, area, area);
    painter.end();
    *image = picture;
    return true;
}
