#include "BarGraphPainter.h"
#include "BarGraphWidget.h"
#include "ConfigFormHarness.h"
#include "DashboardItem.h"
#include "DashboardWidgetFactory.h"
#include "SignalDefinitions.h"
#include "TestFiles.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class tst_BarGraph : public QObject
{
    Q_OBJECT

    // "NAME=value ..." in order; "nan" and "inf" as QString::toDouble reads them.
    static void feed(BarGraphWidget &graph, const QString &input)
    {
        for (const QString &token : input.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            graph.setValueForSignal(token.section(QLatin1Char('='), 0, 0), token.section(QLatin1Char('='), 1).toDouble());
    }

    static int pixelsOf(const QImage &image, const QColor &colour)
    {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                count += image.pixel(x, y) == colour.rgb();
        }
        return count;
    }

    static QImage render(BarGraphWidget &graph)
    {
        QImage image(graph.size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        graph.render(&image);
        return image;
    }

    static QJsonObject defaults()
    {
        return QJsonObject{{"autoRange", true},       {"min", 0},           {"max", 100},
                           {"orientation", "vertical"}, {"barColor", "#0072b2"}, {"decimalPlaces", 1}};
    }

private Q_SLOTS:
    void initTestCase() { DashboardWidgetFactory::instance().registerBuiltInTypes(); }
    void cleanup() { SignalDefinitions::setCurrent(nullptr); }

    void rangeIsFixedOrFollowsTheValues_data()
    {
        QTest::addColumn<bool>("automatic");
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        QTest::addColumn<QString>("input");
        QTest::addColumn<double>("lower");
        QTest::addColumn<double>("upper");
        QTest::newRow("fixed") << false << 0.0 << 100.0 << "rpm=42 rpm=250" << 0.0 << 100.0;
        QTest::newRow("fixed, reversed limits") << false << 50.0 << -50.0 << "" << -50.0 << 50.0;
        QTest::newRow("fixed, empty span widened") << false << 5.0 << 5.0 << "" << 5.0 << 6.0;
        QTest::newRow("automatic before any value") << true << 0.0 << 0.0 << "" << 0.0 << 1.0;
        QTest::newRow("automatic from zero, on 1-2-5") << true << 0.0 << 0.0 << "rpm=3.2 load=42" << 0.0 << 50.0;
        QTest::newRow("automatic takes in negatives") << true << 0.0 << 0.0 << "rpm=-130 load=7" << -200.0 << 10.0;
        QTest::newRow("automatic keeps its widest") << true << 0.0 << 0.0 << "rpm=420 rpm=5" << 0.0 << 500.0;
        QTest::newRow("automatic skips NaN and inf") << true << 0.0 << 0.0 << "rpm=nan rpm=inf rpm=-inf load=3" << 0.0
                                                     << 5.0;
        QTest::newRow("unbound names do not count") << true << 0.0 << 0.0 << "other=900 rpm=0.15" << 0.0 << 0.2;
    }

    void rangeIsFixedOrFollowsTheValues()
    {
        QFETCH(bool, automatic);
        QFETCH(double, min);
        QFETCH(double, max);
        QFETCH(QString, input);
        BarGraphWidget graph;
        graph.setSignalNames({QStringLiteral("rpm"), QStringLiteral("load")});
        graph.setAutomaticRange(automatic);
        graph.setFixedRange(min, max);
        feed(graph, input);
        QTEST(graph.range().lower(), "lower");
        QTEST(graph.range().upper(), "upper");
    }

    void valuesPastTheScaleAreClippedWithAMark_data()
    {
        QTest::addColumn<Qt::Orientation>("orientation");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("bar");
        QTest::addColumn<bool>("mark");
        QTest::newRow("inside") << Qt::Vertical << "bus=50" << "50.0 V" << true << false;
        QTest::newRow("at the end, no mark") << Qt::Vertical << "bus=100" << "100.0 V" << true << false;
        QTest::newRow("above") << Qt::Vertical << "bus=150" << "150.0 V" << true << true;
        QTest::newRow("above, horizontal") << Qt::Horizontal << "bus=150" << "150.0 V" << true << true;
        QTest::newRow("below: no length, marked") << Qt::Vertical << "bus=-5" << "-5.0 V" << false << true;
        QTest::newRow("below, horizontal") << Qt::Horizontal << "bus=-5" << "-5.0 V" << false << true;
        QTest::newRow("infinity") << Qt::Vertical << "bus=inf" << "\u221e V" << true << true;
        QTest::newRow("NaN: no bar") << Qt::Vertical << "bus=nan" << "NaN V" << false << false;
        QTest::newRow("no value yet") << Qt::Horizontal << "" << "\u2014" << false << false;
    }

    void valuesPastTheScaleAreClippedWithAMark()
    {
        QFETCH(Qt::Orientation, orientation);
        QFETCH(QString, input);
        BarGraphWidget graph;
        graph.resize(160, 200);
        graph.setSignalNames({QStringLiteral("bus:V")});
        graph.setAutomaticRange(false);
        graph.setOrientation(orientation);
        feed(graph, input);
        QTEST(graph.barValueText(0), "text");
        const QImage image = render(graph);
        QTEST(pixelsOf(image, graph.barColor()) > 0, "bar");
        QTEST(pixelsOf(image, BarGraphPainter::markColor()) > 0, "mark");
    }

    void entriesAreFedByTheirNameAndShowTheUnit()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("dashboard_signals.def"));
        QVERIFY(writeFile(path, "DASHBOARD_SIGNAL(rpm, \"Engine Speed\", float)\n"
                                "DASHBOARD_SIGNAL(temp, \"\", float)\n"));
        SignalDefinitions defs;
        QVERIFY(defs.load(path));
        SignalDefinitions::setCurrent(&defs);

        BarGraphWidget graph;
        graph.setSignalNames({"rpm:1/min", "temp: \u00b0C", "load", "rpm"});
        feed(graph, QStringLiteral("rpm=1200 temp=80.44 other=1"));
        auto bars = [&graph] {
            QStringList shown;
            for (int bar = 0; bar < graph.barCount(); ++bar)
                shown.append(graph.barCaption(bar) + QLatin1Char('=') + graph.barValueText(bar));
            return shown;
        };
        QCOMPARE(bars(), (QStringList{"Engine Speed=1200.0 1/min", "temp=80.4 \u00b0C", "load=\u2014",
                                      "Engine Speed=1200.0"}));

        // Bound again: entries kept keep their values; a new catalogue renames.
        graph.setSignalNames({"load", "rpm:1/min"});
        SignalDefinitions::setCurrent(nullptr);
        QCOMPARE(bars(), (QStringList{"load=\u2014", "rpm=1200.0 1/min"}));
    }

    void layoutConfigRoundTripsAndWrongTypesKeepDefaults_data()
    {
        QTest::addColumn<QJsonObject>("config");
        QTest::addColumn<QJsonObject>("saved");
        const QJsonObject custom{{"autoRange", false},       {"min", -10},          {"max", 250.5},
                                 {"orientation", "horizontal"}, {"barColor", "#d55e00"}, {"decimalPlaces", 3}};
        QJsonObject onlyMax = defaults();
        onlyMax.insert(QStringLiteral("max"), 80);
        QTest::newRow("every key") << custom << custom;
        QTest::newRow("a missing key keeps its default") << QJsonObject{{"max", 80}} << onlyMax;
        QTest::newRow("wrong types") << QJsonObject{{"autoRange", "no"},  {"min", "10"},       {"max", QJsonArray{1}},
                                                    {"orientation", 1},   {"barColor", QJsonArray{255, 0, 0}},
                                                    {"decimalPlaces", "2"}}
                                     << defaults();
        QTest::newRow("unknown words") << QJsonObject{{"orientation", "diagonal"}, {"barColor", "no such colour"}}
                                       << defaults();
        QJsonObject bounded = defaults();
        bounded.insert(QStringLiteral("decimalPlaces"), 8);
        QTest::newRow("decimals bounded") << QJsonObject{{"decimalPlaces", 40}} << bounded;
    }

    void layoutConfigRoundTripsAndWrongTypesKeepDefaults()
    {
        QFETCH(QJsonObject, config);
        QFETCH(QJsonObject, saved);
        const QJsonObject record{{"type", "BarGraph"}, {"signals", QJsonArray{"rpm"}}, {"config", config}};
        const std::unique_ptr<DashboardItem> item(DashboardItem::fromJson(record));
        QVERIFY(item && item->dashboardWidget());
        QCOMPARE(item->dashboardWidget()->saveConfig(), saved);

        BarGraphWidget restored;
        restored.loadConfig(saved);
        QCOMPARE(restored.saveConfig(), saved);
    }

    void configFormEditsTheSettings()
    {
        BarGraphWidget graph;
        ConfigFormHarness form(graph);
        QStringList labels;
        for (int row = 0; row < form.rowCount(); ++row)
            labels.append(form.label(row));
        QCOMPARE(labels, (QStringList{"Automatic Range:", "Min Value:", "Max Value:", "Orientation:", "Bar Color:",
                                      "Decimal Places:"}));

        auto *automatic = form.editor<QCheckBox>(0);
        auto *min = form.editor<QDoubleSpinBox>(1);
        QVERIFY(automatic->isChecked() && !min->isEnabled()); // the limits count only when fixed
        automatic->setChecked(false);
        QVERIFY(min->isEnabled());
        min->setValue(-20.0);
        form.editor<QDoubleSpinBox>(2)->setValue(80.5);
        form.editor<QComboBox>(3)->setCurrentIndex(1);
        form.editor<QComboBox>(4)->setCurrentIndex(2);
        form.editor<QSpinBox>(5)->setValue(0);
        graph.applyConfigForm();
        const QJsonObject edited{{"autoRange", false},       {"min", -20},          {"max", 80.5},
                                 {"orientation", "horizontal"}, {"barColor", "#009e73"}, {"decimalPlaces", 0}};
        QCOMPARE(graph.saveConfig(), edited);

        form.close();
        graph.applyConfigForm(); // the editors are gone: nothing to read
        QCOMPARE(graph.saveConfig(), edited);
    }
};

QTEST_MAIN(tst_BarGraph)
#include "tst_bargraph.moc"
