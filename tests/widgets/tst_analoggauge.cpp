#include "AnalogGaugeWidget.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QImage>
#include <QJsonObject>
#include <QTest>

#include <cmath>
#include <limits>
#include <memory>

class tst_AnalogGauge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void valueIsClampedToTheScale_data();
    void valueIsClampedToTheScale();
    void emptyOrReversedRangePaintsWithoutGarbage_data();
    void emptyOrReversedRangePaintsWithoutGarbage();
    void tickLabelPrecisionFollowsTheSpan_data();
    void tickLabelPrecisionFollowsTheSpan();
    void configNeedsBothLimitsAndTruncatesFractions();
    void configFormSetsTheRange();
    void dialIsRebuiltOncePerSizeOnly();
    void needleIsPaintedAtItsAngle();
    void primarySignalIsTheGaugesOwnLabel();

private:
    static QImage render(AnalogGaugeWidget &gauge);
};

void tst_AnalogGauge::cleanup()
{
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

QImage tst_AnalogGauge::render(AnalogGaugeWidget &gauge)
{
    QImage image(gauge.size(), QImage::Format_ARGB32);
    image.fill(Qt::white);
    gauge.render(&image);
    return image;
}

void tst_AnalogGauge::valueIsClampedToTheScale_data()
{
    QTest::addColumn<double>("input");
    QTest::addColumn<double>("shown");
    QTest::addColumn<double>("angle");
    QTest::newRow("above max") << 150.0 << 100.0 << 135.0;
    QTest::newRow("below min") << -5.0 << 0.0 << -135.0;
    QTest::newRow("middle") << 50.0 << 50.0 << 0.0;
    QTest::newRow("at min") << 0.0 << 0.0 << -135.0;
    QTest::newRow("NaN") << std::nan("") << 0.0 << -135.0;
    QTest::newRow("+inf") << std::numeric_limits<double>::infinity() << 100.0 << 135.0;
}

void tst_AnalogGauge::valueIsClampedToTheScale()
{
    QFETCH(double, input);
    QFETCH(double, shown);
    QFETCH(double, angle);
    AnalogGaugeWidget gauge;
    gauge.setValue(input);
    QCOMPARE(gauge.value(), shown);
    QCOMPARE(gauge.needleAngle(), angle);
}

void tst_AnalogGauge::emptyOrReversedRangePaintsWithoutGarbage_data()
{
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::newRow("min == max") << 5.0 << 5.0;
    QTest::newRow("min > max") << 10.0 << -10.0;
}

void tst_AnalogGauge::emptyOrReversedRangePaintsWithoutGarbage()
{
    QFETCH(double, min);
    QFETCH(double, max);
    AnalogGaugeWidget gauge;
    gauge.resize(200, 200);
    gauge.setRange(min, max);
    gauge.setValue(7.0);
    QVERIFY(std::isfinite(gauge.needleAngle()));
    QCOMPARE(gauge.needleAngle(), -135.0);
    for (const QString &label : gauge.tickLabels())
        QVERIFY2(!label.contains(QLatin1String("nan")) && !label.contains(QLatin1String("inf")), qPrintable(label));

    const QImage image = render(gauge);
    // The face is drawn light grey around the centre.
    QCOMPARE(QColor(image.pixel(100, 140)), QColor(Qt::lightGray));
}

void tst_AnalogGauge::tickLabelPrecisionFollowsTheSpan_data()
{
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("middle");
    QTest::addColumn<QString>("last");
    QTest::newRow("span 1") << 0.0 << 1.0 << "0.00" << "0.10" << "0.50" << "1.00";
    QTest::newRow("span 2") << -1.0 << 1.0 << "-1.00" << "-0.80" << "0.00" << "1.00";
    QTest::newRow("span 10") << 0.0 << 10.0 << "0.0" << "1.0" << "5.0" << "10.0";
    QTest::newRow("span 20") << -10.0 << 10.0 << "-10.0" << "-8.0" << "0.0" << "10.0";
    QTest::newRow("span 100") << 0.0 << 100.0 << "0" << "10" << "50" << "100";
    QTest::newRow("span 0.3 no -0") << -0.15 << 0.15 << "-0.15" << "-0.12" << "0.00" << "0.15";
}

void tst_AnalogGauge::tickLabelPrecisionFollowsTheSpan()
{
    QFETCH(double, min);
    QFETCH(double, max);
    AnalogGaugeWidget gauge;
    gauge.setRange(min, max);
    const QStringList labels = gauge.tickLabels();
    QCOMPARE(labels.size(), 11);
    QTEST(labels.at(0), "first");
    QTEST(labels.at(1), "second");
    QTEST(labels.at(5), "middle");
    QTEST(labels.at(10), "last");
}

void tst_AnalogGauge::configNeedsBothLimitsAndTruncatesFractions()
{
    AnalogGaugeWidget gauge;
    gauge.loadConfig(QJsonObject{{QStringLiteral("min"), 20}});
    QCOMPARE(gauge.minimum(), 0.0);
    QCOMPARE(gauge.maximum(), 100.0);

    gauge.setRange(0.5, 250.75);
    const QJsonObject saved = gauge.saveConfig();
    QCOMPARE(saved.value(QStringLiteral("min")).toDouble(), 0.5);
    QCOMPARE(saved.value(QStringLiteral("max")).toDouble(), 250.75);

    AnalogGaugeWidget restored;
    restored.loadConfig(saved);
    QCOMPARE(restored.minimum(), 0.0);
    QCOMPARE(restored.maximum(), 250.0);

    restored.loadConfig(QJsonObject{{QStringLiteral("min"), -40.9}, {QStringLiteral("max"), 1e300}});
    QCOMPARE(restored.minimum(), -40.0);
    QCOMPARE(restored.maximum(), double(std::numeric_limits<int>::max()));
}

void tst_AnalogGauge::configFormSetsTheRange()
{
    AnalogGaugeWidget gauge;
    auto dialog = std::make_unique<QWidget>();
    auto *form = new QFormLayout(dialog.get());
    gauge.buildConfigForm(form, dialog.get());
    QCOMPARE(form->rowCount(), 2);
    auto *minEdit = qobject_cast<QDoubleSpinBox *>(form->itemAt(0, QFormLayout::FieldRole)->widget());
    auto *maxEdit = qobject_cast<QDoubleSpinBox *>(form->itemAt(1, QFormLayout::FieldRole)->widget());
    QVERIFY(minEdit && maxEdit);
    QCOMPARE(maxEdit->value(), 100.0);
    QCOMPARE(maxEdit->decimals(), 1);
    minEdit->setValue(-20.0);
    maxEdit->setValue(80.5);
    gauge.applyConfigForm();
    QCOMPARE(gauge.minimum(), -20.0);
    QCOMPARE(gauge.maximum(), 80.5);

    // The dialog is gone: applying again must neither crash nor change anything.
    dialog.reset();
    gauge.applyConfigForm();
    QCOMPARE(gauge.maximum(), 80.5);
}

void tst_AnalogGauge::dialIsRebuiltOncePerSizeOnly()
{
    AnalogGaugeWidget gauge;
    gauge.resize(200, 200);
    render(gauge);
    QCOMPARE(gauge.dialRebuildCount(), 1);

    for (int i = 0; i < 20; ++i) {
        gauge.setValue(i * 5.0);
        render(gauge);
    }
    QCOMPARE(gauge.dialRebuildCount(), 1);

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

void tst_AnalogGauge::needleIsPaintedAtItsAngle()
{
    AnalogGaugeWidget gauge;
    gauge.resize(200, 200);
    auto isRed = [](QRgb pixel) { return qRed(pixel) > 200 && qGreen(pixel) < 80 && qBlue(pixel) < 80; };
    auto needlePoint = [](double degrees) {
        const double radians = qDegreesToRadians(degrees);
        return QPoint(int(std::lround(100 + 50 * std::sin(radians))), int(std::lround(100 - 50 * std::cos(radians))));
    };

    gauge.setValue(100.0);
    QImage image = render(gauge);
    QVERIFY(isRed(image.pixel(needlePoint(135.0))));
    QVERIFY(!isRed(image.pixel(needlePoint(-135.0))));

    gauge.setValue(0.0);
    image = render(gauge);
    QVERIFY(isRed(image.pixel(needlePoint(-135.0))));
    QVERIFY(!isRed(image.pixel(needlePoint(135.0))));
}

void tst_AnalogGauge::primarySignalIsTheGaugesOwnLabel()
{
    AnalogGaugeWidget gauge;
    gauge.setSignalNames({QStringLiteral("rpm:Motor")});
    QCOMPARE(gauge.primarySignal(), QString());
    gauge.setLabel(QStringLiteral("speed"));
    QCOMPARE(gauge.primarySignal(), QStringLiteral("speed"));
}

QTEST_MAIN(tst_AnalogGauge)
#include "tst_analoggauge.moc"
