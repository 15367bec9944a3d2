#pragma once

#include <QByteArrayView>
#include <QObject>
#include <QString>

QT_BEGIN_NAMESPACE
class QIODevice;
QT_END_NAMESPACE

// One way to a device: a serial port, a TCP connection, a UDP port, a
// simulated device. A source only moves bytes; SerialManager drives one at a
// time and does the rest (framing, the line grammar, time stamps) alike for
// every kind, so that every source feeds the same pipeline.
//
// Opening may finish later (a TCP connection is being set up): open() then
// returns true at once and the source emits opened() or openFailed() when
// the attempt is decided. A source is opened once; reopening makes a new one.
class LineSource : public QObject
{
    Q_OBJECT

public:
    enum State { Closed, Opening, Open };
    Q_ENUM(State)

    // Whether the device can be seen before it is opened: a serial device
    // file can, a host on the network cannot until it is tried.
    enum Presence { Absent, Present, Unknown };

    explicit LineSource(const QString &name, QObject *parent = nullptr);

    // The text the source was named by, as messages show it.
    QString name() const { return m_name; }
    State state() const { return m_state; }
    bool isOpen() const { return m_state == Open; }
    // Why the last open, write or the stream failed, in the system's words.
    QString errorString() const { return m_errorString; }

    // Starts opening; false when that failed at once (errorString() says why).
    virtual bool open() = 0;
    virtual void close() = 0;
    // Up to maxSize bytes of what has arrived, 0 when nothing waits. A
    // datagram source hands out whole datagrams, each ending its line.
    virtual qint64 read(char *data, qint64 maxSize) = 0;
    // Whether read() has more right now that no further readyRead() announces
    // (bytes the source holds itself).
    virtual bool hasPendingData() const { return false; }
    // Queues bytes for the device while open; false, with errorString()
    // set, when it cannot take them (opened read-only, no address to send to).
    virtual bool write(QByteArrayView bytes) = 0;
    // Bytes write() queued that the system has not taken yet.
    virtual qint64 bytesToWrite() const { return 0; }
    virtual Presence presence() const { return Unknown; }
    // Units of input larger than the source takes (a datagram), dropped
    // whole, since the source was made.
    virtual qint64 oversizedDropped() const { return 0; }
    virtual qint64 maxInputBytes() const { return 0; }

Q_SIGNALS:
    // The source is open now (also emitted from within a successful open()).
    void opened();
    // An open() that returned true failed later; the source is closed.
    void openFailed(const QString &reason);
    void readyRead();
    // A problem worth telling that leaves the stream as it is.
    void errorOccurred(const QString &message);
    // The open stream broke (a device unplugged, a connection dropped) and the
    // source is closed; reason says what happened, for the user.
    void lost(const QString &reason);
    void bytesWritten();

protected:
    void setState(State state) { m_state = state; }
    void setErrorString(const QString &text) { m_errorString = text; }
    // Writes all of bytes to device, or sets the error string from it.
    bool writeAll(QIODevice *device, QByteArrayView bytes);
    // Closes and emits openFailed() or lost(), as the state says. The error
    // string becomes systemText, the system's own words, when given (the
    // reason may say more than they do), else the reason.
    void fail(const QString &reason, const QString &systemText = QString());

private:
    QString m_name;
    QString m_errorString;
    State m_state = Closed;
};
