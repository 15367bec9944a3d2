#include "RenderCommand.h"

#include "CliCommand.h"
#include "DashboardSnapshot.h"

#include <QFileInfo>
#include <QImageWriter>
#include <QRegularExpression>

#include <cmath>

namespace {

constexpr int MinSide = 16;

} // namespace

bool RenderCommand::parseSize(const QString &text, int max, int *width, int *height)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,5})[xX](\\d{1,5})$"));
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return false;
    *width = match.captured(1).toInt();
    *height = match.captured(2).toInt();
    return *width >= MinSide && *height >= MinSide && *width <= max && *height <= max;
}

int RenderCommand::run(const QStringList &args)
{
    CliCommand cli(QStringLiteral("render"), QStringLiteral("LAYOUT --project DIR [options] -o OUT.png"),
                   QStringLiteral("Render a layout's dashboard as the window shows it, at a moment of a "
                                  "recording, into a PNG picture."));
    QCommandLineParser &parser = cli.parser();
    parser.addPositionalArgument(QStringLiteral("LAYOUT"), QStringLiteral("The layout file (.json)."));
    const QCommandLineOption project({QStringLiteral("p"), QStringLiteral("project")},
                                     QStringLiteral("Project folder (with dashboard_signals.def)."),
                                     QStringLiteral("DIR"));
    const QCommandLineOption recording({QStringLiteral("r"), QStringLiteral("recording")},
                                       QStringLiteral("Recording whose moment is shown."), QStringLiteral("FILE.rec"));
    const QCommandLineOption at(QStringLiteral("at"), QStringLiteral("The moment, in seconds from the start of the recording."),
                                QStringLiteral("SECONDS"));
    const QCommandLineOption size(QStringLiteral("size"),
                                  QStringLiteral("Picture size (default: the dashboard's items and a margin)."),
                                  QStringLiteral("WxH"));
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("The picture to write (.png)."), QStringLiteral("OUT.png"));
    parser.addOptions({project, recording, at, size, output});

    QStringList positionals;
    if (!cli.parse(args) || !cli.takePositionals({QStringLiteral("LAYOUT")}, &positionals))
        return cli.exitCode();
    if (!parser.isSet(project))
        return cli.usageError(QStringLiteral("--project DIR is needed"));
    if (!parser.isSet(output))
        return cli.usageError(QStringLiteral("-o OUT.png is needed"));
    if (parser.isSet(recording) != parser.isSet(at))
        return cli.usageError(QStringLiteral("--recording and --at go together"));

    DashboardSnapshot::Request request;
    request.projectDir = parser.value(project);
    request.layoutPath = positionals.constFirst();
    request.recordingPath = parser.value(recording);
    if (parser.isSet(at)) {
        bool ok = false;
        request.atSeconds = parser.value(at).toDouble(&ok);
        if (!ok || !std::isfinite(request.atSeconds) || request.atSeconds < 0.0)
            return cli.usageError(QStringLiteral("--at needs a number of seconds >= 0, not '%1'").arg(parser.value(at)));
    }
    if (parser.isSet(size)) {
        int width = 0;
        int height = 0;
        if (!parseSize(parser.value(size), DashboardSnapshot::MaxSide, &width, &height))
            return cli.usageError(QStringLiteral("--size needs WIDTHxHEIGHT, each %1 to %2, not '%3'")
                                      .arg(MinSide)
                                      .arg(DashboardSnapshot::MaxSide)
                                      .arg(parser.value(size)));
        request.size = QSize(width, height);
    }

    QImage picture;
    QString error;
    if (!DashboardSnapshot::render(request, &picture, &error))
        return cli.fail(error);
    const QString outPath = parser.value(output);
    QImageWriter writer(outPath, "png");
    if (!writer.write(picture))
        return cli.fail(QStringLiteral("cannot write %1: %2").arg(outPath, writer.errorString()));
    cli.note(QStringLiteral("%1 x %2 written to %3").arg(picture.width()).arg(picture.height()).arg(outPath));
    return 0;
}
