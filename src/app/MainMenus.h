#pragma once

#include <QList>
#include <QObject>
#include <QString>

QT_BEGIN_NAMESPACE
class QAction;
class QKeySequence;
class QMainWindow;
class QMenu;
QT_END_NAMESPACE

class MainToolBars;
class RecentFiles;

// The menu bar beside the tool bars: File, Acquisition, Playback, View and
// Help, with the keyboard shortcuts. Tool-bar actions that do the same
// (Design, Save and Load Layout, Record) appear in the menus as they are,
// shortcut included; the others get their own menu action and the tool bar
// names the key in its tool tip. Like MainToolBars, this class only builds:
// the window connects the actions.
class MainMenus : public QObject
{
    Q_OBJECT

public:
    MainMenus(QMainWindow *window, MainToolBars *toolBars, RecentFiles *recentProjects,
              RecentFiles *recentRecordings);

    // The connect entry follows the port: "Connect" or "Disconnect".
    void setConnected(bool connected);
    // The sources opened before, newest first, offered under Acquisition.
    void setRecentSources(RecentFiles *sources) { m_recentSources = sources; }
    // A table of every menu action that has a shortcut, menu by menu.
    QString shortcutsHtml() const;
    QList<QMenu *> menus() const { return m_menus; }

    QAction *newProjectAction = nullptr;
    QAction *openProjectAction = nullptr;
    QAction *openDemoAction = nullptr;
    QMenu *recentProjectsMenu = nullptr;
    QAction *exportSignalsAction = nullptr;
    QAction *exportEventsAction = nullptr;
    QAction *openProjectFolderAction = nullptr;
    QAction *quitAction = nullptr;

    QAction *connectAction = nullptr;
    QAction *stopAction = nullptr; // back to Idle, from recording or playing
    QAction *simulatedDeviceAction = nullptr;
    QMenu *recentSourcesMenu = nullptr;

    QAction *chooseRecordingAction = nullptr;
    QMenu *recentRecordingsMenu = nullptr;
    QAction *playPauseAction = nullptr;
    QAction *fasterAction = nullptr;
    QAction *slowerAction = nullptr;
    QAction *jumpToStartAction = nullptr;
    QAction *jumpToEndAction = nullptr;

    QAction *zoomInAction = nullptr;
    QAction *zoomOutAction = nullptr;
    QAction *zoomResetAction = nullptr;
    QAction *fullScreenAction = nullptr;
    QAction *commandBarAction = nullptr;

    QAction *shortcutsAction = nullptr;
    QAction *aboutAction = nullptr;

Q_SIGNALS:
    void recentProjectChosen(const QString &path);
    void recentRecordingChosen(const QString &path);
    void recentSourceChosen(const QString &source);

private:
    QMenu *addMenu(QMainWindow *window, const QString &title);
    QAction *addAction(QMenu *menu, const QString &text, const QList<QKeySequence> &keys);
    QAction *addAction(QMenu *menu, const QString &text, const QKeySequence &key);
    void buildFile(QMainWindow *window);
    void buildAcquisition(QMainWindow *window);
    void buildPlayback(QMainWindow *window);
    void buildView(QMainWindow *window);
    void buildHelp(QMainWindow *window);
    void describeToolBars();
    // Refills a recent menu each time it opens, so every window shows the
    // list as the last one left it.
    void fillRecentSources();
    void fillRecentMenu(QMenu *menu, RecentFiles *recent, const QString &emptyText, bool projects);

    MainToolBars *m_toolBars = nullptr;
    RecentFiles *m_recentProjects = nullptr;
    RecentFiles *m_recentRecordings = nullptr;
    RecentFiles *m_recentSources = nullptr;
    QList<QMenu *> m_menus;
};
