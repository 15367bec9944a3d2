#pragma once

#include "Recording.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>

QT_BEGIN_NAMESPACE
class QProgressDialog;
class QWidget;
QT_END_NAMESPACE

// Turns the progress callbacks of Recording::load and the CSV exporters into
// a window-modal progress dialog. The dialog only appears once the work has
// run for longer than ShowAfterMs, so quick work shows nothing; its Cancel
// button makes the callback return false, which cancels the work.
//
//   ProgressRunner runner(tr("Exporting signals…"), this);
//   SignalsCsvExporter::exportTo(path, rec, defs, options, runner.callback(), &error);
class ProgressRunner : public QObject
{
    Q_OBJECT

public:
    explicit ProgressRunner(const QString &labelText, QWidget *parent = nullptr);
    ~ProgressRunner() override;

    // Valid as long as this runner lives.
    Recording::Progress callback();
    // One report: (done, total) in any unit; false once cancelled.
    bool update(qint64 done, qint64 total);
    bool wasCancelled() const { return m_cancelled; }
    // Restarts the clock for a further step of work with a new label.
    void restart(const QString &labelText);
    // How long work runs before the dialog appears; ShowAfterMs by default.
    void setShowDelay(int ms) { m_showDelayMs = ms; }

    static constexpr int ShowAfterMs = 500;

private:
    void showDialog();

    QPointer<QWidget> m_parentWidget;
    QPointer<QProgressDialog> m_dialog;
    QElapsedTimer m_clock;
    QElapsedTimer m_sinceEvents;
    QString m_labelText;
    int m_showDelayMs = ShowAfterMs;
    bool m_cancelled = false;
};
