#include "FileActions.h"

#include "Dashboard.h"
#include "DashboardItem.h"
#include "DesignScene.h"
#include "EventsCsvExporter.h"
#include "LayoutFile.h"
#include "Ombrix.h"
#include "ProgressRunner.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"
#include "SignalRouter.h"
#include "SignalsCsvExporter.h"
#include "UserPrompts.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QStatusBar>

#include <optional>

namespace {

// What an export reads, copied (cheaply: the data is shared). An export runs
// the event loop behind its progress dialog, where a recording that stops
// replaces the engine's data and the definitions in force.
struct ExportInput
{
    explicit ExportInput(const Ombrix &window)
        : frames(window.engine()->frames())
    {
        if (const SignalDefinitions *inForce = window.definitionsInForce())
            defs = *inForce;
    }
    const SignalDefinitions *definitions() const { return defs ? &*defs : nullptr; }

    const Recording frames;
    std::optional<SignalDefinitions> defs;
};

} // namespace

FileActions::FileActions(Ombrix *window)
    : QObject(window)
    , m_window(window)
{
}

FileActions::~FileActions() = default;

QString FileActions::ensureSubfolder(const QString &projectDir, const QString &name)
{
    // Without a project this is the working directory's sub-folder, never the root's.
    const QString folder = QDir(projectDir).filePath(name);
    QDir(folder).mkpath(QStringLiteral("."));
    return folder;
}

QString FileActions::askSavePath(const QString &caption, const QString &subfolder, const QString &fileName,
                                 const QString &filter) const
{
    const QString folder = ensureSubfolder(m_window->projectDir(), subfolder);
    return m_window->prompts().saveFileName(m_window, caption, folder + QLatin1Char('/') + fileName, filter);
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
    if (LayoutFile::save(path, m_window->dashboard()->scene(), m_window) == LayoutFile::Result::Ok)
        return true;
    m_window->prompts().warning(m_window, tr("Error"), tr("Could not save layout."));
    return false;
}

void FileActions::loadLayout()
{
    const QString folder = QDir(m_window->projectDir()).filePath(QStringLiteral("layouts"));
    const QString path = m_window->prompts().openFileName(m_window, tr("Load Layout"), folder, tr("Layouts (*.json)"));
    if (!path.isEmpty())
        loadLayoutFrom(path);
}

bool FileActions::loadLayoutFrom(const QString &path)
{
    const LayoutFile::Result result = LayoutFile::load(path, m_window->dashboard()->scene(), m_window,
                                                       m_window->mode() == Ombrix::Design, m_detachedItems);
    switch (result) {
    case LayoutFile::Result::Ok:
        return true;
    case LayoutFile::Result::OpenFailed:
        m_window->prompts().warning(m_window, tr("Error"), tr("Could not load layout."));
        return false;
    case LayoutFile::Result::InvalidFormat:
        m_window->prompts().warning(m_window, tr("Error"), tr("Invalid layout format."));
        return false;
    }
    return false;
}

bool FileActions::hasPlaybackData(const QString &title) const
{
    if (!m_window->engine()->frames().isEmpty())
        return true;
    m_window->prompts().information(m_window, title, tr("No playback data loaded."));
    return false;
}

void FileActions::exportSignals()
{
    if (!hasPlaybackData(tr("Export Signals CSV")))
        return;
    SignalsExportOptions options;
    if (!m_window->prompts().chooseSignalsExport(m_window, m_window->engine()->frames().signalNames(),
                                                 m_window->definitionsInForce(), &options))
        return;
    const QString path = askSavePath(tr("Export CSV"), QStringLiteral("exports"), QStringLiteral("signals.csv"),
                                     tr("CSV (*.csv)"));
    if (!path.isEmpty())
        exportSignalsTo(path, options);
}

bool FileActions::exportSignalsTo(const QString &path, const SignalsExportOptions &options)
{
    const ExportInput input(*m_window);
    ProgressRunner progress(tr("Exporting signals…"), m_window);
    QString error;
    if (!SignalsCsvExporter::exportTo(path, input.frames, input.definitions(), options, progress.callback(), &error)) {
        if (!progress.wasCancelled())
            m_window->prompts().warning(m_window, tr("Export Signals CSV"), error);
        return false;
    }
    m_window->statusBar()->showMessage(tr("Signals CSV exported → %1").arg(QFileInfo(path).fileName()), 4000);
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
    const ExportInput input(*m_window);
    ProgressRunner progress(tr("Exporting events…"), m_window);
    QString error;
    if (!EventsCsvExporter::exportTo(path, input.frames, input.definitions(), progress.callback(), &error)) {
        if (!progress.wasCancelled()) {
            qDebug().noquote() << "Events export failed:" << error;
            m_window->prompts().warning(m_window, tr("Export Events CSV"), tr("Could not open file for writing."));
        }
        return false;
    }
    m_window->statusBar()->showMessage(tr("Events CSV exported → %1").arg(QFileInfo(path).fileName()), 4000);
    return true;
}
