#pragma once

#include "LayoutFile.h"

#include <QObject>
#include <QString>

class Ombrix;
struct SignalsExportOptions;

// The main window's file operations: layouts and the CSV exports. Each
// dialog-driven operation asks for the path through the window's prompts and
// then runs its twin, which takes the path and does the work.
class FileActions : public QObject
{
    Q_OBJECT

public:
    explicit FileActions(Ombrix *window);
    ~FileActions() override;

    void saveLayout();
    void loadLayout();
    bool saveLayoutTo(const QString &path);
    bool loadLayoutFrom(const QString &path);

    void exportSignals();
    void exportEvents();
    bool exportSignalsTo(const QString &path, const SignalsExportOptions &options);
    bool exportEventsTo(const QString &path);

    // <projectDir>/<name>, created when missing.
    static QString ensureSubfolder(const QString &projectDir, const QString &name);

private:
    bool hasPlaybackData(const QString &title) const;
    // The save dialog, proposing <project>/<subfolder>/<fileName> (the folder is created).
    QString askSavePath(const QString &caption, const QString &subfolder, const QString &fileName,
                        const QString &filter) const;

    Ombrix *m_window = nullptr;
    // Items a layout load took off the scene. A load only detaches them, so
    // that callers holding a widget of the old dashboard keep a live object;
    // they go with the window.
    LayoutFile::ItemList m_detachedItems;
};
