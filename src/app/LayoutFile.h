#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

QT_BEGIN_NAMESPACE
class QGraphicsScene;
class QJsonArray;
class QMainWindow;
QT_END_NAMESPACE

class DashboardItem;

// Saves and restores the dashboard (every DashboardItem's record) together
// with the main window's geometry as one indented JSON object:
//   "items" (array of item records), "windowGeometry", "windowState" (Base64),
//   "isMaximized", "isFullScreen".
// No dialogs and no message boxes: the caller picks the path and turns the
// Result into its message ("Could not save layout.", "Could not load layout.",
// "Invalid layout format."), with errorString() as the details.
//
// Records naming a widget type this version cannot build are not shown, but
// neither are they lost: the last load keeps them as read, and a save writes
// them back in their places.
class LayoutFile
{
    Q_DECLARE_TR_FUNCTIONS(LayoutFile)

public:
    enum class Result { Ok, OpenFailed, InvalidFormat, Cancelled };

    using ItemList = std::vector<std::unique_ptr<DashboardItem>>;
    // (records done, records in all); false cancels the load.
    using Progress = std::function<bool(qint64 done, qint64 total)>;

    // A record the registry could not build, and its index in "items".
    struct KeptRecord
    {
        qsizetype index = 0;
        QJsonObject record;
    };

    // `window` may be null: then no geometry is written or restored.
    // Neither is owned; the scene must outlive this object.
    LayoutFile(QGraphicsScene *scene, QMainWindow *window);
    ~LayoutFile();

    // Writes the DashboardItems of the scene in QGraphicsScene::items() order,
    // with the kept records put back at their indexes (clamped to the end),
    // plus the window's geometry and state. The file is replaced atomically:
    // on OpenFailed an existing file is left as it was.
    Result save(const QString &path);

    // Restores a layout, in this order: parse (a top level that is not an
    // object gives InvalidFormat and leaves the scene untouched); build the
    // recorded items off the scene, keeping the records whose type is not
    // registered, reporting each record to `progress` (a cancel drops what
    // was built and leaves scene, window and kept records as they were);
    // take every top-level DashboardItem off the scene into removedItems();
    // add the new items, editable exactly when `designMode`; restore the
    // window's geometry and state (when the keys are non-empty), then full
    // screen or maximised; repaint the scene.
    Result load(const QString &path, bool designMode, const Progress &progress = {});
    // The same restoring of a layout held in memory (never OpenFailed);
    // `name` stands for the path in errorString().
    Result loadFromBytes(const QByteArray &json, const QString &name, bool designMode,
                         const Progress &progress = {});

    // "<path>: <reason>" for the last failed save or load.
    QString errorString() const { return m_error; }
    const QList<KeptRecord> &keptRecords() const { return m_kept; }
    // The items loads took off the scene. A load only detaches them, so that
    // whoever still holds a widget of the old dashboard keeps a live object;
    // they go with this object.
    ItemList &removedItems() { return m_removed; }

private:
    Result fail(Result result, const QString &path, const QString &reason);
    bool buildItems(const QJsonArray &records, const Progress &progress, ItemList &built,
                    QList<KeptRecord> &kept) const;
    void replaceItems(ItemList &built, bool designMode);

    QGraphicsScene *m_scene = nullptr;
    QMainWindow *m_window = nullptr;
    QList<KeptRecord> m_kept;
    ItemList m_removed;
    QString m_error;
};
