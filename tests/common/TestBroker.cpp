#include "TestBroker.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <unistd.h>

namespace {

quint16 freePort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : 0;
}

} // namespace

TestBroker::TestBroker()
    : m_port(freePort())
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

TestBroker::~TestBroker()
{
    stop();
}

QString TestBroker::program(const QString &name)
{
    // The broker lives in sbin, which a user's PATH may lack.
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? QStandardPaths::findExecutable(name, {QStringLiteral("/usr/sbin"),
                                                                   QStringLiteral("/usr/local/sbin")})
                           : found;
}

bool TestBroker::requirePassword(const QString &user, const QString &password)
{
    m_passwordFile = m_dir.filePath(QStringLiteral("passwords"));
    return QProcess::execute(program(QStringLiteral("mosquitto_passwd")),
                             {QStringLiteral("-c"), QStringLiteral("-b"), m_passwordFile, user, password})
        == 0;
}

bool TestBroker::start()
{
    QByteArray config = "listener " + QByteArray::number(m_port) + " 127.0.0.1\n"
                      + "persistence true\npersistence_location " + QFile::encodeName(m_dir.path()) + "/\n"
                      + "log_dest stderr\n";
    config += m_passwordFile.isEmpty() ? QByteArray("allow_anonymous true\n")
                                       : "allow_anonymous false\npassword_file " + QFile::encodeName(m_passwordFile) + '\n';
    // Started as root (a CI machine), it would switch to a user that may not exist.
    if (::geteuid() == 0)
        config += "user root\n";
    QFile file(m_dir.filePath(QStringLiteral("mosquitto.conf")));
    if (!file.open(QIODevice::WriteOnly) || file.write(config) != config.size())
        return false;
    file.close();
    m_process.start(program(QStringLiteral("mosquitto")), {QStringLiteral("-c"), file.fileName()});
    if (!m_process.waitForStarted())
        return false;
    for (int i = 0; i < 100 && m_process.state() == QProcess::Running; ++i) {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, m_port);
        if (probe.waitForConnected(100))
            return true;
        QThread::msleep(50);
    }
    return false;
}

void TestBroker::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

QString TestBroker::url(const QString &topic) const
{
    return QStringLiteral("mqtt://127.0.0.1:%1/%2").arg(m_port).arg(topic);
}

QStringList TestBroker::clientArgs() const
{
    return {QStringLiteral("-h"), QStringLiteral("127.0.0.1"), QStringLiteral("-p"), QString::number(m_port)};
}

QByteArray TestBroker::log()
{
    return m_process.readAll();
}

bool TestBroker::subscribe(QProcess &subscriber, const QString &topic, const QStringList &extra) const
{
    // Line-buffered, so that its debug lines say at once that it listens.
    subscriber.start(QStringLiteral("stdbuf"), QStringList{QStringLiteral("-oL"), program(QStringLiteral("mosquitto_sub"))}
                                                  + clientArgs() + extra
                                                  + QStringList{QStringLiteral("-d"), QStringLiteral("-t"), topic});
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < 10000 && subscriber.state() != QProcess::NotRunning) {
        if (subscriber.peek(1 << 20).contains("received SUBACK"))
            return true;
        subscriber.waitForReadyRead(100);
    }
    return false;
}

QByteArray TestBroker::messages(const QByteArray &output)
{
    QByteArray kept;
    const QByteArrayList lines = output.split('\n');
    for (qsizetype i = 0; i + 1 < lines.size(); ++i) {
        if (!lines.at(i).startsWith("Client ") && !lines.at(i).startsWith("Subscribed (mid"))
            kept += lines.at(i) + '\n';
    }
    return kept;
}

bool TestBroker::publish(const QString &topic, const QByteArray &message, const QStringList &extra) const
{
    QProcess publisher;
    publisher.start(program(QStringLiteral("mosquitto_pub")),
                    clientArgs() + extra + QStringList{QStringLiteral("-q"), QStringLiteral("1"), QStringLiteral("-t"),
                                                       topic, QStringLiteral("-s")});
    publisher.write(message);
    publisher.closeWriteChannel();
    return publisher.waitForFinished(10000) && publisher.exitStatus() == QProcess::NormalExit
        && publisher.exitCode() == 0;
}
