#include "Project.h"

#include "FileErrors.h"
#include "ProjectTemplates.h"
#include "SignalDefinitions.h"
#include "UserPrompts.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace {

const QString ProjectDirKey = QStringLiteral("projectDir");

// Read at start-up and written only by the prompt.
QSettings rememberedStore()
{
    return QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix"));
}

} // namespace

Project::Project(QWidget *dialogParent, QObject *parent)
    : QObject(parent)
    , m_dialogParent(dialogParent)
    , m_prompts(std::make_unique<UserPrompts>())
{
}

Project::~Project()
{
    if (SignalDefinitions::current() == m_definitions.get())
        SignalDefinitions::setCurrent(nullptr);
}

void Project::setPrompts(std::unique_ptr<UserPrompts> prompts)
{
    if (prompts)
        m_prompts = std::move(prompts);
}

QString Project::subfolder(const QString &name) const
{
    const QString folder = QDir(m_dir).filePath(name);
    QDir(folder).mkpath(QStringLiteral("."));
    return folder;
}

QString Project::definitionsPath() const
{
    return QDir(m_dir).filePath(DefinitionFileName);
}

bool Project::isValidProjectDir(const QString &path)
{
    return !path.isEmpty() && QFileInfo::exists(QDir(path).filePath(DefinitionFileName));
}

bool Project::setProjectDir(const QString &dir)
{
    if (!isValidProjectDir(dir))
        return false;

    m_dir = QDir(dir).absolutePath();
    // Deliberately not the store read at start-up: only a folder picked in
    // the prompt is restored next time, not one given on the command line.
    QSettings(QStringLiteral("YourCompany"), QStringLiteral("Ombrix")).setValue(ProjectDirKey, m_dir);
    ensureProjectSubfolders();

    if (!loadDefinitions(definitionsPath()))
        return false;
    Q_EMIT opened(m_dir);
    return true;
}

bool Project::loadDefinitions(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists() || !info.isFile()) {
        m_prompts->warning(m_dialogParent, tr("Signals Definition"), tr("Cannot find signals file:\n%1").arg(path),
                           FileErrors::describe(path, FileErrors::whyUnreadable(path)));
        return false;
    }

    auto loaded = std::make_unique<SignalDefinitions>();
    if (!loaded->load(path)) {
        m_prompts->warning(m_dialogParent, tr("Signals Definition"), tr("Failed to load:\n%1").arg(path),
                           FileErrors::describe(path, FileErrors::whyUnreadable(path)));
        return false;
    }

    // The previous catalogue lives until everyone has moved to the new one.
    const std::unique_ptr<SignalDefinitions> previous = std::move(m_definitions);
    m_definitions = std::move(loaded);
    SignalDefinitions::setCurrent(m_definitions.get());
    Q_EMIT definitionsLoaded(info.absoluteFilePath());
    return true;
}

void Project::ensureProjectSubfolders()
{
    QDir project(m_dir);
    for (const char *sub : {"recordings", "layouts", "exports"})
        project.mkpath(QLatin1String(sub));
}

void Project::restoreProjectOrPrompt()
{
    const QString remembered = rememberedStore().value(ProjectDirKey).toString();
    if (!remembered.isEmpty() && isValidProjectDir(remembered) && setProjectDir(remembered))
        return;
    promptForProject();
}

void Project::promptForProject()
{
    // A loop rather than recursion: an invalid folder asks again from the intro.
    for (;;) {
        if (!m_prompts->acceptProjectIntro(m_dialogParent)) {
            Q_EMIT closeRequested();
            return;
        }
        switch (m_prompts->introChoice()) {
        case ProjectIntroDialog::Choice::NewProject:
            if (chooseNewProject())
                return;
            continue;
        case ProjectIntroDialog::Choice::DemoProject:
            if (openDemoCopy())
                return;
            continue;
        case ProjectIntroDialog::Choice::OpenProject:
            break;
        }
        const QString folder = m_prompts->existingDirectory(
            m_dialogParent, tr("Select Project Folder (contains dashboard_signals.def)"), chooserStartFolder());
        if (folder.isEmpty()) {
            Q_EMIT closeRequested();
            return;
        }
        if (!isValidProjectDir(folder)) {
            m_prompts->warning(m_dialogParent, tr("Invalid Project"),
                               tr("Selected folder does not contain dashboard_signals.def"));
            continue;
        }
        openPicked(folder);
        return;
    }
}

bool Project::openPicked(const QString &dir)
{
    if (!isValidProjectDir(dir)) {
        m_prompts->warning(m_dialogParent, tr("Invalid Project"),
                           tr("Selected folder does not contain dashboard_signals.def"));
        return false;
    }
    if (!setProjectDir(dir))
        return false;
    rememberedStore().setValue(ProjectDirKey, dir);
    return true;
}

bool Project::chooseProject()
{
    const QString folder = m_prompts->existingDirectory(
        m_dialogParent, tr("Select Project Folder (contains dashboard_signals.def)"), chooserStartFolder());
    return !folder.isEmpty() && openPicked(folder);
}

bool Project::chooseNewProject()
{
    const QString folder = m_prompts->existingDirectory(
        m_dialogParent, tr("Choose or Create a Folder for the New Project"), chooserStartFolder());
    return !folder.isEmpty() && createProjectAt(folder);
}

bool Project::createProjectAt(const QString &dir)
{
    QString error;
    if (!ProjectTemplates::writeStarter(dir, &error)) {
        m_prompts->warning(m_dialogParent, tr("New Project"), tr("Could not create the project."), error);
        return false;
    }
    return openPicked(dir);
}

bool Project::openDemoCopy()
{
    const QString copy = ProjectTemplates::demoCopyFolder();
    if (!isValidProjectDir(copy)) {
        const QString demo = ProjectTemplates::demoFolder();
        QString error = tr("The demo project is not installed.");
        if (demo.isEmpty() || !ProjectTemplates::copyFolder(demo, copy, &error)) {
            m_prompts->warning(m_dialogParent, tr("Demo Project"), tr("Could not copy the demo project."), error);
            return false;
        }
    }
    if (!openPicked(copy))
        return false;
    const QDir layouts(QDir(copy).filePath(QStringLiteral("layouts")));
    const QStringList names = layouts.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    if (!names.isEmpty())
        Q_EMIT layoutSuggested(layouts.filePath(names.first()));
    Q_EMIT demoOpened(m_dir);
    return true;
}

QString Project::demoRecording(const QString &dir)
{
    const QString path = QDir(dir).filePath(QStringLiteral("recordings/demo_run.rec"));
    return QFileInfo::exists(path) ? path : QString();
}

QString Project::chooserStartFolder() const
{
    QString start = m_dir;
    if (start.isEmpty()) {
        // A fresh account may have no documents folder yet; it is where a first project belongs.
        start = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        QDir().mkpath(start);
    }
    // A folder that went away (a project on a removed drive): its nearest parent.
    QString path = QDir(start).absolutePath();
    while (!QFileInfo(path).isDir()) {
        const QString up = QFileInfo(path).absolutePath();
        if (up == path)
            return QDir::homePath();
        path = up;
    }
    return path;
}
