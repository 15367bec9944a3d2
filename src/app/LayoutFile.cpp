#include "LayoutFile.h"

#include "Dashboard.h"
#include "DashboardItem.h"

#include <QDir>
#include <QFile>
#include <QGraphicsScene>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMainWindow>
#include <QSaveFile>

#include <algorithm>

namespace {

const QLatin1String ItemsKey("items");
const QLatin1String TypeKey("type");
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

// A record meant for a widget, as opposed to a damaged element: worth
// keeping when this version has no such widget.
bool namesWidgetType(const QJsonValue &value)
{
    return value.isObject() && !value.toObject().value(TypeKey).toString().isEmpty();
}

} // namespace

LayoutFile::LayoutFile(QGraphicsScene *scene, QMainWindow *window)
    : m_scene(scene)
    , m_window(window)
{
}

LayoutFile::~LayoutFile() = default;

LayoutFile::Result LayoutFile::fail(Result result, const QString &path, const QString &reason)
{
    m_error = QDir::toNativeSeparators(path) + QLatin1String(": ") + reason;
    return result;
}

LayoutFile::Result LayoutFile::save(const QString &path)
{
    QJsonArray items;
    const QList<QGraphicsItem *> sceneItems = m_scene->items();
    for (QGraphicsItem *item : sceneItems) {
        if (auto *dashboardItem = qgraphicsitem_cast<DashboardItem *>(item))
            items.append(dashboardItem->toJson());
    }
    // In ascending index order, so that each lands where it was read.
    for (const KeptRecord &kept : std::as_const(m_kept))
        items.insert(std::min(kept.index, items.size()), kept.record);

    QJsonObject root;
    root.insert(ItemsKey, items);
    if (m_window) {
        root.insert(GeometryKey, toBase64(m_window->saveGeometry()));
        root.insert(StateKey, toBase64(m_window->saveState(0)));
        root.insert(MaximizedKey, m_window->isMaximized());
        root.insert(FullScreenKey, m_window->isFullScreen());
    }

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(Result::OpenFailed, path, file.errorString());
    if (file.write(QJsonDocument(root).toJson(QJsonDocument::Indented)) < 0 || !file.commit())
        return fail(Result::OpenFailed, path, file.errorString());
    return Result::Ok;
}

LayoutFile::Result LayoutFile::load(const QString &path, bool designMode, const Progress &progress)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(Result::OpenFailed, path, file.errorString());
    return loadFromBytes(file.readAll(), path, designMode, progress);
}

LayoutFile::Result LayoutFile::loadFromBytes(const QByteArray &json, const QString &name, bool designMode,
                                             const Progress &progress)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return fail(Result::InvalidFormat, name,
                    tr("%1 at offset %2").arg(parseError.errorString()).arg(parseError.offset));
    if (!document.isObject())
        return fail(Result::InvalidFormat, name, tr("the top level is not an object"));
    const QJsonObject root = document.object();

    ItemList built;
    QList<KeptRecord> kept;
    if (!buildItems(root.value(ItemsKey).toArray(), progress, built, kept))
        return Result::Cancelled;
    replaceItems(built, designMode);
    m_kept = kept;

    if (m_window)
        restoreWindow(m_window, root);
    m_scene->update(QRectF());
    return Result::Ok;
}

bool LayoutFile::buildItems(const QJsonArray &records, const Progress &progress, ItemList &built,
                            QList<KeptRecord> &kept) const
{
    const qsizetype total = records.size();
    built.reserve(size_t(total));
    for (qsizetype i = 0; i < total; ++i) {
        if (progress && !progress(i, total))
            return false;
        const QJsonValue record = records.at(i);
        if (DashboardItem *item = DashboardItem::fromJson(record.toObject()))
            built.emplace_back(item);
        else if (namesWidgetType(record))
            kept.append({i, record.toObject()});
    }
    return !progress || progress(total, total);
}

void LayoutFile::replaceItems(ItemList &built, bool designMode)
{
    const QList<DashboardItem *> oldItems = Dashboard::topLevelItems(m_scene);
    for (DashboardItem *item : oldItems) {
        m_scene->removeItem(item);
        m_removed.emplace_back(item);
    }
    for (std::unique_ptr<DashboardItem> &item : built) {
        DashboardItem *added = item.release();
        m_scene->addItem(added);
        added->setDesignMode(designMode);
    }
}
