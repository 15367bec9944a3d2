#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

QT_BEGIN_NAMESPACE
class QGraphicsScene;
class QMainWindow;
QT_END_NAMESPACE

class DashboardItem;

// Saves and restores the dashboard (every DashboardItem's record) together
// with the main window's geometry as one indented JSON object:
//   "items" (array of item records), "windowGeometry", "windowState" (Base64),
//   "isMaximized", "isFullScreen".
// No dialogs and no message boxes: the caller picks the path and turns the
// Result into its message ("Could not save layout.", "Could not load layout.",
// "Invalid layout format.").
class LayoutFile
{
public:
    enum class Result { Ok, OpenFailed, InvalidFormat };

    using ItemList = std::vector<std::unique_ptr<DashboardItem>>;

    // Writes the DashboardItems of `scene` in QGraphicsScene::items() order,
    // plus the window's geometry and state when `window` is given. The file is
    // replaced atomically: on OpenFailed an existing file is left as it was.
    static Result save(const QString &path, QGraphicsScene *scene, QMainWindow *window);

    // Restores a layout, in this order: parse (a top level that is not an
    // object gives InvalidFormat and leaves the scene untouched); take every
    // top-level DashboardItem off the scene and append it to `removedItems`
    // (the caller owns them now: drop the list to destroy them); build the
    // recorded items in order, skipping records whose type is not registered;
    // make each editable exactly when `designMode`; restore the window's
    // geometry and state (when `window` is given and the keys are non-empty),
    // then full screen or maximised; repaint the scene.
    static Result load(const QString &path, QGraphicsScene *scene, QMainWindow *window,
                       bool designMode, ItemList &removedItems);
    // The same restoring of a layout held in memory (never OpenFailed).
    static Result loadFromBytes(const QByteArray &json, QGraphicsScene *scene, QMainWindow *window,
                                bool designMode, ItemList &removedItems);
};
