#include "Dashboard.h"
#include "MainToolBars.h"
#include "Ombrix.h"
#include "PtyPair.h"
#include "SerialManager.h"
#include "ProjectIntroDialog.h"
#include "ScriptedPrompts.h"
#include "SignalDefinitions.h"
#include "StartupOptions.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kDefinitions = QStringLiteral(
    "DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n"
    "DASHBOARD_MAPPING(RPM, 10, 0.5)\n"
    "DASHBOARD_STATE_GROUP(MODE, \"Mode\")\n"
    "DASHBOARD_STATE(MODE, RUN, \"Running\")\n");

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QString makeProject(const QTemporaryDir &root, const QString &name, const QString &definitions = kDefinitions)
{
    const QString dir = root.filePath(name);
    writeFile(dir + QLatin1String("/dashboard_signals.def"), definitions.toUtf8());
    return dir;
}

QString remembered(const char *organisation)
{
    return QSettings(QString::fromLatin1(organisation), QStringLiteral("Ombrix"))
        .value(QStringLiteral("projectDir"))
        .toString();
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
    void setProjectDirAcceptsProjectAndLoadsItsDefinitions();
    void setProjectDirRejectsFolderWithoutDefinitions();
    void commandLineProjectWinsOverDef();
    void commandLineProjectIsNotRemembered();
    void defOutsideProjectLoadsFileButKeepsFolder();
    void defInsideProjectWinsOverProjectFile();
    void badDefinitionFiles_data();
    void badDefinitionFiles();
    void failedLoadKeepsPreviousCatalogue();
    void signalsDefChangedCarriesAbsolutePath();
    void rememberedFolderIsRestoredWithoutPrompt();
    void pickedFolderIsRememberedForNextStart();
    void invalidPickAsksAgain();
    void cancelEndsApplication_data();
    void cancelEndsApplication();
    void introDialogTexts();
    void commandLineOptions();
    void layoutAndPortAreAppliedAfterProject();

private:
    std::unique_ptr<QTemporaryDir> m_root;
    QString m_startDir;
};

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
    makeProject(*m_root, QStringLiteral("project"));
    QDir(m_root->path()).mkpath(QStringLiteral("plain"));
    const QString path = folder.isEmpty() ? folder : m_root->filePath(folder);
    Ombrix window;
    QCOMPARE(window.isValidProjectDir(path), valid);
}

void tst_Startup::setProjectDirAcceptsProjectAndLoadsItsDefinitions()
{
    const QString dir = makeProject(*m_root, QStringLiteral("bench"));
    Ombrix window;
    QVERIFY(window.setProjectDir(dir + QLatin1String("/../bench")));

    const QString absolute = QDir(dir).absolutePath();
    QCOMPARE(window.projectDir(), absolute);
    QCOMPARE(window.windowTitle(), QStringLiteral("Ombrix — %1").arg(absolute));
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("Project: %1").arg(absolute));
    for (const char *sub : {"recordings", "layouts", "exports"})
        QVERIFY(QFileInfo(QDir(absolute).filePath(QLatin1String(sub))).isDir());
    QVERIFY(window.definitions());
    QCOMPARE(SignalDefinitions::current(), window.definitions());
    QVERIFY(window.definitions()->mappingFor(QStringLiteral("RPM")));
    QCOMPARE(remembered("YourCompany"), absolute);
    QCOMPARE(remembered("Tarnwell"), QString());
}

void tst_Startup::setProjectDirRejectsFolderWithoutDefinitions()
{
    const QString good = makeProject(*m_root, QStringLiteral("good"));
    QDir(m_root->path()).mkpath(QStringLiteral("plain"));
    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    QVERIFY(window.setProjectDir(good));
    const QString title = window.windowTitle();

    QVERIFY(!window.setProjectDir(m_root->filePath(QStringLiteral("plain"))));
    QCOMPARE(window.projectDir(), QDir(good).absolutePath());
    QCOMPARE(window.windowTitle(), title);
    QVERIFY(!QFileInfo::exists(m_root->filePath(QStringLiteral("plain/recordings"))));
    QVERIFY(shown->warnings.isEmpty());
}

void tst_Startup::commandLineProjectWinsOverDef()
{
    const QString project = makeProject(*m_root, QStringLiteral("chosen"));
    const QString other = makeProject(*m_root, QStringLiteral("other"));
    StartupOptions options;
    QString error;
    QVERIFY(StartupOptions::fromArguments({QStringLiteral("ombrix"), QStringLiteral("-p"), project,
                                           QStringLiteral("--def"), other + QLatin1String("/dashboard_signals.def")},
                                          &options, &error));
    Ombrix window;
    options.applyTo(window);
    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    QCOMPARE(window.definitions()->path(), QDir(project).filePath(QStringLiteral("dashboard_signals.def")));
    QVERIFY(!QFileInfo::exists(other + QLatin1String("/recordings")));
}

void tst_Startup::commandLineProjectIsNotRemembered()
{
    const QString project = makeProject(*m_root, QStringLiteral("given"));
    StartupOptions options;
    options.projectDir = project;
    {
        Ombrix window;
        options.applyTo(window);
        QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    }
    QCOMPARE(remembered("Tarnwell"), QString());

    // The next start without arguments knows nothing of it and prompts.
    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    StartupOptions().applyTo(window);
    QCOMPARE(shown->introShown, 1);
    QCOMPARE(window.projectDir(), QString());
    QTest::qWait(0); // let the scheduled close run
}

void tst_Startup::defOutsideProjectLoadsFileButKeepsFolder()
{
    QDir(m_root->path()).mkpath(QStringLiteral("work"));
    QDir::setCurrent(m_root->filePath(QStringLiteral("work")));
    const QString defPath = m_root->filePath(QStringLiteral("loose/custom.def"));
    writeFile(defPath, kDefinitions.toUtf8());

    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    QSignalSpy changed(&window, &Ombrix::signalsDefChanged);
    StartupOptions options;
    options.defPath = defPath;
    options.applyTo(window);

    QCOMPARE(window.projectDir(), QString());
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toString(), QFileInfo(defPath).absoluteFilePath());
    QVERIFY(window.definitions()->signalFor(QStringLiteral("RPM")));
    QVERIFY(shown->warnings.isEmpty());
    // With no project the sub-folders land in the working directory.
    for (const char *sub : {"recordings", "layouts", "exports"})
        QVERIFY(QFileInfo(m_root->filePath(QStringLiteral("work/") + QLatin1String(sub))).isDir());
    QVERIFY(!QFileInfo::exists(m_root->filePath(QStringLiteral("loose/recordings"))));
}

void tst_Startup::defInsideProjectWinsOverProjectFile()
{
    const QString project = makeProject(*m_root, QStringLiteral("project"),
                                        QStringLiteral("DASHBOARD_SIGNAL(OWN, \"own\", float)\n"));
    const QString defPath = project + QLatin1String("/variant.def");
    writeFile(defPath, kDefinitions.toUtf8());

    Ombrix window;
    StartupOptions options;
    options.defPath = defPath;
    options.applyTo(window);
    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    QVERIFY(window.definitions()->signalFor(QStringLiteral("RPM")));
    QVERIFY(!window.definitions()->signalFor(QStringLiteral("OWN")));
    QCOMPARE(window.windowTitle(), QStringLiteral("Ombrix — %1").arg(QFileInfo(defPath).absoluteFilePath()));
}

void tst_Startup::badDefinitionFiles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("warning");
    QTest::addColumn<int>("signalCount");
    QTest::newRow("missing") << QStringLiteral("missing") << QStringLiteral("Cannot find signals file:\n%1") << -1;
    QTest::newRow("directory") << QStringLiteral("directory") << QStringLiteral("Cannot find signals file:\n%1") << -1;
    QTest::newRow("unreadable") << QStringLiteral("unreadable") << QStringLiteral("Failed to load:\n%1") << -1;
    QTest::newRow("empty") << QStringLiteral("empty") << QString() << 0;
    QTest::newRow("binary") << QStringLiteral("binary") << QString() << 0;
    QTest::newRow("malformed") << QStringLiteral("malformed") << QString() << 1;
}

void tst_Startup::badDefinitionFiles()
{
    QFETCH(QString, kind);
    QFETCH(QString, warning);
    QFETCH(int, signalCount);

    const QString path = m_root->filePath(QStringLiteral("defs.def"));
    if (kind == QLatin1String("directory")) {
        QDir(m_root->path()).mkpath(QStringLiteral("defs.def"));
    } else if (kind == QLatin1String("unreadable")) {
        writeFile(path, kDefinitions.toUtf8());
        QFile(path).setPermissions(QFileDevice::Permissions());
        if (QFile(path).open(QIODevice::ReadOnly))
            QSKIP("running with rights that read any file");
    } else if (kind == QLatin1String("empty")) {
        writeFile(path, QByteArray());
    } else if (kind == QLatin1String("binary")) {
        QByteArray bytes;
        for (int i = 0; i < 4096; ++i)
            bytes.append(char((i * 7919) & 0xff));
        writeFile(path, bytes);
    } else if (kind == QLatin1String("malformed")) {
        writeFile(path, QByteArrayLiteral("DASHBOARD_SIGNAL(A, \"\", float)\nDASHBOARD_MAPPING(A, .5, 1e3)\n"
                                          "DASHBOARD_SIGNAL(B, \"b\", float\nDASHBOARD_SIGNAL(C, \"c\", float);\n"
                                          "DASHBOARD_STATE(\n\"unterminated\n"));
    }

    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    const bool loaded = window.loadDefinitions(path);

    if (warning.isEmpty()) {
        QVERIFY(loaded);
        QVERIFY(shown->warnings.isEmpty());
        QCOMPARE(window.definitions()->signals().size(), signalCount);
    } else {
        QVERIFY(!loaded);
        QCOMPARE(shown->warningTexts(), QStringList{QStringLiteral("Signals Definition: ") + warning.arg(path)});
        QCOMPARE(window.definitions(), nullptr);
    }
}

void tst_Startup::failedLoadKeepsPreviousCatalogue()
{
    const QString project = makeProject(*m_root, QStringLiteral("project"));
    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    QVERIFY(window.setProjectDir(project));
    const SignalDefinitions *before = window.definitions();
    const QString title = window.windowTitle();
    QSignalSpy changed(&window, &Ombrix::signalsDefChanged);

    QVERIFY(!window.loadDefinitions(m_root->filePath(QStringLiteral("nothing.def"))));
    QCOMPARE(shown->warnings.size(), 1);
    QCOMPARE(window.definitions(), before);
    QCOMPARE(SignalDefinitions::current(), before);
    QVERIFY(before->signalFor(QStringLiteral("RPM")));
    QCOMPARE(window.windowTitle(), title);
    QCOMPARE(changed.count(), 0);
}

void tst_Startup::signalsDefChangedCarriesAbsolutePath()
{
    const QString project = makeProject(*m_root, QStringLiteral("project"));
    QDir::setCurrent(project);
    Ombrix window;
    QSignalSpy changed(&window, &Ombrix::signalsDefChanged);
    QVERIFY(window.loadDefinitions(QStringLiteral("dashboard_signals.def")));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toString(), QDir(project).absoluteFilePath(QStringLiteral("dashboard_signals.def")));
}

void tst_Startup::rememberedFolderIsRestoredWithoutPrompt()
{
    const QString project = makeProject(*m_root, QStringLiteral("project"));
    QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).setValue(QStringLiteral("projectDir"), project);
    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    window.restoreProjectOrPrompt();
    QCOMPARE(shown->introShown, 0);
    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
}

void tst_Startup::pickedFolderIsRememberedForNextStart()
{
    const QString project = makeProject(*m_root, QStringLiteral("picked"));
    {
        auto prompts = std::make_unique<ScriptedPrompts>();
        prompts->introAnswers = {true};
        prompts->fileAnswers = {project};
        ScriptedPrompts *shown = prompts.get();
        Ombrix window;
        window.setPrompts(std::move(prompts));
        window.restoreProjectOrPrompt();
        QCOMPARE(shown->captions, QStringList{QStringLiteral("Select Project Folder (contains dashboard_signals.def)")});
        QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    }
    QCOMPARE(remembered("Tarnwell"), project);

    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    window.restoreProjectOrPrompt();
    QCOMPARE(shown->introShown, 0);
    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
}

void tst_Startup::invalidPickAsksAgain()
{
    const QString project = makeProject(*m_root, QStringLiteral("project"));
    QDir(m_root->path()).mkpath(QStringLiteral("plain"));
    auto prompts = std::make_unique<ScriptedPrompts>();
    prompts->introAnswers = {true, true};
    prompts->fileAnswers = {m_root->filePath(QStringLiteral("plain")), project};
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    window.promptForProject();

    QCOMPARE(shown->introShown, 2);
    QCOMPARE(shown->warningTexts(),
             QStringList{QStringLiteral("Invalid Project: Selected folder does not contain dashboard_signals.def")});
    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    QVERIFY(!QFileInfo::exists(m_root->filePath(QStringLiteral("plain/recordings"))));
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
    auto prompts = std::make_unique<ScriptedPrompts>();
    prompts->introAnswers = {introAccepted};
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    window.show();
    window.restoreProjectOrPrompt();
    QCOMPARE(shown->captions.size(), introAccepted ? 1 : 0);
    QVERIFY(window.isVisible()); // closed on the next turn, not from inside the prompt
    QTRY_VERIFY(!window.isVisible());
    QCOMPARE(window.projectDir(), QString());
}

void tst_Startup::introDialogTexts()
{
    ProjectIntroDialog dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Select a Project"));
    QCOMPARE(dialog.minimumWidth(), 720);

    QStringList texts;
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        texts.append(label->text());
    QVERIFY(texts.contains(QStringLiteral("<h2>Welcome to Ombrix</h2>")));
    for (const char *text : {"Project folder:", "Recordings:", "Layouts:",
                             "Saved under <code>recordings/</code> inside your project.",
                             "Saved under <code>layouts/</code> inside your project."})
        QVERIFY2(texts.contains(QLatin1String(text)), text);

    auto *buttons = dialog.findChild<QDialogButtonBox *>();
    QVERIFY(buttons);
    QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Open | QDialogButtonBox::Cancel);

    QSignalSpy rejected(&dialog, &QDialog::rejected);
    dialog.show();
    QTest::mouseClick(buttons->button(QDialogButtonBox::Cancel), Qt::LeftButton);
    QCOMPARE(rejected.count(), 1);
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

void tst_Startup::commandLineOptions()
{
    StartupOptions options;
    QString error;
    QVERIFY(StartupOptions::fromArguments({QStringLiteral("ombrix"), QStringLiteral("--layout"), QStringLiteral("a.json"),
                                           QStringLiteral("--port"), QStringLiteral("/dev/ttyX")},
                                          &options, &error));
    QCOMPARE(options.layoutPath, QStringLiteral("a.json"));
    QCOMPARE(options.portName, QStringLiteral("/dev/ttyX"));
    QCOMPARE(options.baudRate, 115200);

    QVERIFY(StartupOptions::fromArguments({QStringLiteral("ombrix"), QStringLiteral("--baud"), QStringLiteral("9600")},
                                          &options, &error));
    QCOMPARE(options.baudRate, 9600);

    QVERIFY(!StartupOptions::fromArguments({QStringLiteral("ombrix"), QStringLiteral("--baud"), QStringLiteral("fast")},
                                           &options, &error));
    QVERIFY(error.contains(QLatin1String("fast")));
    QVERIFY(!StartupOptions::fromArguments({QStringLiteral("ombrix"), QStringLiteral("--bogus")}, &options, &error));
}

void tst_Startup::layoutAndPortAreAppliedAfterProject()
{
    PtyPair pty;
    QVERIFY(pty.isValid());
    const QString project = makeProject(*m_root, QStringLiteral("project"));
    const QString layout = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo/layouts/demo.json");

    StartupOptions options;
    QString error;
    QVERIFY(StartupOptions::fromArguments({QStringLiteral("ombrix"), QStringLiteral("-p"), project, QStringLiteral("--layout"),
                                           layout, QStringLiteral("--port"), pty.slavePath(), QStringLiteral("--baud"),
                                           QStringLiteral("57600")},
                                          &options, &error));
    auto prompts = std::make_unique<ScriptedPrompts>();
    ScriptedPrompts *shown = prompts.get();
    Ombrix window;
    window.setPrompts(std::move(prompts));
    options.applyTo(window);

    QCOMPARE(window.projectDir(), QDir(project).absolutePath());
    QVERIFY(!window.dashboard()->items().isEmpty());
    QVERIFY(window.serialManager()->isOpen());
    QCOMPARE(window.toolBars()->baudRate(), 57600);
    QCOMPARE(window.toolBars()->portName(), pty.slavePath());
    QVERIFY(shown->warnings.isEmpty());
}

QTEST_MAIN(tst_Startup)
#include "tst_startup.moc"
