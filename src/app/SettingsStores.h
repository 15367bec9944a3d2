#pragma once

#include <QSettings>
#include <QString>

// The program's identity and the two settings stores it writes, each named
// here and nowhere else.
//
// remembered() is the program's own store (organisation "Tarnwell"): start-up
// reads the project folder from it, and only a folder the user picked is
// written there, with the recent projects and recordings beside it.
// openedProjects() is another organisation's store that every opened project
// is written to and that start-up never reads, so a folder given on the
// command line is not remembered for the next start.
class SettingsStores
{
public:
    static inline const QString ProjectDirKey = QStringLiteral("projectDir");

    // Organisation name, domain and application name, in that order; before
    // the application object is created.
    static void setApplicationIdentity();

    static QSettings remembered();
    static QSettings openedProjects();
};
