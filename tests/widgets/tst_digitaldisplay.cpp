#include "ConfigFormHarness.h"
#include "DigitalDisplayWidget.h"
#include "SignalCaption.h"

#include <QDoubleSpinBox>
#include <QImage>
#include <QJsonObject>
#include <QTest>

class tst_DigitalDisplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valueIsFormattedWithTheDecimals_data()
    {
        QTest::addColumn<int>("decimals");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("default 1") << 1 << 3.14159 << "3.1";
        QTest::newRow("0 rounds") << 0 << 2.6 << "3";
        QTest::newRow("12 from a file") << 12 << 1.5 << "1.500000000000";
        QTest::newRow("large, no clamping") << 1 << 1e7 << "10000000.0";
    }

    void valueIsFormattedWithTheDecimals()
    {
        QFETCH(int, decimals);
        QFETCH(double, value);
        DigitalDisplayWidget display;
        display.loadConfig(QJsonObject{{"decimalPlaces", decimals}});
        display.setValueForSignalAt(QStringLiteral("any"), value, 12.0); // through the forwarding chain
        QTEST(display.valueText(), "text");
    }

    void signalStoresAreKeptApart()
    {
        // The bound list feeds the caption; setSignalName and "signal" feed primarySignal.
        DigitalDisplayWidget display;
        display.setSignalNames({QStringLiteral("Temp:Engine")});
        QCOMPARE(display.primarySignal(), QString());
        display.setSignalName(QStringLiteral("rpm"));
        QCOMPARE(display.signalNames(), QStringList{QStringLiteral("Temp:Engine")});
        QCOMPARE(display.saveConfig(), (QJsonObject{{"signal", "rpm"}, {"decimalPlaces", 1}}));

        DigitalDisplayWidget restored;
        restored.loadConfig(QJsonObject{{"signal", "rpm"}}); // a missing key keeps its value
        QCOMPARE(restored.primarySignal(), QStringLiteral("rpm"));
        QCOMPARE(restored.decimals(), 1);
        QVERIFY(restored.signalNames().isEmpty());
    }

    void configFormStopsAtEightDecimals()
    {
        DigitalDisplayWidget display;
        ConfigFormHarness form(display);
        QCOMPARE(form.editor<QDoubleSpinBox>(0)->value(), 1.0);
        form.editor<QDoubleSpinBox>(0)->setValue(12);
        display.applyConfigForm();
        QCOMPARE(display.decimals(), 8);
    }

    void captionSplitsTheBoundName_data()
    {
        QTest::addColumn<QString>("bound");
        QTest::addColumn<QString>("upper");
        QTest::addColumn<QString>("lower");
        QTest::newRow("name:suffix") << "Temp:Engine" << "Engine" << "Temp";
        QTest::newRow("plain") << "rpm" << "" << "rpm";
        QTest::newRow("empty parts skipped") << ":Temp::Engine:" << "Engine" << "Temp";
    }

    void captionSplitsTheBoundName()
    {
        QFETCH(QString, bound);
        const SignalCaption caption(bound);
        QTEST(caption.upper(), "upper");
        QTEST(caption.lower(), "lower");
    }

    void captionIsDrawnBelowTheDigitsOnlyWhenBound()
    {
        auto darkPixelsBelowDigits = [](DigitalDisplayWidget &display) {
            QImage image(display.size(), QImage::Format_ARGB32);
            image.fill(Qt::white);
            display.render(&image);
            int dark = 0;
            for (int y = image.height() / 2 + 30; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    dark += qGray(image.pixel(x, y)) < 100;
            }
            return dark;
        };
        DigitalDisplayWidget display;
        display.resize(200, 160);
        display.setValue(42.0);
        QCOMPARE(darkPixelsBelowDigits(display), 0);
        display.setSignalNames({QStringLiteral("Temp:Engine")});
        QVERIFY(darkPixelsBelowDigits(display) > 0);
    }
};

QTEST_MAIN(tst_DigitalDisplay)
#include "tst_digitaldisplay.moc"
