#include "TestBroker.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>

#include <unistd.h>

namespace {

// The broker lives in sbin, which a user's PATH may lack.
QString program(const QString &name)
{
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? QStandardPaths::findExecutable(name, {QStringLiteral("/usr/sbin")}) : found;
}

} // namespace

bool waitForOutput(QProcess &process, const QByteArray &text)
{
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < 10000 && process.waitForStarted()) {
        if (process.peek(1 << 20).contains(text))
            return true;
        process.waitForReadyRead(100);
    }
    return false;
}

TestBroker::TestBroker()
{
    QTcpServer server;
    if (server.listen(QHostAddress::LocalHost))
        m_port = server.serverPort();
}

bool TestBroker::requirePassword(const QString &user, const QString &password)
{
    m_passwordFile = m_dir.filePath(QStringLiteral("passwords"));
    return QProcess::execute(program(QStringLiteral("mosquitto_passwd")),
                             {QStringLiteral("-c"), QStringLiteral("-b"), m_passwordFile, user, password})
        == 0;
}

bool TestBroker::enableTls()
{
    const auto openssl = [this](const QStringList &args) {
        QProcess process;
        process.setWorkingDirectory(m_dir.path());
        process.start(QStringLiteral("openssl"), args);
        return process.waitForFinished(30000) && process.exitCode() == 0;
    };
    const QString key = QStringLiteral("rsa:2048");
    m_tls = openssl({"req", "-x509", "-newkey", key, "-nodes", "-keyout", "ca.key", "-out", "ca.pem", "-days", "2",
                     "-subj", "/CN=Test CA"})
        && openssl({"req", "-newkey", key, "-nodes", "-keyout", "broker.key", "-out", "broker.csr", "-subj",
                    "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1"})
        && openssl({"x509", "-req", "-in", "broker.csr", "-CA", "ca.pem", "-CAkey", "ca.key", "-CAcreateserial", "-out",
                    "broker.pem", "-days", "2", "-copy_extensions", "copy"});
    return m_tls;
}

bool TestBroker::start()
{
    QByteArray config = "listener " + QByteArray::number(m_port) + " 127.0.0.1\nlog_dest none\npersistence true\n"
                      + "persistence_location " + QFile::encodeName(m_dir.path()) + "/\n";
    const QByteArray dir = QFile::encodeName(m_dir.path()) + '/';
    if (m_tls)
        config += "cafile " + dir + "ca.pem\ncertfile " + dir + "broker.pem\nkeyfile " + dir + "broker.key\n";
    config += m_passwordFile.isEmpty() ? QByteArray("allow_anonymous true\n")
                                       : "allow_anonymous false\npassword_file " + QFile::encodeName(m_passwordFile) + '\n';
    // Started as root (a CI machine), it would switch to a user that may not exist.
    if (::geteuid() == 0)
        config += "user root\n";
    QFile file(m_dir.filePath(QStringLiteral("mosquitto.conf")));
    if (!file.open(QIODevice::WriteOnly) || file.write(config) != config.size())
        return false;
    file.close();
    // Run as root it warns of that, whatever the configuration says.
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(program(QStringLiteral("mosquitto")), {QStringLiteral("-c"), file.fileName()});
    QElapsedTimer waited;
    waited.start();
    while (m_process.waitForStarted() && waited.elapsed() < 10000) {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, m_port);
        if (probe.waitForConnected(100))
            return true;
        m_process.waitForFinished(50);
    }
    return false;
}

void TestBroker::stop()
{
    m_process.terminate();
    if (!m_process.waitForFinished(5000))
        m_process.kill();
    m_process.waitForFinished();
}

QString TestBroker::url(const QString &topic) const
{
    return QStringLiteral("mqtt://127.0.0.1:%1/%2").arg(m_port).arg(topic);
}

QStringList TestBroker::clientArgs() const
{
    return {QStringLiteral("-h"), QStringLiteral("127.0.0.1"), QStringLiteral("-p"), QString::number(m_port)};
}

bool TestBroker::subscribe(QProcess &subscriber, const QString &topic, const QStringList &options) const
{
    // Line-buffered, so that its debug lines say at once that it listens.
    subscriber.start(QStringLiteral("stdbuf"), QStringList{QStringLiteral("-oL"), program(QStringLiteral("mosquitto_sub")),
                                                           QStringLiteral("-d"), QStringLiteral("-t"), topic}
                                                   + clientArgs() + options);
    return waitForOutput(subscriber, "received SUBACK");
}

QByteArray TestBroker::messages(const QByteArray &subscriberOutput)
{
    QByteArray kept;
    const QByteArrayList lines = subscriberOutput.split('\n');
    for (qsizetype i = 0; i + 1 < lines.size(); ++i) {
        if (!lines.at(i).startsWith("Client ") && !lines.at(i).startsWith("Subscribed (mid"))
            kept += lines.at(i) + '\n';
    }
    return kept;
}

bool TestBroker::publish(const QString &topic, const QByteArray &message, const QStringList &options) const
{
    QProcess publisher;
    publisher.start(program(QStringLiteral("mosquitto_pub")),
                    QStringList{QStringLiteral("-q"), QStringLiteral("1"), QStringLiteral("-t"), topic, QStringLiteral("-s")}
                        + clientArgs() + options);
    publisher.write(message);
    publisher.closeWriteChannel();
    return publisher.waitForFinished(10000) && publisher.exitStatus() == QProcess::NormalExit
        && publisher.exitCode() == 0;
}
