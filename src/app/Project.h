#pragma once

#include <QObject>
#include <QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

class DashboardCore;
class SignalDefinitions;
class UserPrompts;

/**
 * The project the window works in: its folder (a ProjectFolder), the
 * catalogue loaded from it into the dashboard core, the remembered folder,
 * and the questions that choose a project. Every question goes through
 * prompts(), so that tests and scripted runs can answer; dialogs are
 * parented to dialogParent().
 */
class Project : public QObject
{
    Q_OBJECT

public:
    // The catalogue is loaded into `core`, which must outlive this object.
    Project(DashboardCore *core, QWidget *dialogParent, QObject *parent = nullptr);
    ~Project() override;

    QWidget *dialogParent() const { return m_dialogParent; }
    UserPrompts &prompts() const { return *m_prompts; }
    // Replaces the prompts; null keeps the current ones.
    void setPrompts(std::unique_ptr<UserPrompts> prompts);

    QString dir() const { return m_dir; }
    // <project>/<name>, created when missing; the working directory's
    // sub-folder while no project is set, never the root's.
    QString subfolder(const QString &name) const;
    // The project's own definition file.
    QString definitionsPath() const;
    // Null until the first successful load.
    const SignalDefinitions *definitions() const;

    // Makes the folder current and loads its definitions. False with nothing
    // changed when the folder is not a project; false with the folder taken
    // but the old catalogue kept when its definitions cannot be loaded.
    bool setProjectDir(const QString &dir);
    // Replaces the current catalogue; on failure warns and keeps the old one.
    // definitionsLoaded() follows a success.
    bool loadDefinitions(const QString &path);
    void ensureProjectSubfolders();
    // Opens the folder remembered from an earlier prompt, else prompts.
    void restoreProjectOrPrompt();
    // Intro dialog then folder chooser, until a project or a cancel (which
    // emits closeRequested()). The intro may also lead to a new project or
    // the demo; cancelling their folder chooser returns to the intro.
    void promptForProject();

    // Opens a folder the user picked and remembers it for the next start;
    // warns when it is not a project.
    bool openPicked(const QString &dir);
    // Asks for an existing project folder and opens it; a cancel changes nothing.
    bool chooseProject();
    // Asks for a folder and makes it a new project there.
    bool chooseNewProject();
    // Makes dir a project (the folder, a starter dashboard_signals.def unless
    // it has one, the sub-folders) and opens it as picked.
    bool createProjectAt(const QString &dir);
    // Opens the user's copy of the demo project, copying the shipped demo
    // first when there is no copy yet (so earlier changes to it are kept),
    // and suggests its layout.
    bool openDemoCopy();
    // The recording the demo ships, in the project at dir; empty when it has none.
    static QString demoRecording(const QString &dir);
    // Where the folder choosers start: the project folder, else the
    // documents folder (created when missing), else the nearest folder above
    // them that exists.
    QString chooserStartFolder() const;

Q_SIGNALS:
    // A catalogue was loaded and made current; absolutePath is its file.
    void definitionsLoaded(const QString &absolutePath);
    // A folder became the current project.
    void opened(const QString &absoluteDir);
    // The user declined to choose a project: the application should end.
    void closeRequested();
    // A project just opened comes with a layout worth showing (the demo's).
    void layoutSuggested(const QString &path);
    // The user's copy of the demo was opened (after opened()).
    void demoOpened(const QString &absoluteDir);

private:
    DashboardCore *m_core = nullptr;
    QWidget *m_dialogParent = nullptr;
    std::unique_ptr<UserPrompts> m_prompts;
    QString m_dir;
};
