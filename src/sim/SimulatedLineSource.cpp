#include "SimulatedLineSource.h"

#include "DeviceSimulator.h"
#include "LinePacer.h"
#include "SignalDefinitions.h"

#include <QTimer>

#include <cstring>

SimulatedLineSource::SimulatedLineSource(const QString &name, const QString &definitionsPath, double rate,
                                         quint64 seed, QObject *parent)
    : LineSource(name, parent)
    , m_timer(new QTimer(this))
    , m_definitionsPath(definitionsPath)
    , m_rate(rate)
    , m_seed(seed)
{
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &SimulatedLineSource::produce);
}

SimulatedLineSource::~SimulatedLineSource() = default;

void SimulatedLineSource::registerScheme()
{
    LineSourceFactory::registerScheme(QStringLiteral("sim"), Form, &SimulatedLineSource::create);
}

LineSource *SimulatedLineSource::create(const SourceAddress &address, const LineSourceFactory::Request &request,
                                        QObject *parent, QString *error)
{
    double rate = DefaultRate;
    double seed = 1;
    if (!address.requireOptionsOnly(Form, error)
        || !address.allowOnlyOptions({QStringLiteral("rate"), QStringLiteral("seed")}, Form, error)
        || !address.numberOption(QStringLiteral("rate"), 0, MaxRate, DefaultRate, &rate, error)
        || !address.numberOption(QStringLiteral("seed"), 0, 1e15, 1, &seed, error))
        return nullptr;
    return new SimulatedLineSource(address.text, request.definitionsPath, rate, quint64(seed), parent);
}

bool SimulatedLineSource::open()
{
    SignalDefinitions defs;
    if (m_definitionsPath.isEmpty() || !defs.load(m_definitionsPath)) {
        setErrorString(m_definitionsPath.isEmpty()
                           ? QStringLiteral("the simulated device needs a definition file, and none was given")
                           : QStringLiteral("the simulated device needs the definitions: %1").arg(defs.lastError()));
        return false;
    }
    m_simulator = std::make_unique<DeviceSimulator>(defs, m_seed);
    m_simulator->setLineInterval(m_rate > 0 ? 1.0 / m_rate : 0.001);
    m_pacer = std::make_unique<LinePacer>(m_rate, -1.0, -1);
    m_pending.clear();
    m_readPos = 0;
    m_produced = 0;
    m_timer->start(m_pacer->waitMs());
    setState(Open);
    Q_EMIT opened();
    return true;
}

void SimulatedLineSource::close()
{
    m_timer->stop();
    setState(Closed);
}

void SimulatedLineSource::produce()
{
    if (m_rate <= 0 && m_pending.size() - m_readPos >= FullSpeedLowBytes)
        return; // the reader sets the pace
    const qint64 lines = m_pacer->due(m_produced);
    if (lines <= 0)
        return;
    // What was read goes, once it is half the buffer: the rest moves up.
    if (m_readPos > 0 && m_readPos >= m_pending.size() / 2) {
        m_pending.remove(0, m_readPos);
        m_readPos = 0;
    }
    m_simulator->appendLines(m_pending, int(lines));
    m_produced += lines;
    Q_EMIT readyRead();
}

qint64 SimulatedLineSource::read(char *data, qint64 maxSize)
{
    const qint64 n = qMin<qint64>(maxSize, m_pending.size() - m_readPos);
    if (n <= 0)
        return 0;
    std::memcpy(data, m_pending.constData() + m_readPos, size_t(n));
    m_readPos += n;
    return n;
}

bool SimulatedLineSource::hasPendingData() const
{
    return m_readPos < m_pending.size();
}

bool SimulatedLineSource::write(QByteArrayView)
{
    return true;
}
