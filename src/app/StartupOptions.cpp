#include "StartupOptions.h"

#include "FrameClock.h"
#include "Ombrix.h"
#include "ProjectFolder.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

const QString kProject = QStringLiteral("project");
const QString kDef = QStringLiteral("def");
const QString kLayout = QStringLiteral("layout");
const QString kPort = QStringLiteral("port");
const QString kBaud = QStringLiteral("baud");
const QString kFps = QStringLiteral("fps");
const QString kHelp = QStringLiteral("help");
const QString kHelpAll = QStringLiteral("help-all");
const QString kVersion = QStringLiteral("version");

} // namespace

void StartupOptions::addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral("Dashboard for live serial telemetry."));
    parser.addHelpOption();
    parser.addOption({{QStringLiteral("p"), kProject}, QStringLiteral("Project directory."), QStringLiteral("dir")});
    parser.addOption({{QStringLiteral("d"), kDef}, QStringLiteral("Path to dashboard_signals.def."),
                      QStringLiteral("file")});
    parser.addOption({kLayout, QStringLiteral("Layout file to load once the project is open."),
                      QStringLiteral("file")});
    parser.addOption({kPort,
                      QStringLiteral("Source to connect at start: a serial port (name or device path), "
                                     "tcp://HOST:PORT, udp://[HOST]:PORT, mqtt[s]://[USER[:PASSWORD]@]HOST[:PORT]/TOPIC "
                                     "or sim:."),
                      QStringLiteral("name")});
    parser.addOption({kBaud, QStringLiteral("Baud rate for --port (default 115200)."), QStringLiteral("rate"),
                      QStringLiteral("115200")});
    parser.addOption({kFps,
                      QStringLiteral("Dashboard frames per second, 1 to %1 (default %2).")
                          .arg(FrameClock::MaxFramesPerSecond)
                          .arg(FrameClock::DefaultFramesPerSecond),
                      QStringLiteral("n"), QString::number(FrameClock::DefaultFramesPerSecond)});
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("A recording (.rec) to open for playback, or a layout (.json) to load."),
                                 QStringLiteral("[file]"));
}

bool StartupOptions::asksForTextOnly(const QStringList &arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    // Unknown options may be the toolkit's own (-platform, -style), which
    // only the application object knows: they are judged after it exists.
    parser.parse(arguments);
    return parser.isSet(kHelp) || parser.isSet(kHelpAll) || parser.isSet(kVersion);
}

bool StartupOptions::fromParser(const QCommandLineParser &parser, StartupOptions *options, QString *error)
{
    StartupOptions result;
    result.projectDir = parser.value(kProject);
    result.defPath = parser.value(kDef);
    result.layoutPath = parser.value(kLayout);
    result.portName = parser.value(kPort);
    if (!result.takeFileArgument(parser.positionalArguments(), error))
        return false;

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

bool StartupOptions::takeFileArgument(const QStringList &files, QString *error)
{
    if (files.isEmpty())
        return true;
    QString message;
    if (files.size() > 1)
        message = QStringLiteral("One file at most, a recording or a layout: %1").arg(files.join(QLatin1Char(' ')));
    else if (files.first().endsWith(QLatin1String(".rec"), Qt::CaseInsensitive))
        recordingPath = files.first();
    else if (!layoutPath.isEmpty())
        message = QStringLiteral("Two layouts: --layout %1 and %2").arg(layoutPath, files.first());
    else
        layoutPath = files.first();
    if (!message.isEmpty() && error)
        *error = message;
    return message.isEmpty();
}

QString StartupOptions::projectOfFileArgument() const
{
    const QString file = recordingPath.isEmpty() ? layoutPath : recordingPath;
    if (file.isEmpty())
        return QString();
    const QString folder = QFileInfo(QFileInfo(file).absolutePath()).absolutePath();
    return ProjectFolder::isValid(folder) ? folder : QString();
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
        else if (!ProjectFolder::isValid(projectDir))
            found << QStringLiteral("--project %1: not a project folder (no %2 in it)")
                         .arg(projectDir, ProjectFolder::DefinitionFileName);
    } else if (!defPath.isEmpty()) {
        const QFileInfo file(defPath);
        if (!file.exists())
            found << QStringLiteral("--def %1: no such file").arg(defPath);
        else if (file.isDir())
            found << QStringLiteral("--def %1: a folder, not a file").arg(defPath);
    }
    if (!layoutPath.isEmpty() && !QFileInfo(layoutPath).isFile())
        found << QStringLiteral("--layout %1: no such file").arg(layoutPath);
    if (!recordingPath.isEmpty() && !QFileInfo(recordingPath).isFile())
        found << QStringLiteral("%1: no such recording").arg(recordingPath);
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
    } else if (const QString fileProject = projectOfFileArgument(); !fileProject.isEmpty()) {
        // A recording or layout opened from a file manager brings its own
        // project; like a folder on the command line, it is not remembered.
        window.setProjectDir(fileProject);
    } else {
        window.restoreProjectOrPrompt();
    }
    if (!layoutPath.isEmpty())
        window.loadLayoutFrom(layoutPath);
    if (!recordingPath.isEmpty())
        window.setPlaybackFile(QFileInfo(recordingPath).absoluteFilePath());
    if (!portName.isEmpty())
        window.connectPort(portName, baudRate);
}
