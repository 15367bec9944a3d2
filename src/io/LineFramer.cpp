#include "LineFramer.h"

#include <cstring>

void LineFramer::append(QByteArrayView bytes)
{
    if (m_skipping) {
        const void *hit = std::memchr(bytes.data(), '\n', size_t(bytes.size()));
        if (!hit)
            return;
        m_skipping = false;
        bytes = bytes.sliced(static_cast<const char *>(hit) - bytes.data() + 1);
    }
    if (bytes.isEmpty())
        return;
    compact();
    m_buffer.append(bytes.data(), bytes.size());
}

bool LineFramer::takeLine(QByteArrayView &line)
{
    for (;;) {
        const qsizetype size = m_buffer.size();
        const qsizetype from = qMax(m_start, m_scanned);
        if (from >= size)
            return false;
        const char *data = m_buffer.constData();
        const void *hit = std::memchr(data + from, '\n', size_t(size - from));
        if (!hit) {
            m_scanned = size;
            if (size - m_start > MaxLineBytes)
                dropPartialLine();
            return false;
        }
        const qsizetype begin = m_start;
        const qsizetype lineFeed = static_cast<const char *>(hit) - data;
        m_start = lineFeed + 1;
        m_scanned = m_start;
        if (lineFeed - begin > MaxLineBytes) {
            ++m_overlongLines;
            continue;
        }
        qsizetype end = lineFeed;
        while (end > begin && data[end - 1] == '\r')
            --end;
        line = QByteArrayView(data + begin, end - begin);
        return true;
    }
}

// The unfinished line is already too long: it goes now, and its bytes still
// to come are skipped as they arrive.
void LineFramer::dropPartialLine()
{
    m_buffer.truncate(m_start);
    m_scanned = m_start;
    m_skipping = true;
    ++m_overlongLines;
}

void LineFramer::clear()
{
    m_buffer.clear();
    m_start = 0;
    m_scanned = 0;
    m_skipping = false;
}

// Drops the bytes already taken, without moving data on every call: only once
// they make up half of the buffer, so each byte is moved a bounded number of times.
void LineFramer::compact()
{
    if (m_start == 0)
        return;
    if (m_start == m_buffer.size()) {
        m_buffer.resize(0);
        m_scanned = m_start = 0;
        return;
    }
    if (m_start < m_buffer.size() / 2)
        return;
    m_buffer.remove(0, m_start);
    m_scanned -= m_start;
    m_start = 0;
}
