#pragma once

#include "PlaybackFrame.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>

QT_BEGIN_NAMESPACE
class QIODevice;
QT_END_NAMESPACE

// A recording file read back into memory as frames, one per device line, in
// file order (see Recording.cpp for how lines become frames). Storage is compact (a recording of a million lines
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
    // The same reading of a recording held in memory (path() stays empty).
    bool loadFromBytes(const QByteArray &bytes);
    QString errorString() const;
    QString path() const;

    int frameCount() const;
    bool isEmpty() const { return frameCount() == 0; }
    double duration() const; // the largest time
    // The frame's own time, as recorded (after a device's clock restarted, it
    // may be earlier than the frame before).
    double timeAt(int index) const;
    // Where the frame stands in the recording: the largest time up to it,
    // never decreasing; seeking and the slider go by it.
    double positionAt(int index) const { return m_positions.at(index); }
    PlaybackFrame frameAt(int index) const;
    // Every signal name that occurs in the recording, ascending.
    QStringList signalNames() const;

    // "<dir>/<complete base name>.signals.h" beside a recording.
    static QString companionPathFor(const QString &recordingPath);

    // Fast access for the playback engine: frame indices, per-kind event
    // lists sorted by frame, and the strings they point to.
    struct StateEntry
    {
        int frame = 0;
        int group = 0; // index into words()
        int state = 0; // index into words()
    };
    struct IdEntry
    {
        int frame = 0;
        int id = 0; // errors: index into words(); messages: into messages()
    };

    // The first frame whose position is at or after t (frameCount() when none).
    int indexAtOrAfter(double t) const;
    QMap<QString, double> valuesAt(int index) const;
    // The last frame at or before index that holds a value set, or -1: the
    // values in force there (a frame may hold only events).
    int valueFrameUpTo(int index) const { return index < 0 ? -1 : m_valueFrameUpTo.at(index); }
    const QList<StateEntry> &stateEntries() const { return m_states; }
    const QList<IdEntry> &errorEntries() const { return m_errors; }
    const QList<IdEntry> &messageEntries() const { return m_messages; }
    const QStringList &words() const { return m_words; }
    const QStringList &messages() const { return m_messageTexts; }
    // Entries of frames 0 .. lastFrame: the length of the matching prefix.
    static int countUpTo(const QList<StateEntry> &entries, int lastFrame);
    static int countUpTo(const QList<IdEntry> &entries, int lastFrame);

private:
    friend class RecordingLoader;

    bool read(QIODevice &device, const QString &path, const Progress &progress);

    QString m_path;
    QString m_errorString;
    QList<double> m_times;           // per frame, as recorded
    QList<double> m_positions;       // per frame, the largest time so far
    QList<int> m_valueFrameUpTo;     // per frame, see valueFrameUpTo()
    QList<int> m_valueBegin;         // per frame + 1: range into the value arrays
    QList<int> m_valueNames;         // index into m_names
    QList<double> m_values;
    QStringList m_names;             // signal names in order of first use
    QList<StateEntry> m_states;      // sorted by frame, file order within
    QList<IdEntry> m_errors;
    QList<IdEntry> m_messages;
    QStringList m_words;             // interned group, state and error ids
    QStringList m_messageTexts;
};
