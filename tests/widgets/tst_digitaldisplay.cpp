#include "DigitalDisplayWidget.h"
#include "SignalCaption.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QImage>
#include <QJsonObject>
#include <QTest>

#include <memory>

class tst_DigitalDisplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void valueIsFormattedWithTheDecimals_data();
    void valueIsFormattedWithTheDecimals();
    void decimalsComeFromFileAsTheyStand();
    void configFormEditsTheDecimals();
    void signalStoresAreKeptApart();
    void captionSplitsTheBoundName_data();
    void captionSplitsTheBoundName();
    void captionIsDrawnOnlyWhenBound();
};

void tst_DigitalDisplay::cleanup()
{
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_DigitalDisplay::valueIsFormattedWithTheDecimals_data()
{
    QTest::addColumn<int>("decimals");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("default 1") << 1 << 3.14159 << "3.1";
    QTest::newRow("0 rounds") << 0 << 2.6 << "3";
    QTest::newRow("8") << 8 << 3.14159 << "3.14159000";
    QTest::newRow("negative") << 2 << -0.004 << "-0.00";
    QTest::newRow("large, no clamping") << 1 << 1e7 << "10000000.0";
}

void tst_DigitalDisplay::valueIsFormattedWithTheDecimals()
{
    QFETCH(int, decimals);
    QFETCH(double, value);
    DigitalDisplayWidget display;
    QCOMPARE(display.valueText(), QStringLiteral("0"));
    display.setDecimals(decimals);
    display.setValueForSignalAt(QStringLiteral("any"), value, 12.0);
    QTEST(display.valueText(), "text");
}

void tst_DigitalDisplay::decimalsComeFromFileAsTheyStand()
{
    DigitalDisplayWidget display;
    display.loadConfig(QJsonObject{{QStringLiteral("decimalPlaces"), 12}});
    QCOMPARE(display.decimals(), 12);
    display.setValue(1.5);
    QCOMPARE(display.valueText(), QStringLiteral("1.500000000000"));

    // A missing key keeps the current value; a negative count shows none.
    display.loadConfig(QJsonObject{{QStringLiteral("signal"), QStringLiteral("rpm")}});
    QCOMPARE(display.decimals(), 12);
    display.loadConfig(QJsonObject{{QStringLiteral("decimalPlaces"), -3}});
    QCOMPARE(display.decimals(), 0);
}

void tst_DigitalDisplay::configFormEditsTheDecimals()
{
    DigitalDisplayWidget display;
    auto dialog = std::make_unique<QWidget>();
    auto *form = new QFormLayout(dialog.get());
    display.buildConfigForm(form, dialog.get());
    auto *edit = qobject_cast<QDoubleSpinBox *>(form->itemAt(0, QFormLayout::FieldRole)->widget());
    QVERIFY(edit);
    QCOMPARE(edit->value(), 1.0);
    edit->setValue(12); // the editor stops at 8
    display.applyConfigForm();
    QCOMPARE(display.decimals(), 8);
    dialog.reset();
    display.applyConfigForm();
    QCOMPARE(display.decimals(), 8);
}

void tst_DigitalDisplay::signalStoresAreKeptApart()
{
    DigitalDisplayWidget display;
    display.setSignalNames({QStringLiteral("Temp:Engine")});
    QCOMPARE(display.primarySignal(), QString());

    display.setSignalName(QStringLiteral("rpm"));
    QCOMPARE(display.primarySignal(), QStringLiteral("rpm"));
    QCOMPARE(display.signalNames(), QStringList{QStringLiteral("Temp:Engine")});

    const QJsonObject saved = display.saveConfig();
    QCOMPARE(saved.value(QStringLiteral("signal")).toString(), QStringLiteral("rpm"));
    QCOMPARE(saved.value(QStringLiteral("decimalPlaces")).toInt(), 1);

    DigitalDisplayWidget restored;
    restored.loadConfig(saved);
    QCOMPARE(restored.primarySignal(), QStringLiteral("rpm"));
    QVERIFY(restored.signalNames().isEmpty());
}

void tst_DigitalDisplay::captionSplitsTheBoundName_data()
{
    QTest::addColumn<QString>("bound");
    QTest::addColumn<QString>("upper");
    QTest::addColumn<QString>("lower");
    QTest::newRow("name:suffix") << "Temp:Engine" << "Engine" << "Temp";
    QTest::newRow("plain") << "rpm" << "" << "rpm";
    QTest::newRow("empty parts skipped") << ":Temp::Engine:" << "Engine" << "Temp";
    QTest::newRow("empty") << "" << "" << "";
}

void tst_DigitalDisplay::captionSplitsTheBoundName()
{
    QFETCH(QString, bound);
    const SignalCaption caption(bound);
    QTEST(caption.upper(), "upper");
    QTEST(caption.lower(), "lower");
}

void tst_DigitalDisplay::captionIsDrawnOnlyWhenBound()
{
    // The caption lines sit below the digits: compare the lower part of the
    // widget with and without a binding.
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

QTEST_MAIN(tst_DigitalDisplay)
#include "tst_digitaldisplay.moc"
