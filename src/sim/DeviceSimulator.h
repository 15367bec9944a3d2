#pragma once

#include <QByteArray>
#include <QList>

class SignalDefinitions;

// A pretend device that speaks the line protocol for a set of definitions:
// every declared signal as a smooth waveform in raw units (so that the mapped
// value looks physical), state changes every few seconds cycling through each
// group's states, now and then a declared error or a short message. The
// output depends only on the definitions and the seed.
class DeviceSimulator
{
public:
    explicit DeviceSimulator(const SignalDefinitions &defs, quint64 seed = 1);

    // Start every line with the device time in seconds.
    void setTimestamps(bool on) { m_timestamps = on; }
    bool timestamps() const { return m_timestamps; }
    // Device time between two lines, in seconds (default 0.02, i.e. 50 lines/s).
    void setLineInterval(double seconds);
    double lineInterval() const { return m_interval; }

    // Appends the next line, ended by a line feed, to out.
    void appendLine(QByteArray &out);
    void appendLines(QByteArray &out, int count);
    QByteArray nextLine();

    double deviceTime() const { return m_time; }
    qint64 lineCount() const { return m_lines; }

    // The one- or two-word messages the device sends now and then.
    static QList<QByteArray> messages();

private:
    struct Channel
    {
        QByteArray name;
        double base = 0.0;      // physical units
        double amplitude = 0.0; // physical units
        double period = 10.0;   // seconds
        double phase = 0.0;
        double noise = 0.0;     // physical units
        double offset = 0.0;    // raw = (physical - offset) / scale
        double scale = 1.0;
        int decimals = 2;       // of the raw value
    };
    struct Group
    {
        QByteArray id;
        QList<QByteArray> states;
        int current = 0;
        double nextChange = 0.0;
        double nextReminder = 0.0;
    };

    void addChannel(const QByteArray &name, const QString &label, const SignalDefinitions &defs);
    void appendValue(QByteArray &out, const Channel &channel);
    void appendStates(QByteArray &out);
    void appendEvents(QByteArray &out);
    static void appendNumber(QByteArray &out, double value, int decimals);
    double uniform(); // [0, 1)

    QList<Channel> m_channels;
    QList<Group> m_groups;
    QList<QByteArray> m_errors;
    quint64 m_state = 0;
    double m_interval = 0.02;
    double m_time = 0.0;
    qint64 m_lines = 0;
    bool m_timestamps = false;
};
