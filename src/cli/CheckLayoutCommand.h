#pragma once

#include <QStringList>

// ombrix-cli check-layout FILE [--project DIR]: what loading a layout would
// skip, ignore or change (LayoutChecker), one "FILE: message" per finding on
// stdout; with --project also the bound names the project does not declare.
// Exit status 0 when clean, 1 with findings, 2 for bad arguments. Creates
// widgets, so it needs a QApplication (main() makes one on the offscreen
// platform for this command).
class CheckLayoutCommand
{
public:
    static int run(const QStringList &args);
};
