#pragma once

#include "PlaybackFrame.h"

#include <QString>
#include <QStringList>

#include <functional>

// A recording file read back into memory as frames, one per distinct time,
// in ascending time order. Storage is compact (a recording of a million lines
// must stay within a few times its file size); frameAt() builds a
// PlaybackFrame on demand.
class Recording
{
public:
    // Called now and then while loading; return false to cancel the load.
    using Progress = std::function<bool(qint64 bytesDone, qint64 bytesTotal)>;

    // False when the file cannot be opened or the load was cancelled; the
    // previous content is then kept.
    bool load(const QString &path, const Progress &progress = {});
    QString errorString() const;
    QString path() const;

    int frameCount() const;
    bool isEmpty() const { return frameCount() == 0; }
    double duration() const; // time of the last frame
    double timeAt(int index) const;
    PlaybackFrame frameAt(int index) const;
    // Every signal name that occurs in the recording, ascending.
    QStringList signalNames() const;

    // "<dir>/<complete base name>.signals.h" beside a recording.
    static QString companionPathFor(const QString &recordingPath);
};
