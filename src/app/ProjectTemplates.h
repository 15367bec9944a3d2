#pragma once

#include <QByteArray>
#include <QString>

// What a project can start from: the commented starter definitions of a new
// project, and the demo project shipped with the program.
class ProjectTemplates
{
public:
    // A dashboard_signals.def that explains the file and declares a few
    // examples; loading it skips nothing but its comments.
    static QByteArray starterDefinitions();
    // Creates the folder and writes the starter definitions into it, unless
    // it holds a dashboard_signals.def already (which is kept).
    static bool writeStarter(const QString &dir, QString *error);

    // The shipped demo project: installed beside the program, in the
    // system's data folders, or in the source tree of a build that was not
    // installed. Empty when none is found.
    static QString demoFolder();
    // Where the user's own copy of the demo lives (a writable data folder).
    static QString demoCopyFolder();
    // Copies every file below from to the same place below to; files there
    // already are left as they are. Hidden files are not copied.
    static bool copyFolder(const QString &from, const QString &to, QString *error);
};
