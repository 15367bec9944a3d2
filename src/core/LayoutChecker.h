#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

class DashboardItem;
class SignalDefinitions;

/**
 * What loading a layout file would skip, ignore or change, for the person
 * who wrote it: unknown widget types, values of the wrong JSON type or out
 * of range, sizes the item rule raises or rounds, config keys a widget does
 * not know or did not take as written, and bound signals or state groups
 * the project does not declare.
 *
 * Widget settings are checked without a schema per widget: each item is
 * built as loading builds it (DashboardItem::fromJson, through the widget
 * registry), and the widget's saveConfig() is compared with what was
 * written. Needs a QApplication, since it creates widgets.
 */
class LayoutChecker
{
public:
    // defs: the project's catalogue; null leaves bound names unchecked.
    explicit LayoutChecker(const SignalDefinitions *defs = nullptr);

    // One sentence per finding, in file order. Items are named "item N
    // (Type)", counted from 1 in the order of the "items" array.
    QStringList check(const QByteArray &json);

private:
    void checkTopLevel(const QJsonObject &root);
    void checkItem(int number, const QJsonValue &value);
    bool checkType(const QJsonObject &record);
    void checkRecordKeys(const QJsonObject &record);
    void checkSignalsKey(const QJsonValue &value);
    void checkPosition(const QString &key, const QJsonValue &value);
    bool checkSizeType(const QString &key, const QJsonValue &value);
    void checkSize(const QString &key, const QJsonValue &value, double read, int minimum);
    void checkConfig(const QJsonValue &written, const QJsonObject &read);
    void checkBindings(const DashboardItem &item);
    void add(const QString &message);

    const SignalDefinitions *m_defs = nullptr;
    QStringList m_findings;
    QString m_prefix; // "item N (Type): " while an item is checked
};
