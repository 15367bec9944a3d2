#include "CsvFileWriter.h"

namespace {
constexpr qsizetype ChunkChars = 256 * 1024;
constexpr qint64 ReportEvery = 4096;

QString writeErrorText(const QSaveFile &file)
{
    return QStringLiteral("Could not write the file: %1").arg(file.errorString());
}
} // namespace

CsvFileWriter::CsvFileWriter(const QString &path, const Recording::Progress &progress)
    : m_file(path)
    , m_progress(progress)
{
}

bool CsvFileWriter::open(QString *error)
{
    m_file.setDirectWriteFallback(false);
    if (m_file.open(QIODevice::WriteOnly))
        return true;
    if (error)
        *error = openErrorText() + QStringLiteral(" (%1: %2)").arg(m_file.fileName(), m_file.errorString());
    return false;
}

bool CsvFileWriter::flushChunk(QString &chunk, qint64 done, qint64 total, QString *error)
{
    if (chunk.size() >= ChunkChars && !write(chunk, error))
        return false;
    if (done - m_lastReported >= ReportEvery)
        return report(done, total, error);
    return true;
}

bool CsvFileWriter::commit(QString &chunk, qint64 total, QString *error)
{
    if (!write(chunk, error) || !report(total, total, error))
        return false;
    if (m_file.commit())
        return true;
    if (error)
        *error = writeErrorText(m_file);
    return false;
}

bool CsvFileWriter::write(QString &chunk, QString *error)
{
    const QByteArray bytes = chunk.toUtf8();
    chunk.clear();
    if (m_file.write(bytes) == bytes.size())
        return true;
    return fail(writeErrorText(m_file), error);
}

bool CsvFileWriter::report(qint64 done, qint64 total, QString *error)
{
    m_lastReported = done;
    if (!m_progress || m_progress(done, total))
        return true;
    return fail(cancelledText(), error);
}

bool CsvFileWriter::fail(const QString &message, QString *error)
{
    m_file.cancelWriting();
    if (error)
        *error = message;
    return false;
}
