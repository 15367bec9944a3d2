#pragma once

#include "SerialSettings.h"
#include "SourceAddress.h"

#include <QString>
#include <QStringList>

#include <functional>

QT_BEGIN_NAMESPACE
class QObject;
QT_END_NAMESPACE

class LineSource;

// Makes the source a text names: a serial port for a name without scheme,
// TCP and UDP sources for "tcp://" and "udp://", and whatever the layers
// above register for their own schemes (the simulated device: "sim:").
class LineSourceFactory
{
public:
    // What a source is made from.
    struct Request
    {
        SerialSettings settings;  // settings.portName is the source's text
        QString definitionsPath; // the project's definitions, for a simulated device
    };
    // Returns the new source, or nullptr with *error set (a malformed address).
    using Creator = std::function<LineSource *(const SourceAddress &address, const Request &request,
                                               QObject *parent, QString *error)>;

    // Adds (or replaces) the source made for scheme; form is how its
    // address is written, for messages ("sim:?rate=N&seed=S").
    static void registerScheme(const QString &scheme, const QString &form, const Creator &creator);
    static bool hasScheme(const QString &scheme);

    // The source request.settings.portName names, or nullptr with *error set.
    static LineSource *create(const Request &request, QObject *parent, QString *error);

    // Every form a source may take, a serial port first.
    static QStringList forms();
};
