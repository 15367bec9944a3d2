#include "Ombrix.h"

#include "ClickableLabel.h"
#include "Dashboard.h"
#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"
#include "FileActions.h"
#include "LiveInput.h"
#include "MainToolBars.h"
#include "PlaybackScrubber.h"
#include "PlaybackSession.h"
#include "Project.h"
#include "RecordingWriter.h"
#include "SerialControls.h"
#include "SerialManager.h"
#include "SignalPlaybackEngine.h"
#include "SignalRouter.h"
#include "UserPrompts.h"
#include "WidgetPalette.h"

#include <QAction>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QGraphicsView>
#include <QHBoxLayout>
#include <QLabel>
#include <QStatusBar>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>

Ombrix::Ombrix(QWidget *parent)
    : QMainWindow(parent)
{
    if (QStyle *fusion = QStyleFactory::create(QStringLiteral("Fusion"))) {
        fusion->setParent(this);
        setStyle(fusion);
    }
    DashboardWidgetFactory::instance().registerBuiltInTypes();
    m_project = new Project(this, this);
    m_toolBars = new MainToolBars(this);
    buildCentralArea();
    m_modeLabel = new QLabel(this);
    m_modeLabel->setObjectName(QStringLiteral("modeLabel"));
    statusBar()->addPermanentWidget(m_modeLabel);

    m_router = new SignalRouter(m_dashboard->scene(), this);
    m_live = new LiveInput(m_router, this);
    m_playback = new PlaybackSession(m_project, m_toolBars->positionSlider, this);
    m_playback->routeTo(m_router, m_dashboard);
    m_modes = new ModeController(m_project, m_dashboard, m_router, m_live, m_playback, this);
    m_serialControls = new SerialControls(m_live->serial(), m_toolBars, statusBar(), this);
    m_files = new FileActions(m_project, m_dashboard, m_playback, this);
    m_live->setValuesMuted([this] { return m_muteLiveInputDuringPlayback && m_modes->playbackOwnsWidgets(); });
    m_live->setRoutingSuspended([this] { return m_modes->playbackOwnsWidgets(); });

    connectProject();
    connectModes();
    connectToolBars();
    m_live->serial()->refreshPorts();
    showMode(m_modes->mode());
    resize(1280, 800);
}

Ombrix::~Ombrix()
{
    // Whatever arrived is on disk before the window goes.
    if (m_live->recorder()->isRecording())
        m_live->recorder()->stop();
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
    connect(m_palette, &WidgetPalette::widgetRequested, m_dashboard, &Dashboard::addWidget);
}

void Ombrix::connectProject()
{
    const auto showTitle = [this](const QString &path) { setWindowTitle(QStringLiteral("Ombrix — %1").arg(path)); };
    // Names and units on the dashboard are redrawn from the new catalogue.
    connect(m_project, &Project::definitionsLoaded, m_dashboard, &Dashboard::updateWidgets);
    connect(m_project, &Project::definitionsLoaded, this, showTitle);
    connect(m_project, &Project::definitionsLoaded, this, &Ombrix::signalsDefChanged);
    connect(m_project, &Project::opened, this, [this, showTitle](const QString &dir) {
        DashboardWidget::setProjectFolder(dir);
        statusBar()->showMessage(tr("Project: %1").arg(dir), 3000);
        showTitle(dir);
    });
    connect(m_project, &Project::closeRequested, this, [this] { QTimer::singleShot(0, this, &QWidget::close); });
}

void Ombrix::connectModes()
{
    connect(m_modes, &ModeController::modeChanged, this, &Ombrix::showMode);
    connect(m_modes, &ModeController::statusMessage, statusBar(), &QStatusBar::showMessage);
    connect(m_serialControls, &SerialControls::portLost, m_modes, &ModeController::onPortLost);
    connect(m_serialControls, &SerialControls::portClosed, m_modes, &ModeController::onPortClosed);
}

void Ombrix::connectToolBars()
{
    MainToolBars *bars = m_toolBars;
    connect(bars->designAction, &QAction::triggered, m_modes, &ModeController::designButton);
    connect(bars->recordAction, &QAction::triggered, m_modes, &ModeController::recordButton);
    connect(bars->stopAction, &QAction::triggered, m_modes, &ModeController::stopButton);
    connect(bars->playAction, &QAction::triggered, m_modes, &ModeController::playButton);
    connect(bars->saveLayoutAction, &QAction::triggered, m_files, &FileActions::saveButton);
    connect(bars->loadLayoutAction, &QAction::triggered, m_files, &FileActions::loadButton);
    connect(bars->exportSignalsAction, &QAction::triggered, m_files, &FileActions::exportSignals);
    connect(bars->exportEventsAction, &QAction::triggered, m_files, &FileActions::exportEvents);
    connect(bars->playbackFileLabel, &ClickableLabel::clicked, m_playback, &PlaybackSession::selectFile);
    connect(bars->speedBox, &QDoubleSpinBox::valueChanged, engine(), &SignalPlaybackEngine::setPlaybackRate);
    connect(bars->useRecordingDefinitionsBox, &QCheckBox::toggled, m_playback,
            &PlaybackSession::setUseRecordingDefinitions);
    connect(m_playback, &PlaybackSession::fileChanged, this, &Ombrix::updatePlaybackFileDisplay);
    connect(m_playback->scrubber(), &PlaybackScrubber::timeTextChanged, bars->timeLabel, &QLabel::setText);
}

void Ombrix::showMode(OperatingMode mode)
{
    m_modeLabel->setText(ModeController::modeText(mode));
    m_toolBars->setPlaying(mode == Play);
    m_palette->setEnabled(mode == Design);
}

// --- hand-overs --------------------------------------------------------------

bool Ombrix::isValidProjectDir(const QString &path) const { return Project::isValidProjectDir(path); }
bool Ombrix::setProjectDir(const QString &dir) { return m_project->setProjectDir(dir); }
bool Ombrix::loadDefinitions(const QString &path) { return m_project->loadDefinitions(path); }
void Ombrix::ensureProjectSubfolders() { m_project->ensureProjectSubfolders(); }
void Ombrix::restoreProjectOrPrompt() { m_project->restoreProjectOrPrompt(); }
void Ombrix::promptForProject() { m_project->promptForProject(); }
QString Ombrix::projectDir() const { return m_project->dir(); }
const SignalDefinitions *Ombrix::definitions() const { return m_project->definitions(); }
const SignalDefinitions *Ombrix::definitionsInForce() const { return m_playback->definitionsInForce(); }
UserPrompts &Ombrix::prompts() const { return m_project->prompts(); }
void Ombrix::setPrompts(std::unique_ptr<UserPrompts> prompts) { m_project->setPrompts(std::move(prompts)); }

bool Ombrix::connectPort(const QString &portName, int baudRate) { return m_serialControls->connectPort(portName, baudRate); }
void Ombrix::disconnectPort() { m_serialControls->disconnectPort(); }
SerialManager *Ombrix::serialManager() const { return m_live->serial(); }
RecordingWriter *Ombrix::recordingWriter() const { return m_live->recorder(); }
const QMap<QString, double> &Ombrix::latestValues() const { return m_live->latestValues(); }
SignalPlaybackEngine *Ombrix::engine() const { return m_playback->engine(); }

void Ombrix::designButton() { m_modes->designButton(); }
void Ombrix::recordButton() { m_modes->recordButton(); }
void Ombrix::stopButton() { m_modes->stopButton(); }
void Ombrix::playButton() { m_modes->playButton(); }

void Ombrix::saveLayout() { m_files->saveLayout(); }
void Ombrix::loadLayout() { m_files->loadLayout(); }
void Ombrix::saveButton() { m_files->saveButton(); }
void Ombrix::loadButton() { m_files->loadButton(); }
bool Ombrix::saveLayoutTo(const QString &path) { return m_files->saveLayoutTo(path); }
bool Ombrix::loadLayoutFrom(const QString &path) { return m_files->loadLayoutFrom(path); }
void Ombrix::exportButton() { m_files->exportSignals(); }
void Ombrix::exportEventsButton() { m_files->exportEvents(); }
bool Ombrix::exportSignalsTo(const QString &path, const SignalsExportOptions &options) { return m_files->exportSignalsTo(path, options); }
bool Ombrix::exportEventsTo(const QString &path) { return m_files->exportEventsTo(path); }

void Ombrix::selectPlaybackFile() { m_playback->selectFile(); }
void Ombrix::setPlaybackFile(const QString &path) { m_playback->setFile(path); }
QString Ombrix::playbackFile() const { return m_playback->filePath(); }

void Ombrix::updatePlaybackFileDisplay()
{
    const QString path = m_playback->filePath();
    m_toolBars->playbackFileLabel->setText(path.isEmpty() ? tr("No file selected") : QFileInfo(path).fileName());
    m_toolBars->playbackFileLabel->setToolTip(path);
}

// Played-back data, as the engine delivers it through the playback session.
void Ombrix::onPlaybackValuesAt(double timeSec, const QMap<QString, double> &values) { m_router->routeValues(values, timeSec); }
void Ombrix::onPlaybackStateEvent(const QString &group, const QString &state) { m_router->routeState(group, state); }
void Ombrix::onPlaybackErrorEvent(const QString &errId) { m_router->routeError(engine()->currentTime(), errId); }
void Ombrix::onPlaybackErrorReset() { m_router->clearErrors(); }
void Ombrix::onPlaybackMessageEvent(const QString &text) { m_router->routeMessage(engine()->currentTime(), text); }
void Ombrix::onPlaybackMessageReset() { m_router->clearMessages(); }
