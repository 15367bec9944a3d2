#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QDateTime;
class QFile;
class QTimer;
QT_END_NAMESPACE

/**
 * Writes a recording: one line per event, each stamped with its time in
 * seconds relative to the first event written (which fixes the origin):
 *
 *   0.250000 A=1.5 B=2        values, ascending by name, 'g' 12
 *   0.300000 ERR=E_OVERHEAT   error
 *   0.300000 ST_MODE=RUN      state
 *   0.400000 RAWhello world   message: " RAW" directly followed by the text
 *   0.500000 RAW =5 x         (a text starting with "=" follows " RAW ")
 *
 * Lines are collected in memory and handed to the operating system at least
 * once a second (and on stop), so a crash loses at most the last second
 * while recording stays cheap at any line rate.
 */
struct ParsedLine;

class RecordingWriter : public QObject
{
    Q_OBJECT

public:
    static constexpr int FlushIntervalMs = 1000;

    explicit RecordingWriter(QObject *parent = nullptr);
    ~RecordingWriter() override;

    /// Creates <projectDir>/recordings, a new log_yyyyMMdd_HHmmss.rec named
    /// after the local time (never overwriting an existing file), and the
    /// companion copy of definitionsPath beside it. False with errorString()
    /// set when already recording or the file cannot be created; a missing
    /// definitions file only leaves the companion out.
    bool start(const QString &projectDir, const QString &definitionsPath);
    /// Writes what is pending and closes the file.
    void stop();
    bool isRecording() const;
    QString filePath() const { return m_filePath; }
    QString errorString() const { return m_errorString; }
    /// For a failed start(): the file or folder and the system's reason.
    QString errorDetails() const { return m_errorDetails; }
    /// Lines appended since start().
    qint64 linesWritten() const { return m_linesWritten; }
    /// Lines the file holds, whole: all of them after stop(); after a
    /// failure, the ones written before it.
    qint64 linesInFile() const { return m_linesInFile; }

    void appendValues(double t, const QMap<QString, double> &values);
    void appendState(double t, const QString &group, const QString &state);
    void appendError(double t, const QString &id);
    void appendMessage(double t, const QString &text);
    /// Everything one parsed device line carries, in the order the serial
    /// link reports it: states and errors in token order, then the values,
    /// then the unrecognised words as a message.
    void appendParsedLine(const ParsedLine &line);

    /// Hands every pending line to the operating system.
    void flush();
    /// flush(), then waits until the lines are on the disk itself.
    void flushToDisk();

    /// "log_yyyyMMdd_HHmmss.rec" for a local start time.
    static QString fileNameFor(const QDateTime &localStart);

Q_SIGNALS:
    /// Writing to the file failed (disk full, quota, a read-only or vanished
    /// file system), with the system's message. The recording has stopped:
    /// the file is cut back to its last whole line and closed, holding
    /// linesInFile() lines. Emitted once per recording.
    void writeFailed(const QString &message);

private:
    QString uniquePathIn(const QString &dir) const;
    void copyDefinitions(const QString &definitionsPath);
    // Starts a line with its time; false (and nothing written) when not recording.
    bool beginLine(double t);
    void endLine();
    // Keeps what is safely written, ends the recording and tells why.
    void fail(const QString &message);

    std::unique_ptr<QFile> m_file;
    QTimer *m_flushTimer = nullptr;
    QElapsedTimer m_sinceFlush;
    QByteArray m_buffer;
    QString m_filePath;
    QString m_errorString;
    QString m_errorDetails;
    double m_origin = 0.0;
    double m_lastTime = 0.0; // of the last line, relative to the origin
    bool m_originSet = false;
    qint64 m_linesWritten = 0;
    qint64 m_bufferedLines = 0; // whole lines waiting in m_buffer
    qint64 m_linesInFile = 0;
    qint64 m_bytesInFile = 0;   // written without an error: whole lines only
};
