#include "MainMenus.h"

#include "MainToolBars.h"
#include "RecentFiles.h"

#include <QAction>
#include <QDir>
#include <QDoubleSpinBox>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSlider>
#include <QToolButton>

namespace {

QString keysText(const QAction *action)
{
    QStringList keys;
    for (const QKeySequence &sequence : action->shortcuts())
        keys.append(sequence.toString(QKeySequence::NativeText));
    return keys.join(QStringLiteral(", "));
}

// "Save Layout (Ctrl+S)": the tool tip names the action and the key that does the same.
QString tip(const QString &name, const QAction *keyOwner)
{
    const QString keys = keysText(keyOwner);
    return keys.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, keys);
}

// A menu text without its mnemonic and ellipsis, for tables and tips.
QString plainText(QString text)
{
    text.remove(QLatin1Char('&'));
    if (text.endsWith(QStringLiteral("…")))
        text.chop(1);
    return text;
}

// The platform's keys for an action plus the common one, which some
// platforms lack (Windows has no Quit key, plain X11 no full-screen one).
QList<QKeySequence> standardAnd(QKeySequence::StandardKey key, const QKeySequence &common)
{
    QList<QKeySequence> keys = QKeySequence::keyBindings(key);
    if (!keys.contains(common))
        keys.append(common);
    return keys;
}

} // namespace

MainMenus::MainMenus(QMainWindow *window, MainToolBars *toolBars, RecentFiles *recentProjects,
                     RecentFiles *recentRecordings)
    : QObject(window)
    , m_toolBars(toolBars)
    , m_recentProjects(recentProjects)
    , m_recentRecordings(recentRecordings)
{
    buildFile(window);
    buildAcquisition(window);
    buildPlayback(window);
    buildView(window);
    buildHelp(window);
    describeToolBars();
}

QMenu *MainMenus::addMenu(QMainWindow *window, const QString &title)
{
    QMenu *menu = window->menuBar()->addMenu(title);
    m_menus.append(menu);
    return menu;
}

QAction *MainMenus::addAction(QMenu *menu, const QString &text, const QList<QKeySequence> &keys)
{
    QAction *action = menu->addAction(text);
    action->setShortcuts(keys);
    return action;
}

QAction *MainMenus::addAction(QMenu *menu, const QString &text, const QKeySequence &key)
{
    return addAction(menu, text, key.isEmpty() ? QList<QKeySequence>() : QList<QKeySequence>{key});
}

void MainMenus::buildFile(QMainWindow *window)
{
    QMenu *file = addMenu(window, tr("&File"));
    newProjectAction = addAction(file, tr("&New Project…"), standardAnd(QKeySequence::New, QKeySequence(tr("Ctrl+N"))));
    openProjectAction = addAction(file, tr("&Open Project…"), standardAnd(QKeySequence::Open, QKeySequence(tr("Ctrl+O"))));
    openDemoAction = addAction(file, tr("Open a Copy of the &Demo"), QKeySequence());
    recentProjectsMenu = file->addMenu(tr("&Recent Projects"));
    connect(recentProjectsMenu, &QMenu::aboutToShow, this, [this] {
        fillRecentMenu(recentProjectsMenu, m_recentProjects, tr("No recent projects"), true);
    });
    file->addSeparator();

    m_toolBars->saveLayoutAction->setShortcuts(standardAnd(QKeySequence::Save, QKeySequence(tr("Ctrl+S"))));
    m_toolBars->loadLayoutAction->setShortcut(QKeySequence(tr("Ctrl+L")));
    file->addAction(m_toolBars->saveLayoutAction);
    file->addAction(m_toolBars->loadLayoutAction);
    file->addSeparator();
    exportSignalsAction = addAction(file, tr("Export &Signals CSV…"), QKeySequence(tr("Ctrl+E")));
    exportEventsAction = addAction(file, tr("Export &Events CSV…"), QKeySequence(tr("Ctrl+Shift+E")));
    file->addSeparator();
    openProjectFolderAction = addAction(file, tr("Show Project &Folder"), QKeySequence());
    file->addSeparator();
    quitAction = addAction(file, tr("&Quit"), standardAnd(QKeySequence::Quit, QKeySequence(tr("Ctrl+Q"))));
}

void MainMenus::buildAcquisition(QMainWindow *window)
{
    QMenu *acquisition = addMenu(window, tr("&Acquisition"));
    connectAction = addAction(acquisition, tr("&Connect"), QKeySequence(tr("Ctrl+K")));
    m_toolBars->recordAction->setShortcut(QKeySequence(tr("Ctrl+R")));
    acquisition->addAction(m_toolBars->recordAction);
    stopAction = addAction(acquisition, tr("&Stop"), QKeySequence(tr("Ctrl+.")));
    acquisition->addSeparator();
    simulatedDeviceAction = addAction(acquisition, tr("Simulated &Device"), QKeySequence());
    simulatedDeviceAction->setToolTip(tr("Connect to a simulated device that speaks the project's signals"));
    recentSourcesMenu = acquisition->addMenu(tr("Recent &Sources"));
    connect(recentSourcesMenu, &QMenu::aboutToShow, this, &MainMenus::fillRecentSources);
}

void MainMenus::fillRecentSources()
{
    recentSourcesMenu->clear();
    const QStringList sources = m_recentSources ? m_recentSources->paths() : QStringList();
    for (int i = 0; i < sources.size(); ++i) {
        QString shown = sources.at(i);
        shown.replace(QLatin1Char('&'), QStringLiteral("&&"));
        const QString source = sources.at(i);
        connect(recentSourcesMenu->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(shown)), &QAction::triggered, this,
                [this, source] { Q_EMIT recentSourceChosen(source); });
    }
    if (sources.isEmpty())
        recentSourcesMenu->addAction(tr("No recent sources"))->setEnabled(false);
    recentSourcesMenu->addSeparator();
    QAction *clear = recentSourcesMenu->addAction(tr("&Clear Menu"));
    clear->setEnabled(!sources.isEmpty());
    connect(clear, &QAction::triggered, this, [this] { m_recentSources->clear(); });
}

void MainMenus::buildPlayback(QMainWindow *window)
{
    QMenu *playback = addMenu(window, tr("&Playback"));
    chooseRecordingAction = addAction(playback, tr("&Choose Recording…"), QKeySequence(tr("Ctrl+Shift+O")));
    recentRecordingsMenu = playback->addMenu(tr("&Recent Recordings"));
    connect(recentRecordingsMenu, &QMenu::aboutToShow, this, [this] {
        fillRecentMenu(recentRecordingsMenu, m_recentRecordings, tr("No recent recordings"), false);
    });
    playback->addSeparator();
    playPauseAction = addAction(playback, tr("&Play/Pause"), QKeySequence(Qt::Key_Space));
    // The same action as Acquisition's: Stop ends playing as it ends recording.
    playback->addAction(stopAction);
    playback->addSeparator();
    fasterAction = addAction(playback, tr("&Faster"), QKeySequence(Qt::Key_BracketRight));
    slowerAction = addAction(playback, tr("S&lower"), QKeySequence(Qt::Key_BracketLeft));
    playback->addSeparator();
    jumpToStartAction = addAction(playback, tr("Jump to &Start"), QKeySequence(Qt::Key_Home));
    jumpToEndAction = addAction(playback, tr("Jump to &End"), QKeySequence(Qt::Key_End));
}

void MainMenus::buildView(QMainWindow *window)
{
    QMenu *view = addMenu(window, tr("&View"));
    m_toolBars->designAction->setShortcut(QKeySequence(tr("Ctrl+D")));
    view->addAction(m_toolBars->designAction);
    view->addSeparator();
    // Ctrl++ needs Shift on many keyboards; Ctrl+= is the same key without it.
    zoomInAction = addAction(view, tr("Zoom &In"), standardAnd(QKeySequence::ZoomIn, QKeySequence(tr("Ctrl+="))));
    zoomOutAction = addAction(view, tr("Zoom &Out"), standardAnd(QKeySequence::ZoomOut, QKeySequence(tr("Ctrl+-"))));
    zoomResetAction = addAction(view, tr("&Actual Size"), QKeySequence(tr("Ctrl+0")));
    view->addSeparator();
    fullScreenAction = addAction(view, tr("&Full Screen"), standardAnd(QKeySequence::FullScreen, QKeySequence(tr("F11"))));
    fullScreenAction->setCheckable(true);
    view->addSeparator();
    commandBarAction = addAction(view, tr("&Command Bar"), QKeySequence(tr("Ctrl+T")));
    commandBarAction->setCheckable(true);
}

void MainMenus::buildHelp(QMainWindow *window)
{
    QMenu *help = addMenu(window, tr("&Help"));
    shortcutsAction = addAction(help, tr("&Keyboard Shortcuts"), standardAnd(QKeySequence::HelpContents, QKeySequence(tr("F1"))));
    aboutAction = addAction(help, tr("&About Ombrix"), QKeySequence());
}

void MainMenus::describeToolBars()
{
    MainToolBars *bars = m_toolBars;
    for (QAction *shared : {bars->designAction, bars->saveLayoutAction, bars->loadLayoutAction, bars->recordAction})
        shared->setToolTip(tip(shared->text(), shared));
    bars->playAction->setToolTip(tip(bars->playAction->text(), playPauseAction));
    bars->exportSignalsAction->setToolTip(tip(plainText(exportSignalsAction->text()), exportSignalsAction));
    bars->exportEventsAction->setToolTip(tip(plainText(exportEventsAction->text()), exportEventsAction));
    bars->connectButton->setToolTip(tip(tr("Connect or disconnect the serial port"), connectAction));
    bars->speedBox->setToolTip(tr("Playback speed factor (%1 slower, %2 faster)")
                                   .arg(keysText(slowerAction), keysText(fasterAction)));
    bars->positionSlider->setToolTip(tr("Position in the recording (%1 jumps to the start, %2 to the end)")
                                         .arg(keysText(jumpToStartAction), keysText(jumpToEndAction)));
}

void MainMenus::setConnected(bool connected)
{
    connectAction->setText(connected ? tr("Dis&connect") : tr("&Connect"));
}

void MainMenus::fillRecentMenu(QMenu *menu, RecentFiles *recent, const QString &emptyText, bool projects)
{
    menu->clear();
    const QStringList paths = recent->existingPaths();
    for (int i = 0; i < paths.size(); ++i) {
        QString shown = QDir::toNativeSeparators(paths.at(i));
        shown.replace(QLatin1Char('&'), QStringLiteral("&&"));
        QAction *entry = menu->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(shown));
        const QString path = paths.at(i);
        connect(entry, &QAction::triggered, this, [this, path, projects] {
            if (projects)
                Q_EMIT recentProjectChosen(path);
            else
                Q_EMIT recentRecordingChosen(path);
        });
    }
    if (paths.isEmpty())
        menu->addAction(emptyText)->setEnabled(false);
    menu->addSeparator();
    QAction *clear = menu->addAction(tr("&Clear Menu"));
    clear->setEnabled(!paths.isEmpty());
    connect(clear, &QAction::triggered, this, [recent] { recent->clear(); });
}

QString MainMenus::shortcutsHtml() const
{
    QString rows;
    for (const QMenu *menu : m_menus) {
        for (const QAction *action : menu->actions()) {
            if (action->shortcut().isEmpty())
                continue;
            rows += QStringLiteral("<tr><td>%1</td><td>%2</td><td><b>%3</b></td></tr>")
                        .arg(plainText(menu->title()), plainText(action->text()).toHtmlEscaped(),
                             keysText(action).toHtmlEscaped());
        }
    }
    return QStringLiteral("<table cellspacing='2' cellpadding='4'>%1</table>").arg(rows);
}
