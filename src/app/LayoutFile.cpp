#include "LayoutFile.h"

#include "Dashboard.h"
#include "DashboardItem.h"

#include <QFile>
#include <QGraphicsScene>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMainWindow>
#include <QSaveFile>

namespace {

const QLatin1String ItemsKey("items");
const QLatin1String GeometryKey("windowGeometry");
const QLatin1String StateKey("windowState");
const QLatin1String MaximizedKey("isMaximized");
const QLatin1String FullScreenKey("isFullScreen");

QString toBase64(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toBase64());
}

QByteArray fromBase64(const QJsonValue &value)
{
    return QByteArray::fromBase64(value.toString().toLatin1());
}

void restoreWindow(QMainWindow *window, const QJsonObject &root)
{
    const QByteArray geometry = fromBase64(root.value(GeometryKey));
    if (!geometry.isEmpty())
        window->restoreGeometry(geometry);
    const QByteArray state = fromBase64(root.value(StateKey));
    if (!state.isEmpty())
        window->restoreState(state, 0);

    if (root.value(FullScreenKey).toBool())
        window->showFullScreen();
    else if (root.value(MaximizedKey).toBool())
        window->showMaximized();
}

} // namespace

LayoutFile::Result LayoutFile::save(const QString &path, QGraphicsScene *scene, QMainWindow *window)
{
    QJsonArray items;
    if (scene) {
        const QList<QGraphicsItem *> sceneItems = scene->items();
        for (QGraphicsItem *item : sceneItems) {
            if (auto *dashboardItem = qgraphicsitem_cast<DashboardItem *>(item))
                items.append(dashboardItem->toJson());
        }
    }

    QJsonObject root;
    root.insert(ItemsKey, items);
    if (window) {
        root.insert(GeometryKey, toBase64(window->saveGeometry()));
        root.insert(StateKey, toBase64(window->saveState(0)));
        root.insert(MaximizedKey, window->isMaximized());
        root.insert(FullScreenKey, window->isFullScreen());
    }

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return Result::OpenFailed;
    file.write(QJsonDocument(root).toJson(QJsonDocument::Indented));
    return file.commit() ? Result::Ok : Result::OpenFailed;
}

LayoutFile::Result LayoutFile::load(const QString &path, QGraphicsScene *scene, QMainWindow *window,
                                    bool designMode, ItemList &removedItems)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Result::OpenFailed;
    return loadFromBytes(file.readAll(), scene, window, designMode, removedItems);
}

LayoutFile::Result LayoutFile::loadFromBytes(const QByteArray &json, QGraphicsScene *scene, QMainWindow *window,
                                             bool designMode, ItemList &removedItems)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return Result::InvalidFormat;
    const QJsonObject root = document.object();
    const QJsonArray records = root.value(ItemsKey).toArray();

    if (scene) {
        const QList<DashboardItem *> oldItems = Dashboard::topLevelItems(scene);
        for (DashboardItem *item : oldItems) {
            scene->removeItem(item);
            removedItems.emplace_back(item);
        }
        for (const QJsonValue &record : records) {
            DashboardItem *item = DashboardItem::fromJson(record.toObject());
            if (!item)
                continue;
            scene->addItem(item);
            item->setDesignMode(designMode);
        }
    }

    if (window)
        restoreWindow(window, root);
    if (scene)
        scene->update(QRectF());
    return Result::Ok;
}
