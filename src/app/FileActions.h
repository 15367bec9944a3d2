#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

QT_BEGIN_NAMESPACE
class QMainWindow;
QT_END_NAMESPACE

class DashboardCore;
class PlaybackSession;
class Project;
struct SignalsExportOptions;

// The window's file operations: layouts (the core's layout file, with the
// window's geometry beside the items) and the CSV exports of the loaded
// recording. Each dialog-driven operation asks for
// the path through the project's prompts and then runs its twin, which takes
// the path and does the work.
class FileActions : public QObject
{
    Q_OBJECT

public:
    FileActions(Project *project, DashboardCore *core, PlaybackSession *playback, QMainWindow *window);
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
    // The window's keys of a layout: geometry and state (Base64), maximised, full screen.
    QJsonObject windowKeys() const;
    // Geometry and state when given, then full screen or maximised.
    void restoreWindow(const QJsonObject &topLevel);

    Project *m_project = nullptr;
    DashboardCore *m_core = nullptr;
    PlaybackSession *m_playback = nullptr;
    QMainWindow *m_window = nullptr;
};
