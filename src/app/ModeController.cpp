#include "ModeController.h"

#include "Dashboard.h"
#include "LiveInput.h"
#include "PlaybackScrubber.h"
#include "PlaybackSession.h"
#include "Project.h"
#include "RecordingWriter.h"
#include "SerialManager.h"
#include "SignalPlaybackEngine.h"
#include "SignalRouter.h"
#include "UserPrompts.h"

#include <QDebug>
#include <QFileInfo>

ModeController::ModeController(Project *project, Dashboard *dashboard, SignalRouter *router, LiveInput *live,
                               PlaybackSession *playback, QObject *parent)
    : QObject(parent)
    , m_project(project)
    , m_dashboard(dashboard)
    , m_router(router)
    , m_live(live)
    , m_playback(playback)
{
    connect(m_playback->engine(), &SignalPlaybackEngine::playbackFinished, this, [this] {
        if (m_mode == Play)
            setMode(Idle);
    });
    m_playback->scrubber()->setPlayModeQuery([this] { return m_mode == Play; });
    // Queued: the writer reports from inside its flush, and a message box runs the event loop.
    connect(m_live->recorder(), &RecordingWriter::writeFailed, this, &ModeController::onRecordingWriteFailed,
            Qt::QueuedConnection);
}

QString ModeController::modeText(OperatingMode mode)
{
    switch (mode) {
    case Design:
        return tr("Design Mode");
    case Record:
        return tr("Recording...");
    case Play:
        return tr("Playing...");
    case Pause:
        return tr("Pause...");
    case Idle:
        break;
    }
    return tr("Idle");
}

void ModeController::designButton()
{
    setMode(m_mode == Design ? Idle : Design);
}

void ModeController::recordButton()
{
    setMode(Record);
}

void ModeController::playButton()
{
    setMode(Play);
}

void ModeController::playPauseButton()
{
    if (m_mode == Play)
        stopButton();
    else
        playButton();
}

void ModeController::stopButton()
{
    setMode(m_mode == Play ? Pause : Idle);
}

void ModeController::setMode(OperatingMode mode)
{
    if (mode == m_mode)
        return;
    // A recording that cannot start must leave the current mode in force, so
    // it is started before the old mode is left rather than after.
    if (mode == Record && !startRecording())
        return;
    leaveMode(m_mode);
    m_mode = mode;
    enterMode(mode);
    Q_EMIT modeChanged(m_mode);
}

void ModeController::leaveMode(OperatingMode mode)
{
    switch (mode) {
    case Design:
        m_dashboard->setDesignMode(false);
        m_dashboard->setTrendPlotsTimeDriven(false);
        qDebug() << "Design mode ended";
        break;
    case Record:
        stopRecording();
        qDebug() << "Record mode ended";
        break;
    case Play:
        qDebug() << "Play mode ended";
        m_playback->engine()->pause();
        break;
    case Pause:
    case Idle:
        break;
    }
}

void ModeController::enterMode(OperatingMode mode)
{
    switch (mode) {
    case Design:
        qDebug() << "Design mode started";
        m_dashboard->setDesignMode(true);
        m_playback->dropRecordingDefinitions();
        break;
    case Record:
        qDebug() << "Record mode started";
        m_dashboard->setTrendPlotsTimeDriven(false);
        m_router->clearErrors();
        break;
    case Play:
        startPlayback();
        break;
    case Pause:
        break;
    case Idle:
        qDebug() << "Idle mode started";
        m_playback->engine()->reset();
        m_dashboard->clearPlots();
        m_dashboard->setTrendPlotsTimeDriven(false);
        break;
    }
}

bool ModeController::startRecording()
{
    RecordingWriter *recorder = m_live->recorder();
    if (recorder->isRecording())
        return false;
    UserPrompts &prompts = m_project->prompts();
    if (!m_live->serial()->isOpen()) {
        prompts.warning(m_project->dialogParent(), tr("Serial"), tr("Open a serial port before recording."));
        return false;
    }
    if (!recorder->start(m_project->dir(), m_project->definitionsPath())) {
        qDebug().noquote() << "Recording not started:" << recorder->errorString();
        prompts.warning(m_project->dialogParent(), tr("Error"), tr("Could not open file for writing."),
                        recorder->errorDetails());
        return false;
    }
    Q_EMIT statusMessage(tr("Recording → %1").arg(recorder->filePath()), 3000);
    return true;
}

void ModeController::stopRecording()
{
    RecordingWriter *recorder = m_live->recorder();
    if (!recorder->isRecording())
        return;
    const QString path = recorder->filePath();
    recorder->stop();
    Q_EMIT statusMessage(tr("Recording stopped."), 3000);
    m_playback->setFile(path);
    m_playback->engine()->reset();
}

void ModeController::startPlayback()
{
    qDebug() << "Play mode started";
    if (m_playback->filePath().isEmpty()) {
        m_project->prompts().warning(m_project->dialogParent(), tr("No File"), tr("No playback file selected."));
        return;
    }
    m_playback->applyRecordingDefinitions();
    if (!m_playback->loadIntoEngine())
        return;
    PlaybackScrubber *scrubber = m_playback->scrubber();
    qDebug() << "Slider" << scrubber->sliderValue() << "of" << PlaybackScrubber::SliderMaxSteps;
    if (scrubber->sliderValue() >= PlaybackScrubber::SliderMaxSteps) {
        qDebug() << "Reset start time";
        m_playback->engine()->reset();
    }
    // Plots follow the recording's clock while it plays.
    m_dashboard->setTrendPlotsTimeDriven(true);
    m_playback->engine()->start();
}

void ModeController::onPortLost(const QString &portName)
{
    if (m_mode != Record)
        return;
    // Everything received so far is written when the recording stops.
    const QString file = m_live->recorder()->filePath();
    setMode(Idle);
    Q_EMIT statusMessage(tr("Port %1 lost: recording stopped, everything received is in %2")
                             .arg(portName, QFileInfo(file).fileName()),
                         0);
}

void ModeController::onPortClosed()
{
    if (m_mode == Record)
        setMode(Idle);
}

void ModeController::onRecordingWriteFailed(const QString &message)
{
    // The writer has stopped and kept every whole line it could write.
    const RecordingWriter *recorder = m_live->recorder();
    const QString path = recorder->filePath();
    const qint64 lines = recorder->linesInFile();
    if (m_mode == Record)
        setMode(Idle);
    m_playback->setFile(path);
    m_playback->engine()->reset();
    const QString text = tr("Recording stopped: %1 could not be written (%2). It keeps the %3 written before.")
                             .arg(QFileInfo(path).fileName(), message,
                                  lines == 1 ? tr("1 line") : tr("%1 lines").arg(lines));
    Q_EMIT statusMessage(text, 0);
    m_project->prompts().warning(m_project->dialogParent(), tr("Error"), text, path);
}
