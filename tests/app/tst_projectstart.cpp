#include "Dashboard.h"
#include "DefinitionLinter.h"
#include "Ombrix.h"
#include "Project.h"
#include "ProjectIntroDialog.h"
#include "ProjectFolder.h"
#include "ScriptedPrompts.h"
#include "SignalDefinitions.h"
#include "TestFiles.h"

#include "SerialManager.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QPushButton>
#include <QScopeGuard>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

using Choice = ProjectIntroDialog::Choice;

QString remembered()
{
    return QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).value(QStringLiteral("projectDir")).toString();
}

struct Prompted
{
    Ombrix window;
    ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
};

} // namespace

Q_DECLARE_METATYPE(ProjectIntroDialog::Choice)

// The ways into a first project besides an existing folder: a new project
// from the starter definitions, or a copy of the demo.
class tst_ProjectStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).clear();
        QDir(ProjectFolder::demoCopyFolder()).removeRecursively();
    }

    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    // The intro's texts and buttons stay; two more ways on sit beside them.
    void introDialogOffersNewProjectAndDemo_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<Choice>("choice");
        QTest::newRow("new project") << "newProjectButton" << Choice::NewProject;
        QTest::newRow("demo") << "demoProjectButton" << Choice::DemoProject;
    }

    void introDialogOffersNewProjectAndDemo()
    {
        QFETCH(QString, button);
        QFETCH(Choice, choice);
        ProjectIntroDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Select a Project"));
        auto *box = dialog.findChild<QDialogButtonBox *>();
        QCOMPARE(box->standardButtons(), QDialogButtonBox::Open | QDialogButtonBox::Cancel);
        QCOMPARE(box->buttons().size(), 2);
        QCOMPARE(dialog.choice(), Choice::OpenProject);

        dialog.findChild<QPushButton *>(button)->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.choice(), choice);
    }

    void newProjectFromIntro()
    {
        const QString dir = m_root->filePath(QStringLiteral("new/bench"));
        Prompted w;
        w.prompts->introAnswers = {true};
        w.prompts->introChoices = {Choice::NewProject};
        w.prompts->fileAnswers = {dir};
        w.window.restoreProjectOrPrompt();

        QCOMPARE(w.window.projectDir(), dir);
        QVERIFY(w.window.isValidProjectDir(dir));
        for (const char *sub : {"recordings", "layouts", "exports"})
            QVERIFY(QFileInfo(QDir(dir).filePath(QLatin1String(sub))).isDir());
        QCOMPARE(remembered(), dir);
        QVERIFY(w.prompts->warnings.isEmpty());

        // The starter declares something of each kind and loading skips only comments.
        const SignalDefinitions *defs = w.window.definitions();
        QVERIFY(!defs->signals().isEmpty() && !defs->mappings().isEmpty() && !defs->stateGroups().isEmpty()
                && !defs->states().isEmpty() && !defs->errors().isEmpty());
        QList<DefinitionLinter::Finding> findings;
        QString error;
        QVERIFY(DefinitionLinter::checkFile(QDir(dir).filePath(ProjectFolder::DefinitionFileName), &findings, &error));
        for (const DefinitionLinter::Finding &finding : findings)
            qWarning("line %d: %s", finding.line, qPrintable(finding.message));
        QVERIFY(findings.isEmpty());
    }

    void newProjectKeepsDefinitionsAlreadyThere()
    {
        const QString dir = m_root->filePath(QStringLiteral("existing"));
        const QByteArray own("DASHBOARD_SIGNAL(OWN, \"own\", float)\n");
        QVERIFY(writeFile(dir + QStringLiteral("/dashboard_signals.def"), own));
        Prompted w;
        QVERIFY(w.window.project()->createProjectAt(dir));
        QCOMPARE(readFile(dir + QStringLiteral("/dashboard_signals.def")), own);
    }

    void newProjectInUnwritablePlaceWarns()
    {
        const QString blocker = m_root->filePath(QStringLiteral("file"));
        QVERIFY(writeFile(blocker, "not a folder"));
        Prompted w;
        QVERIFY(!w.window.project()->createProjectAt(blocker + QStringLiteral("/project")));
        QCOMPARE(w.prompts->warningTexts(), QStringList{QStringLiteral("New Project: Could not create the project.")});
        QCOMPARE(w.window.projectDir(), QString());
    }

    // Cancelling the chooser of a new project goes back to the intro, not out.
    void cancelledNewProjectReturnsToIntro()
    {
        const QString existing = m_root->filePath(QStringLiteral("existing"));
        QVERIFY(writeFile(existing + QStringLiteral("/dashboard_signals.def"), "DASHBOARD_SIGNAL(A, \"a\", float)\n"));
        Prompted w;
        w.prompts->introAnswers = {true, true};
        w.prompts->introChoices = {Choice::NewProject, Choice::OpenProject};
        w.prompts->fileAnswers = {QString(), existing};
        w.window.promptForProject();
        QCOMPARE(w.prompts->introShown, 2);
        QCOMPARE(w.window.projectDir(), existing);
    }

    void demoCopyOpensWithItsLayoutAndKeepsChanges()
    {
        QVERIFY(!ProjectFolder::demoFolder().isEmpty());
        const QString copy = ProjectFolder::demoCopyFolder();
        {
            Prompted w;
            w.prompts->introAnswers = {true};
            w.prompts->introChoices = {Choice::DemoProject};
            w.window.restoreProjectOrPrompt();
            QCOMPARE(w.window.projectDir(), QDir(copy).absolutePath());
            QVERIFY(!w.window.dashboard()->items().isEmpty());
            QVERIFY(w.prompts->warnings.isEmpty());
            QCOMPARE(remembered(), copy);
            // It moves at once and has something to play.
            QCOMPARE(w.window.serialManager()->portName(), QStringLiteral("sim:"));
            QCOMPARE(w.window.playbackFile(), QDir(copy).filePath(QStringLiteral("recordings/demo_run.rec")));
        }
        // The copy is the user's: opening the demo again does not overwrite it.
        const QString defPath = QDir(copy).filePath(ProjectFolder::DefinitionFileName);
        QVERIFY(writeFile(defPath, "DASHBOARD_SIGNAL(MINE, \"mine\", float)\n"));
        Prompted w;
        QVERIFY(w.window.project()->openDemoCopy());
        QVERIFY(w.window.definitions()->signalFor(QStringLiteral("MINE")));
    }

    // A fresh account may have no documents folder: the chooser must still
    // open somewhere that exists, or its button stays greyed out.
    void chooserStartsInAnExistingFolder()
    {
        // A home of its own, whatever HOME the test was started with.
        const QByteArray home = qgetenv("HOME");
        const auto restoreHome = qScopeGuard([home] { qputenv("HOME", home); });
        qputenv("HOME", QFile::encodeName(m_root->filePath(QStringLiteral("home"))));
        const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        QVERIFY(documents.startsWith(m_root->path()));
        QVERIFY(!QFileInfo::exists(documents));
        Prompted w;
        QCOMPARE(w.window.project()->chooserStartFolder(), documents);
        QVERIFY(QFileInfo(documents).isDir());

        const QString project = m_root->filePath(QStringLiteral("gone/project"));
        QVERIFY(writeFile(project + QStringLiteral("/dashboard_signals.def"), "DASHBOARD_SIGNAL(A, \"a\", float)\n"));
        QVERIFY(w.window.setProjectDir(project));
        QVERIFY(QDir(m_root->filePath(QStringLiteral("gone"))).removeRecursively());
        QCOMPARE(w.window.project()->chooserStartFolder(), m_root->path());
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
};

QTEST_MAIN(tst_ProjectStart)
#include "tst_projectstart.moc"
