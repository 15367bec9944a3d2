#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

QT_BEGIN_NAMESPACE
class QJsonArray;
QT_END_NAMESPACE

class DashboardItem;
class DesignScene;

// Saves and restores the dashboard, every DashboardItem's record, as one
// indented JSON object whose "items" array holds the records (the keys are
// LayoutFormat's). Whoever shows the dashboard keeps its own keys beside
// "items": the window its geometry.
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

    // (records done, records in all); false cancels the load.
    using Progress = std::function<bool(qint64 done, qint64 total)>;

    // The scene is not owned and must outlive this object.
    explicit LayoutFile(DesignScene *scene);
    ~LayoutFile();

    // Writes the DashboardItems of the scene in QGraphicsScene::items() order,
    // with the kept records put back at their indexes (clamped to the end),
    // and `topLevel`'s keys beside "items". The file is replaced atomically:
    // on OpenFailed an existing file is left as it was.
    Result save(const QString &path, const QJsonObject &topLevel = {});

    // Restores a layout, in this order: parse (a top level that is not an
    // object gives InvalidFormat and leaves the scene untouched); build the
    // recorded items off the scene, keeping the records whose type is not
    // registered, reporting each record to `progress` (a cancel drops what
    // was built and leaves scene and kept records as they were); take every
    // top-level DashboardItem off the scene; add the new items, editable
    // exactly when `designMode`; repaint the scene. The items taken off are
    // deleted on the next event-loop turn, so that whoever still holds a
    // widget of the old dashboard on the stack keeps a live object until
    // then. topLevel() holds the file's top level afterwards.
    Result load(const QString &path, bool designMode, const Progress &progress = {});
    // The same restoring of a layout held in memory (never OpenFailed);
    // `name` stands for the path in errorString().
    Result loadFromBytes(const QByteArray &json, const QString &name, bool designMode,
                         const Progress &progress = {});

    // The top level of the layout the last successful load restored.
    const QJsonObject &topLevel() const { return m_topLevel; }
    // "<path>: <reason>" for the last failed save or load.
    QString errorString() const { return m_error; }

private:
    using ItemList = std::vector<std::unique_ptr<DashboardItem>>;
    // A record the registry could not build, and its index in "items".
    struct KeptRecord
    {
        qsizetype index = 0;
        QJsonObject record;
    };

    Result fail(Result result, const QString &path, const QString &reason);
    bool buildItems(const QJsonArray &records, const Progress &progress, ItemList &built,
                    QList<KeptRecord> &kept) const;
    void replaceItems(ItemList &built, bool designMode);

    DesignScene *m_scene = nullptr;
    QList<KeptRecord> m_kept;
    QJsonObject m_topLevel;
    // What loads took off the scene, until the event loop next turns.
    ItemList m_removed;
    QTimer m_releaseRemoved;
    QString m_error;
};
