#pragma once

#include "LineFramer.h"
#include "LineParser.h"
#include "SerialSettings.h"

#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QSerialPort>
#include <QString>
#include <QStringList>

// Owns the serial port and turns the device's byte stream into lines and
// each line into signals. For one line the signals come in this order:
// rawLineReceived, then stateParsed/errorParsed in token order, then
// lineParsed (when the line carried values), then unrecognizedParsed (when
// it carried words that fit no rule).
class SerialManager : public QObject
{
    Q_OBJECT

public:
    explicit SerialManager(QObject *parent = nullptr);

    // Closes a port already open, applies the settings and opens the port
    // read-only. On failure emits errorOccurred and returns false.
    bool open(const SerialSettings &settings);
    void close();
    bool isOpen() const;
    QString portName() const;
    // The settings of the last open(), successful or not.
    SerialSettings settings() const { return m_settings; }
    // The names of the serial ports present now, in the system's order.
    QStringList availablePorts() const;

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
    // The open port went away (device unplugged, pseudo-terminal closed) and
    // was closed; emitted after errorOccurred.
    void portLost(const QString &portName);
    // The lines of one read follow, and have all been emitted: a receiver may
    // treat them as one burst (show only the last value of each signal).
    void burstStarted();
    void burstFinished();
    // A line longer than LineFramer::MaxLineBytes (maxBytes) was dropped
    // instead of kept; emitted once per such line, as soon as it is known.
    void overlongLineDropped(double timestamp, qint64 maxBytes);

public Q_SLOTS:
    void refreshPorts();
    void onReadyRead();
    void onError(QSerialPort::SerialPortError error);

private:
    static constexpr qsizetype DrainChunkBytes = 64 * 1024;
    static constexpr int MaxDrainChunks = 16;

    void frameBytes(QByteArrayView bytes);
    void reportOverlongLines(double timestamp);
    double defaultTimestamp() const;
    void processLine(QByteArrayView bytes, double defaultTime);
    void emitLine(const ParsedLine &parsed);

    QSerialPort *m_port = nullptr;
    SerialSettings m_settings;
    LineFramer m_buffer;
    qint64 m_overlongReported = 0;
    QElapsedTimer m_elapsed;
    bool m_elapsedRunning = false;
    bool m_opening = false;
    bool m_emitting = false;
    ParsedLine m_parsed;
    QByteArray m_drain; // reused for the bytes read past the port's buffer
    quint64 m_generation = 0; // bumped by open/close so a receiver may close mid-batch
};
