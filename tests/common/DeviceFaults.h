#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <algorithm>

// What a misbehaving device sends, and what a recording of it must still be.
namespace DeviceFaults {

// A burst of binary bytes that fits no rule of the line grammar: no line
// feed, no "=", no digit, so all of it is unrecognised words. Its high bytes
// are never valid UTF-8 (stray continuation bytes, 0xF8 to 0xFF).
inline QByteArray binaryGarbage()
{
    QRandomGenerator random(7);
    QByteArray bytes;
    for (int i = 0; i < 4000; ++i) {
        const quint32 high = random.bounded(0x80, 0x100);
        const char byte = char(high < 0xC0 || high >= 0xF8 ? high : high - 0x40);
        bytes.append(i % 97 == 0 ? ' ' : i % 89 == 0 ? '\0' : i % 83 == 0 ? '\x1b' : byte);
    }
    return bytes;
}

// True when every line of a recording is whole: the file ends with a line
// feed and each line is a time with six decimals followed by an event.
inline bool allLinesWhole(const QByteArray &recording)
{
    if (!recording.endsWith('\n'))
        return false;
    static const QRegularExpression line(QStringLiteral("^-?\\d+\\.\\d{6} \\S"));
    const QByteArrayList lines = recording.chopped(1).split('\n');
    return std::all_of(lines.cbegin(), lines.cend(),
                       [](const QByteArray &l) { return line.match(QString::fromUtf8(l)).hasMatch(); });
}

} // namespace DeviceFaults
