#pragma once

#include "LineSource.h"
#include "LineSourceFactory.h"

#include <QByteArray>

#include <memory>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

class DeviceSimulator;
class LinePacer;

// "sim:" or "sim:?rate=N&seed=S": the simulated device of the project's
// definitions, built in: the same lines `ombrix-cli simulate` sends (N lines
// a second, default 50; 0 as fast as they are read), without a
// pseudo-terminal between. Commands are taken and ignored, as a device
// without a command set would.
class SimulatedLineSource : public LineSource
{
    Q_OBJECT

public:
    static inline const QString Form = QStringLiteral("sim:[?rate=N&seed=S]");
    static constexpr double DefaultRate = 50.0;
    static constexpr double MaxRate = 1e6;

    SimulatedLineSource(const QString &name, const QString &definitionsPath, double rate, quint64 seed,
                        QObject *parent = nullptr);
    ~SimulatedLineSource() override;

    // Makes "sim:" known to LineSourceFactory; any number of calls.
    static void registerScheme();
    static LineSource *create(const SourceAddress &address, const LineSourceFactory::Request &request,
                              QObject *parent, QString *error);

    bool open() override;
    void close() override;
    qint64 read(char *data, qint64 maxSize) override;
    bool hasPendingData() const override;
    bool write(QByteArrayView bytes) override;

private:
    // At full speed, lines are made while fewer than this many bytes wait.
    static constexpr qsizetype FullSpeedLowBytes = 256 * 1024;

    void produce();

    QTimer *m_timer = nullptr;
    std::unique_ptr<DeviceSimulator> m_simulator;
    std::unique_ptr<LinePacer> m_pacer;
    QString m_definitionsPath;
    double m_rate = DefaultRate;
    quint64 m_seed = 1;
    QByteArray m_pending;
    qsizetype m_readPos = 0;
    qint64 m_produced = 0;
};
