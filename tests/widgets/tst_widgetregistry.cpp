#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"

#include <QIcon>
#include <QImage>
#include <QSet>
#include <QTest>

#include <memory>

class tst_WidgetRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { DashboardWidgetFactory::instance().registerBuiltInTypes(); }

    void builtInTypesCreateThemselves()
    {
        DashboardWidgetFactory &factory = DashboardWidgetFactory::instance();
        const QStringList types = factory.typeNames();
        QCOMPARE(types.size(), 13);
        for (const QString &typeName : types) {
            std::unique_ptr<DashboardWidget> widget(factory.create(typeName));
            QVERIFY(widget && !widget->parent());
            QCOMPARE(widget->typeName(), typeName); // a saved layout is restored by this name
            QVERIFY(!factory.create(typeName.toLower()));
        }
        // Registering again keeps one entry each, the eleven displays then the two controls.
        factory.registerBuiltInTypes();
        QCOMPARE(factory.typeNames(), types);
    }

    void iconsAreRealImages_data()
    {
        QTest::addColumn<QString>("path");
        for (const char *name : {"design", "save", "load", "record", "stop", "pause", "play", "connect", "export",
                                 "gauge", "display", "bar_chart", "line", "text", "line_chart", "state",
                                 "error_console", "message-console", "image-icon", "xy_plot", "command_button", "setpoint",
                                 "default", "ombrix"})
            QTest::newRow(name) << QStringLiteral(":/icons/%1.png").arg(QLatin1String(name));
    }

    void iconsAreRealImages()
    {
        QFETCH(QString, path);
        const QImage image = QImage(path).convertToFormat(QImage::Format_ARGB32);
        QVERIFY(image.width() >= 48 && image.height() >= 48);
        // Drawn, not blank: a fair share of opaque pixels in more than one colour.
        QSet<QRgb> colours;
        int opaque = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgb pixel = image.pixel(x, y);
                if (qAlpha(pixel) > 200) {
                    ++opaque;
                    colours.insert(pixel & 0xffffff);
                }
            }
        }
        QVERIFY(opaque > image.width() * image.height() / 10);
        QVERIFY(colours.size() > 1);
    }
};

QTEST_MAIN(tst_WidgetRegistry)
#include "tst_widgetregistry.moc"
