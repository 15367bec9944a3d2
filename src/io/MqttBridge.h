#pragma once

#include "MqttAddress.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <deque>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

class LivePipeline;
class MqttClient;

// Forwards every line of a live source to an MQTT topic, and every message
// on the command topic to the device. Lines go in batches of up to
// MaxBatchLines, or what came within BatchMs, one message each, with QoS 1.
//
// A batch stays in the bridge until the broker has acknowledged it. While
// the broker is away, batches wait in a queue of at most queueLimit lines
// (what is under way counted in); lines that do not fit are dropped and
// counted, and those queued are never given up: they go, in order, once the
// broker is back. The broker is tried again after a delay that doubles from
// FirstRetryMs up to MaxRetryMs.
class MqttBridge : public QObject
{
    Q_OBJECT

public:
    static constexpr int MaxBatchLines = 250;
    static constexpr int BatchMs = 20;
    static constexpr qint64 DefaultQueueLines = 1000000;
    // Batches sent and not yet acknowledged, at most.
    static constexpr int MaxInFlight = 64;
    static constexpr int FirstRetryMs = 500;
    static constexpr int MaxRetryMs = 10000;
    static constexpr int Qos = 1;

    // Reads the lines of pipeline's source, which the caller opens.
    MqttBridge(LivePipeline *pipeline, const MqttAddress &to, qint64 queueLimit, QObject *parent = nullptr);

    // Starts connecting to the broker: connected() or brokerFailed() follows.
    // False with *error set when that failed at once.
    bool start(QString *error);
    // Sends the batch under way; drained() follows once the broker has
    // everything queued (at once when nothing waits).
    void flush();
    // Ends the broker connection; what is still queued is given up.
    void stop();

    bool isConnected() const;
    QString brokerName() const { return m_to.broker.name(); }
    qint64 linesForwarded() const { return m_forwarded; }
    qint64 linesQueued() const { return m_queuedLines; }
    qint64 linesDropped() const { return m_dropped; }
    qint64 commandsWritten() const { return m_commands; }

Q_SIGNALS:
    void connected();
    // The first attempt failed.
    void brokerFailed(const QString &reason);
    // The broker went away (or a retry failed); the next try is in retryMs.
    void brokerLost(const QString &reason, int retryMs);
    // The queue is full: lines are being dropped from now on.
    void queueFull(qint64 limit);
    // Everything queued has been acknowledged.
    void drained();
    // A command could not be written to the device.
    void commandFailed(const QString &reason);

private:
    struct Batch
    {
        QByteArray payload;
        int lines = 0;
        int messageId = 0;
    };

    void onLine(double timestamp, const QString &raw);
    void closeBatch();
    void publishQueued();
    void onConnected();
    void onConnectFailed(const QString &reason);
    void onDisconnected(const QString &reason);
    void onPublished(int messageId);
    void onCommand(QByteArrayView topic, QByteArrayView payload);
    void retryLater(const QString &reason);
    void checkDrained();

    LivePipeline *m_pipeline = nullptr;
    MqttClient *m_client = nullptr;
    QTimer *m_batchTimer = nullptr;
    QTimer *m_retryTimer = nullptr;
    MqttAddress m_to;
    qint64 m_queueLimit = DefaultQueueLines;
    QByteArray m_batch;
    int m_batchLines = 0;
    std::deque<Batch> m_queue;    // waiting, oldest first
    std::deque<Batch> m_inFlight; // sent, oldest first
    qint64 m_queuedLines = 0;     // in both
    qint64 m_forwarded = 0;
    qint64 m_dropped = 0;
    qint64 m_commands = 0;
    int m_retryMs = FirstRetryMs;
    bool m_everConnected = false;
    bool m_dropping = false;
    bool m_flushing = false;
};
