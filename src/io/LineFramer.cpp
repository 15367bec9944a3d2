#include "LineFramer.h"

#include <cstring>

void LineFramer::append(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return;
    compact();
    m_buffer.append(bytes.data(), bytes.size());
}

bool LineFramer::takeLine(QByteArrayView &line)
{
    const qsizetype size = m_buffer.size();
    const qsizetype from = qMax(m_start, m_scanned);
    if (from >= size)
        return false;
    const char *data = m_buffer.constData();
    const void *hit = std::memchr(data + from, '\n', size_t(size - from));
    if (!hit) {
        m_scanned = size;
        return false;
    }
    const qsizetype lineFeed = static_cast<const char *>(hit) - data;
    qsizetype end = lineFeed;
    while (end > m_start && data[end - 1] == '\r')
        --end;
    line = QByteArrayView(data + m_start, end - m_start);
    m_start = lineFeed + 1;
    m_scanned = m_start;
    return true;
}

void LineFramer::clear()
{
    m_buffer.clear();
    m_start = 0;
    m_scanned = 0;
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
