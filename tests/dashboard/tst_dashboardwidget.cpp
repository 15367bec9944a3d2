#include "ProbeWidget.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

class tst_DashboardWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalsKeyRules_data()
    {
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("string instead of array keeps binding") << QByteArray(R"({"signals": "a"})") << QStringList{"old"};
        QTest::newRow("missing key keeps binding") << QByteArray(R"({"other": 1})") << QStringList{"old"};
        QTest::newRow("non-strings skipped") << QByteArray(R"({"signals": ["a", 3, "b", null]})") << QStringList{"a", "b"};
        QTest::newRow("empty array clears") << QByteArray(R"({"signals": []})") << QStringList();
        QTest::newRow("order kept") << QByteArray(R"({"signals": ["z", "a"]})") << QStringList{"z", "a"};
    }

    void signalsKeyRules()
    {
        QFETCH(QByteArray, config);
        QFETCH(QStringList, expected);
        ProbeWidget widget;
        widget.setSignalName(QStringLiteral("old"));
        widget.loadConfig(QJsonDocument::fromJson(config).object());
        QCOMPARE(widget.signalNames(), expected);
        QCOMPARE(widget.primarySignal(), expected.value(0)); // empty, never failing, when unbound
        QCOMPARE(widget.saveConfig().value(QLatin1String("signals")).toArray(), QJsonArray::fromStringList(expected));
    }
};

QTEST_MAIN(tst_DashboardWidget)
#include "tst_dashboardwidget.moc"
