#include "PendingBytes.h"

#include <cstring>

QByteArray &PendingBytes::tail()
{
    if (m_readPos > 0 && m_readPos >= m_buffer.size() / 2) {
        m_buffer.remove(0, m_readPos);
        m_readPos = 0;
    }
    return m_buffer;
}

qint64 PendingBytes::read(char *data, qint64 maxSize)
{
    const qint64 n = qMin<qint64>(maxSize, size());
    if (n <= 0)
        return 0;
    std::memcpy(data, m_buffer.constData() + m_readPos, size_t(n));
    m_readPos += n;
    return n;
}

void PendingBytes::clear()
{
    m_buffer.clear();
    m_readPos = 0;
}
