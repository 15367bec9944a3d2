#include "RecordingWriter.h"

#include "FileErrors.h"
#include "FileSync.h"
#include "LineParser.h"
#include "Recording.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <cmath>

namespace {
// Enough to keep write() calls rare at high line rates, small enough to
// bound what sits in memory between the once-a-second flushes.
constexpr qsizetype WriteChunkBytes = 256 * 1024;
}

RecordingWriter::RecordingWriter(QObject *parent)
    : QObject(parent)
    , m_flushTimer(new QTimer(this))
{
    m_flushTimer->setInterval(FlushIntervalMs);
    // A coarse timer may fire 5% late; a crash is to lose at most a second.
    m_flushTimer->setTimerType(Qt::PreciseTimer);
    connect(m_flushTimer, &QTimer::timeout, this, &RecordingWriter::flushToDisk);
}

RecordingWriter::~RecordingWriter()
{
    stop();
}

QString RecordingWriter::fileNameFor(const QDateTime &localStart)
{
    return localStart.toString(QStringLiteral("'log_'yyyyMMdd_HHmmss'.rec'"));
}

bool RecordingWriter::start(const QString &projectDir, const QString &definitionsPath)
{
    if (isRecording()) {
        m_errorString = tr("Already recording.");
        return false;
    }
    const QString dir = QDir(projectDir).filePath(QStringLiteral("recordings"));
    m_errorDetails.clear();
    if (!QDir().mkpath(dir)) {
        m_errorString = tr("Could not open file for writing.");
        m_errorDetails = FileErrors::describe(dir, tr("the folder cannot be created"));
        return false;
    }
    auto file = std::make_unique<QFile>(uniquePathIn(dir));
    // NewOnly: two recordings started within one second never share a file.
    // Unbuffered: the lines are collected here already, and a refused write
    // must not linger in a buffer of the file's own.
    if (!file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        m_errorString = tr("Could not open file for writing.");
        m_errorDetails = FileErrors::describe(file->fileName(), file->errorString());
        return false;
    }
    m_file = std::move(file);
    m_filePath = m_file->fileName();
    m_errorString.clear();
    m_buffer.clear();
    m_buffer.reserve(WriteChunkBytes + 4096);
    m_originSet = false;
    m_origin = 0.0;
    m_lastTime = 0.0;
    m_linesWritten = 0;
    m_bufferedLines = 0;
    m_linesInFile = 0;
    m_bytesInFile = 0;
    copyDefinitions(definitionsPath);
    m_sinceFlush.start();
    m_flushTimer->start();
    return true;
}

QString RecordingWriter::uniquePathIn(const QString &dir) const
{
    const QString name = fileNameFor(QDateTime::currentDateTime());
    QString path = QDir(dir).filePath(name);
    const QString base = path.chopped(4); // without ".rec"
    for (int n = 1; QFileInfo::exists(path); ++n)
        path = base % QLatin1Char('_') % QString::number(n) % QStringLiteral(".rec");
    return path;
}

void RecordingWriter::copyDefinitions(const QString &definitionsPath)
{
    const QString companion = Recording::companionPathFor(m_filePath);
    if (QFileInfo::exists(companion))
        QFile::remove(companion);
    if (!definitionsPath.isEmpty() && QFileInfo::exists(definitionsPath))
        QFile::copy(definitionsPath, companion);
}

void RecordingWriter::stop()
{
    if (!m_file)
        return;
    m_flushTimer->stop();
    flushToDisk();
    if (!m_file)
        return; // the last write failed and ended the recording
    m_file->close();
    m_file.reset();
}

bool RecordingWriter::isRecording() const
{
    return m_file != nullptr;
}

void RecordingWriter::flush()
{
    if (!m_file)
        return;
    const bool written = m_buffer.isEmpty() || m_file->write(m_buffer) == m_buffer.size();
    if (!written) {
        fail(m_file->errorString());
        return;
    }
    m_bytesInFile += m_buffer.size();
    m_linesInFile += m_bufferedLines;
    m_buffer.clear();
    m_bufferedLines = 0;
}

void RecordingWriter::fail(const QString &message)
{
    m_errorString = message;
    m_flushTimer->stop();
    // A refused write may have left part of a line: the file ends with the
    // last line that was written whole.
    m_file->close();
    m_file.reset();
    QFile::resize(m_filePath, m_bytesInFile);
    m_buffer.clear();
    m_bufferedLines = 0;
    Q_EMIT writeFailed(m_errorString);
}

void RecordingWriter::flushToDisk()
{
    if (!m_file)
        return;
    flush();
    // Past the page cache too, so that a power cut loses at most the last second.
    // Write-back errors (I/O error, full disk or quota on a network volume)
    // surface only here.
    if (!m_file)
        return;
    QString error;
    if (!FileSync::syncData(*m_file, &error)) {
        fail(error);
        return;
    }
    m_sinceFlush.restart();
}

bool RecordingWriter::beginLine(double t)
{
    if (!m_file)
        return false;
    if (!m_originSet && std::isfinite(t)) {
        m_origin = t;
        m_originSet = true;
    }
    // A time that is no number would make its line unreadable (as the origin,
    // every line): such a line keeps the time of the line before.
    if (const double relative = t - m_origin; std::isfinite(relative))
        m_lastTime = relative;
    m_buffer += QByteArray::number(m_lastTime, 'f', 6);
    return true;
}

void RecordingWriter::endLine()
{
    m_buffer += '\n';
    ++m_linesWritten;
    ++m_bufferedLines;
    if (m_sinceFlush.elapsed() >= FlushIntervalMs)
        flushToDisk();
    else if (m_buffer.size() >= WriteChunkBytes)
        flush();
}

void RecordingWriter::appendValues(double t, const QMap<QString, double> &values)
{
    if (!beginLine(t))
        return;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        m_buffer += ' ' % it.key().toUtf8() % '=' % QByteArray::number(it.value(), 'g', 12);
    endLine();
}

void RecordingWriter::appendState(double t, const QString &group, const QString &state)
{
    if (!beginLine(t))
        return;
    m_buffer += " ST_" % group.toUtf8() % '=' % state.toUtf8();
    endLine();
}

void RecordingWriter::appendError(double t, const QString &id)
{
    if (!beginLine(t))
        return;
    m_buffer += " ERR=" % id.toUtf8();
    endLine();
}

void RecordingWriter::appendMessage(double t, const QString &text)
{
    if (!beginLine(t))
        return;
    // A line break inside the text would end the line early; "RAW=..." is
    // a value of a signal named RAW, so a text starting with "=" stands apart.
    const char *tag = text.startsWith(QLatin1Char('=')) ? " RAW " : " RAW";
    m_buffer += tag % text.toUtf8().replace('\n', ' ').replace('\r', ' ');
    endLine();
}

void RecordingWriter::appendParsedLine(const ParsedLine &line)
{
    const double t = line.timestamp;
    for (const LineEvent &event : line.events) {
        if (event.kind == LineEvent::State)
            appendState(t, event.groupId, event.id);
        else
            appendError(t, event.id);
    }
    if (!line.values.isEmpty())
        appendValues(t, line.values);
    if (!line.unrecognized.isEmpty())
        appendMessage(t, line.unrecognizedText());
}
