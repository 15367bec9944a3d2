#include "Ombrix.h"
#include "StartupOptions.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("tarnwell.example"));
    QCoreApplication::setApplicationName(QStringLiteral("Ombrix"));
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

    Ombrix window;
    options.applyTo(window);
    window.show();
    return app.exec();
}
