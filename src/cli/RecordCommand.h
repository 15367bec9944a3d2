#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

class CliSource;
class LivePipeline;
class TerminationNotifier;

// ombrix-cli record --port SOURCE [--baud N] --project DIR [--def FILE]
// [--duration S | --lines N]: records a source (a serial port, tcp://,
// udp://, sim:) into the project's "recordings" folder exactly as the window
// does (same file name, line forms and companion definitions), prints the
// recording's path on stdout and runs until the limit, SIGINT/SIGTERM, or
// the source going away.
//
// Exit codes: 0 after a clean stop (limit or signal), 1 when the source or
// the file cannot be opened or writing failed on the way, 2 for bad
// arguments, 3 when the source went away (the recording then holds every
// line received until then).
class RecordCommand : public QObject
{
    Q_OBJECT

public:
    struct Limits
    {
        qint64 durationMs = 0; // 0: no time limit
        qint64 lines = 0;      // 0: no line limit
    };

    static int run(const QStringList &args);

    explicit RecordCommand(QObject *parent = nullptr);

    // Opens the source (waiting for a connection), then starts the
    // recording. False with *error set.
    bool start(const CliSource &source, const Limits &limits, QString *error);
    QString filePath() const;
    qint64 linesReceived() const { return m_linesReceived; }

    static constexpr int DeviceLostExitCode = 3;

Q_SIGNALS:
    // The recording has been closed; reason says why, for the user.
    void finished(int exitCode, const QString &reason);
    // Something the user should know that does not end the recording.
    void notice(const QString &message);

private:
    void watchSource();
    void onRawLine();
    void onSourceLost(const QString &name, const QString &reason);
    void onWriteFailed(const QString &message);
    void finish(int exitCode, const QString &reason);

    LivePipeline *m_pipeline = nullptr;
    QTimer *m_durationTimer = nullptr;
    TerminationNotifier *m_termination = nullptr;
    qint64 m_lineLimit = 0;
    qint64 m_linesReceived = 0;
    bool m_finished = false;
};
