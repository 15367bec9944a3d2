#pragma once

#include <QStringList>

// ombrix-cli check-def FILE: what loading a definition file passes over in
// silence (DefinitionLinter), one "FILE:LINE: message" per finding on stdout.
// Exit status 0 when clean, 1 with findings, 2 for bad arguments.
class CheckDefCommand
{
public:
    static int run(const QStringList &args);
};
