#pragma once

#include <QByteArray>
#include <QString>

// The master side of a pseudo-terminal in raw, non-blocking mode: the
// simulated device writes here, a reader opens slavePath() like any serial
// port. An optional symbolic link to the slave is removed with the terminal.
class PseudoTerminal
{
public:
    PseudoTerminal() = default;
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal &) = delete;
    PseudoTerminal &operator=(const PseudoTerminal &) = delete;

    bool open(QString &error);
    // Points path at the slave, replacing whatever is there.
    bool link(const QString &path, QString &error);

    // True while some reader has the slave side open.
    bool readerAttached() const;
    // Writes what the terminal takes now and removes it from pending; false
    // when the reader went away.
    bool writeSome(QByteArray &pending);
    // Drops bytes queued for the slave before its reader opened it.
    void discardStale() const;
    // Waits until the terminal can take more bytes or timeoutMs pass.
    void waitWritable(int timeoutMs) const;

    QString slavePath() const { return m_slavePath; }

private:
    int m_fd = -1;
    QString m_slavePath;
    QString m_link;
};
