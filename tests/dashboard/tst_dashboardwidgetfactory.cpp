#include "ProbeWidget.h"

#include <QPixmap>
#include <QtTest>

#include <memory>

class TestDashboardWidgetFactory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lookUpsAreExactAndCaseSensitive()
    {
        ProbeWidget::registerTypes();
        auto &factory = DashboardWidgetFactory::instance();
        for (const QString &name : {QStringLiteral("testprobe"), QStringLiteral("TestProbe "), QString()})
            QCOMPARE(factory.create(name), nullptr);
        std::unique_ptr<DashboardWidget> widget(factory.create(ProbeWidget::typeId()));
        QCOMPARE(widget->typeName(), ProbeWidget::typeId());
    }

    void reRegisteringReplacesInPlace()
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
};

QTEST_MAIN(TestDashboardWidgetFactory)
#include "tst_dashboardwidgetfactory.moc"
