#pragma once

#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QCommandLineParser;
QT_END_NAMESPACE

class Ombrix;

// What the command line asks for at start-up, and the start-up sequence that
// applies it to the main window. main() only builds the application around it.
struct StartupOptions
{
    QString projectDir;   // "project": takes precedence over "def"
    QString defPath;      // "def": a definition file, its folder tried as project
    QString layoutPath;   // "layout" or a file argument: loaded once the project is settled
    QString recordingPath; // a .rec file argument: selected for playback
    QString portName;     // "port": opened at start
    int baudRate = 115200;
    int framesPerSecond = 60;  // "fps": how often the dashboard paints at most

    // Adds help, version, every option of ours and the file argument to the parser.
    static void addOptions(QCommandLineParser &parser);
    // True when the arguments ask only for text (help or version), which
    // needs no display: main() answers them before creating the window's
    // application object.
    static bool asksForTextOnly(const QStringList &arguments);
    // Reads the processed parser; false with a message for a bad value.
    static bool fromParser(const QCommandLineParser &parser, StartupOptions *options, QString *error);
    // Parses a complete argument list (program name first), for tests and tools.
    static bool fromArguments(const QStringList &arguments, StartupOptions *options, QString *error);

    // What is wrong with the files and folders named, one line each
    // ("--project DIR: no such folder"), for the terminal: the window itself
    // starts all the same.
    QStringList problems() const;

    // Settles the project (project, else def, else the project a file
    // argument lies in, else remembered folder or prompt), then loads the
    // layout, selects the recording and opens the port when asked.
    void applyTo(Ombrix &window) const;

private:
    bool takeFileArgument(const QStringList &files, QString *error);
    // The project folder holding a recording or layout in its own
    // "recordings" or "layouts" sub-folder; empty when there is none.
    QString projectOfFileArgument() const;
};
