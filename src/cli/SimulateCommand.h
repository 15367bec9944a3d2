#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class DeviceSimulator;

// "ombrix-cli simulate": streams a simulated device on a pseudo-terminal (or
// standard output) so the dashboard can be tried without hardware.
class SimulateCommand
{
public:
    // args[0] is the program name. Returns the exit code: 0 when done, 1 when
    // the pseudo-terminal cannot be set up, 2 for bad options or definitions.
    static int run(const QStringList &args);

    static QString usage();

    struct Options
    {
        QString defPath;
        double rate = 50.0;    // lines per second; 0 = as fast as the reader takes them
        double duration = -1;  // seconds; negative = until interrupted
        qint64 count = -1;     // lines; negative = no limit
        quint64 seed = 1;
        bool timestamps = false;
        bool toStdout = false;
        QString linkPath;
    };
    // The options of args, or an empty optional with error set.
    static std::optional<Options> parseOptions(const QStringList &args, QString &error, bool &help);

private:
    static int streamToStdout(DeviceSimulator &simulator, const Options &options);
    static int streamToPty(DeviceSimulator &simulator, const Options &options);
};
