#include "Ombrix.h"

#include "CommandBar.h"
#include "CommandWidget.h"
#include "Dashboard.h"
#include "DashboardCore.h"
#include "DashboardView.h"
#include "DashboardWidget.h"
#include "FileActions.h"
#include "FileButton.h"
#include "LiveInput.h"
#include "LivePipeline.h"
#include "MainMenus.h"
#include "MainToolBars.h"
#include "PlaybackScrubber.h"
#include "PlaybackSession.h"
#include "Project.h"
#include "ProjectFolder.h"
#include "RecentFiles.h"
#include "RecordingWriter.h"
#include "SerialControls.h"
#include "SerialManager.h"
#include "DesignScene.h"
#include "SignalPlaybackEngine.h"
#include "SignalRouter.h"
#include "UserPrompts.h"
#include "WidgetPalette.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QStatusBar>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>
#include <QToolButton>

Ombrix::Ombrix(QWidget *parent)
    : QMainWindow(parent)
{
    if (QStyle *fusion = QStyleFactory::create(QStringLiteral("Fusion"))) {
        fusion->setParent(this);
        setStyle(fusion);
    }
    m_core = new DashboardCore(this);
    m_project = new Project(m_core, this, this);
    m_toolBars = new MainToolBars(this);
    m_recentProjects = std::make_unique<RecentFiles>(QStringLiteral("recentProjects"));
    m_recentRecordings = std::make_unique<RecentFiles>(QStringLiteral("recentRecordings"));
    m_recentSources = std::make_unique<RecentFiles>(QStringLiteral("recentSources"));
    m_menus = new MainMenus(this, m_toolBars, m_recentProjects.get(), m_recentRecordings.get());
    m_menus->setRecentSources(m_recentSources.get());
    buildCentralArea();
    m_modeLabel = new QLabel(this);
    m_modeLabel->setObjectName(QStringLiteral("modeLabel"));
    statusBar()->addPermanentWidget(m_modeLabel);

    m_live = new LiveInput(m_core->router(), this);
    m_playback = new PlaybackSession(m_project, m_core, m_toolBars->positionSlider, this);
    m_modes = new ModeController(m_project, m_core->dashboard(), m_core->router(), m_live, m_playback, this);
    m_serialControls = new SerialControls(m_live->pipeline(), m_toolBars, statusBar(), this);
    m_files = new FileActions(m_project, m_core, m_playback, this);
    m_live->setValuesMuted([this] { return m_muteLiveInputDuringPlayback && m_modes->playbackOwnsWidgets(); });
    m_live->setRoutingSuspended([this] { return m_modes->playbackOwnsWidgets(); });

    connectProject();
    connectModes();
    connectToolBars();
    connectMenus();
    connectRecentFiles();
    connectCommands();
    connectSources();
    m_live->serial()->refreshPorts();
    showMode(m_modes->mode());
    updatePlaybackFileDisplay();
    resize(1280, 800);
    // Keys such as Space and Home belong to the dashboard, not to the port box.
    m_view->setFocus();
}

Ombrix::~Ombrix()
{
    CommandWidget::setCommandSink(nullptr);
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
    m_view = new DashboardView(m_core->scene(), central);
    layout->addWidget(m_palette);
    layout->addWidget(m_view, 1);
    setCentralWidget(central);
    connect(m_palette, &WidgetPalette::widgetRequested, dashboard(), &Dashboard::addWidget);
}

void Ombrix::connectProject()
{
    const auto showTitle = [this](const QString &path) { setWindowTitle(QStringLiteral("Ombrix — %1").arg(path)); };
    // Names and units on the dashboard are redrawn from the new catalogue.
    connect(m_project, &Project::definitionsLoaded, dashboard(), &Dashboard::updateWidgets);
    connect(m_project, &Project::definitionsLoaded, this, showTitle);
    connect(m_project, &Project::definitionsLoaded, this, &Ombrix::signalsDefChanged);
    // The simulated device speaks the definitions in force.
    connect(m_project, &Project::definitionsLoaded, m_live->pipeline(), &LivePipeline::setDefinitionsPath);
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
    connect(bars->playbackFileButton, &QPushButton::clicked, m_playback, &PlaybackSession::selectFile);
    connect(bars->speedBox, &QDoubleSpinBox::valueChanged, engine(), &SignalPlaybackEngine::setPlaybackRate);
    connect(bars->useRecordingDefinitionsBox, &QCheckBox::toggled, m_playback,
            &PlaybackSession::setUseRecordingDefinitions);
    connect(m_playback, &PlaybackSession::fileChanged, this, &Ombrix::updatePlaybackFileDisplay);
    connect(m_playback->scrubber(), &PlaybackScrubber::timeTextChanged, bars->timeLabel, &QLabel::setText);
}

void Ombrix::connectMenus()
{
    MainMenus *menus = m_menus;
    MainToolBars *bars = m_toolBars;
    connect(menus->newProjectAction, &QAction::triggered, m_project, &Project::chooseNewProject);
    connect(menus->openProjectAction, &QAction::triggered, m_project, &Project::chooseProject);
    connect(menus->openDemoAction, &QAction::triggered, m_project, &Project::openDemoCopy);
    connect(menus, &MainMenus::recentProjectChosen, m_project, &Project::openPicked);
    connect(m_project, &Project::layoutSuggested, m_files, &FileActions::loadLayoutFrom);
    connect(menus->exportSignalsAction, &QAction::triggered, bars->exportSignalsAction, &QAction::trigger);
    connect(menus->exportEventsAction, &QAction::triggered, bars->exportEventsAction, &QAction::trigger);
    connect(menus->openProjectFolderAction, &QAction::triggered, this, [this] { prompts().showFolder(projectDir()); });
    connect(menus->quitAction, &QAction::triggered, this, &QWidget::close);

    connect(menus->connectAction, &QAction::triggered, bars->connectButton, &QToolButton::click);
    connect(bars, &MainToolBars::connectedChanged, menus, &MainMenus::setConnected);
    connect(menus->stopAction, &QAction::triggered, m_modes, [this] { m_modes->setMode(Idle); });

    connect(menus->chooseRecordingAction, &QAction::triggered, m_playback, &PlaybackSession::selectFile);
    connect(menus, &MainMenus::recentRecordingChosen, m_playback, &PlaybackSession::setFile);
    connect(menus->playPauseAction, &QAction::triggered, m_modes, &ModeController::playPauseButton);
    connect(menus->fasterAction, &QAction::triggered, bars, [bars] { bars->scaleSpeed(2.0); });
    connect(menus->slowerAction, &QAction::triggered, bars, [bars] { bars->scaleSpeed(0.5); });
    // As the slider's own Home and End keys do: the scrubber seeks at once.
    connect(menus->jumpToStartAction, &QAction::triggered, bars->positionSlider,
            [bars] { bars->positionSlider->triggerAction(QAbstractSlider::SliderToMinimum); });
    connect(menus->jumpToEndAction, &QAction::triggered, bars->positionSlider,
            [bars] { bars->positionSlider->triggerAction(QAbstractSlider::SliderToMaximum); });

    connect(menus->zoomInAction, &QAction::triggered, m_view, &DashboardView::zoomIn);
    connect(menus->zoomOutAction, &QAction::triggered, m_view, &DashboardView::zoomOut);
    connect(menus->zoomResetAction, &QAction::triggered, m_view, [this] { m_view->setZoom(1.0); });
    connect(menus->fullScreenAction, &QAction::triggered, this, &Ombrix::setFullScreen);
    connect(menus->shortcutsAction, &QAction::triggered, this, &Ombrix::showShortcuts);
    connect(menus->aboutAction, &QAction::triggered, this, &Ombrix::showAbout);
    connect(m_project, &Project::opened, menus->openProjectFolderAction, [menus] { menus->openProjectFolderAction->setEnabled(true); });
    menus->openProjectFolderAction->setEnabled(false);
}

void Ombrix::connectRecentFiles()
{
    connect(m_project, &Project::opened, this, [this](const QString &dir) { m_recentProjects->add(dir); });
    connect(m_playback, &PlaybackSession::fileChanged, this, [this](const QString &path) { m_recentRecordings->add(path); });
}

void Ombrix::connectCommands()
{
    CommandWidget::setCommandSink(m_live->pipeline());
    m_commandBar = new CommandBar(m_live->pipeline(), this);
    addToolBar(Qt::BottomToolBarArea, m_commandBar);
    m_commandBar->hide();
    QAction *toggle = m_menus->commandBarAction;
    connect(toggle, &QAction::toggled, m_commandBar, [this](bool on) {
        m_commandBar->setVisible(on);
        if (on)
            m_commandBar->edit()->setFocus();
    });
    connect(m_commandBar, &QToolBar::visibilityChanged, toggle, &QAction::setChecked);
    connect(m_commandBar, &CommandBar::statusMessage, statusBar(), &QStatusBar::showMessage);
    connect(m_project, &Project::opened, m_commandBar, &CommandBar::setProjectFolder);
}

void Ombrix::connectSources()
{
    // The name comes without its password.
    connect(m_live->serial(), &SerialManager::sourceOpened, this,
            [this](const QString &name) { m_recentSources->addEntry(name); });
    connect(m_menus->simulatedDeviceAction, &QAction::triggered, this, [this] { switchSource(QStringLiteral("sim:")); });
    connect(m_menus, &MainMenus::recentSourceChosen, this, &Ombrix::switchSource);
    // A first run that moves: the demo comes with its device and a recording to play.
    connect(m_project, &Project::demoOpened, this, [this](const QString &dir) {
        if (!m_live->pipeline()->isActive())
            switchSource(QStringLiteral("sim:"));
        if (m_playback->filePath().isEmpty()) {
            const QString recording = Project::demoRecording(dir);
            if (!recording.isEmpty())
                m_playback->setFile(recording);
        }
    });
}

void Ombrix::switchSource(const QString &source)
{
    if (m_live->pipeline()->isActive())
        disconnectPort();
    connectPort(source, m_toolBars->baudRate());
}

void Ombrix::setFullScreen(bool on)
{
    setWindowState(on ? windowState() | Qt::WindowFullScreen : windowState() & ~Qt::WindowFullScreen);
}

void Ombrix::changeEvent(QEvent *event)
{
    // A layout can make the window full-screen too; the menu follows.
    if (event->type() == QEvent::WindowStateChange)
        m_menus->fullScreenAction->setChecked(isFullScreen());
    QMainWindow::changeEvent(event);
}

void Ombrix::showShortcuts()
{
    prompts().information(this, tr("Keyboard Shortcuts"), m_menus->shortcutsHtml());
}

void Ombrix::showAbout()
{
    prompts().about(this, tr("About Ombrix"),
                    tr("<h3>Ombrix %1</h3><p>A dashboard for live serial telemetry: watch, record, replay "
                       "and export what a device sends.</p><p>Built with Qt %2, running on Qt %3.</p>")
                        .arg(QStringLiteral(OMBRIX_VERSION), QStringLiteral(QT_VERSION_STR), QString::fromLatin1(qVersion())));
}

void Ombrix::showMode(OperatingMode mode)
{
    m_modeLabel->setText(ModeController::modeText(mode));
    m_toolBars->setPlaying(mode == Play);
    m_palette->setEnabled(mode == Design);
}

// --- hand-overs --------------------------------------------------------------

bool Ombrix::isValidProjectDir(const QString &path) const { return ProjectFolder::isValid(path); }
bool Ombrix::setProjectDir(const QString &dir) { return m_project->setProjectDir(dir); }
bool Ombrix::loadDefinitions(const QString &path) { return m_project->loadDefinitions(path); }
void Ombrix::ensureProjectSubfolders() { m_project->ensureProjectSubfolders(); }
void Ombrix::restoreProjectOrPrompt() { m_project->restoreProjectOrPrompt(); }
void Ombrix::promptForProject() { m_project->promptForProject(); }
QString Ombrix::projectDir() const { return m_project->dir(); }
const SignalDefinitions *Ombrix::definitions() const { return m_project->definitions(); }
const SignalDefinitions *Ombrix::definitionsInForce() const { return m_core->definitionsInForce(); }
UserPrompts &Ombrix::prompts() const { return m_project->prompts(); }
void Ombrix::setPrompts(std::unique_ptr<UserPrompts> prompts) { m_project->setPrompts(std::move(prompts)); }

bool Ombrix::connectPort(const QString &portName, int baudRate) { return m_serialControls->connectPort(portName, baudRate); }
void Ombrix::disconnectPort() { m_serialControls->disconnectPort(); }
Dashboard *Ombrix::dashboard() const { return m_core->dashboard(); }
SerialManager *Ombrix::serialManager() const { return m_live->serial(); }
RecordingWriter *Ombrix::recordingWriter() const { return m_live->recorder(); }
const QMap<QString, double> &Ombrix::latestValues() const { return m_live->latestValues(); }
SignalPlaybackEngine *Ombrix::engine() const { return m_core->engine(); }

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
    FileButton *button = m_toolBars->playbackFileButton;
    button->setLabelText(path.isEmpty() ? tr("No file selected") : QFileInfo(path).fileName());
    button->setToolTip(path.isEmpty() ? tr("Choose a recording to play (%1)")
                                            .arg(m_menus->chooseRecordingAction->shortcut().toString(QKeySequence::NativeText))
                                      : QDir::toNativeSeparators(path));
    button->setAccessibleName(m_toolBars->playbackFileLabel->text());
}

// Played-back data, as the engine delivers it through the playback session.
void Ombrix::onPlaybackValuesAt(double timeSec, const QMap<QString, double> &values) { m_core->router()->routeValues(values, timeSec); }
void Ombrix::onPlaybackStateEvent(const QString &group, const QString &state) { m_core->router()->routeState(group, state); }
void Ombrix::onPlaybackErrorEvent(const QString &errId) { m_core->router()->routeError(engine()->currentTime(), errId); }
void Ombrix::onPlaybackErrorReset() { m_core->router()->clearErrors(); }
void Ombrix::onPlaybackMessageEvent(const QString &text) { m_core->router()->routeMessage(engine()->currentTime(), text); }
void Ombrix::onPlaybackMessageReset() { m_core->router()->clearMessages(); }
