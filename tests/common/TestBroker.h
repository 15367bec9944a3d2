#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A real mosquitto broker of the test's own, on 127.0.0.1 at a port that was
// free, with a configuration file the test writes. It keeps its sessions
// and queued messages across a restart; destroying it stops it.
class TestBroker
{
public:
    TestBroker();
    ~TestBroker();

    // From now on only this user, with this password, may connect.
    bool requirePassword(const QString &user, const QString &password);
    // Starts the broker and waits until it takes connections.
    bool start();
    // Stops it the way a service manager does (SIGTERM) and waits.
    void stop();
    quint16 port() const { return m_port; }
    // "mqtt://127.0.0.1:PORT/topic".
    QString url(const QString &topic) const;
    // What mosquitto_sub and mosquitto_pub need to reach it.
    QStringList clientArgs() const;
    // Starts mosquitto_sub on topic (with extra options) and waits until the
    // broker has confirmed the subscription.
    bool subscribe(QProcess &subscriber, const QString &topic, const QStringList &extra = {}) const;
    // The messages of a subscriber's output, without its debug lines.
    static QByteArray messages(const QByteArray &output);
    // Publishes one message with mosquitto_pub; false when it failed.
    bool publish(const QString &topic, const QByteArray &message, const QStringList &extra = {}) const;
    // What the broker logged, for a failing test's message.
    QByteArray log();

    static QString program(const QString &name);

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
    QString m_passwordFile;
};
