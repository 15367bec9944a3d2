#pragma once

#include <QByteArray>
#include <QByteArrayView>

// Cuts a byte stream into lines at line feeds. Bytes after the last line feed
// wait for the next append. Each byte is searched for a line feed once, so a
// long line arriving in many small pieces costs linear time. There is no
// limit on the length of a line.
class LineFramer
{
public:
    void append(QByteArrayView bytes);
    // The next complete line without its line feed and trailing carriage
    // returns; false when no complete line is buffered. The view stays valid
    // until the next append() or clear().
    bool takeLine(QByteArrayView &line);
    void clear();

    // Bytes received but not yet taken as lines.
    qsizetype pendingSize() const { return m_buffer.size() - m_start; }

private:
    void compact();

    QByteArray m_buffer;
    qsizetype m_start = 0;   // first byte not yet taken
    qsizetype m_scanned = 0; // bytes before this hold no line feed after m_start
};
