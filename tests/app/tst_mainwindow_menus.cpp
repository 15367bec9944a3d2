#include "WindowFixture.h"

#include "DashboardView.h"
#include "DesignScene.h"
#include "FileButton.h"
#include "MainMenus.h"
#include "MainToolBars.h"
#include "RecentFiles.h"
#include "SignalPlaybackEngine.h"

#include <QAction>
#include <QDoubleSpinBox>
#include <QGraphicsView>
#include <QLabel>
#include <QMenu>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QToolBar>
#include <QToolButton>
#include <QWidgetAction>

namespace {

// Shown and active, so that key presses go through the window's shortcuts
// as a user's would, to whatever has the focus.
struct ActiveWindow : WindowFixture
{
    ActiveWindow()
    {
        window->show();
        activated = QTest::qWaitForWindowActive(window.get());
    }

    void press(const QKeySequence &keys)
    {
        QWidget *target = QApplication::focusWidget() ? QApplication::focusWidget() : window.get();
        QTest::keySequence(target, keys);
    }

    QString addRecording()
    {
        const QString path = project + QStringLiteral("/recordings/bench.rec");
        writeFile(path, "0.000000 RPM=100\n4.000000 RPM=200\n");
        window->setPlaybackFile(path);
        return path;
    }

    bool activated = false;
};

QList<QAction *> menuActionsWithShortcuts(const MainMenus &menus)
{
    QList<QAction *> result;
    for (const QMenu *menu : menus.menus()) {
        for (QAction *action : menu->actions()) {
            if (!action->shortcut().isEmpty() && !result.contains(action))
                result.append(action);
        }
    }
    return result;
}

} // namespace

class tst_MainWindowMenus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Before any settings are read, so that they are the test store's.
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() { QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).clear(); }
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    // A key taken twice triggers neither action; one swallowed by the
    // focused control triggers nothing. Quit, last, closes the window.
    void everyShortcutTriggersItsAction()
    {
        ActiveWindow f;
        QVERIFY(f.activated);
        MainMenus *menus = f.window->menus();
        // Connect must not reach a real port of the machine.
        f.window->toolBars()->setPortName(f.root.filePath(QStringLiteral("no-such-port")));
        QList<QAction *> actions = menuActionsWithShortcuts(*menus);
        QVERIFY(actions.removeOne(menus->quitAction));
        QVERIFY(actions.size() >= 20);
        for (QAction *action : actions) {
            QSignalSpy triggered(action, &QAction::triggered);
            f.press(action->shortcut());
            QVERIFY2(triggered.count() == 1, qPrintable(action->text()));
        }
        f.press(menus->quitAction->shortcut());
        QTRY_VERIFY(!f.window->isVisible());
    }

    void spaceTogglesPlayAndPause()
    {
        ActiveWindow f;
        QVERIFY(f.activated);
        f.addRecording();
        const QKeySequence space(Qt::Key_Space);
        f.press(space);
        QCOMPARE(f.window->mode(), Ombrix::Play);
        f.press(space);
        QCOMPARE(f.window->mode(), Ombrix::Pause);
        f.press(space);
        QCOMPARE(f.window->mode(), Ombrix::Play);
        f.press(f.window->menus()->stopAction->shortcut());
        QCOMPARE(f.window->mode(), Ombrix::Idle);
        QVERIFY(f.prompts->warnings.isEmpty());
    }

    void speedAndJumpKeys()
    {
        ActiveWindow f;
        QVERIFY(f.activated);
        f.addRecording();
        QDoubleSpinBox *speed = f.window->toolBars()->speedBox;
        f.press(QKeySequence(Qt::Key_BracketRight));
        f.press(QKeySequence(Qt::Key_BracketRight));
        QCOMPARE(speed->value(), 4.0);
        f.press(QKeySequence(Qt::Key_BracketLeft));
        QCOMPARE(f.window->engine()->playbackRate(), 2.0);

        f.press(QKeySequence(Qt::Key_End));
        QCOMPARE(f.window->toolBars()->positionSlider->value(), 1000);
        QCOMPARE(f.window->toolBars()->timeLabel->text(), QStringLiteral("4.000"));
        f.press(QKeySequence(Qt::Key_Home));
        QCOMPARE(f.window->toolBars()->positionSlider->value(), 0);
        QCOMPARE(f.window->engine()->currentTime(), 0.0);
    }

    void zoomKeepsTheSurfaceFilled()
    {
        ActiveWindow f;
        QVERIFY(f.activated);
        QGraphicsView *view = f.window->view();
        const QSizeF viewport = view->viewport()->size();
        f.press(QKeySequence(QKeySequence::ZoomOut));
        f.press(QKeySequence(QKeySequence::ZoomOut));
        QCOMPARE(view->transform().m11(), 0.64);
        // Zoomed out, the surface reaches to the view's edges.
        QCOMPARE(f.window->dashboard()->scene()->sceneRect().size(), QSizeF(view->viewport()->size()) / 0.64);
        f.press(QKeySequence(Qt::CTRL | Qt::Key_0));
        QCOMPARE(view->transform().m11(), 1.0);
        QCOMPARE(f.window->dashboard()->scene()->sceneRect().size(), viewport);
        for (int i = 0; i < 10; ++i)
            f.press(QKeySequence(QKeySequence::ZoomIn));
        QCOMPARE(f.window->view()->zoom(), DashboardView::MaxZoom);
    }

    void fullScreenMenuFollowsWindow()
    {
        ActiveWindow f;
        QVERIFY(f.activated);
        QAction *fullScreen = f.window->menus()->fullScreenAction;
        f.press(fullScreen->shortcut());
        QTRY_VERIFY(f.window->isFullScreen());
        QVERIFY(fullScreen->isChecked());
        f.window->showNormal();
        QTRY_VERIFY(!fullScreen->isChecked());
    }

    // The tool bars stay as they are; hovering tells what each action is and its key.
    void toolBarTooltipsNameActionAndKey()
    {
        WindowFixture f;
        MainToolBars *bars = f.window->toolBars();
        const QHash<QAction *, QString> expected{
            {bars->designAction, QStringLiteral("Design (Ctrl+D)")},
            {bars->saveLayoutAction, QStringLiteral("Save Layout (Ctrl+S)")},
            {bars->loadLayoutAction, QStringLiteral("Load Layout (Ctrl+L)")},
            {bars->recordAction, QStringLiteral("Record (Ctrl+R)")},
            {bars->playAction, QStringLiteral("Play (Space)")},
            {bars->stopAction, QStringLiteral("Stop")},
            {bars->exportSignalsAction, QStringLiteral("Export Signals CSV (Ctrl+E)")},
            {bars->exportEventsAction, QStringLiteral("Export Events CSV (Ctrl+Shift+E)")},
        };
        int seen = 0;
        for (QToolBar *bar : {bars->controlsBar, bars->exportBar, bars->ioBar}) {
            for (QAction *action : bar->actions()) {
                if (action->isSeparator() || qobject_cast<QWidgetAction *>(action))
                    continue;
                QVERIFY2(expected.contains(action), qPrintable(action->text()));
                QCOMPARE(action->toolTip(), expected.value(action));
                ++seen;
            }
        }
        QCOMPARE(seen, expected.size());
        QCOMPARE(bars->connectButton->toolTip(), QStringLiteral("Connect or disconnect the serial port (Ctrl+K)"));
    }

    void playbackFileButtonShowsNameAndPath()
    {
        WindowFixture f;
        MainToolBars *bars = f.window->toolBars();
        QCOMPARE(bars->playbackFileLabel->text(), QStringLiteral("No file selected"));
        const QString path = f.project + QStringLiteral("/recordings/bench.rec");
        QVERIFY(writeFile(path, "0.000000 RPM=1\n"));
        f.prompts->fileAnswers = {path};
        bars->playbackFileButton->click();

        QCOMPARE(f.prompts->captions, QStringList{QStringLiteral("Select Playback File")});
        QCOMPARE(bars->playbackFileLabel->text(), QStringLiteral("bench.rec"));
        QCOMPARE(bars->playbackFileButton->toolTip(), QDir::toNativeSeparators(path));
        QVERIFY(bars->playbackFileButton->sizeHint().width() > bars->playbackFileLabel->sizeHint().width());

        // Cancelling keeps the selection.
        bars->playbackFileButton->click();
        QCOMPARE(f.prompts->captions.size(), 2);
        QCOMPARE(f.window->playbackFile(), path);
    }

    void recentListsPersistAcrossWindows()
    {
        ActiveWindow first;
        const QString project = first.project;
        const QString recording = first.addRecording();
        first.window.reset();
        QTemporaryDir otherRoot;
        const QString other = otherRoot.filePath(QStringLiteral("other"));
        QVERIFY(writeFile(other + QStringLiteral("/dashboard_signals.def"), WindowFixture::definitions()));

        Ombrix second;
        ScriptedPrompts::installOn(second);
        QCOMPARE(second.recentProjects().paths(), QStringList{project});
        QCOMPARE(second.recentRecordings().paths(), QStringList{recording});

        // Chosen from the menus, as a user would.
        QMenu *recordings = second.menus()->recentRecordingsMenu;
        Q_EMIT recordings->aboutToShow();
        recordings->actions().first()->trigger();
        QCOMPARE(second.playbackFile(), recording);

        second.setProjectDir(other);
        QMenu *projects = second.menus()->recentProjectsMenu;
        Q_EMIT projects->aboutToShow();
        QCOMPARE(projects->actions().size(), 4); // two projects, separator, Clear Menu
        projects->actions().at(1)->trigger();
        QCOMPARE(second.projectDir(), project);
        // Opened from the menu, it is the project of the next start too.
        QCOMPARE(QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).value(QStringLiteral("projectDir")).toString(),
                 project);

        Q_EMIT projects->aboutToShow();
        projects->actions().last()->trigger();
        QVERIFY(second.recentProjects().paths().isEmpty());
    }

    void recentFilesKeepNewestFirstAndBounded()
    {
        RecentFiles recent(QStringLiteral("recentTest"));
        for (int i = 0; i < RecentFiles::MaxEntries + 2; ++i)
            recent.add(QStringLiteral("/data/%1.rec").arg(i));
        recent.add(QStringLiteral("/data/5.rec"));
        const QStringList paths = recent.paths();
        QCOMPARE(paths.size(), RecentFiles::MaxEntries);
        QCOMPARE(paths.first(), QStringLiteral("/data/5.rec"));
        QCOMPARE(paths.count(QStringLiteral("/data/5.rec")), 1);
        QCOMPARE(paths.at(1), QStringLiteral("/data/9.rec"));
        QVERIFY(!paths.contains(QStringLiteral("/data/0.rec")));
        QVERIFY(recent.existingPaths().isEmpty());
    }

    void helpMenu()
    {
        WindowFixture f;
        f.window->menus()->shortcutsAction->trigger();
        f.window->menus()->aboutAction->trigger();
        QCOMPARE(f.prompts->informations.size(), 2);
        QCOMPARE(f.prompts->informations.at(0).title, QStringLiteral("Keyboard Shortcuts"));
        for (const char *key : {"Space", "Ctrl+R", "Ctrl+S", "Ctrl+Shift+O", "Home"})
            QVERIFY2(f.prompts->informations.at(0).text.contains(QLatin1String(key)), key);
        QCOMPARE(f.prompts->informations.at(1).title, QStringLiteral("About Ombrix"));
        QVERIFY(f.prompts->informations.at(1).text.contains(QLatin1String("Ombrix " OMBRIX_VERSION)));
    }

    void showProjectFolder()
    {
        Ombrix empty;
        QVERIFY(!empty.menus()->openProjectFolderAction->isEnabled());
        WindowFixture f;
        QAction *show = f.window->menus()->openProjectFolderAction;
        QVERIFY(show->isEnabled());
        show->trigger();
        QCOMPARE(f.prompts->shownFolders, QStringList{QDir(f.project).absolutePath()});
    }
};

QTEST_MAIN(tst_MainWindowMenus)
#include "tst_mainwindow_menus.moc"
