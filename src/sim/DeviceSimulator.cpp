#include "DeviceSimulator.h"

#include "SignalDefinitions.h"

#include <QSet>

#include <charconv>
#include <cmath>

namespace {

constexpr double TwoPi = 6.283185307179586;
constexpr double MeanSecondsBetweenErrors = 9.0;
constexpr double MeanSecondsBetweenMessages = 6.0;
constexpr double StateReminderSeconds = 5.0;

// A plausible physical operating range for a signal, judged by its name and label.
struct Profile
{
    double base;
    double amplitude;
    double period;
    int decimals;
};

Profile profileFor(const QString &name, const QString &label)
{
    const QString text = name.toUpper() % QLatin1Char(' ') % label.toUpper();
    const auto has = [&text](const char *word) { return text.contains(QLatin1String(word)); };
    if (has("SPEED") || has("RPM"))
        return {1500.0, 1200.0, 24.0, 0};
    if (has("TORQUE"))
        return {8.0, 6.0, 24.0, 2};
    if (has("TEMP"))
        return {62.0, 14.0, 140.0, 1};
    if (has("CURRENT") || name.endsWith(QLatin1String("_I")))
        return {14.0, 9.0, 24.0, 2};
    if (has("VOLT") || name.endsWith(QLatin1String("_V")))
        return {325.0, 6.0, 17.0, 1};
    if (has("VIBRATION"))
        return {2.4, 1.2, 7.0, 2};
    if (has("FLOW"))
        return {18.0, 2.5, 45.0, 2};
    if (has("PRESS"))
        return {4.5, 0.6, 33.0, 2};
    if (has("LOAD") || has("SETPOINT") || has("%"))
        return {55.0, 35.0, 60.0, 0};
    return {50.0, 25.0, 20.0, 2};
}

} // namespace

DeviceSimulator::DeviceSimulator(const SignalDefinitions &defs, quint64 seed)
    : m_state(seed * 0x9E3779B97F4A7C15ull + 0x632BE59BD9B4E019ull)
{
    QSet<QString> seen;
    for (const SignalDef &signal : defs.signals()) {
        if (!seen.contains(signal.name)) {
            seen.insert(signal.name);
            addChannel(signal.name.toUtf8(), signal.label, defs);
        }
    }
    QSet<QString> seenGroups; // a group declared twice is still one group
    for (const StateGroupDef &group : defs.stateGroups()) {
        const QList<StateDef> states = defs.statesOf(group.id);
        if (states.isEmpty() || seenGroups.contains(group.id))
            continue;
        seenGroups.insert(group.id);
        Group g;
        g.id = group.id.toUtf8();
        for (const StateDef &state : states)
            g.states.append(state.stateId.toUtf8());
        g.nextChange = 2.0 + 4.0 * uniform();
        m_groups.append(g);
    }
    for (const ErrorDef &error : defs.errors())
        m_errors.append(error.name.toUtf8());
}

void DeviceSimulator::addChannel(const QByteArray &name, const QString &label, const SignalDefinitions &defs)
{
    const Profile profile = profileFor(QString::fromUtf8(name), label);
    Channel channel;
    channel.name = name;
    channel.base = profile.base;
    channel.amplitude = profile.amplitude;
    channel.period = profile.period * (0.8 + 0.4 * uniform());
    channel.phase = TwoPi * uniform();
    channel.noise = profile.amplitude * 0.02;
    channel.decimals = profile.decimals;
    if (const auto mapping = defs.mappingFor(QString::fromUtf8(name)); mapping && mapping->scale != 0.0) {
        channel.offset = mapping->offset;
        channel.scale = mapping->scale;
        // A small scale means raw ADC counts: whole numbers.
        channel.decimals = std::fabs(mapping->scale) < 0.5 ? 0 : 3;
    }
    m_channels.append(channel);
}

void DeviceSimulator::setLineInterval(double seconds)
{
    if (seconds > 0.0)
        m_interval = seconds;
}

QByteArray DeviceSimulator::nextLine()
{
    QByteArray line;
    appendLine(line);
    return line;
}

void DeviceSimulator::appendLines(QByteArray &out, int count)
{
    for (int i = 0; i < count; ++i)
        appendLine(out);
}

void DeviceSimulator::appendLine(QByteArray &out)
{
    const qsizetype start = out.size();
    if (m_timestamps) {
        appendNumber(out, m_time, 3);
        out.append(' ');
    }
    for (const Channel &channel : std::as_const(m_channels))
        appendValue(out, channel);
    appendStates(out);
    appendEvents(out);
    if (out.size() == start)
        out.append("tick ");
    out[out.size() - 1] = '\n';
    m_time += m_interval;
    ++m_lines;
}

void DeviceSimulator::appendValue(QByteArray &out, const Channel &channel)
{
    const double t = m_time;
    const double wave = 0.7 * std::sin(TwoPi * t / channel.period + channel.phase)
        + 0.3 * std::sin(TwoPi * t / (channel.period * 0.37) + 2.0 * channel.phase);
    const double jitter = (uniform() + uniform() - 1.0) * channel.noise;
    const double physical = channel.base + channel.amplitude * wave + jitter;
    out.append(channel.name);
    out.append('=');
    appendNumber(out, (physical - channel.offset) / channel.scale, channel.decimals);
    out.append(' ');
}

void DeviceSimulator::appendStates(QByteArray &out)
{
    for (Group &group : m_groups) {
        bool send = m_lines == 0;
        if (m_time >= group.nextChange) {
            group.current = (group.current + 1) % int(group.states.size());
            group.nextChange = m_time + 3.0 + 5.0 * uniform();
            send = true;
        }
        if (m_time >= group.nextReminder)
            send = true;
        if (!send)
            continue;
        group.nextReminder = m_time + StateReminderSeconds;
        out.append("ST_");
        out.append(group.id);
        out.append('=');
        out.append(group.states.at(group.current));
        out.append(' ');
    }
}

void DeviceSimulator::appendEvents(QByteArray &out)
{
    if (!m_errors.isEmpty() && uniform() < m_interval / MeanSecondsBetweenErrors) {
        out.append("ERR=");
        out.append(m_errors.at(int(uniform() * m_errors.size())));
        out.append(' ');
    }
    if (uniform() < m_interval / MeanSecondsBetweenMessages) {
        const QList<QByteArray> &words = messages();
        out.append(words.at(int(uniform() * words.size())));
        out.append(' ');
    }
}

QList<QByteArray> DeviceSimulator::messages()
{
    static const QList<QByteArray> list = {
        "heartbeat",         "self-test ok",  "fan on",        "fan off",
        "brake engaged",     "brake released", "log flushed", "calibration done",
        "watchdog kicked",   "encoder ok",
    };
    return list;
}

void DeviceSimulator::appendNumber(QByteArray &out, double value, int decimals)
{
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
    out.append(buffer, result.ptr - buffer);
}

// splitmix64: small, fast and the same on every platform.
double DeviceSimulator::uniform()
{
    quint64 z = (m_state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    z ^= z >> 31;
    return double(z >> 11) * (1.0 / 9007199254740992.0);
}
