#pragma once

#include "LayoutFile.h"

#include <QObject>
#include <QString>

QT_BEGIN_NAMESPACE
class QMainWindow;
QT_END_NAMESPACE

class Dashboard;
class PlaybackSession;
class Project;
struct SignalsExportOptions;

// The window's file operations: layouts (with the window's geometry) and the
// CSV exports of the loaded recording. Each dialog-driven operation asks for
// the path through the project's prompts and then runs its twin, which takes
// the path and does the work.
class FileActions : public QObject
{
    Q_OBJECT

public:
    FileActions(Project *project, Dashboard *dashboard, PlaybackSession *playback, QMainWindow *window);
    ~FileActions() override;

    void saveLayout();
    void loadLayout();
    // The tool buttons: the dialog, then a line in the debug log (also after a cancel).
    void saveButton();
    void loadButton();
    bool saveLayoutTo(const QString &path);
    bool loadLayoutFrom(const QString &path);

    void exportSignals();
    void exportEvents();
    bool exportSignalsTo(const QString &path, const SignalsExportOptions &options);
    bool exportEventsTo(const QString &path);

private:
    bool hasPlaybackData(const QString &title) const;
    // The save dialog, proposing <project>/<subfolder>/<fileName> (the folder is created).
    QString askSavePath(const QString &caption, const QString &subfolder, const QString &fileName,
                        const QString &filter) const;

    void showStatus(const QString &text) const;

    Project *m_project = nullptr;
    Dashboard *m_dashboard = nullptr;
    PlaybackSession *m_playback = nullptr;
    QMainWindow *m_window = nullptr;
    // The dashboard's layout file: what a load took off the scene and the
    // records it could not show stay here until the next load.
    LayoutFile m_layout;
};
