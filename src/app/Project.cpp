#include "Project.h"

#include "DashboardCore.h"
#include "FileErrors.h"
#include "ProjectFolder.h"
#include "SettingsStores.h"
#include "UserPrompts.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

Project::Project(DashboardCore *core, QWidget *dialogParent, QObject *parent)
    : QObject(parent)
    , m_core(core)
    , m_dialogParent(dialogParent)
    , m_prompts(std::make_unique<UserPrompts>())
{
    connect(m_core, &DashboardCore::definitionsLoaded, this, &Project::definitionsLoaded);
}

Project::~Project() = default;

void Project::setPrompts(std::unique_ptr<UserPrompts> prompts)
{
    if (prompts)
        m_prompts = std::move(prompts);
}

QString Project::subfolder(const QString &name) const
{
    return ProjectFolder::subfolder(m_dir, name);
}

QString Project::definitionsPath() const
{
    return ProjectFolder::definitionsPath(m_dir);
}

const SignalDefinitions *Project::definitions() const
{
    return m_core->definitions();
}

bool Project::setProjectDir(const QString &dir)
{
    if (!ProjectFolder::isValid(dir))
        return false;

    m_dir = QDir(dir).absolutePath();
    // Deliberately not the store read at start-up: only a folder picked in
    // the prompt is restored next time, not one given on the command line.
    SettingsStores::openedProjects().setValue(SettingsStores::ProjectDirKey, m_dir);
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

    QString error;
    if (!m_core->loadDefinitions(path, &error)) {
        m_prompts->warning(m_dialogParent, tr("Signals Definition"), tr("Failed to load:\n%1").arg(path), error);
        return false;
    }
    return true;
}

void Project::ensureProjectSubfolders()
{
    ProjectFolder::ensureSubfolders(m_dir);
}

void Project::restoreProjectOrPrompt()
{
    const QString remembered = SettingsStores::remembered().value(SettingsStores::ProjectDirKey).toString();
    if (!remembered.isEmpty() && ProjectFolder::isValid(remembered) && setProjectDir(remembered))
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
        if (!ProjectFolder::isValid(folder)) {
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
    if (!ProjectFolder::isValid(dir)) {
        m_prompts->warning(m_dialogParent, tr("Invalid Project"),
                           tr("Selected folder does not contain dashboard_signals.def"));
        return false;
    }
    if (!setProjectDir(dir))
        return false;
    SettingsStores::remembered().setValue(SettingsStores::ProjectDirKey, dir);
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
    if (!ProjectFolder::writeStarter(dir, &error)) {
        m_prompts->warning(m_dialogParent, tr("New Project"), tr("Could not create the project."), error);
        return false;
    }
    return openPicked(dir);
}

bool Project::openDemoCopy()
{
    const QString copy = ProjectFolder::demoCopyFolder();
    if (!ProjectFolder::isValid(copy)) {
        const QString demo = ProjectFolder::demoFolder();
        QString error = tr("The demo project is not installed.");
        if (demo.isEmpty() || !ProjectFolder::copyFolder(demo, copy, &error)) {
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
