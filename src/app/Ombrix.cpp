#include "Ombrix.h"

#include "ClickableLabel.h"
#include "Dashboard.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"
#include "FileActions.h"
#include "LiveInput.h"
#include "MainToolBars.h"
#include "PlaybackScrubber.h"
#include "PlaybackSession.h"
#include "RecordingWriter.h"
#include "SerialControls.h"
#include "SerialManager.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"
#include "SignalRouter.h"
#include "UserPrompts.h"
#include "WidgetPalette.h"

#include <QAction>
#include <QCheckBox>
#include <QDebug>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QGraphicsView>
#include <QHBoxLayout>
#include <QLabel>
#include <QSettings>
#include <QSlider>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>

namespace {

const QString kDefinitionFile = QStringLiteral("dashboard_signals.def");
const QString kProjectDirKey = QStringLiteral("projectDir");

QString windowTitleFor(const QString &path)
{
    return QStringLiteral("Ombrix — %1").arg(path);
}

} // namespace

Ombrix::Ombrix(QWidget *parent)
    : QMainWindow(parent)
    , m_prompts(std::make_unique<UserPrompts>())
{
    QStyle *fusion = QStyleFactory::create(QStringLiteral("Fusion"));
    if (fusion) {
        fusion->setParent(this);
        setStyle(fusion);
    }
    DashboardWidgetFactory::instance().registerBuiltInTypes();
    m_toolBars = new MainToolBars(this);
    buildCentralArea();

    m_modeLabel = new QLabel(this);
    m_modeLabel->setObjectName(QStringLiteral("modeLabel"));
    statusBar()->addPermanentWidget(m_modeLabel);

    m_router = new SignalRouter(m_dashboard->scene(), this);
    m_live = new LiveInput(m_router, this);
    m_serial = m_live->serial();
    m_recorder = m_live->recorder();
    m_live->setValuesMuted([this] { return m_muteLiveInputDuringPlayback && playbackOwnsWidgets(); });
    m_live->setRoutingSuspended([this] { return playbackOwnsWidgets(); });
    m_files = new FileActions(this);
    m_playback = new PlaybackSession(m_toolBars->positionSlider, this);

    m_serialControls = new SerialControls(m_serial, m_toolBars, statusBar(), this);
    connect(m_serialControls, &SerialControls::portLost, this, &Ombrix::onPortLost);
    connect(m_serialControls, &SerialControls::portClosed, this, &Ombrix::onPortClosed);
    // Queued: the writer reports from inside its flush, and a message box runs the event loop.
    connect(m_recorder, &RecordingWriter::writeFailed, this, &Ombrix::onRecordingWriteFailed, Qt::QueuedConnection);
    connectPlayback();
    connect(m_toolBars->designAction, &QAction::triggered, this, &Ombrix::designButton);
    connect(m_toolBars->saveLayoutAction, &QAction::triggered, this, &Ombrix::saveButton);
    connect(m_toolBars->loadLayoutAction, &QAction::triggered, this, &Ombrix::loadButton);
    connect(m_toolBars->recordAction, &QAction::triggered, this, &Ombrix::recordButton);
    connect(m_toolBars->stopAction, &QAction::triggered, this, &Ombrix::stopButton);
    connect(m_toolBars->playAction, &QAction::triggered, this, &Ombrix::playButton);
    connect(m_toolBars->exportSignalsAction, &QAction::triggered, this, &Ombrix::exportButton);
    connect(m_toolBars->exportEventsAction, &QAction::triggered, this, &Ombrix::exportEventsButton);
    connect(m_toolBars->playbackFileLabel, &ClickableLabel::clicked, this, &Ombrix::selectPlaybackFile);

    m_serial->refreshPorts();
    refreshModeDisplay();
    resize(1280, 800);
}

void Ombrix::buildCentralArea()
{
    auto *central = new QWidget(this);
    auto *layout = new QHBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_palette = new WidgetPalette(central);
    m_palette->setEnabled(false);
    m_dashboard = new Dashboard(central);
    layout->addWidget(m_palette);
    layout->addWidget(m_dashboard->view(), 1);
    setCentralWidget(central);
    connect(m_palette, &WidgetPalette::widgetRequested, this, &Ombrix::onWidgetRequested);
}

void Ombrix::connectPlayback()
{
    SignalPlaybackEngine *engine = m_playback->engine();
    connect(m_toolBars->speedBox, &QDoubleSpinBox::valueChanged, engine, &SignalPlaybackEngine::setPlaybackRate);
    connect(m_toolBars->useRecordingDefinitionsBox, &QCheckBox::toggled, this, &Ombrix::applyRecordingDefinitions);

    connect(engine, &SignalPlaybackEngine::signalValuesUpdatedAt, this, &Ombrix::onPlaybackValuesAt);
    connect(engine, &SignalPlaybackEngine::signalValuesUpdated, this, [this](const QMap<QString, double> &values) {
        // A running tick also sends every frame time-stamped; this one only
        // matters from a seek, to show the values in force at the position.
        SignalPlaybackEngine *engine = m_playback->engine();
        if (engine->isSeeking())
            onPlaybackValuesAt(engine->frames().timeAt(qMax(0, engine->index() - 1)), values);
    });
    connect(engine, &SignalPlaybackEngine::stateEvent, this,
            [this](double, const QString &group, const QString &state) { onPlaybackStateEvent(group, state); });
    connect(engine, &SignalPlaybackEngine::errorEvent, this, [this](double t, const QString &id) {
        m_playbackEventTime = t;
        onPlaybackErrorEvent(id);
    });
    connect(engine, &SignalPlaybackEngine::messageEvent, this, [this](double t, const QString &text) {
        m_playbackEventTime = t;
        onPlaybackMessageEvent(text);
    });
    connect(engine, &SignalPlaybackEngine::errorReset, this, &Ombrix::onPlaybackErrorReset);
    connect(engine, &SignalPlaybackEngine::messageReset, this, &Ombrix::onPlaybackMessageReset);
    connect(engine, &SignalPlaybackEngine::dataReset, m_dashboard, &Dashboard::clearPlots);
    connect(engine, &SignalPlaybackEngine::playbackFinished, this, [this] {
        if (m_mode == Play)
            setMode(Idle);
    });

    PlaybackScrubber *scrubber = m_playback->scrubber();
    scrubber->setTimeWindowProvider([this] { return m_dashboard->largestTrendWindowMs(); });
    scrubber->setPlayModeQuery([this] { return m_mode == Play; });
    connect(scrubber, &PlaybackScrubber::scrubStarted, this, [this] { m_dashboard->setTrendPlotsTimeDriven(true); });
    connect(scrubber, &PlaybackScrubber::positionScrubbed, m_dashboard, &Dashboard::moveTrendPlotsTo);
    connect(scrubber, &PlaybackScrubber::timeTextChanged, m_toolBars->timeLabel, &QLabel::setText);
}

Ombrix::~Ombrix()
{
    // Whatever arrived is on disk before the window goes.
    if (m_recorder->isRecording())
        m_recorder->stop();
    if (SignalDefinitions::current() == m_definitions.get())
        SignalDefinitions::setCurrent(nullptr);
}

void Ombrix::setPrompts(std::unique_ptr<UserPrompts> prompts)
{
    if (prompts)
        m_prompts = std::move(prompts);
}

bool Ombrix::isValidProjectDir(const QString &path) const
{
    if (path.isEmpty())
        return false;
    return QFileInfo::exists(QDir(path).filePath(kDefinitionFile));
}

bool Ombrix::setProjectDir(const QString &dir)
{
    if (!isValidProjectDir(dir))
        return false;

    m_projectDir = QDir(dir).absolutePath();
    // Deliberately not the store read at start-up: only a folder picked in
    // the prompt is restored next time, not one given on the command line.
    QSettings(QStringLiteral("YourCompany"), QStringLiteral("Ombrix")).setValue(kProjectDirKey, m_projectDir);
    ensureProjectSubfolders();

    if (!loadDefinitions(QDir(m_projectDir).filePath(kDefinitionFile)))
        return false;

    showTransientMessage(tr("Project: %1").arg(m_projectDir));
    setWindowTitle(windowTitleFor(m_projectDir));
    return true;
}

bool Ombrix::loadDefinitions(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists() || !info.isFile()) {
        m_prompts->warning(this, tr("Signals Definition"), tr("Cannot find signals file:\n%1").arg(path));
        return false;
    }

    auto loaded = std::make_unique<SignalDefinitions>();
    if (!loaded->load(path)) {
        m_prompts->warning(this, tr("Signals Definition"), tr("Failed to load:\n%1").arg(path));
        return false;
    }

    std::unique_ptr<SignalDefinitions> previous = std::move(m_definitions);
    m_definitions = std::move(loaded);
    SignalDefinitions::setCurrent(m_definitions.get());
    onDefinitionsReplaced();

    const QString absolutePath = info.absoluteFilePath();
    setWindowTitle(windowTitleFor(absolutePath));
    Q_EMIT signalsDefChanged(absolutePath);
    return true;
}

void Ombrix::ensureProjectSubfolders()
{
    QDir project(m_projectDir);
    for (const char *sub : {"recordings", "layouts", "exports"})
        project.mkpath(QLatin1String(sub));
}

void Ombrix::restoreProjectOrPrompt()
{
    const QString remembered =
        QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).value(kProjectDirKey).toString();
    if (!remembered.isEmpty() && isValidProjectDir(remembered) && setProjectDir(remembered))
        return;
    promptForProject();
}

void Ombrix::promptForProject()
{
    // A loop rather than recursion: an invalid folder asks again from the intro.
    for (;;) {
        if (!m_prompts->acceptProjectIntro(this)) {
            scheduleClose();
            return;
        }
        const QString start = m_projectDir.isEmpty()
            ? QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)
            : m_projectDir;
        const QString folder = m_prompts->existingDirectory(
            this, tr("Select Project Folder (contains dashboard_signals.def)"), start);
        if (folder.isEmpty()) {
            scheduleClose();
            return;
        }
        if (!isValidProjectDir(folder)) {
            m_prompts->warning(this, tr("Invalid Project"),
                               tr("Selected folder does not contain dashboard_signals.def"));
            continue;
        }
        if (setProjectDir(folder))
            QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).setValue(kProjectDirKey, folder);
        return;
    }
}

void Ombrix::onDefinitionsReplaced()
{
    m_dashboard->updateWidgets();
    updateRouterDefinitions();
}

const SignalDefinitions *Ombrix::definitionsInForce() const
{
    const SignalDefinitions *recording = m_playback->recordingDefinitions();
    return recording ? recording : m_definitions.get();
}

void Ombrix::updateRouterDefinitions()
{
    const SignalDefinitions *defs = definitionsInForce();
    m_router->setDefinitions(defs);
    m_playback->engine()->setKnownGroups(defs ? defs->stateGroupIds() : QStringList());
}

void Ombrix::showTransientMessage(const QString &text, int timeoutMs)
{
    statusBar()->showMessage(text, timeoutMs);
}

void Ombrix::scheduleClose()
{
    QTimer::singleShot(0, this, &QWidget::close);
}

SignalPlaybackEngine *Ombrix::engine() const
{
    return m_playback->engine();
}

// --- serial link -----------------------------------------------------------

bool Ombrix::connectPort(const QString &portName, int baudRate)
{
    return m_serialControls->connectPort(portName, baudRate);
}

void Ombrix::disconnectPort()
{
    m_serialControls->disconnectPort();
}

void Ombrix::onPortLost(const QString &portName)
{
    if (m_mode != Record)
        return;
    // Everything received so far is written when the recording stops.
    const QString file = m_recorder->filePath();
    setMode(Idle);
    showTransientMessage(tr("Port %1 lost: recording stopped, everything received is in %2")
                             .arg(portName, QFileInfo(file).fileName()),
                         0);
}

void Ombrix::onPortClosed()
{
    if (m_mode == Record)
        setMode(Idle);
}

void Ombrix::onRecordingWriteFailed(const QString &message)
{
    const QString text = tr("Could not write the recording %1:\n%2\nLines received meanwhile may be missing from it.")
                             .arg(QFileInfo(m_recorder->filePath()).fileName(), message);
    showTransientMessage(text.section(QLatin1Char('\n'), 0, 0) + QLatin1Char(' ') + message, 0);
    m_prompts->warning(this, tr("Error"), text);
}

bool Ombrix::playbackOwnsWidgets() const
{
    return m_mode == Play || m_mode == Pause;
}

const QMap<QString, double> &Ombrix::latestValues() const
{
    return m_live->latestValues();
}

// --- played-back data ------------------------------------------------------

void Ombrix::onPlaybackValuesAt(double timeSec, const QMap<QString, double> &values)
{
    m_router->routeValues(values, timeSec);
}

void Ombrix::onPlaybackStateEvent(const QString &group, const QString &state)
{
    m_router->routeState(group, state);
}

void Ombrix::onPlaybackErrorEvent(const QString &errId)
{
    m_router->routeError(m_playbackEventTime, errId);
}

void Ombrix::onPlaybackErrorReset()
{
    m_router->clearErrors();
}

void Ombrix::onPlaybackMessageEvent(const QString &text)
{
    m_router->routeMessage(m_playbackEventTime, text);
}

void Ombrix::onPlaybackMessageReset()
{
    m_router->clearMessages();
}

// --- modes -----------------------------------------------------------------

void Ombrix::designButton()
{
    setMode(m_mode == Design ? Idle : Design);
}

void Ombrix::recordButton()
{
    setMode(Record);
}

void Ombrix::playButton()
{
    setMode(Play);
}

void Ombrix::stopButton()
{
    setMode(m_mode == Play ? Pause : Idle);
    refreshModeDisplay();
}

void Ombrix::setMode(OperatingMode mode)
{
    if (mode == m_mode) {
        refreshModeDisplay();
        return;
    }
    // A recording that cannot start must leave the current mode in force, so
    // it is started before the old mode is left rather than after.
    if (mode == Record && !startRecording()) {
        refreshModeDisplay();
        return;
    }
    leaveMode(m_mode);
    m_mode = mode;
    enterMode(mode);
    refreshModeDisplay();
}

void Ombrix::leaveMode(OperatingMode mode)
{
    switch (mode) {
    case Design:
        m_palette->setEnabled(false);
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

void Ombrix::enterMode(OperatingMode mode)
{
    switch (mode) {
    case Design:
        qDebug() << "Design mode started";
        m_palette->setEnabled(true);
        m_dashboard->setDesignMode(true);
        m_playback->dropRecordingDefinitions();
        updateRouterDefinitions();
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

void Ombrix::refreshModeDisplay()
{
    static const char *const texts[] = {QT_TR_NOOP("Design Mode"), QT_TR_NOOP("Recording..."), QT_TR_NOOP("Playing..."),
                                        QT_TR_NOOP("Pause..."), QT_TR_NOOP("Idle")};
    m_modeLabel->setText(tr(texts[m_mode]));
    m_toolBars->setPlaying(m_mode == Play);
}

// --- recording -------------------------------------------------------------

bool Ombrix::startRecording()
{
    if (m_recorder->isRecording())
        return false;
    if (!m_serial->isOpen()) {
        m_prompts->warning(this, tr("Serial"), tr("Open a serial port before recording."));
        return false;
    }
    if (!m_recorder->start(m_projectDir, QDir(m_projectDir).filePath(kDefinitionFile))) {
        qDebug().noquote() << "Recording not started:" << m_recorder->errorString();
        m_prompts->warning(this, tr("Error"), tr("Could not open file for writing."));
        return false;
    }
    showTransientMessage(tr("Recording → %1").arg(m_recorder->filePath()));
    return true;
}

void Ombrix::stopRecording()
{
    if (!m_recorder->isRecording())
        return;
    const QString path = m_recorder->filePath();
    m_recorder->stop();
    showTransientMessage(tr("Recording stopped."));
    setPlaybackFile(path);
    m_playback->engine()->reset();
}

// --- playback --------------------------------------------------------------

void Ombrix::startPlayback()
{
    qDebug() << "Play mode started";
    if (m_playback->filePath().isEmpty()) {
        m_prompts->warning(this, tr("No File"), tr("No playback file selected."));
        return;
    }
    applyRecordingDefinitions();
    if (!loadPlaybackIntoEngine())
        return;
    QSlider *slider = m_toolBars->positionSlider;
    qDebug() << "Slider" << slider->value() << "of" << PlaybackScrubber::SliderMaxSteps;
    if (slider->value() >= PlaybackScrubber::SliderMaxSteps) {
        qDebug() << "Reset start time";
        m_playback->engine()->reset();
    }
    // Plots follow the recording's clock while it plays.
    m_dashboard->setTrendPlotsTimeDriven(true);
    m_playback->engine()->start();
}

bool Ombrix::loadPlaybackIntoEngine()
{
    QString error;
    if (m_playback->ensureLoaded(this, &error))
        return true;
    if (!error.isEmpty())
        m_prompts->warning(this, tr("Error"), tr("Could not load recording:\n%1").arg(error));
    return false;
}

void Ombrix::applyRecordingDefinitions()
{
    m_playback->applyRecordingDefinitions(m_toolBars->useRecordingDefinitionsBox->isChecked());
    updateRouterDefinitions();
}

void Ombrix::selectPlaybackFile()
{
    const QString folder = FileActions::ensureSubfolder(m_projectDir, QStringLiteral("recordings"));
    const QString path = m_prompts->openFileName(this, tr("Select Playback File"), folder,
                                                 tr("Recordings (*.rec);;All files (*)"));
    if (!path.isEmpty())
        setPlaybackFile(path);
}

void Ombrix::setPlaybackFile(const QString &path)
{
    const bool otherFile = path != m_playback->filePath();
    m_playback->setFilePath(path);
    updatePlaybackFileDisplay();
    applyRecordingDefinitions();
    if (!path.isEmpty())
        loadPlaybackIntoEngine();
    // A position in one recording means nothing in another: Play after
    // Pause would resume at the old frame index.
    if (otherFile)
        m_playback->engine()->reset();
}

QString Ombrix::playbackFile() const
{
    return m_playback->filePath();
}

void Ombrix::updatePlaybackFileDisplay()
{
    const QString path = m_playback->filePath();
    m_toolBars->playbackFileLabel->setText(path.isEmpty() ? tr("No file selected") : QFileInfo(path).fileName());
    m_toolBars->playbackFileLabel->setToolTip(path);
}

// --- widgets, layouts and exports ------------------------------------------

void Ombrix::onWidgetRequested(const QString &typeName)
{
    m_dashboard->addWidget(typeName);
}

void Ombrix::saveButton()
{
    saveLayout();
    qDebug() << "Layout saved";
}

void Ombrix::loadButton()
{
    loadLayout();
    qDebug() << "Layout loaded";
}

void Ombrix::saveLayout()
{
    m_files->saveLayout();
}

void Ombrix::loadLayout()
{
    m_files->loadLayout();
}

bool Ombrix::saveLayoutTo(const QString &path)
{
    return m_files->saveLayoutTo(path);
}

bool Ombrix::loadLayoutFrom(const QString &path)
{
    return m_files->loadLayoutFrom(path);
}

void Ombrix::exportButton()
{
    m_files->exportSignals();
}

void Ombrix::exportEventsButton()
{
    m_files->exportEvents();
}

bool Ombrix::exportSignalsTo(const QString &path, const SignalsExportOptions &options)
{
    return m_files->exportSignalsTo(path, options);
}

bool Ombrix::exportEventsTo(const QString &path)
{
    return m_files->exportEventsTo(path);
}
