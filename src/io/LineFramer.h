#pragma once

#include <QByteArray>
#include <QByteArrayView>

// Cuts a byte stream into lines at line feeds. Bytes after the last line feed
// wait for the next append. Each byte is searched for a line feed once, so a
// long line arriving in many small pieces costs linear time.
//
// A line may be at most MaxLineBytes long, not counting its line feed. A
// longer one is dropped: what has arrived of it at once, the rest as it
// arrives, up to its line feed. Taking every line after each append, the
// bytes waiting thus never exceed MaxLineBytes plus one append's bytes,
// whatever a device sends.
class LineFramer
{
public:
    // Far beyond any telemetry line, small enough that a device that never
    // ends its line costs a few megabytes.
    static constexpr qsizetype MaxLineBytes = 2 * 1024 * 1024;

    void append(QByteArrayView bytes);
    // The next complete line without its line feed and trailing carriage
    // returns; false when no complete line is buffered. The view stays valid
    // until the next append() or clear().
    bool takeLine(QByteArrayView &line);
    // Forgets what is buffered, including an overlong line still arriving.
    void clear();

    // Bytes received but not yet taken as lines.
    qsizetype pendingSize() const { return m_buffer.size() - m_start; }
    // Bytes the buffer has allocated.
    qsizetype capacity() const { return m_buffer.capacity(); }
    // Lines dropped for their length since construction. A line counts once,
    // as soon as it is known to be too long: when its line feed arrives, or
    // when more than MaxLineBytes of it wait without one.
    qint64 overlongLines() const { return m_overlongLines; }

private:
    void compact();
    void dropPartialLine();

    QByteArray m_buffer;
    qsizetype m_start = 0;   // first byte not yet taken
    qsizetype m_scanned = 0; // bytes before this hold no line feed after m_start
    qint64 m_overlongLines = 0;
    bool m_skipping = false; // the rest of a dropped line is still arriving
};
