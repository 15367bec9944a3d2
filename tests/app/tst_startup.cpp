#include "Dashboard.h"
#include "MainToolBars.h"
#include "Ombrix.h"
#include "PtyPair.h"
#include "ScriptedPrompts.h"
#include "SerialManager.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"
#include "StartupOptions.h"
#include "TestFiles.h"

#include <QDir>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

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

// A window whose dialogs are answered by a script.
struct Prompted
{
    Ombrix window;
    ScriptedPrompts *prompts = ScriptedPrompts::installOn(window);
};

} // namespace

class tst_Startup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        m_startDir = QDir::currentPath();
    }

    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        QVERIFY(m_root->isValid());
        QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).clear();
        QSettings(QStringLiteral("YourCompany"), QStringLiteral("Ombrix")).clear();
    }

    void cleanup()
    {
        QDir::setCurrent(m_startDir);
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
        QCOMPARE(SignalDefinitions::current(), nullptr);
    }

    void validProjectDir_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("valid");
        QTest::newRow("empty path") << QString() << false;
        QTest::newRow("missing folder") << QStringLiteral("missing") << false;
        QTest::newRow("folder without definitions") << QStringLiteral("plain") << false;
        QTest::newRow("project") << QStringLiteral("project") << true;
    }

    void validProjectDir()
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

    // Paths on the command line that lead nowhere are said on the terminal.
    void commandLinePathProblems_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("problem");
        QTest::newRow("fine") << QStringList{"-p", "project"} << QString();
        QTest::newRow("missing project") << QStringList{"-p", "missing"} << "--project missing: no such folder";
        QTest::newRow("not a project") << QStringList{"-p", "plain"}
                                       << "--project plain: not a project folder (no dashboard_signals.def in it)";
        QTest::newRow("missing definitions") << QStringList{"--def", "none.def"} << "--def none.def: no such file";
        QTest::newRow("missing layout") << QStringList{"-p", "project", "--layout", "x.json"}
                                        << "--layout x.json: no such file";
    }

    void commandLinePathProblems()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, problem);
        makeProject(QStringLiteral("project"));
        QDir(m_root->path()).mkpath(QStringLiteral("plain"));
        QDir::setCurrent(m_root->path());
        QCOMPARE(parse(arguments).problems(), problem.isEmpty() ? QStringList() : QStringList{problem});
    }

    void fileArgument_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("recording");
        QTest::addColumn<QString>("layout");
        QTest::addColumn<bool>("valid");
        QTest::newRow("recording") << QStringList{"run.REC"} << "run.REC" << "" << true;
        QTest::newRow("layout") << QStringList{"bench.json"} << "" << "bench.json" << true;
        QTest::newRow("recording and layout option") << QStringList{"--layout", "a.json", "run.rec"} << "run.rec"
                                                     << "a.json" << true;
        QTest::newRow("layout twice") << QStringList{"--layout", "a.json", "b.json"} << "" << "" << false;
        QTest::newRow("two files") << QStringList{"run.rec", "other.rec"} << "" << "" << false;
    }

    void fileArgument()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, recording);
        QFETCH(QString, layout);
        QFETCH(bool, valid);
        StartupOptions options;
        QString error;
        QCOMPARE(StartupOptions::fromArguments(QStringList{QStringLiteral("ombrix")} + arguments, &options, &error), valid);
        QCOMPARE(error.isEmpty(), valid);
        QCOMPARE(options.recordingPath, recording);
        QCOMPARE(options.layoutPath, layout);
    }

    // Double-clicking a recording in a file manager: its project opens
    // (without being remembered) and the recording is ready to play.
    void recordingArgumentOpensItsProject()
    {
        const QString project = makeProject(QStringLiteral("bench"));
        const QString recording = project + QLatin1String("/recordings/run.rec");
        QVERIFY(writeFile(recording, "0.000000 RPM=1\n1.000000 RPM=2\n"));
        Prompted w;
        parse({recording}).applyTo(w.window);

        QCOMPARE(w.prompts->introShown, 0);
        QCOMPARE(w.window.projectDir(), QDir(project).absolutePath());
        QCOMPARE(w.window.playbackFile(), recording);
        QCOMPARE(w.window.engine()->duration(), 1.0);
        QCOMPARE(remembered(QStringLiteral("Tarnwell")), QString());
    }

    // Help and version must not need a display: with one that cannot be
    // reached, creating the window's application object would abort.
    void textOnlyRequestsNeedNoDisplay_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("help") << "--help" << QByteArray("--project <dir>");
        QTest::newRow("version") << "--version" << QByteArray("Ombrix " OMBRIX_VERSION "\n");
    }

    void textOnlyRequestsNeedNoDisplay()
    {
        QFETCH(QString, argument);
        QFETCH(QByteArray, expected);
        const QString program = QStringLiteral(OMBRIX_BINARY_DIR "/ombrix");
        if (!QFileInfo(program).isExecutable())
            QSKIP("the ombrix program is not built");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        QProcess ombrix;
        ombrix.setProcessEnvironment(environment);
        ombrix.start(program, {argument});
        QVERIFY(ombrix.waitForFinished(10000));
        const QByteArray out = ombrix.readAllStandardOutput();
        QVERIFY2(ombrix.exitStatus() == QProcess::NormalExit && ombrix.exitCode() == 0,
                 ombrix.readAllStandardError().constData());
        QVERIFY2(out.contains(expected), out.constData());
    }

    void setProjectDirTakesProjectButRemembersInOtherStore()
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

    void commandLinePrecedence_data()
    {
        QTest::addColumn<bool>("withProject");
        QTest::addColumn<QString>("signal");
        // "project" wins over "def" and loads the folder's own file.
        QTest::newRow("project and def") << true << QStringLiteral("OWN");
        // "def" alone opens its folder, then its own file wins over the folder's.
        QTest::newRow("def inside a project") << false << QStringLiteral("RPM");
    }

    void commandLinePrecedence()
    {
        QFETCH(bool, withProject);
        QFETCH(QString, signal);
        const QString project = makeProject(QStringLiteral("project"), "DASHBOARD_SIGNAL(OWN, \"own\", float)\n");
        const QString defPath = project + QLatin1String("/variant.def");
        QVERIFY(writeFile(defPath, kDefinitions));
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

    void defOutsideProjectLoadsFileUnderCurrentFolder()
    {
        QDir(m_root->path()).mkpath(QStringLiteral("work"));
        QDir::setCurrent(m_root->filePath(QStringLiteral("work")));
        const QString defPath = m_root->filePath(QStringLiteral("loose/custom.def"));
        QVERIFY(writeFile(defPath, kDefinitions));

        Prompted w;
        QSignalSpy changed(&w.window, &Ombrix::signalsDefChanged);
        parse({QStringLiteral("--def"), QStringLiteral("../loose/custom.def")}).applyTo(w.window);

        QCOMPARE(w.window.projectDir(), QString());
        QVERIFY(w.prompts->warnings.isEmpty());
        QVERIFY(w.window.definitions()->signalFor(QStringLiteral("RPM")));
        // Announced once with the absolute path, though given as a relative one.
        QCOMPARE(QList<QVariantList>(changed), QList<QVariantList>{{QFileInfo(defPath).absoluteFilePath()}});
        // With no project the sub-folders land in the working directory.
        for (const char *sub : {"recordings", "layouts", "exports"})
            QVERIFY(QFileInfo(m_root->filePath(QStringLiteral("work/") + QLatin1String(sub))).isDir());
        QVERIFY(!QFileInfo::exists(m_root->filePath(QStringLiteral("loose/recordings"))));
    }

    void badDefinitionsWarnAndKeepPreviousCatalogue_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("warning");
        QTest::newRow("missing") << QStringLiteral("missing") << QStringLiteral("Cannot find signals file:\n%1");
        QTest::newRow("directory") << QStringLiteral("directory") << QStringLiteral("Cannot find signals file:\n%1");
        QTest::newRow("unreadable") << QStringLiteral("unreadable") << QStringLiteral("Failed to load:\n%1");
    }

    void badDefinitionsWarnAndKeepPreviousCatalogue()
    {
        QFETCH(QString, kind);
        QFETCH(QString, warning);
        const QString path = m_root->filePath(QStringLiteral("defs.def"));
        if (kind == QLatin1String("directory")) {
            QDir(m_root->path()).mkpath(QStringLiteral("defs.def"));
        } else if (kind == QLatin1String("unreadable")) {
            QVERIFY(writeFile(path, kDefinitions));
            QFile(path).setPermissions(QFileDevice::Permissions());
            if (QFile(path).open(QIODevice::ReadOnly))
                QSKIP("running with rights that read any file");
        }

        Prompted w;
        QVERIFY(w.window.setProjectDir(makeProject(QStringLiteral("project"))));
        const SignalDefinitions *before = w.window.definitions();
        const QString title = w.window.windowTitle();
        QSignalSpy changed(&w.window, &Ombrix::signalsDefChanged);

        QVERIFY(!w.window.loadDefinitions(path));
        QCOMPARE(w.prompts->warningTexts(), QStringList{QStringLiteral("Signals Definition: ") + warning.arg(path)});
        QVERIFY(w.prompts->warnings.at(0).details.startsWith(path + QLatin1String(": "))); // and why
        QCOMPARE(w.window.definitions(), before);
        QCOMPARE(SignalDefinitions::current(), before);
        QVERIFY(before->signalFor(QStringLiteral("RPM")));
        QCOMPARE(w.window.windowTitle(), title);
        QCOMPARE(changed.count(), 0);
    }

    void pickedFolderIsRestoredAtNextStart()
    {
        const QString project = makeProject(QStringLiteral("picked"));
        {
            Prompted w;
            w.prompts->introAnswers = {true};
            w.prompts->fileAnswers = {project};
            StartupOptions().applyTo(w.window);
            QCOMPARE(w.prompts->captions, QStringList{QStringLiteral("Select Project Folder (contains dashboard_signals.def)")});
            QCOMPARE(w.window.projectDir(), QDir(project).absolutePath());
        }
        QCOMPARE(remembered(QStringLiteral("Tarnwell")), project);

        Prompted w;
        StartupOptions().applyTo(w.window);
        QCOMPARE(w.prompts->introShown, 0);
        QCOMPARE(w.window.projectDir(), QDir(project).absolutePath());
    }

    void invalidPickAsksAgain()
    {
        const QString project = makeProject(QStringLiteral("project"));
        QDir(m_root->path()).mkpath(QStringLiteral("plain"));
        Prompted w;
        w.prompts->introAnswers = {true, true};
        w.prompts->fileAnswers = {m_root->filePath(QStringLiteral("plain")), project};
        w.window.promptForProject();

        QCOMPARE(w.prompts->introShown, 2);
        QCOMPARE(w.prompts->warningTexts(),
                 QStringList{QStringLiteral("Invalid Project: Selected folder does not contain dashboard_signals.def")});
        QCOMPARE(w.window.projectDir(), QDir(project).absolutePath());
    }

    void cancelEndsApplication_data()
    {
        QTest::addColumn<bool>("introAccepted");
        QTest::newRow("intro cancelled") << false;
        QTest::newRow("folder chooser cancelled") << true;
    }

    void cancelEndsApplication()
    {
        QFETCH(bool, introAccepted);
        Prompted w;
        w.prompts->introAnswers = {introAccepted};
        w.window.show();
        w.window.restoreProjectOrPrompt();
        QCOMPARE(w.prompts->captions.size(), introAccepted ? 1 : 0);
        QVERIFY(w.window.isVisible()); // closed on the next turn, not from inside the prompt
        QTRY_VERIFY(!w.window.isVisible());
        QCOMPARE(w.window.projectDir(), QString());
    }

    void layoutAndPortAreAppliedAfterProject()
    {
        PtyPair pty;
        const QString project = makeProject(QStringLiteral("project"));
        Prompted w;
        parse({QStringLiteral("-p"), project, QStringLiteral("--layout"),
               QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo/layouts/demo.json"), QStringLiteral("--port"),
               pty.slavePath(), QStringLiteral("--baud"), QStringLiteral("57600")})
            .applyTo(w.window);

        QCOMPARE(w.window.projectDir(), QDir(project).absolutePath());
        QVERIFY(!w.window.dashboard()->items().isEmpty());
        QVERIFY(w.window.serialManager()->isOpen());
        QCOMPARE(w.window.toolBars()->baudRate(), 57600);
        QVERIFY(w.prompts->warnings.isEmpty());
    }

    // SIGTERM (a session ending) must end the program through its event loop,
    // where the window writes out a recording in progress, not kill it.
    void terminationEndsTheProgramCleanly()
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

private:
    QString makeProject(const QString &name, const QByteArray &definitions = kDefinitions)
    {
        const QString dir = m_root->filePath(name);
        return writeFile(dir + QLatin1String("/dashboard_signals.def"), definitions) ? dir : QString();
    }

    std::unique_ptr<QTemporaryDir> m_root;
    QString m_startDir;
};

QTEST_MAIN(tst_Startup)
#include "tst_startup.moc"
