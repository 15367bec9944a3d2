#pragma once

#include <QMap>
#include <QObject>
#include <QString>

#include <functional>

class LivePipeline;
class RecordingWriter;
class SerialManager;
class SignalRouter;

// The live path to the widgets: what the source parses goes to the widgets
// through the router. The source, its recording and commands to it are the
// LivePipeline's, which this owns.
class LiveInput : public QObject
{
    Q_OBJECT

public:
    explicit LiveInput(SignalRouter *router, QObject *parent = nullptr);

    LivePipeline *pipeline() const { return m_pipeline; }
    SerialManager *serial() const;
    RecordingWriter *recorder() const;

    // While this answers true, value lines are dropped entirely (playback
    // owns the widgets then); states, errors and messages still pass.
    void setValuesMuted(const std::function<bool()> &muted) { m_valuesMuted = muted; }
    // While this answers true, values are kept and recorded but not shown.
    void setRoutingSuspended(const std::function<bool()> &suspended) { m_routingSuspended = suspended; }
    // The latest raw value of every signal seen, by name.
    const QMap<QString, double> &latestValues() const { return m_latestValues; }

private:
    void onLineParsed(double timestamp, const QMap<QString, double> &values);
    void onErrorParsed(double timestamp, const QString &errorId);
    void onStateParsed(double timestamp, const QString &group, const QString &state);
    void onUnrecognizedParsed(double timestamp, const QString &text);

    SignalRouter *m_router = nullptr;
    LivePipeline *m_pipeline = nullptr;
    std::function<bool()> m_valuesMuted;
    std::function<bool()> m_routingSuspended;
    QMap<QString, double> m_latestValues;
};
