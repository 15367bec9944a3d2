// ombrix-cli: the command-line companion of the dashboard, for unattended work.
#include "BridgeCommand.h"
#include "CheckDefCommand.h"
#include "CheckLayoutCommand.h"
#include "ExportEventsCommand.h"
#include "ExportSignalsCommand.h"
#include "InfoCommand.h"
#include "RecordCommand.h"
#include "RenderCommand.h"
#include "SendCommand.h"
#include "SimulateCommand.h"
#include "SimulatedLineSource.h"

#include <QApplication>
#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>

#include <cstdio>
#include <functional>
#include <map>
#include <memory>

namespace {

using Command = std::function<int(const QStringList &)>;

const std::map<QString, Command> &commands()
{
    static const std::map<QString, Command> table = {
        {QStringLiteral("simulate"), &SimulateCommand::run},
        {QStringLiteral("record"), &RecordCommand::run},
        {QStringLiteral("send"), &SendCommand::run},
        {QStringLiteral("bridge"), &BridgeCommand::run},
        {QStringLiteral("info"), &InfoCommand::run},
        {QStringLiteral("export-signals"), &ExportSignalsCommand::run},
        {QStringLiteral("export-events"), &ExportEventsCommand::run},
        {QStringLiteral("render"), &RenderCommand::run},
        {QStringLiteral("check-def"), &CheckDefCommand::run},
        {QStringLiteral("check-layout"), &CheckLayoutCommand::run},
    };
    return table;
}

// Commands that create widgets need a QApplication, even without a display.
bool drawsWidgets(const char *command)
{
    for (const char *name : {"render", "check-layout"}) {
        if (qstrcmp(command, name) == 0)
            return true;
    }
    return false;
}

QString usage()
{
    return QStringLiteral(
        "Usage: ombrix-cli <command> [options]\n"
        "\n"
        "Commands:\n"
        "  simulate        stream a simulated device on a pseudo-terminal\n"
        "  record          record a device (serial port, tcp://, udp://, mqtt://, sim:) into a project's recordings\n"
        "  send            send lines of text to the device on a source\n"
        "  bridge          forward a device's lines to an MQTT broker, and its commands back\n"
        "  info            summarise a recording\n"
        "  export-signals  export a recording's signal values as CSV\n"
        "  export-events   export a recording's states, errors and messages as CSV\n"
        "  render          render a layout's dashboard, at a moment of a recording, as a PNG\n"
        "  check-def       list what loading a definition file skips or overrides, and why\n"
        "  check-layout    list what loading a layout skips, ignores or changes\n"
        "\n"
        "Options:\n"
        "  -h, --help      show this help\n"
        "  -v, --version   show the version\n"
        "\n"
        "Run 'ombrix-cli <command> --help' for the options of a command.\n");
}

} // namespace

int main(int argc, char *argv[])
{
    // No organisation: no command reads or writes the window's settings.
    QCoreApplication::setApplicationName(QStringLiteral("ombrix-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OMBRIX_VERSION));
    // These commands create widgets, with no display needed; every other
    // command runs on Qt Core alone.
    const bool widgets = argc > 1 && drawsWidgets(argv[1]);
    if (widgets)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    std::unique_ptr<QCoreApplication> app =
        widgets ? std::make_unique<QApplication>(argc, argv) : std::make_unique<QCoreApplication>(argc, argv);

    QStringList args = app->arguments();
    QTextStream err(stderr);
    if (args.size() < 2) {
        err << "ombrix-cli: no command given\n" << usage();
        return 2;
    }
    const QString name = args.at(1);
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        QTextStream(stdout) << usage();
        return 0;
    }
    if (name == QLatin1String("--version") || name == QLatin1String("-v")) {
        QTextStream(stdout) << "ombrix-cli " << QCoreApplication::applicationVersion() << '\n';
        return 0;
    }
    const auto it = commands().find(name);
    if (it == commands().end()) {
        err << "ombrix-cli: unknown command '" << name << "'\n" << usage();
        return 2;
    }
    // "sim:" names the simulated device wherever a source is named.
    SimulatedLineSource::registerScheme();
    args.removeAt(1); // the command sees "ombrix-cli <options>"
    return it->second(args);
}
