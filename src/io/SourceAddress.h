#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QUrlQuery>

// A source named by an address rather than a serial port: "tcp://HOST:PORT",
// "udp://[HOST]:PORT?reply=HOST:PORT", "sim:?rate=N&seed=S". Everything
// without a scheme ("/dev/ttyUSB0", "COM3", "ttyACM0") names a serial port.
struct SourceAddress
{
    QString text;   // as typed
    QString scheme; // lower case, without ":"; empty for a serial port
    QUrl url;       // all of it, for the parts a kind of source reads itself
    QString host;   // empty when not given
    int port = -1;  // -1 when not given
    QUrlQuery query;

    // The scheme of a source text, lower case; empty for a serial port name.
    // A scheme is two or more letters, digits, "+", "-" or "." before the
    // first ":", starting with a letter (so "C:\..." stays a path).
    static QString schemeOf(const QString &text);
    // The text with any password in it taken out, for everything shown or
    // kept (titles, messages, recent lists).
    static QString withoutPassword(const QString &text);

    // Splits text into its parts. False with *error set for text that is no
    // address at all (an invalid port number, characters a host cannot hold).
    static bool parse(const QString &text, SourceAddress *out, QString *error);

    // Checks the form a kind of source needs; each false sets *error to a
    // sentence saying what is wrong and the form expected.
    // A host (unless optional) and a port from minPort, and nothing else
    // before the options: no user, no path.
    bool requireHostAndPort(const QString &form, bool hostOptional, int minPort, QString *error) const;
    // Nothing but options: "sim:" or "sim:?rate=10".
    bool requireOptionsOnly(const QString &form, QString *error) const;
    bool allowOnlyOptions(const QStringList &keys, const QString &form, QString *error) const;
    // The value of ?key=N as a number within [min, max]; fallback when absent.
    bool numberOption(const QString &key, double min, double max, double fallback, double *value,
                      QString *error) const;
    // ?key=HOST:PORT; empty host and port -1 when absent.
    bool hostPortOption(const QString &key, QString *host, int *port, QString *error) const;
};
