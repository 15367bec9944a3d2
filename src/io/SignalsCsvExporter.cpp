#include "SignalsCsvExporter.h"

#include "CsvFileWriter.h"
#include "SignalDefinitions.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace {

// Frame times come from the file with six decimals; this absorbs the
// rounding of i / R without reaching the next microsecond.
constexpr double TimeTolerance = 1e-7;

QString headerField(const QString &name)
{
    static const QString special = QStringLiteral(",\"\r\n");
    for (const QChar c : name) {
        if (special.contains(c)) {
            QString escaped = name;
            escaped.replace(QLatin1Char('"'), QLatin1String("\"\""));
            return QLatin1Char('"') % escaped % QLatin1Char('"');
        }
    }
    return name;
}

// The latest value of every chosen signal, formatted once when it changes.
class LatestValues
{
public:
    LatestValues(const QStringList &names, const SignalDefinitions *defs, bool mapped)
        : m_cells(names.size())
        , m_mappings(names.size())
    {
        for (int i = 0; i < names.size(); ++i) {
            m_column.insert(names.at(i), i);
            if (mapped && defs)
                m_mappings[i] = defs->mappingFor(names.at(i));
        }
    }

    // True when the values set any chosen signal.
    bool take(const QMap<QString, double> &values)
    {
        bool changed = false;
        for (auto it = values.cbegin(); it != values.cend(); ++it) {
            // A name chosen twice has a column each.
            for (auto column = m_column.constFind(it.key()); column != m_column.cend() && column.key() == it.key();
                 ++column) {
                const auto &mapping = m_mappings[*column];
                const double value = mapping ? mapping->apply(it.value()) : it.value();
                m_cells[*column] = QString::number(value, 'g', 12);
                changed = true;
            }
        }
        return changed;
    }

    void appendRow(QString &out, double t) const
    {
        out += QString::number(t, 'f', 6);
        for (const QString &cell : m_cells)
            out += QLatin1Char(',') % cell;
        out += QLatin1Char('\n');
    }

private:
    QMultiHash<QString, int> m_column;
    std::vector<QString> m_cells;
    std::vector<std::optional<SignalMapping>> m_mappings;
};

bool writeRecordedTimes(CsvFileWriter &writer, QString &chunk, const Recording &recording,
                        LatestValues &latest, QString *error)
{
    const int count = recording.frameCount();
    for (int i = 0; i < count; ++i) {
        if (latest.take(recording.valuesAt(i)))
            latest.appendRow(chunk, recording.timeAt(i));
        if (!writer.flushChunk(chunk, i + 1, count, error))
            return false;
    }
    return writer.commit(chunk, count, error);
}

bool writeSamples(CsvFileWriter &writer, QString &chunk, const Recording &recording,
                  LatestValues &latest, double rateHz, QString *error)
{
    const qint64 samples = SignalsCsvExporter::sampleCount(recording.duration(), rateHz);
    const int count = recording.frameCount();
    int next = 0;
    for (qint64 i = 0; i < samples; ++i) {
        const double t = double(i) / rateHz;
        while (next < count && recording.positionAt(next) <= t + TimeTolerance)
            latest.take(recording.valuesAt(next++));
        latest.appendRow(chunk, t);
        if (!writer.flushChunk(chunk, i + 1, samples, error))
            return false;
    }
    return writer.commit(chunk, samples, error);
}

bool validate(const Recording &recording, const SignalsExportOptions &options, QString *error)
{
    QString problem;
    if (options.signalNames.isEmpty())
        problem = QStringLiteral("No signals chosen for export.");
    else if (!std::isfinite(options.rateHz) || options.rateHz < 0.0)
        problem = QStringLiteral("The rate must be 0 (recorded times) or a positive number of samples per second.");
    else if (options.rateHz > 0.0 && !recording.isEmpty()
             && SignalsCsvExporter::sampleCount(recording.duration(), options.rateHz) < 0)
        problem = QStringLiteral("The rate is too high for a recording of this length.");
    if (problem.isEmpty())
        return true;
    if (error)
        *error = problem;
    return false;
}

} // namespace

QString SignalsCsvExporter::header(const QStringList &signalNames)
{
    QString out = QStringLiteral("time");
    for (const QString &name : signalNames)
        out += QLatin1Char(',') % headerField(name);
    return out % QLatin1Char('\n');
}

qint64 SignalsCsvExporter::sampleCount(double duration, double rateHz)
{
    if (!(rateHz > 0.0) || !(duration >= 0.0))
        return 0;
    // duration * rate may land a hair below a whole number (0.29 * 100).
    const double product = duration * rateHz;
    const double last = std::floor(product + 1e-9 * std::max(1.0, product));
    if (!std::isfinite(last) || last >= 1e12)
        return -1;
    return qint64(last) + 1;
}

bool SignalsCsvExporter::exportTo(const QString &path, const Recording &recording,
                                  const SignalDefinitions *defs, const SignalsExportOptions &options,
                                  const Progress &progress, QString *error)
{
    if (!validate(recording, options, error))
        return false;
    CsvFileWriter writer(path, progress);
    if (!writer.open(error))
        return false;
    QString chunk = header(options.signalNames);
    LatestValues latest(options.signalNames, defs, options.applyMappings);
    if (recording.isEmpty())
        return writer.commit(chunk, 0, error);
    if (options.rateHz > 0.0)
        return writeSamples(writer, chunk, recording, latest, options.rateHz, error);
    return writeRecordedTimes(writer, chunk, recording, latest, error);
}
