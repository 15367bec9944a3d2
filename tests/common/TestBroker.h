#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// Waits until what process wrote on its current read channel holds text
// (without reading it); false after 10 s or when the process ended.
bool waitForOutput(QProcess &process, const QByteArray &text);

// A real mosquitto broker of the test's own on 127.0.0.1, at a port that was
// free, configured by a file the test writes. It keeps sessions and queued
// messages across a restart; destroying it stops it. The broker's own
// clients talk to it for the test.
class TestBroker
{
public:
    TestBroker();
    ~TestBroker() { stop(); }

    // From now on only this user, with this password, may connect.
    bool requirePassword(const QString &user, const QString &password);
    // From now on it speaks TLS only, with a certificate for 127.0.0.1
    // signed by a CA of the test's own, in caFile().
    bool enableTls();
    QString caFile() const { return m_dir.filePath(QStringLiteral("ca.pem")); }
    // Starts the broker and waits until it takes connections.
    bool start();
    // Stops it as a service manager does (SIGTERM) and waits.
    void stop();
    quint16 port() const { return m_port; }
    // "mqtt://127.0.0.1:PORT/topic".
    QString url(const QString &topic) const;

    // Starts mosquitto_sub on topic and waits until the broker confirmed
    // the subscription. Its output holds debug lines: see messages().
    bool subscribe(QProcess &subscriber, const QString &topic, const QStringList &options = {}) const;
    static QByteArray messages(const QByteArray &subscriberOutput);
    // Publishes one message with mosquitto_pub, QoS 1.
    bool publish(const QString &topic, const QByteArray &message, const QStringList &options = {}) const;

private:
    QStringList clientArgs() const;

    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
    QString m_passwordFile;
    bool m_tls = false;
};
