#include "CliSource.h"

#include "CliCommand.h"
#include "LivePipeline.h"
#include "SerialManager.h"
#include "SourceAddress.h"
#include "TerminationNotifier.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>

CliSource::CliSource(CliCommand &cli, bool projectRequired)
    : m_cli(cli)
    , m_port({QStringLiteral("p"), QStringLiteral("port")},
             QStringLiteral("The source: a serial port (name or device path), tcp://HOST:PORT, "
                            "udp://[HOST]:PORT or sim:[?rate=N&seed=S]."),
             QStringLiteral("SOURCE"))
    , m_baud({QStringLiteral("b"), QStringLiteral("baud")}, QStringLiteral("Baud rate of a serial port (default 115200)."),
             QStringLiteral("N"), QStringLiteral("115200"))
    , m_project(QStringLiteral("project"),
                projectRequired ? QStringLiteral("The project folder.")
                                : QStringLiteral("The project folder, whose definitions sim: speaks."),
                QStringLiteral("DIR"))
    , m_def({QStringLiteral("d"), QStringLiteral("def")},
            projectRequired ? QStringLiteral("Definitions copied beside the recording (default: "
                                             "DIR/dashboard_signals.def).")
                            : QStringLiteral("The definitions sim: speaks (default: DIR/dashboard_signals.def)."),
            QStringLiteral("FILE"))
    , m_projectRequired(projectRequired)
{
    m_cli.parser().addOptions({m_port, m_baud, m_project, m_def});
}

bool CliSource::read()
{
    const QCommandLineParser &parser = m_cli.parser();
    m_settings.portName = parser.value(m_port).trimmed();
    m_projectDir = parser.value(m_project);
    bool baudOk = false;
    m_settings.baudRate = parser.value(m_baud).toInt(&baudOk);
    m_definitionsPath = parser.isSet(m_def) ? parser.value(m_def)
        : m_projectDir.isEmpty()            ? QString()
                                            : QDir(m_projectDir).filePath(QStringLiteral("dashboard_signals.def"));
    QString error;
    if (m_settings.portName.isEmpty())
        error = QStringLiteral("missing --port SOURCE");
    else if (m_projectDir.isEmpty() && m_projectRequired)
        error = QStringLiteral("missing --project DIR");
    else if (!m_projectDir.isEmpty() && !QFileInfo(m_projectDir).isDir())
        error = QStringLiteral("no such project folder: %1").arg(m_projectDir);
    else if (!baudOk || m_settings.baudRate <= 0)
        error = QStringLiteral("--baud needs a positive whole number");
    else if (parser.isSet(m_def) && !QFileInfo(m_definitionsPath).isFile())
        error = QStringLiteral("no such definition file: %1").arg(m_definitionsPath);
    if (error.isEmpty())
        return true;
    m_cli.usageError(error);
    return false;
}

QString CliSource::description() const
{
    if (!SourceAddress::schemeOf(m_settings.portName).isEmpty())
        return m_settings.portName;
    return QStringLiteral("%1 at %2 baud").arg(m_settings.portName).arg(m_settings.baudRate);
}

bool CliSource::open(LivePipeline &pipeline, TerminationNotifier *termination, QString *error) const
{
    SerialManager *serial = pipeline.serial();
    QString reason;
    const QMetaObject::Connection failure = QObject::connect(
        serial, &SerialManager::openFailed, serial, [&reason](const QString &, const QString &why) { reason = why; });
    pipeline.setDefinitionsPath(m_definitionsPath);
    if (pipeline.open(m_settings) && pipeline.isOpening()) {
        QEventLoop loop;
        QObject::connect(serial, &SerialManager::sourceOpened, &loop, &QEventLoop::quit);
        QObject::connect(serial, &SerialManager::openFailed, &loop, &QEventLoop::quit);
        QObject::connect(termination, &TerminationNotifier::terminationRequested, &loop, &QEventLoop::quit);
        loop.exec();
    }
    QObject::disconnect(failure);
    if (pipeline.isOpen())
        return true;
    if (reason.isEmpty())
        reason = QStringLiteral("interrupted while connecting");
    pipeline.close();
    *error = QStringLiteral("cannot open %1: %2").arg(m_settings.portName, reason);
    return false;
}
