#include "ProbeWidget.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

class TestDashboardWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadConfigSignals_data();
    void loadConfigSignals();
    void saveConfigWritesSignalsInOrder();
    void primarySignalOfUnboundWidgetIsEmpty();
    void minimumDesignSizeExpandsSizeHint_data();
    void minimumDesignSizeExpandsSizeHint();
    void valuesReachSetValueThroughTheForwardingChain();
};

void TestDashboardWidget::loadConfigSignals_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<QStringList>("expected");

    const QStringList before{QStringLiteral("old")};
    QTest::newRow("string instead of array keeps binding") << QByteArray(R"({"signals": "a"})") << before;
    QTest::newRow("missing key keeps binding") << QByteArray(R"({"other": 1})") << before;
    QTest::newRow("non-strings skipped") << QByteArray(R"({"signals": ["a", 3, "b", null, {}]})")
                                         << QStringList{QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("empty array clears") << QByteArray(R"({"signals": []})") << QStringList();
    QTest::newRow("order kept") << QByteArray(R"({"signals": ["z", "a"]})")
                                << QStringList{QStringLiteral("z"), QStringLiteral("a")};
}

void TestDashboardWidget::loadConfigSignals()
{
    QFETCH(QByteArray, config);
    QFETCH(QStringList, expected);

    ProbeWidget widget;
    widget.setSignalName(QStringLiteral("old"));
    widget.loadConfig(QJsonDocument::fromJson(config).object());
    QCOMPARE(widget.signalNames(), expected);
}

void TestDashboardWidget::saveConfigWritesSignalsInOrder()
{
    ProbeWidget widget;
    widget.setSignalNames({QStringLiteral("speed"), QStringLiteral("alpha")});
    const QJsonArray written = widget.saveConfig().value(QLatin1String("signals")).toArray();
    QCOMPARE(written, QJsonArray({QStringLiteral("speed"), QStringLiteral("alpha")}));

    ProbeWidget restored;
    restored.loadConfig(widget.saveConfig());
    QCOMPARE(restored.signalNames(), widget.signalNames());
}

void TestDashboardWidget::primarySignalOfUnboundWidgetIsEmpty()
{
    ProbeWidget widget;
    QCOMPARE(widget.primarySignal(), QString());
    widget.setSignalNames({QStringLiteral("b"), QStringLiteral("a")});
    QCOMPARE(widget.primarySignal(), QStringLiteral("b"));
}

void TestDashboardWidget::minimumDesignSizeExpandsSizeHint_data()
{
    QTest::addColumn<QSize>("hint");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("narrow and tall") << QSize(50, 200) << QSize(80, 200);
    QTest::newRow("small") << QSize(10, 10) << QSize(80, 60);
    QTest::newRow("invalid hint") << QSize(-1, -1) << QSize(80, 60);
    QTest::newRow("large") << QSize(300, 90) << QSize(300, 90);
}

void TestDashboardWidget::minimumDesignSizeExpandsSizeHint()
{
    QFETCH(QSize, hint);
    QFETCH(QSize, expected);
    ProbeWidget widget;
    widget.hint = hint;
    QCOMPARE(widget.minimumDesignSize(), expected);
}

void TestDashboardWidget::valuesReachSetValueThroughTheForwardingChain()
{
    ProbeWidget widget;
    widget.setValueForSignalAt(QStringLiteral("any"), 42.5, 10.0);
    QCOMPARE(widget.lastValue, 42.5);
    widget.setValueForSignal(QStringLiteral("other"), -1.0);
    QCOMPARE(widget.lastValue, -1.0);
}

QTEST_MAIN(TestDashboardWidget)
#include "tst_dashboardwidget.moc"
