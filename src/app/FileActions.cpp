#include "FileActions.h"

#include "Dashboard.h"
#include "DashboardCore.h"
#include "EventsCsvExporter.h"
#include "LayoutFile.h"
#include "LayoutFormat.h"
#include "PlaybackSession.h"
#include "ProgressRunner.h"
#include "Project.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"
#include "SignalsCsvExporter.h"
#include "UserPrompts.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QMainWindow>
#include <QStatusBar>

#include <optional>

namespace {

// What an export reads, copied (cheaply: the data is shared). An export runs
// the event loop behind its progress dialog, where a recording that stops
// replaces the engine's data and the definitions in force.
struct ExportInput
{
    explicit ExportInput(const PlaybackSession &playback)
        : frames(playback.engine()->frames())
    {
        if (const SignalDefinitions *inForce = playback.definitionsInForce())
            defs = *inForce;
    }
    const SignalDefinitions *definitions() const { return defs ? &*defs : nullptr; }

    const Recording frames;
    std::optional<SignalDefinitions> defs;
};

} // namespace

FileActions::FileActions(Project *project, DashboardCore *core, PlaybackSession *playback, QMainWindow *window)
    : QObject(window)
    , m_project(project)
    , m_core(core)
    , m_playback(playback)
    , m_window(window)
{
}

FileActions::~FileActions() = default;

QString FileActions::askSavePath(const QString &caption, const QString &subfolder, const QString &fileName,
                                 const QString &filter) const
{
    const QString folder = m_project->subfolder(subfolder);
    return m_project->prompts().saveFileName(m_window, caption, folder + QLatin1Char('/') + fileName, filter);
}

void FileActions::showStatus(const QString &text) const
{
    m_window->statusBar()->showMessage(text, 4000);
}

void FileActions::saveButton()
{
    saveLayout();
    qDebug() << "Layout saved";
}

void FileActions::loadButton()
{
    loadLayout();
    qDebug() << "Layout loaded";
}

void FileActions::saveLayout()
{
    const QString path = askSavePath(tr("Save Layout"), QStringLiteral("layouts"), QStringLiteral("layout.json"),
                                     tr("Layouts (*.json)"));
    if (!path.isEmpty())
        saveLayoutTo(path);
}

bool FileActions::saveLayoutTo(const QString &path)
{
    LayoutFile &layout = m_core->layout();
    if (layout.save(path, windowKeys()) == LayoutFile::Result::Ok)
        return true;
    m_project->prompts().warning(m_window, tr("Error"), tr("Could not save layout."), layout.errorString());
    return false;
}

QJsonObject FileActions::windowKeys() const
{
    using namespace LayoutFormat;
    return QJsonObject{{WindowGeometryKey, QString::fromLatin1(m_window->saveGeometry().toBase64())},
                       {WindowStateKey, QString::fromLatin1(m_window->saveState(0).toBase64())},
                       {MaximizedKey, m_window->isMaximized()},
                       {FullScreenKey, m_window->isFullScreen()}};
}

void FileActions::restoreWindow(const QJsonObject &topLevel)
{
    using namespace LayoutFormat;
    const auto decoded = [&topLevel](QLatin1String key) {
        return QByteArray::fromBase64(topLevel.value(key).toString().toLatin1());
    };
    if (const QByteArray geometry = decoded(WindowGeometryKey); !geometry.isEmpty())
        m_window->restoreGeometry(geometry);
    if (const QByteArray state = decoded(WindowStateKey); !state.isEmpty())
        m_window->restoreState(state, 0);
    if (topLevel.value(FullScreenKey).toBool())
        m_window->showFullScreen();
    else if (topLevel.value(MaximizedKey).toBool())
        m_window->showMaximized();
}

void FileActions::loadLayout()
{
    const QString folder = QDir(m_project->dir()).filePath(QStringLiteral("layouts"));
    const QString path = m_project->prompts().openFileName(m_window, tr("Load Layout"), folder, tr("Layouts (*.json)"));
    if (!path.isEmpty())
        loadLayoutFrom(path);
}

bool FileActions::loadLayoutFrom(const QString &path)
{
    // A layout of thousands of widgets takes a while: after a moment the user
    // sees how far it got and may cancel, which keeps the dashboard as it was.
    ProgressRunner progress(tr("Loading layout…"), m_window);
    LayoutFile &layout = m_core->layout();
    switch (layout.load(path, m_core->dashboard()->designMode(), progress.callback())) {
    case LayoutFile::Result::Ok:
        restoreWindow(layout.topLevel());
        return true;
    case LayoutFile::Result::Cancelled:
        return false;
    case LayoutFile::Result::OpenFailed:
        m_project->prompts().warning(m_window, tr("Error"), tr("Could not load layout."), layout.errorString());
        return false;
    case LayoutFile::Result::InvalidFormat:
        m_project->prompts().warning(m_window, tr("Error"), tr("Invalid layout format."), layout.errorString());
        return false;
    }
    return false;
}

bool FileActions::hasPlaybackData(const QString &title) const
{
    if (!m_playback->engine()->frames().isEmpty())
        return true;
    m_project->prompts().information(m_window, title, tr("No playback data loaded."));
    return false;
}

void FileActions::exportSignals()
{
    if (!hasPlaybackData(tr("Export Signals CSV")))
        return;
    SignalsExportOptions options;
    if (!m_project->prompts().chooseSignalsExport(m_window, m_playback->engine()->frames().signalNames(),
                                                 m_playback->definitionsInForce(), &options))
        return;
    const QString path = askSavePath(tr("Export CSV"), QStringLiteral("exports"), QStringLiteral("signals.csv"),
                                     tr("CSV (*.csv)"));
    if (!path.isEmpty())
        exportSignalsTo(path, options);
}

bool FileActions::exportSignalsTo(const QString &path, const SignalsExportOptions &options)
{
    const ExportInput input(*m_playback);
    ProgressRunner progress(tr("Exporting signals…"), m_window);
    QString error;
    if (!SignalsCsvExporter::exportTo(path, input.frames, input.definitions(), options, progress.callback(), &error)) {
        if (!progress.wasCancelled())
            m_project->prompts().warning(m_window, tr("Export Signals CSV"), error);
        return false;
    }
    showStatus(tr("Signals CSV exported → %1").arg(QFileInfo(path).fileName()));
    return true;
}

void FileActions::exportEvents()
{
    if (!hasPlaybackData(tr("Export Events CSV")))
        return;
    const QString path = askSavePath(tr("Export CSV"), QStringLiteral("exports"), QStringLiteral("events.csv"),
                                     tr("CSV (*.csv)"));
    if (!path.isEmpty())
        exportEventsTo(path);
}

bool FileActions::exportEventsTo(const QString &path)
{
    const ExportInput input(*m_playback);
    ProgressRunner progress(tr("Exporting events…"), m_window);
    QString error;
    if (!EventsCsvExporter::exportTo(path, input.frames, input.definitions(), progress.callback(), &error)) {
        if (!progress.wasCancelled()) {
            qDebug().noquote() << "Events export failed:" << error;
            m_project->prompts().warning(m_window, tr("Export Events CSV"), tr("Could not open file for writing."), error);
        }
        return false;
    }
    showStatus(tr("Events CSV exported → %1").arg(QFileInfo(path).fileName()));
    return true;
}
