#include "Ombrix.h"
#include "SettingsStores.h"
#include "StartupOptions.h"
#include "TerminationNotifier.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

namespace {

QStringList argumentList(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

// Help and version are printed by Qt Core alone, so that they work where
// there is no display (a terminal over ssh, a man page built on a server).
void answerTextOnlyRequests(int argc, char *argv[])
{
    if (!StartupOptions::asksForTextOnly(argumentList(argc, argv)))
        return;
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    StartupOptions::addOptions(parser);
    parser.process(app); // prints and exits
}

} // namespace

int main(int argc, char *argv[])
{
    SettingsStores::setApplicationIdentity();
    QCoreApplication::setApplicationVersion(QStringLiteral(OMBRIX_VERSION));
    // Wayland desktops find the window's name and icon through its desktop entry.
    QGuiApplication::setDesktopFileName(QStringLiteral("example.tarnwell.Ombrix"));
    answerTextOnlyRequests(argc, argv);
    QApplication app(argc, argv);

    QCommandLineParser parser;
    StartupOptions::addOptions(parser);
    parser.process(app);

    StartupOptions options;
    QString error;
    if (!StartupOptions::fromParser(parser, &options, &error)) {
        std::fprintf(stderr, "ombrix: %s\n", qPrintable(error));
        return 2;
    }

    // A mistyped path is said where it was typed; the window starts anyway.
    for (const QString &problem : options.problems())
        std::fprintf(stderr, "ombrix: %s\n", qPrintable(problem));

    Ombrix window;
    // Ctrl+C, a closed terminal or the session ending: leave through the
    // event loop, so that the window writes out a recording in progress.
    TerminationNotifier termination;
    QObject::connect(&termination, &TerminationNotifier::terminationRequested, &app, &QCoreApplication::quit);
    options.applyTo(window);
    window.show();
    return app.exec();
}
