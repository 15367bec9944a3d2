#pragma once

#include "LineFramer.h"
#include "LineParser.h"
#include "LineSource.h"
#include "SerialSettings.h"

#include <QByteArrayView>
#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QSerialPort>
#include <QString>
#include <QStringList>


// Reads the device's byte stream, turns it into lines and each line into
// signals. For one line the signals come in this order: rawLineReceived,
// then stateParsed/errorParsed in token order, then lineParsed (when the
// line carried values), then unrecognizedParsed (when it carried words that
// fit no rule).
//
// The device is reached through the source its port name names (see
// LineSourceFactory): a serial port by its name or device path, or
// "tcp://HOST:PORT", "udp://[HOST]:PORT", "sim:". Every kind goes through
// the same framing, grammar and time stamps.
class SerialManager : public QObject
{
    Q_OBJECT

public:
    explicit SerialManager(QObject *parent = nullptr);

    // Closes a source already open, then opens the one settings.portName
    // names (a serial port read-write, falling back to read-only). On
    // failure emits errorOccurred and returns false. A network source may
    // still be connecting on return: it is open once sourceOpened() comes,
    // or failed with errorOccurred() and openFailed().
    bool open(const SerialSettings &settings);
    void close();
    bool isOpen() const;
    // A connection is being set up.
    bool isOpening() const;
    QString portName() const;
    // The settings of the last open(), successful or not.
    SerialSettings settings() const { return m_settings; }
    // The names of the serial ports present now, in the system's order.
    QStringList availablePorts() const;
    // The source open (or opening) now; null when closed.
    LineSource *source() const { return m_source; }

    // The project's definitions, which a simulated device ("sim:") speaks.
    void setDefinitionsPath(const QString &path) { m_definitionsPath = path; }
    QString definitionsPath() const { return m_definitionsPath; }

    // Queues bytes for the device. False with *error set when the source is
    // closed or cannot take them.
    bool write(QByteArrayView bytes, QString *error);
    // Bytes written but not yet handed to the system.
    qint64 bytesToWrite() const;
    // The time now in the time base of the lines: the last line's time
    // stamp advanced by the time since it came, or the time since opening.
    double currentTimestamp() const;

    // Frames and parses bytes as if the port had delivered them. The read
    // path uses it; tests and benchmarks feed it directly.
    void processBytes(QByteArrayView bytes);

Q_SIGNALS:
    // A port could not be opened, or failed while open; the port's own text.
    void errorOccurred(const QString &message);
    void portsChanged(const QStringList &ports);
    // The values of one line, emitted after its states and errors.
    void lineParsed(double timestamp, const QMap<QString, double> &values);
    void stateParsed(double timestamp, const QString &groupId, const QString &stateId);
    void errorParsed(double timestamp, const QString &errorId);
    // Every non-empty line, first of its signals.
    void rawLineReceived(double timestamp, const QString &raw);
    // The words of a line that fit no rule, joined with one space; last of its signals.
    void unrecognizedParsed(double timestamp, const QString &text);
    // The open source went away (device unplugged, pseudo-terminal closed,
    // connection dropped) and was closed; emitted after errorOccurred.
    // reason says what happened, for the user.
    void portLost(const QString &portName, const QString &reason);
    // The lines of one read follow, and have all been emitted: a receiver may
    // treat them as one burst (show only the last value of each signal).
    void burstStarted();
    void burstFinished();
    // A line longer than LineFramer::MaxLineBytes (maxBytes) was dropped
    // instead of kept; emitted once per such line, as soon as it is known.
    void overlongLineDropped(double timestamp, qint64 maxBytes);
    // Units of input larger than the source takes (datagrams over maxBytes)
    // were dropped whole; total counts them since opening.
    void oversizedInputDropped(qint64 maxBytes, qint64 total);
    // The source is open: at once for a port, once connected for a network source.
    void sourceOpened(const QString &portName);
    // Opening failed, after errorOccurred (also when open() returned false).
    void openFailed(const QString &portName, const QString &reason);
    // Bytes were handed to the system; bytesToWrite() says what is left.
    void bytesWritten();

public Q_SLOTS:
    void refreshPorts();
    void onReadyRead();
    void onError(QSerialPort::SerialPortError error);

private:
    static constexpr qsizetype DrainChunkBytes = 64 * 1024;
    static constexpr int MaxDrainChunks = 16;

    void onSourceOpened();
    void onSourceOpenFailed(const QString &reason);
    void onSourceLost(const QString &reason);
    void dropSource();
    void frameBytes(QByteArrayView bytes);
    void reportOverlongLines(double timestamp);
    void reportOversizedInput();
    double defaultTimestamp() const;
    void processLine(QByteArrayView bytes, double defaultTime);
    void emitLine(const ParsedLine &parsed);

    QPointer<LineSource> m_source;
    SerialSettings m_settings;
    QString m_definitionsPath;
    LineFramer m_buffer;
    qint64 m_overlongReported = 0;
    qint64 m_oversizedReported = 0;
    QElapsedTimer m_elapsed;
    bool m_elapsedRunning = false;
    bool m_opening = false;
    bool m_emitting = false;
    bool m_continuationPosted = false;
    ParsedLine m_parsed;
    double m_lastLineTime = 0.0;    // the last line's time stamp
    double m_lastLineDefault = 0.0; // the time since opening when it came
    bool m_haveLine = false;
    QByteArray m_drain; // reused for every read
    quint64 m_generation = 0; // bumped by open/close so a receiver may close mid-batch
};
