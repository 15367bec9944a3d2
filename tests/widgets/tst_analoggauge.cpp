#include "AnalogGaugeWidget.h"
#include "ConfigFormHarness.h"

#include <QDoubleSpinBox>
#include <QImage>
#include <QJsonObject>
#include <QTest>

#include <cmath>
#include <limits>

class tst_AnalogGauge : public QObject
{
    Q_OBJECT

    static QImage render(AnalogGaugeWidget &gauge)
    {
        QImage image(gauge.size(), QImage::Format_ARGB32);
        image.fill(Qt::white);
        gauge.render(&image);
        return image;
    }

private Q_SLOTS:
    void valueIsClampedToTheScale_data()
    {
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        QTest::addColumn<double>("input");
        QTest::addColumn<double>("shown");
        QTest::addColumn<double>("angle");
        QTest::newRow("above max") << 0.0 << 100.0 << 150.0 << 100.0 << 135.0;
        QTest::newRow("below min") << 0.0 << 100.0 << -5.0 << 0.0 << -135.0;
        QTest::newRow("middle") << 0.0 << 100.0 << 50.0 << 50.0 << 0.0;
        QTest::newRow("NaN shows min") << 0.0 << 100.0 << std::nan("") << 0.0 << -135.0;
        QTest::newRow("empty range") << 5.0 << 5.0 << 7.0 << 5.0 << -135.0;
        QTest::newRow("reversed range") << 10.0 << -10.0 << 7.0 << 10.0 << -135.0;
    }

    void valueIsClampedToTheScale()
    {
        QFETCH(double, min);
        QFETCH(double, max);
        QFETCH(double, input);
        AnalogGaugeWidget gauge;
        gauge.setRange(min, max);
        gauge.setValue(input);
        QTEST(gauge.value(), "shown");
        QTEST(gauge.needleAngle(), "angle");
    }

    void tickLabelPrecisionFollowsTheSpan_data()
    {
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        QTest::addColumn<QString>("firstSecondMiddleLast");
        QTest::newRow("span 1") << 0.0 << 1.0 << "0.00 0.10 0.50 1.00";
        QTest::newRow("span 2") << -1.0 << 1.0 << "-1.00 -0.80 0.00 1.00";
        QTest::newRow("span 20") << -10.0 << 10.0 << "-10.0 -8.0 0.0 10.0";
        QTest::newRow("span 100") << 0.0 << 100.0 << "0 10 50 100";
        QTest::newRow("no -0.00") << -0.15 << 0.15 << "-0.15 -0.12 0.00 0.15";
    }

    void tickLabelPrecisionFollowsTheSpan()
    {
        QFETCH(double, min);
        QFETCH(double, max);
        AnalogGaugeWidget gauge;
        gauge.setRange(min, max);
        const QStringList labels = gauge.tickLabels();
        QCOMPARE(labels.size(), 11);
        QTEST(QStringList({labels.at(0), labels.at(1), labels.at(5), labels.at(10)}).join(QLatin1Char(' ')),
              "firstSecondMiddleLast");
    }

    void configNeedsBothLimitsAndTruncatesFractions_data()
    {
        QTest::addColumn<QJsonObject>("config");
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        QTest::newRow("only min is ignored") << QJsonObject{{"min", 20}} << 0.0 << 100.0;
        QTest::newRow("fractions truncated") << QJsonObject{{"min", 0.5}, {"max", 250.75}} << 0.0 << 250.0;
        QTest::newRow("toward zero") << QJsonObject{{"min", -40.9}, {"max", 1e300}} << -40.0
                                     << double(std::numeric_limits<int>::max());
    }

    void configNeedsBothLimitsAndTruncatesFractions()
    {
        QFETCH(QJsonObject, config);
        AnalogGaugeWidget gauge;
        gauge.loadConfig(config);
        QTEST(gauge.minimum(), "min");
        QTEST(gauge.maximum(), "max");
        gauge.setRange(0.5, 250.75); // saving keeps the fractions
        QCOMPARE(gauge.saveConfig(), (QJsonObject{{"min", 0.5}, {"max", 250.75}}));
    }

    void configFormSetsTheRange()
    {
        AnalogGaugeWidget gauge;
        gauge.setValue(90.0);
        ConfigFormHarness form(gauge);
        QCOMPARE(form.rowCount(), 2);
        auto *maxEdit = form.editor<QDoubleSpinBox>(1);
        QCOMPARE(maxEdit->decimals(), 1);
        form.editor<QDoubleSpinBox>(0)->setValue(-20.0);
        maxEdit->setValue(80.5);
        gauge.applyConfigForm();
        QCOMPARE(gauge.minimum(), -20.0);
        QCOMPARE(gauge.maximum(), 80.5);
        QCOMPARE(gauge.needleAngle(), 135.0); // 90 is past the new end: the needle stops there
        form.close();
        gauge.applyConfigForm(); // the editors are gone: nothing to read, no crash
        QCOMPARE(gauge.maximum(), 80.5);
    }

    void dialIsRebuiltOncePerSizeOnly()
    {
        AnalogGaugeWidget gauge;
        gauge.resize(200, 200);
        for (double value : {0.0, 40.0, 80.0}) {
            gauge.setValue(value);
            render(gauge);
        }
        gauge.resize(300, 200); // still 200 on the short side
        render(gauge);
        QCOMPARE(gauge.dialRebuildCount(), 1);
        gauge.resize(150, 300);
        render(gauge);
        render(gauge);
        QCOMPARE(gauge.dialRebuildCount(), 2);
        gauge.setRange(0, 10); // new tick labels
        render(gauge);
        QCOMPARE(gauge.dialRebuildCount(), 3);
    }

};

QTEST_MAIN(tst_AnalogGauge)
#include "tst_analoggauge.moc"
