#pragma once

#include <QByteArray>

// Bytes a source holds until its reader takes them: added at the end, read
// from the front. What was read is dropped once it is half the buffer, so
// a source that is read as fast as it fills moves each byte about once.
class PendingBytes
{
public:
    // The buffer to append to, what was read dropped first when it is time.
    QByteArray &tail();
    // Up to maxSize bytes from the front; 0 when nothing waits.
    qint64 read(char *data, qint64 maxSize);
    qsizetype size() const { return m_buffer.size() - m_readPos; }
    bool isEmpty() const { return size() == 0; }
    void clear();

private:
    QByteArray m_buffer;
    qsizetype m_readPos = 0;
};
