#include "StartupOptions.h"

#include "FrameClock.h"
#include "Ombrix.h"
#include "Project.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

const QString kProject = QStringLiteral("project");
const QString kDef = QStringLiteral("def");
const QString kLayout = QStringLiteral("layout");
const QString kPort = QStringLiteral("port");
const QString kBaud = QStringLiteral("baud");
const QString kFps = QStringLiteral("fps");

} // namespace

void StartupOptions::addOptions(QCommandLineParser &parser)
{
    parser.addHelpOption();
    parser.addOption({{QStringLiteral("p"), kProject}, QStringLiteral("Project directory."), QStringLiteral("dir")});
    parser.addOption({{QStringLiteral("d"), kDef}, QStringLiteral("Path to dashboard_signals.def."),
                      QStringLiteral("file")});
    parser.addOption({kLayout, QStringLiteral("Layout file to load once the project is open."),
                      QStringLiteral("file")});
    parser.addOption({kPort, QStringLiteral("Serial port (name or device path) to connect at start."),
                      QStringLiteral("name")});
    parser.addOption({kBaud, QStringLiteral("Baud rate for --port (default 115200)."), QStringLiteral("rate"),
                      QStringLiteral("115200")});
    parser.addOption({kFps,
                      QStringLiteral("Dashboard frames per second, 1 to %1 (default %2).")
                          .arg(FrameClock::MaxFramesPerSecond)
                          .arg(FrameClock::DefaultFramesPerSecond),
                      QStringLiteral("n"), QString::number(FrameClock::DefaultFramesPerSecond)});
}

bool StartupOptions::fromParser(const QCommandLineParser &parser, StartupOptions *options, QString *error)
{
    StartupOptions result;
    result.projectDir = parser.value(kProject);
    result.defPath = parser.value(kDef);
    result.layoutPath = parser.value(kLayout);
    result.portName = parser.value(kPort);

    bool ok = false;
    const QString baud = parser.value(kBaud);
    result.baudRate = baud.toInt(&ok);
    if (!ok || result.baudRate <= 0) {
        if (error)
            *error = QStringLiteral("Invalid baud rate: %1").arg(baud);
        return false;
    }
    const QString fps = parser.value(kFps);
    result.framesPerSecond = fps.toInt(&ok);
    if (!ok || result.framesPerSecond < 1 || result.framesPerSecond > FrameClock::MaxFramesPerSecond) {
        if (error)
            *error = QStringLiteral("Invalid frames per second: %1 (1 to %2)").arg(fps).arg(FrameClock::MaxFramesPerSecond);
        return false;
    }
    *options = result;
    return true;
}

bool StartupOptions::fromArguments(const QStringList &arguments, StartupOptions *options, QString *error)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments)) {
        if (error)
            *error = parser.errorText();
        return false;
    }
    return fromParser(parser, options, error);
}

QStringList StartupOptions::problems() const
{
    QStringList found;
    if (!projectDir.isEmpty()) {
        const QFileInfo folder(projectDir);
        if (!folder.exists())
            found << QStringLiteral("--project %1: no such folder").arg(projectDir);
        else if (!folder.isDir())
            found << QStringLiteral("--project %1: not a folder").arg(projectDir);
        else if (!Project::isValidProjectDir(projectDir))
            found << QStringLiteral("--project %1: not a project folder (no %2 in it)")
                         .arg(projectDir, Project::DefinitionFileName);
    } else if (!defPath.isEmpty()) {
        const QFileInfo file(defPath);
        if (!file.exists())
            found << QStringLiteral("--def %1: no such file").arg(defPath);
        else if (file.isDir())
            found << QStringLiteral("--def %1: a folder, not a file").arg(defPath);
    }
    if (!layoutPath.isEmpty() && !QFileInfo(layoutPath).isFile())
        found << QStringLiteral("--layout %1: no such file").arg(layoutPath);
    return found;
}

void StartupOptions::applyTo(Ombrix &window) const
{
    FrameClock::instance().setFramesPerSecond(framesPerSecond);
    if (!projectDir.isEmpty()) {
        // A project that fails is not replaced by anything else.
        window.setProjectDir(projectDir);
    } else if (!defPath.isEmpty()) {
        // The named file wins over the folder's own definitions, loaded just before.
        window.setProjectDir(QFileInfo(defPath).absolutePath());
        window.loadDefinitions(defPath);
        window.ensureProjectSubfolders();
    } else {
        window.restoreProjectOrPrompt();
    }
    if (!layoutPath.isEmpty())
        window.loadLayoutFrom(layoutPath);
    if (!portName.isEmpty())
        window.connectPort(portName, baudRate);
}
