#pragma once

#include <QByteArray>
#include <QString>

// A real pseudo-terminal pair for serial tests: the test writes to the master
// side, the code under test opens slavePath() like any serial device.
class PtyPair
{
public:
    PtyPair();
    ~PtyPair();
    PtyPair(const PtyPair &) = delete;
    PtyPair &operator=(const PtyPair &) = delete;

    bool isValid() const { return m_master >= 0; }
    QString slavePath() const { return m_slavePath; }
    int masterFd() const { return m_master; }

    // Writes all bytes to the master side; false on error.
    bool write(const QByteArray &bytes);
    // Reads what the slave side wrote, waiting up to timeoutMs for the first byte.
    QByteArray read(int timeoutMs = 1000);
    // Closes the master: the slave side sees a hang-up, like a pulled cable.
    void close();

private:
    int m_master = -1;
    QString m_slavePath;
};
