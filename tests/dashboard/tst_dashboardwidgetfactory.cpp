#include "ProbeWidget.h"

#include <QPixmap>
#include <QtTest>

#include <memory>

class TestDashboardWidgetFactory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ProbeWidget::registerTypes(); }
    void createsParentlessWidgetOfTheType();
    void lookUpsAreExactAndCaseSensitive_data();
    void lookUpsAreExactAndCaseSensitive();
    void reRegisteringReplacesInPlace();
};

void TestDashboardWidgetFactory::createsParentlessWidgetOfTheType()
{
    std::unique_ptr<DashboardWidget> widget(DashboardWidgetFactory::instance().create(ProbeWidget::typeId()));
    QVERIFY(widget);
    QVERIFY(!widget->parent());
    QCOMPARE(widget->typeName(), ProbeWidget::typeId());
}

void TestDashboardWidgetFactory::lookUpsAreExactAndCaseSensitive_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("lower case") << QStringLiteral("testprobe");
    QTest::newRow("trailing space") << QStringLiteral("TestProbe ");
    QTest::newRow("empty") << QString();
}

void TestDashboardWidgetFactory::lookUpsAreExactAndCaseSensitive()
{
    QFETCH(QString, name);
    QVERIFY(!DashboardWidgetFactory::instance().contains(name));
    QCOMPARE(DashboardWidgetFactory::instance().create(name), nullptr);
}

void TestDashboardWidgetFactory::reRegisteringReplacesInPlace()
{
    auto &factory = DashboardWidgetFactory::instance();
    const QString first = QStringLiteral("ReRegFirst");
    const QString second = QStringLiteral("ReRegSecond");
    factory.registerType(first, [] { return new ProbeWidget; }, QIcon());
    factory.registerType(second, [] { return new ProbeWidget; }, QIcon());
    QPixmap red(8, 8);
    red.fill(Qt::red);
    factory.registerType(first, [] {
        auto *probe = new ProbeWidget;
        probe->threshold = 99;
        return probe;
    }, QIcon(red));

    const QStringList names = factory.typeNames();
    QCOMPARE(names.count(first), 1);
    QVERIFY(names.indexOf(first) < names.indexOf(second));
    std::unique_ptr<DashboardWidget> widget(factory.create(first));
    QCOMPARE(static_cast<ProbeWidget *>(widget.get())->threshold, 99);
    QVERIFY(!factory.iconFor(first).isNull());
}

QTEST_MAIN(TestDashboardWidgetFactory)
#include "tst_dashboardwidgetfactory.moc"
