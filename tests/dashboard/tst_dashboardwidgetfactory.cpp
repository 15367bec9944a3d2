#include "ProbeWidget.h"

#include <QPixmap>
#include <QtTest>

#include <memory>

class tst_DashboardWidgetFactory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        QCOMPARE(factory.create(first.toLower()), nullptr); // names are case-sensitive
        QVERIFY(!factory.iconFor(first).isNull());
    }
};

QTEST_MAIN(tst_DashboardWidgetFactory)
#include "tst_dashboardwidgetfactory.moc"
