#pragma once

#include "Recording.h"

#include <QSaveFile>
#include <QString>

// The output side of the CSV exports: text appended in chunks to a
// QSaveFile, with a progress callback that may cancel. The target path is
// only touched by a successful commit(); a failed or cancelled export leaves
// an existing file of that name as it was and no partial file behind.
class CsvFileWriter
{
public:
    CsvFileWriter(const QString &path, const Recording::Progress &progress);

    bool open(QString *error);
    // Writes chunk out (and empties it) once it has grown large, and reports
    // (done, total) every few thousand steps. False on a write error or when
    // the callback cancels; the file is then discarded.
    bool flushChunk(QString &chunk, qint64 done, qint64 total, QString *error);
    // Writes the rest, reports completion and moves the file into place.
    bool commit(QString &chunk, qint64 total, QString *error);

    static QString openErrorText() { return QStringLiteral("Could not open file for writing."); }
    static QString cancelledText() { return QStringLiteral("Export cancelled."); }

private:
    bool write(QString &chunk, QString *error);
    bool report(qint64 done, qint64 total, QString *error);
    bool fail(const QString &message, QString *error);

    QSaveFile m_file;
    Recording::Progress m_progress;
    qint64 m_lastReported = 0;
};
