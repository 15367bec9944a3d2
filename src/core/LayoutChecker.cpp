#include "LayoutChecker.h"

#include "DashboardItem.h"
#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"
#include "IStateConsumer.h"
#include "LayoutFormat.h"
#include "SignalDefinitions.h"
#include "SignalRouter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

#include <cmath>
#include <memory>

namespace {

using namespace LayoutFormat;

QString typeWord(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("true or false");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::String:
        return QStringLiteral("a string");
    case QJsonValue::Array:
        return QStringLiteral("an array");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("nothing");
}

// A value as it would be written in the file, shortened when long.
QString jsonText(const QJsonValue &value)
{
    if (value.isUndefined())
        return QStringLiteral("nothing");
    const QByteArray wrapped = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    const QString text = QString::fromUtf8(wrapped.mid(1, wrapped.size() - 2));
    constexpr qsizetype MaxLength = 60;
    return text.size() <= MaxLength ? text : text.left(MaxLength - 1) + QChar(0x2026);
}

QString number(double value)
{
    return QString::number(value, 'g', 15);
}

// Whether the widget kept what was written. A number and a boolean of the
// same truth are one value: some settings are written one way and read both.
bool taken(const QJsonValue &written, const QJsonValue &read)
{
    if (written.isDouble() && read.isDouble())
        return written.toDouble() == read.toDouble();
    if (written.isBool() && read.isDouble())
        return read.toDouble() == (written.toBool() ? 1.0 : 0.0);
    if (written.isDouble() && read.isBool())
        return written.toDouble() == (read.toBool() ? 1.0 : 0.0);
    return written == read;
}

QString parseErrorText(const QByteArray &json, const QJsonParseError &error)
{
    const QByteArray before = json.left(error.offset);
    const qsizetype line = before.count('\n') + 1;
    const qsizetype column = error.offset - (before.lastIndexOf('\n') + 1) + 1;
    return QStringLiteral("unreadable JSON at offset %1 (line %2, column %3): %4")
        .arg(error.offset)
        .arg(line)
        .arg(column)
        .arg(error.errorString());
}

QString unknownTypeHint(const QString &name)
{
    const QStringList types = DashboardWidgetFactory::instance().typeNames();
    for (const QString &type : types) {
        if (type.compare(name, Qt::CaseInsensitive) == 0)
            return QStringLiteral("; did you mean %1? (case matters)").arg(type);
    }
    return QStringLiteral(" (the types are %1)").arg(types.join(QLatin1String(", ")));
}

} // namespace

LayoutChecker::LayoutChecker(const SignalDefinitions *defs)
    : m_defs(defs)
{
    DashboardWidgetFactory::instance().registerBuiltInTypes();
}

QStringList LayoutChecker::check(const QByteArray &json)
{
    m_findings.clear();
    m_prefix.clear();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        add(parseErrorText(json, error));
    else if (!document.isObject())
        add(QStringLiteral("the top level is %1, not an object: loading refuses the file (\"Invalid layout format.\")")
                .arg(document.isArray() ? QStringLiteral("an array") : QStringLiteral("not an object")));
    else
        checkTopLevel(document.object());
    return m_findings;
}

void LayoutChecker::checkTopLevel(const QJsonObject &root)
{
    static const QStringList windowKeys = {WindowGeometryKey, WindowStateKey};
    static const QStringList flagKeys = {MaximizedKey, FullScreenKey};
    static const QStringList known = QStringList{ItemsKey} + windowKeys + flagKeys;
    for (auto it = root.constBegin(); it != root.constEnd(); ++it) {
        const QString key = it.key();
        if (!known.contains(key))
            add(QStringLiteral("unknown key \"%1\" at the top level (a layout has %2)")
                    .arg(key, known.join(QLatin1String(", "))));
        else if (windowKeys.contains(key) && !it->isString())
            add(QStringLiteral("\"%1\" is %2, not a Base64 string: it is ignored").arg(key, typeWord(*it)));
        else if (flagKeys.contains(key) && !it->isBool())
            add(QStringLiteral("\"%1\" is %2, not true or false: it reads as false").arg(key, typeWord(*it)));
    }
    const QJsonValue items = root.value(ItemsKey);
    if (!items.isArray()) {
        add(items.isUndefined() ? QStringLiteral("no \"items\": loading it empties the dashboard")
                                : QStringLiteral("\"items\" is %1, not an array: loading it empties the dashboard")
                                      .arg(typeWord(items)));
        return;
    }
    const QJsonArray records = items.toArray();
    for (qsizetype i = 0; i < records.size(); ++i)
        checkItem(int(i) + 1, records.at(i));
    m_prefix.clear();
}

void LayoutChecker::checkItem(int number, const QJsonValue &value)
{
    m_prefix = QStringLiteral("item %1: ").arg(number);
    if (!value.isObject()) {
        add(QStringLiteral("%1, not an object: loading skips it").arg(typeWord(value)));
        return;
    }
    const QJsonObject record = value.toObject();
    const bool known = checkType(record);
    if (known)
        m_prefix = QStringLiteral("item %1 (%2): ").arg(number).arg(record.value(TypeKey).toString());
    checkRecordKeys(record);
    const bool widthRead = checkSizeType(WidthKey, record.value(WidthKey));
    const bool heightRead = checkSizeType(HeightKey, record.value(HeightKey));
    if (!known)
        return;

    // Built exactly as loading builds it.
    const std::unique_ptr<DashboardItem> item(DashboardItem::fromJson(record));
    if (!item || !item->dashboardWidget())
        return;
    const QSize minimum = item->minimumSize();
    if (widthRead)
        checkSize(WidthKey, record.value(WidthKey), item->size().width(), minimum.width());
    if (heightRead)
        checkSize(HeightKey, record.value(HeightKey), item->size().height(), minimum.height());
    checkConfig(record.value(ConfigKey), item->dashboardWidget()->saveConfig());
    checkBindings(*item);
}

bool LayoutChecker::checkType(const QJsonObject &record)
{
    const QJsonValue type = record.value(TypeKey);
    if (!type.isString()) {
        add(type.isUndefined() ? QStringLiteral("no \"type\": loading skips the item")
                               : QStringLiteral("\"type\" is %1, not a widget type name: loading skips the item")
                                     .arg(typeWord(type)));
        return false;
    }
    const QString name = type.toString();
    if (DashboardWidgetFactory::instance().typeNames().contains(name))
        return true;
    add(QStringLiteral("unknown widget type \"%1\": loading skips the item%2").arg(name, unknownTypeHint(name)));
    return false;
}

void LayoutChecker::checkRecordKeys(const QJsonObject &record)
{
    static const QStringList known = {TypeKey, SignalsKey, XKey, YKey, WidthKey, HeightKey, ConfigKey, ZKey};
    const QStringList keys = record.keys();
    for (const QString &key : keys) {
        if (!known.contains(key))
            add(QStringLiteral("unknown key \"%1\" (an item has %2)").arg(key, known.join(QLatin1String(", "))));
    }
    if (record.contains(SignalsKey))
        checkSignalsKey(record.value(SignalsKey));
    for (const QLatin1String key : {XKey, YKey, ZKey})
        checkPosition(key, record.value(key));
    const QJsonValue config = record.value(ConfigKey);
    if (!config.isUndefined() && !config.isObject())
        add(QStringLiteral("\"config\" is %1, not an object: the widget keeps its defaults").arg(typeWord(config)));
}

void LayoutChecker::checkSignalsKey(const QJsonValue &value)
{
    if (!value.isArray()) {
        add(QStringLiteral("\"signals\" is %1, not an array of names: it is ignored").arg(typeWord(value)));
        return;
    }
    const QJsonArray names = value.toArray();
    for (const QJsonValue &name : names) {
        if (!name.isString())
            add(QStringLiteral("\"signals\" holds %1, which is not a name in quotes").arg(jsonText(name)));
    }
}

void LayoutChecker::checkPosition(const QString &key, const QJsonValue &value)
{
    if (value.isUndefined())
        return;
    if (!value.isDouble()) {
        add(QStringLiteral("\"%1\" is %2, not a number: it reads as 0").arg(key, typeWord(value)));
        return;
    }
    const double written = value.toDouble();
    if (std::abs(written) > MaxExtent)
        add(QStringLiteral("\"%1\" %2 lies beyond %3 either way and is read as %4")
                .arg(key, number(written), number(MaxExtent), number(std::copysign(MaxExtent, written))));
}

bool LayoutChecker::checkSizeType(const QString &key, const QJsonValue &value)
{
    if (value.isUndefined() || value.isDouble())
        return true;
    add(QStringLiteral("\"%1\" is %2, not a number: it reads as 0, raised to the widget's minimum")
            .arg(key, typeWord(value)));
    return false;
}

void LayoutChecker::checkSize(const QString &key, const QJsonValue &value, double read, int minimum)
{
    if (value.isUndefined()) {
        add(QStringLiteral("no \"%1\": the item takes its minimum, %2").arg(key, number(read)));
        return;
    }
    const double written = value.toDouble();
    if (written == read)
        return;
    if (written > MaxSize)
        add(QStringLiteral("\"%1\" %2 is over the limit of %3 and is cut down to it")
                .arg(key, number(written), number(MaxSize)));
    else if (!(written >= minimum))
        add(QStringLiteral("\"%1\" %2 is below the widget's minimum and is raised to %3")
                .arg(key, number(written), number(read)));
    else
        add(QStringLiteral("\"%1\" %2 is rounded up to %3, on the %4-unit grid")
                .arg(key, number(written), number(read), number(GridSize)));
}

void LayoutChecker::checkConfig(const QJsonValue &written, const QJsonObject &read)
{
    if (!written.isObject())
        return;
    const QJsonObject config = written.toObject();
    for (auto it = config.constBegin(); it != config.constEnd(); ++it) {
        const QString key = it.key();
        if (!read.contains(key)) {
            const QStringList settings = read.keys();
            add(QStringLiteral("config \"%1\" is not one of its settings (%2)")
                    .arg(key, settings.isEmpty() ? QStringLiteral("it has none") : settings.join(QLatin1String(", "))));
            continue;
        }
        const QJsonValue kept = read.value(key);
        if (taken(*it, kept))
            continue;
        if (it->type() == kept.type())
            add(QStringLiteral("config \"%1\": %2 was read as %3").arg(key, jsonText(*it), jsonText(kept)));
        else
            add(QStringLiteral("config \"%1\": %2 is %3 where %4 is expected: it was read as %5")
                    .arg(key, jsonText(*it), typeWord(*it), typeWord(kept), jsonText(kept)));
    }
}

void LayoutChecker::checkBindings(const DashboardItem &item)
{
    if (!m_defs)
        return;
    const DashboardWidget *widget = item.dashboardWidget();
    QStringList reported;
    const QStringList bound = widget->signalNames();
    for (const QString &boundName : bound) {
        const QString name = SignalRouter::routingName(boundName);
        if (name.isEmpty() || reported.contains(name) || m_defs->signalFor(name))
            continue;
        reported.append(name);
        add(name == boundName
                ? QStringLiteral("signal %1 is not declared in the project's definitions").arg(name)
                : QStringLiteral("signal %1 (bound as \"%2\") is not declared in the project's definitions")
                      .arg(name, boundName));
    }
    if (const auto *states = dynamic_cast<const IStateConsumer *>(widget)) {
        const QString group = states->groupId();
        if (!group.isEmpty() && !m_defs->stateGroupFor(group))
            add(QStringLiteral("state group %1 is not declared in the project's definitions").arg(group));
    }
}

void LayoutChecker::add(const QString &message)
{
    m_findings.append(m_prefix + message);
}
