#include "ProbeWidget.h"

#include <QFile>
#include <QPixmap>
#include <QtTest>

#include <memory>

class TestDashboardWidgetFactory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void createsRegisteredTypeWithoutParent();
    void lookUpsAreCaseSensitive_data();
    void lookUpsAreCaseSensitive();
    void unknownNameGetsDefaultIcon();
    void reRegisteringKeepsOneEntryInPlace();
    void typeNamesFollowRegistrationOrder();
};

void TestDashboardWidgetFactory::initTestCase()
{
    ProbeWidget::registerTypes();
}

void TestDashboardWidgetFactory::createsRegisteredTypeWithoutParent()
{
    std::unique_ptr<DashboardWidget> widget(DashboardWidgetFactory::instance().create(ProbeWidget::typeId()));
    QVERIFY(widget);
    QVERIFY(!widget->parent());
    QCOMPARE(widget->typeName(), ProbeWidget::typeId());

    std::unique_ptr<DashboardWidget> second(DashboardWidgetFactory::instance().create(ProbeWidget::typeId()));
    QVERIFY(second.get() != widget.get());
}

void TestDashboardWidgetFactory::lookUpsAreCaseSensitive_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("lower case") << QStringLiteral("testprobe");
    QTest::newRow("upper case") << QStringLiteral("TESTPROBE");
    QTest::newRow("trailing space") << QStringLiteral("TestProbe ");
    QTest::newRow("empty") << QString();
    QTest::newRow("built-in name in lower case") << QStringLiteral("analoggauge");
}

void TestDashboardWidgetFactory::lookUpsAreCaseSensitive()
{
    QFETCH(QString, name);
    auto &factory = DashboardWidgetFactory::instance();
    QVERIFY(!factory.contains(name));
    QCOMPARE(factory.create(name), nullptr);
}

void TestDashboardWidgetFactory::unknownNameGetsDefaultIcon()
{
    if (!QFile::exists(QStringLiteral(":/icons/default.png")))
        QSKIP("the default icon resource is not part of the build yet");
    const QIcon icon = DashboardWidgetFactory::instance().iconFor(QStringLiteral("NoSuchWidget"));
    QVERIFY(!icon.isNull());
    QVERIFY(!icon.pixmap(16, 16).isNull());
}

void TestDashboardWidgetFactory::reRegisteringKeepsOneEntryInPlace()
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

void TestDashboardWidgetFactory::typeNamesFollowRegistrationOrder()
{
    auto &factory = DashboardWidgetFactory::instance();
    const QStringList ordered{QStringLiteral("OrderC"), QStringLiteral("OrderA"), QStringLiteral("OrderB")};
    for (const QString &name : ordered)
        factory.registerType(name, [] { return new ProbeWidget; }, QIcon());

    const QStringList names = factory.typeNames();
    QVERIFY(names.indexOf(ordered.at(0)) < names.indexOf(ordered.at(1)));
    QVERIFY(names.indexOf(ordered.at(1)) < names.indexOf(ordered.at(2)));

    const qsizetype before = factory.typeNames().size();
    factory.registerBuiltInTypes();
    const qsizetype once = factory.typeNames().size();
    factory.registerBuiltInTypes();
    QCOMPARE(factory.typeNames().size(), once);
    QVERIFY(once >= before);
}

QTEST_MAIN(TestDashboardWidgetFactory)
#include "tst_dashboardwidgetfactory.moc"
