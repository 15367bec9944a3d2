#include "LayoutFile.h"

#include "DashboardItem.h"
#include "DesignScene.h"
#include "LayoutFormat.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

#include <algorithm>

namespace {

using namespace LayoutFormat;

// A record meant for a widget, as opposed to a damaged element: worth
// keeping when this version has no such widget.
bool namesWidgetType(const QJsonValue &value)
{
    return value.isObject() && !value.toObject().value(TypeKey).toString().isEmpty();
}

} // namespace

LayoutFile::LayoutFile(DesignScene *scene)
    : m_scene(scene)
{
    m_releaseRemoved.setSingleShot(true);
    m_releaseRemoved.setInterval(0);
    QObject::connect(&m_releaseRemoved, &QTimer::timeout, [this] { m_removed.clear(); });
}

LayoutFile::~LayoutFile() = default;

LayoutFile::Result LayoutFile::fail(Result result, const QString &path, const QString &reason)
{
    m_error = QDir::toNativeSeparators(path) + QLatin1String(": ") + reason;
    return result;
}

LayoutFile::Result LayoutFile::save(const QString &path, const QJsonObject &topLevel)
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

    QJsonObject root = topLevel;
    root.insert(ItemsKey, items);

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
    m_topLevel = root;
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
    const QList<DashboardItem *> oldItems = m_scene->dashboardItems();
    for (DashboardItem *item : oldItems) {
        m_scene->removeItem(item);
        m_removed.emplace_back(item);
    }
    if (!m_removed.empty())
        m_releaseRemoved.start();
    for (std::unique_ptr<DashboardItem> &item : built) {
        DashboardItem *added = item.release();
        m_scene->addItem(added);
        added->setDesignMode(designMode);
    }
}
