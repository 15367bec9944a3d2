#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// A project folder on disk: a dashboard_signals.def and the sub-folders
// "recordings", "layouts" and "exports". What a project can start from is
// here too: the commented starter definitions of a new project, and the
// demo project shipped with the program. No questions are asked and no
// settings are touched; the window and ombrix-cli both build on it.
class ProjectFolder
{
public:
    static inline const QString DefinitionFileName = QStringLiteral("dashboard_signals.def");

    // "recordings", "layouts", "exports", in the order they are created.
    static QStringList subfolderNames();

    // False for an empty path; else whether the folder holds the definition file.
    static bool isValid(const QString &dir);
    // The folder's own definition file.
    static QString definitionsPath(const QString &dir);
    // Creates the sub-folders that are missing; failures are left to the
    // writers that need them.
    static void ensureSubfolders(const QString &dir);
    // <dir>/<name>, created when missing.
    static QString subfolder(const QString &dir, const QString &name);

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
