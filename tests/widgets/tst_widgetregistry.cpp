// The built-in widget types and the icon set: every type the palette offers can
// be created by name, reports the same name back, and has a real icon; every
// icon the tool bars and the palette use is present and not blank.
#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QSet>
#include <QTest>

#include <memory>

class tst_WidgetRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void builtInTypesCreateThemselves_data();
    void builtInTypesCreateThemselves();
    void registeringTwiceKeepsOneEntryPerType();
    void namesAreCaseSensitive();
    void everyRegisteredTypeHasAnIcon();
    void iconResourceIsRealImage_data();
    void iconResourceIsRealImage();
};

void tst_WidgetRegistry::initTestCase()
{
    DashboardWidgetFactory::instance().registerBuiltInTypes();
}

void tst_WidgetRegistry::builtInTypesCreateThemselves_data()
{
    QTest::addColumn<QString>("typeName");
    QTest::addColumn<bool>("usesSignals");
    QTest::newRow("gauge") << QStringLiteral("AnalogGauge") << true;
    QTest::newRow("display") << QStringLiteral("DigitalDisplay") << true;
    QTest::newRow("state") << QStringLiteral("StateIndicator") << true;
    QTest::newRow("errors") << QStringLiteral("ErrorConsole") << false;
    QTest::newRow("messages") << QStringLiteral("MessagesConsole") << false;
}

void tst_WidgetRegistry::builtInTypesCreateThemselves()
{
    QFETCH(QString, typeName);
    QFETCH(bool, usesSignals);
    std::unique_ptr<DashboardWidget> widget(DashboardWidgetFactory::instance().create(typeName));
    QVERIFY(widget);
    QVERIFY(!widget->parent());
    // A saved layout is restored through the registry by this name.
    QCOMPARE(widget->typeName(), typeName);
    QCOMPARE(widget->usesSignals(), usesSignals);
}

void tst_WidgetRegistry::registeringTwiceKeepsOneEntryPerType()
{
    DashboardWidgetFactory &factory = DashboardWidgetFactory::instance();
    const QStringList before = factory.typeNames();
    factory.registerBuiltInTypes();
    QCOMPARE(factory.typeNames(), before);
    QCOMPARE(QSet<QString>(before.begin(), before.end()).size(), before.size());
    // Palette order follows the table: gauge, display, state, consoles.
    const QStringList expected{QStringLiteral("AnalogGauge"), QStringLiteral("DigitalDisplay"),
                               QStringLiteral("StateIndicator"), QStringLiteral("ErrorConsole"),
                               QStringLiteral("MessagesConsole")};
    QStringList builtIns = before;
    builtIns.removeIf([&expected](const QString &name) { return !expected.contains(name); });
    QCOMPARE(builtIns, expected);
}

void tst_WidgetRegistry::namesAreCaseSensitive()
{
    QVERIFY(!DashboardWidgetFactory::instance().create(QStringLiteral("analoggauge")));
}

void tst_WidgetRegistry::everyRegisteredTypeHasAnIcon()
{
    const DashboardWidgetFactory &factory = DashboardWidgetFactory::instance();
    for (const QString &name : factory.typeNames()) {
        const QIcon icon = factory.iconFor(name);
        QVERIFY2(!icon.isNull(), qPrintable(name));
        QVERIFY2(!icon.pixmap(24, 24).isNull(), qPrintable(name));
    }
    QVERIFY(!factory.iconFor(QStringLiteral("NoSuchWidget")).pixmap(24, 24).isNull());
}

void tst_WidgetRegistry::iconResourceIsRealImage_data()
{
    QTest::addColumn<QString>("path");
    const char *const names[] = {
        "design", "save", "load", "record", "stop", "pause", "play", "connect", "export",
        "gauge", "display", "bar_chart", "line", "text", "line_chart", "state",
        "error_console", "message-console", "image-icon", "xy_plot", "default", "ombrix"};
    for (const char *name : names) {
        const QString path = QStringLiteral(":/icons/") + QLatin1String(name) + QStringLiteral(".png");
        QTest::newRow(name) << path;
    }
}

void tst_WidgetRegistry::iconResourceIsRealImage()
{
    QFETCH(QString, path);
    const QImage image(path);
    QVERIFY2(!image.isNull(), qPrintable(path));
    QVERIFY(image.width() >= 48 && image.height() >= 48);

    // Legible means drawn: a fair share of visible pixels in more than one colour.
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    QSet<QRgb> colours;
    int visible = 0;
    for (int y = 0; y < argb.height(); ++y) {
        for (int x = 0; x < argb.width(); ++x) {
            const QRgb pixel = argb.pixel(x, y);
            if (qAlpha(pixel) > 200) {
                ++visible;
                colours.insert(pixel & 0xffffff);
            }
        }
    }
    QVERIFY2(visible > argb.width() * argb.height() / 10, qPrintable(path));
    QVERIFY2(colours.size() > 1, qPrintable(path));
}

QTEST_MAIN(tst_WidgetRegistry)
#include "tst_widgetregistry.moc"
