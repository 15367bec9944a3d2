#include "WindowFixture.h"

#include "MainToolBars.h"
#include "PtyPair.h"
#include "SerialManager.h"
#include "SignalDefinitions.h"
#include "StartupOptions.h"

#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QStatusBar>

#include <algorithm>
#include <csignal>

namespace {

const QByteArray kDefinitions = QByteArrayLiteral("DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n"
                                                  "DASHBOARD_MAPPING(RPM, 10, 0.5)\n");

QString remembered(const QString &organisation)
{
    return QSettings(organisation, QStringLiteral("Ombrix")).value(QStringLiteral("projectDir")).toString();
}

StartupOptions parse(const QStringList &arguments)
{
    StartupOptions options;
    QString error;
    if (!StartupOptions::fromArguments(QStringList{QStringLiteral("ombrix")} + arguments, &options, &error))
        qWarning("arguments rejected: %s", qPrintable(error));
    return options;
}

} // namespace

class tst_Startup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void validProjectDir_data();
    void validProjectDir();
    void setProjectDirTakesProjectButRemembersInOtherStore();
    void commandLinePrecedence_data();
    void commandLinePrecedence();
    void defOutsideProjectLoadsFileUnderCurrentFolder();
    void badDefinitionsWarnAndKeepPreviousCatalogue_data();
    void badDefinitionsWarnAndKeepPreviousCatalogue();
    void pickedFolderIsRestoredAtNextStart();
    void invalidPickAsksAgain();
    void cancelEndsApplication_data();
    void cancelEndsApplication();
    void layoutAndPortAreAppliedAfterProject();
    void terminationEndsTheProgramCleanly();

private:
    QString makeProject(const QString &name, const QByteArray &definitions = kDefinitions);

    std::unique_ptr<QTemporaryDir> m_root;
    QString m_startDir;
};

QString tst_Startup::makeProject(const QString &name, const QByteArray &definitions)
{
    const QString dir = m_root->filePath(name);
    return WindowFixture::writeFile(dir + QLatin1String("/dashboard_signals.def"), definitions) ? dir : QString();
}

void tst_Startup::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    m_startDir = QDir::currentPath();
}

void tst_Startup::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
    QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).clear();
    QSettings(QStringLiteral("YourCompany"), QStringLiteral("Ombrix")).clear();
}

void tst_Startup::cleanup()
{
    QDir::setCurrent(m_startDir);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
    QCOMPARE(SignalDefinitions::current(), nullptr);
}

void tst_Startup::validProjectDir_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("valid");
    QTest::newRow("empty path") << QString() << false;
    QTest::newRow("missing folder") << QStringLiteral("missing") << false;
    QTest::newRow("folder without definitions") << QStringLiteral("plain") << false;
    QTest::newRow("project") << QStringLiteral("project") << true;
}

void tst_Startup::validProjectDir()
{
    QFETCH(QString, folder);
    QFETCH(bool, valid);
    makeProject(QStringLiteral("project"));
    QDir(m_root->path()).mkpath(QStringLiteral("plain"));
    Ombrix window;
    QCOMPARE(window.isValidProjectDir(folder.isEmpty() ? folder : m_root->filePath(folder)), valid);
    // A folder that is not a project changes nothing and says nothing.
    QCOMPARE(window.setProjectDir(m_root->filePath(folder)), valid);
    QCOMPARE(QFileInfo::exists(m_root->filePath(folder + QLatin1String("/recordings"))), valid);
}

void tst_Startup::setProjectDirTakesProjectButRemembersInOtherStore()
{
    const QString dir = makeProject(QStringLiteral("bench"));
    Ombrix window;
    QVERIFY(window.setProjectDir(dir + QLatin1String("/../bench")));

    const QString absolute = QDir(dir).absolutePath();
    QCOMPARE(window.projectDir(), absolute);
    QCOMPARE(window.windowTitle(), QStringLiteral("Ombrix — %1").arg(absolute));
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("Project: %1").arg(absolute));
    for (const char *sub : {"recordings", "layouts", "exports"})
        QVERIFY(QFileInfo(QDir(absolute).filePath(QLatin1String(sub))).isDir());
    QCOMPARE(SignalDefinitions::current(), window.definitions());
    QVERIFY(window.definitions()->mappingFor(QStringLiteral("RPM")));
    QCOMPARE(remembered(QStringLiteral("YourCompany")), absolute);
    QCOMPARE(remembered(QStringLiteral("Tarnwell")), QString());
}

void tst_Startup::commandLinePrecedence_data()
{
    QTest::addColumn<bool>("withProject");
    QTest::addColumn<QString>("signal");
    // "project" wins over "def" and loads the folder's own file.
    QTest::newRow("project and def") << true << QStringLiteral("OWN");
    // "def" alone opens its folder, then its own file wins over the folder's.
    QTest::newRow("def inside a project") << false << QStringLiteral("RPM");
}

void tst_Startup::commandLinePrecedence()
{
    QFETCH(bool, withProject);
    QFETCH(QString, signal);
    const QString project = makeProject(QStringLiteral("project"), "DASHBOARD_SIGNAL(OWN, \"own\", float)\n");
    const QString defPath = project + QLatin1String("/variant.def");
    QVERIFY(WindowFixture::writeFile(defPath, kDefinitions));
    const QString other = makeProject(QStringLiteral("other"));

    Ombrix window;
    parse(withProject ? QStringList{QStringLiteral("-p"), project, QStringLiteral("--def"), other}
                      : QStringList{QStringLiteral("-d"), defPath})
        .applyTo(window);
    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    QCOMPARE(window.definitions()->signals().size(), 1);
    QVERIFY(window.definitions()->signalFor(signal));
    QCOMPARE(window.windowTitle().endsWith(QLatin1String("variant.def")), !withProject);
    QVERIFY(!QFileInfo::exists(other + QLatin1String("/recordings")));
    // A folder from the command line is not remembered for the next start.
    QCOMPARE(remembered(QStringLiteral("Tarnwell")), QString());
}

void tst_Startup::defOutsideProjectLoadsFileUnderCurrentFolder()
{
    QDir(m_root->path()).mkpath(QStringLiteral("work"));
    QDir::setCurrent(m_root->filePath(QStringLiteral("work")));
    const QString defPath = m_root->filePath(QStringLiteral("loose/custom.def"));
    QVERIFY(WindowFixture::writeFile(defPath, kDefinitions));

    Ombrix window;
    ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
    QSignalSpy changed(&window, &Ombrix::signalsDefChanged);
    parse({QStringLiteral("--def"), QStringLiteral("../loose/custom.def")}).applyTo(window);

    QCOMPARE(window.projectDir(), QString());
    QVERIFY(prompts->warnings.isEmpty());
    QVERIFY(window.definitions()->signalFor(QStringLiteral("RPM")));
    // Announced with the absolute path, though given as a relative one.
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toString(), QFileInfo(defPath).absoluteFilePath());
    // With no project the sub-folders land in the working directory.
    for (const char *sub : {"recordings", "layouts", "exports"})
        QVERIFY(QFileInfo(m_root->filePath(QStringLiteral("work/") + QLatin1String(sub))).isDir());
    QVERIFY(!QFileInfo::exists(m_root->filePath(QStringLiteral("loose/recordings"))));
}

void tst_Startup::badDefinitionsWarnAndKeepPreviousCatalogue_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("warning");
    QTest::newRow("missing") << QStringLiteral("missing") << QStringLiteral("Cannot find signals file:\n%1");
    QTest::newRow("directory") << QStringLiteral("directory") << QStringLiteral("Cannot find signals file:\n%1");
    QTest::newRow("unreadable") << QStringLiteral("unreadable") << QStringLiteral("Failed to load:\n%1");
}

void tst_Startup::badDefinitionsWarnAndKeepPreviousCatalogue()
{
    QFETCH(QString, kind);
    QFETCH(QString, warning);
    const QString path = m_root->filePath(QStringLiteral("defs.def"));
    if (kind == QLatin1String("directory")) {
        QDir(m_root->path()).mkpath(QStringLiteral("defs.def"));
    } else if (kind == QLatin1String("unreadable")) {
        QVERIFY(WindowFixture::writeFile(path, kDefinitions));
        QFile(path).setPermissions(QFileDevice::Permissions());
        if (QFile(path).open(QIODevice::ReadOnly))
            QSKIP("running with rights that read any file");
    }

    Ombrix window;
    ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
    QVERIFY(window.setProjectDir(makeProject(QStringLiteral("project"))));
    const SignalDefinitions *before = window.definitions();
    const QString title = window.windowTitle();
    QSignalSpy changed(&window, &Ombrix::signalsDefChanged);

    QVERIFY(!window.loadDefinitions(path));
    QCOMPARE(prompts->warningTexts(), QStringList{QStringLiteral("Signals Definition: ") + warning.arg(path)});
    QCOMPARE(window.definitions(), before);
    QCOMPARE(SignalDefinitions::current(), before);
    QVERIFY(before->signalFor(QStringLiteral("RPM")));
    QCOMPARE(window.windowTitle(), title);
    QCOMPARE(changed.count(), 0);
}

void tst_Startup::pickedFolderIsRestoredAtNextStart()
{
    const QString project = makeProject(QStringLiteral("picked"));
    {
        Ombrix window;
        ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
        prompts->introAnswers = {true};
        prompts->fileAnswers = {project};
        StartupOptions().applyTo(window);
        QCOMPARE(prompts->captions, QStringList{QStringLiteral("Select Project Folder (contains dashboard_signals.def)")});
        QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    }
    QCOMPARE(remembered(QStringLiteral("Tarnwell")), project);

    Ombrix window;
    ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
    StartupOptions().applyTo(window);
    QCOMPARE(prompts->introShown, 0);
    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
}

void tst_Startup::invalidPickAsksAgain()
{
    const QString project = makeProject(QStringLiteral("project"));
    QDir(m_root->path()).mkpath(QStringLiteral("plain"));
    Ombrix window;
    ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
    prompts->introAnswers = {true, true};
    prompts->fileAnswers = {m_root->filePath(QStringLiteral("plain")), project};
    window.promptForProject();

    QCOMPARE(prompts->introShown, 2);
    QCOMPARE(prompts->warningTexts(),
             QStringList{QStringLiteral("Invalid Project: Selected folder does not contain dashboard_signals.def")});
    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
}

void tst_Startup::cancelEndsApplication_data()
{
    QTest::addColumn<bool>("introAccepted");
    QTest::newRow("intro cancelled") << false;
    QTest::newRow("folder chooser cancelled") << true;
}

void tst_Startup::cancelEndsApplication()
{
    QFETCH(bool, introAccepted);
    Ombrix window;
    ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
    prompts->introAnswers = {introAccepted};
    window.show();
    window.restoreProjectOrPrompt();
    QCOMPARE(prompts->captions.size(), introAccepted ? 1 : 0);
    QVERIFY(window.isVisible()); // closed on the next turn, not from inside the prompt
    QTRY_VERIFY(!window.isVisible());
    QCOMPARE(window.projectDir(), QString());
}

void tst_Startup::layoutAndPortAreAppliedAfterProject()
{
    PtyPair pty;
    QVERIFY(pty.isValid());
    const QString project = makeProject(QStringLiteral("project"));
    Ombrix window;
    ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
    parse({QStringLiteral("-p"), project, QStringLiteral("--layout"),
           QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo/layouts/demo.json"), QStringLiteral("--port"),
           pty.slavePath(), QStringLiteral("--baud"), QStringLiteral("57600")})
        .applyTo(window);

    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    QVERIFY(!window.dashboard()->items().isEmpty());
    QVERIFY(window.serialManager()->isOpen());
    QCOMPARE(window.toolBars()->baudRate(), 57600);
    QVERIFY(prompts->warnings.isEmpty());
}

// SIGTERM (a session ending) must end the program through its event loop,
// where the window writes out a recording in progress, not kill it.
void tst_Startup::terminationEndsTheProgramCleanly()
{
    const QString program = QStringLiteral(OMBRIX_BINARY_DIR "/ombrix");
    if (!QFileInfo(program).isExecutable())
        QSKIP("the ombrix program is not built");
    PtyPair pty;
    QProcess ombrix;
    ombrix.start(program, {QStringLiteral("--project"), makeProject(QStringLiteral("project")),
                           QStringLiteral("--port"), pty.slavePath()});
    QVERIFY(ombrix.waitForStarted());
    // The port is opened last in the start-up.
    const QDir fds(QStringLiteral("/proc/%1/fd").arg(ombrix.processId()));
    const auto portOpen = [&] {
        const QStringList names = fds.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
        return std::any_of(names.cbegin(), names.cend(), [&](const QString &name) {
            return QFile::symLinkTarget(fds.filePath(name)) == pty.slavePath();
        });
    };
    QTRY_VERIFY(portOpen());

    QCOMPARE(::kill(pid_t(ombrix.processId()), SIGTERM), 0);
    QVERIFY(ombrix.waitForFinished(10000));
    QCOMPARE(ombrix.exitStatus(), QProcess::NormalExit);
    QCOMPARE(ombrix.exitCode(), 0);
}

QTEST_MAIN(tst_Startup)
#include "tst_startup.moc"
