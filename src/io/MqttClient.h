#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QObject>
#include <QString>

QT_BEGIN_NAMESPACE
class QHostInfo;
class QSocketNotifier;
class QTimer;
QT_END_NAMESPACE

struct mosquitto;

// Where a client connects and as whom. The password is only ever handed to
// the library, never put into a text.
struct MqttBroker
{
    QString host;
    int port = 1883;
    QString user;     // empty: anonymous
    QString password; // only with a user
    bool tls = false;
    QString caFile; // empty: the system's certificate store

    // "HOST:PORT", as messages name the broker.
    QString name() const;
};

// One connection to an MQTT broker through libmosquitto, driven by the Qt
// event loop on the thread that made it: socket notifiers call the
// library's read and write steps, a timer its keep-alive step. No thread of
// the library's own runs.
//
// A connection is made per connectToBroker(); once it ends (by
// disconnectFromBroker(), a refusal or a loss), nothing of it is kept: the
// messages it had not delivered are the owner's to send again.
class MqttClient : public QObject
{
    Q_OBJECT

public:
    enum State { Disconnected, Connecting, Connected };

    static constexpr int KeepAliveSeconds = 30;
    // A broker that never answers is given up after this long.
    static constexpr int ConnectTimeoutMs = 10000;

    explicit MqttClient(QObject *parent = nullptr);
    ~MqttClient() override;

    // Starts connecting (ending a connection there is). False with *error
    // set when that failed at once (no such host, a refused connection, an
    // unreadable certificate file); otherwise connected() or connectFailed()
    // follows.
    bool connectToBroker(const MqttBroker &broker, QString *error);
    // Sends what is queued and a clean goodbye, and forgets the connection;
    // no signal follows.
    void disconnectFromBroker();
    State state() const { return m_state; }
    QString brokerName() const { return m_brokerName; }

    // While connected. False with *error set.
    bool subscribe(const QByteArray &topic, int qos, QString *error);
    // The message's id (acknowledged by published() for QoS 1), or -1 with
    // *error set.
    int publish(const QByteArray &topic, QByteArrayView payload, int qos, QString *error);

    // Whether topic may be subscribed to (wildcards allowed) or published to.
    static bool isValidFilter(const QByteArray &topic);
    static bool isValidTopic(const QByteArray &topic);

Q_SIGNALS:
    void connected();
    // The attempt failed; reason in the broker's or the system's words.
    void connectFailed(const QString &reason);
    // A connection that was up broke.
    void disconnected(const QString &reason);
    // The views are valid during the emission only.
    void messageReceived(QByteArrayView topic, QByteArrayView payload);
    // The broker has taken a QoS 1 message.
    void published(int messageId);

private:
    static void onConnectCallback(mosquitto *mosq, void *self, int rc);
    static void onDisconnectCallback(mosquitto *mosq, void *self, int rc);
    static void onMessageCallback(mosquitto *mosq, void *self, const struct mosquitto_message *message);
    static void onPublishCallback(mosquitto *mosq, void *self, int messageId);
    static void onLogCallback(mosquitto *mosq, void *self, int level, const char *text);

    // Makes the library's object with the broker's options; false with *error set.
    bool setUp(const MqttBroker &broker, QString *error);
    void onHostFound(const QHostInfo &info);
    // Connects the library's object to host (a name or an address).
    bool startConnecting(const QString &host, QString *error);
    void onReadable();
    void onWritable();
    void onKeepAlive();
    // What the library answered a step with; a broken connection ends here.
    void handleResult(int rc);
    void updateWriteInterest();
    // handshake: the failure may be the TLS handshake's, whose reason is
    // then said to be TLS.
    void endConnection(const QString &reason, bool handshake = false);
    // Whether a failure now may lie in the TLS handshake rather than in
    // reaching the broker's port.
    // rc is the library's result, error the system's.
    bool duringHandshake(int rc, int error) const;
    void release();
    QString describe(int rc) const;

    mosquitto *m_mosq = nullptr;
    QSocketNotifier *m_readNotifier = nullptr;
    QSocketNotifier *m_writeNotifier = nullptr;
    QTimer *m_keepAlive = nullptr;
    QTimer *m_connectTimeout = nullptr;
    State m_state = Disconnected;
    QString m_brokerName;
    QString m_host;
    int m_port = 0;
    int m_lookupId = -1; // a name being looked up
    QString m_lastError; // the library's last logged error (TLS says why there)
    bool m_tls = false;
    bool m_reached = false;  // the broker's port took the connection
    bool m_answered = false; // the broker answered the connection request
    int m_inLibrary = 0; // the library is on the stack: its object must live on
    bool m_releaseLater = false;
};
