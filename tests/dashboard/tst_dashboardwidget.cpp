#include "ProbeWidget.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

class TestDashboardWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalsKeyRules_data();
    void signalsKeyRules();
    void primarySignalIsFirstBoundOrEmpty();
    void minimumDesignSizeIsAtLeast80x60_data();
    void minimumDesignSizeIsAtLeast80x60();
    void valuesReachSetValueThroughTheForwardingChain();
};

void TestDashboardWidget::signalsKeyRules_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("string instead of array keeps binding") << QByteArray(R"({"signals": "a"})") << QStringList{"old"};
    QTest::newRow("missing key keeps binding") << QByteArray(R"({"other": 1})") << QStringList{"old"};
    QTest::newRow("non-strings skipped") << QByteArray(R"({"signals": ["a", 3, "b", null]})") << QStringList{"a", "b"};
    QTest::newRow("empty array clears") << QByteArray(R"({"signals": []})") << QStringList();
    QTest::newRow("order kept") << QByteArray(R"({"signals": ["z", "a"]})") << QStringList{"z", "a"};
}

void TestDashboardWidget::signalsKeyRules()
{
    QFETCH(QByteArray, config);
    QFETCH(QStringList, expected);
    ProbeWidget widget;
    widget.setSignalName(QStringLiteral("old"));
    widget.loadConfig(QJsonDocument::fromJson(config).object());
    QCOMPARE(widget.signalNames(), expected);
    // Saving writes the names back in the same order.
    QCOMPARE(widget.saveConfig().value(QLatin1String("signals")).toArray(), QJsonArray::fromStringList(expected));
}

void TestDashboardWidget::primarySignalIsFirstBoundOrEmpty()
{
    ProbeWidget widget;
    QCOMPARE(widget.primarySignal(), QString());
    widget.setSignalNames({QStringLiteral("b"), QStringLiteral("a")});
    QCOMPARE(widget.primarySignal(), QStringLiteral("b"));
}

void TestDashboardWidget::minimumDesignSizeIsAtLeast80x60_data()
{
    QTest::addColumn<QSize>("hint");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("narrow and tall") << QSize(50, 200) << QSize(80, 200);
    QTest::newRow("invalid hint") << QSize(-1, -1) << QSize(80, 60);
    QTest::newRow("large") << QSize(300, 90) << QSize(300, 90);
}

void TestDashboardWidget::minimumDesignSizeIsAtLeast80x60()
{
    QFETCH(QSize, hint);
    ProbeWidget widget;
    widget.hint = hint;
    QTEST(widget.minimumDesignSize(), "expected");
}

void TestDashboardWidget::valuesReachSetValueThroughTheForwardingChain()
{
    ProbeWidget widget;
    widget.setValueForSignalAt(QStringLiteral("any"), 42.5, 10.0);
    QCOMPARE(widget.lastValue, 42.5);
}

QTEST_MAIN(TestDashboardWidget)
#include "tst_dashboardwidget.moc"
