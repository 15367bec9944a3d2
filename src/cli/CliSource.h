#pragma once

#include "SerialSettings.h"

#include <QCommandLineOption>
#include <QString>

class CliCommand;
class LivePipeline;
class TerminationNotifier;

// The options of the commands that talk to a device (--port, --baud,
// --project, --def) and opening the source they name: a serial port, a
// network source or the simulated device of the project's definitions.
class CliSource
{
public:
    // projectRequired: --project DIR must be given (a recording goes there);
    // otherwise it only names the definitions a simulated device speaks.
    CliSource(CliCommand &cli, bool projectRequired);

    // After cli.parse(): checks and takes the options. False after a usage
    // error, with cli.exitCode() set.
    bool read();

    const SerialSettings &settings() const { return m_settings; }
    QString projectDir() const { return m_projectDir; }
    // --def, else DIR/dashboard_signals.def, else empty.
    QString definitionsPath() const { return m_definitionsPath; }
    // "ttyUSB0 at 115200 baud", or the address of any other source.
    QString description() const;

    // Opens the source and waits until it is open or has failed (a network
    // source connects first), or a stop is requested. False with *error
    // naming the source and the system's reason.
    bool open(LivePipeline &pipeline, TerminationNotifier *termination, QString *error) const;

private:
    CliCommand &m_cli;
    QCommandLineOption m_port;
    QCommandLineOption m_baud;
    QCommandLineOption m_project;
    QCommandLineOption m_def;
    bool m_projectRequired = false;
    SerialSettings m_settings;
    QString m_projectDir;
    QString m_definitionsPath;
};
