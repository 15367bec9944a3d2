#include "ConfigFormHarness.h"
#include "DashboardWidgetFactory.h"
#include "LineWidget.h"
#include "TextLabelWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QJsonObject>
#include <QLineEdit>
#include <QSpinBox>
#include <QTest>

#include <memory>

// The line and the text label: widgets that bind no signal and only carry
// their own settings.
class tst_Decorations : public QObject
{
    Q_OBJECT

    static QImage render(QWidget &widget)
    {
        QImage image(widget.size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        // Without the window background: what is not transparent, the widget painted.
        widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image;
    }
    // The row labels, then the entries of each combo box, top to bottom.
    static QStringList labelsAndChoices(const ConfigFormHarness &form)
    {
        QStringList texts;
        for (int row = 0; row < form.rowCount(); ++row)
            texts.append(form.label(row));
        for (int row = 0; row < form.rowCount(); ++row) {
            if (const QComboBox *combo = form.editor<QComboBox>(row)) {
                for (int i = 0; i < combo->count(); ++i)
                    texts.append(combo->itemText(i));
            }
        }
        return texts;
    }

private Q_SLOTS:
    void initTestCase() { DashboardWidgetFactory::instance().registerBuiltInTypes(); }

    void colourFromAFileName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QColor>("lineColour");
        QTest::addColumn<QColor>("labelColour");
        const QColor gray(120, 120, 120);
        QTest::newRow("Gray") << "Gray" << gray << gray;
        QTest::newRow("Light Gray is the line's only") << "Light Gray" << QColor(180, 180, 180) << QColor(Qt::black);
        QTest::newRow("Green is dark green") << "Green" << QColor(Qt::darkGreen) << QColor(Qt::darkGreen);
        QTest::newRow("names are case-sensitive") << "green" << gray << QColor(Qt::black);
        QTest::newRow("unknown") << "Purple" << gray << QColor(Qt::black);
    }

    void colourFromAFileName()
    {
        QFETCH(QString, name);
        LineWidget line;
        TextLabelWidget label;
        line.loadConfig(QJsonObject{{"color", name}});
        label.loadConfig(QJsonObject{{"color", name}});
        QTEST(line.color(), "lineColour");
        QTEST(label.color(), "labelColour");
    }

    void colourOutsideTheTableIsSavedAsTheFallback()
    {
        LineWidget line;
        TextLabelWidget label;
        line.setColor(Qt::green); // "Green" is dark green
        label.setColor(QColor(180, 180, 180)); // the line's "Light Gray"
        QCOMPARE(line.saveConfig().value("color").toString(), QStringLiteral("Gray"));
        QCOMPARE(label.saveConfig().value("color").toString(), QStringLiteral("Black"));
    }

    void lineThicknessFromAFileIsAtLeastOne_data()
    {
        QTest::addColumn<QJsonValue>("thickness");
        QTest::addColumn<int>("expected");
        QTest::newRow("0") << QJsonValue(0) << 1;
        QTest::newRow("-3") << QJsonValue(-3) << 1;
        QTest::newRow("50, beyond the editor") << QJsonValue(50) << 50;
        QTest::newRow("not a number keeps 2") << QJsonValue("thick") << 2;
    }

    void lineThicknessFromAFileIsAtLeastOne()
    {
        QFETCH(QJsonValue, thickness);
        LineWidget line;
        line.loadConfig(QJsonObject{{"thickness", thickness}});
        QTEST(line.thickness(), "expected");
    }

    void configRoundTrip_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QJsonObject>("defaults");
        QTest::addColumn<QJsonObject>("custom");
        QTest::newRow("Line") << "Line" << QJsonObject{{"orientation", "Horizontal"}, {"thickness", 2}, {"color", "Gray"}}
                              << QJsonObject{{"orientation", "Vertical"}, {"thickness", 5}, {"color", "Blue"}};
        QTest::newRow("TextLabel")
            << "TextLabel"
            << QJsonObject{{"text", "Label"}, {"color", "Black"}, {"point", 12}, {"bold", false}, {"align", "Center"}}
            << QJsonObject{{"text", "Coolant"}, {"color", "Red"}, {"point", 20}, {"bold", true}, {"align", "Left"}};
    }

    void configRoundTrip()
    {
        QFETCH(QString, type);
        QFETCH(QJsonObject, custom);
        DashboardWidgetFactory &factory = DashboardWidgetFactory::instance();
        std::unique_ptr<DashboardWidget> saved(factory.create(type));
        QVERIFY(saved && !saved->usesSignals());
        QTEST(saved->saveConfig(), "defaults");
        saved->loadConfig(custom);
        std::unique_ptr<DashboardWidget> restored(factory.create(type));
        restored->loadConfig(saved->saveConfig());
        restored->loadConfig(QJsonObject()); // missing keys keep what is set
        QCOMPARE(restored->saveConfig(), custom);
    }

    void lineConfigForm()
    {
        LineWidget line;
        line.loadConfig(QJsonObject{{"thickness", 50}, {"color", "Blue"}});
        ConfigFormHarness form(line);
        QCOMPARE(labelsAndChoices(form), QStringList({"Orientation:", "Thickness:", "Color:", "Horizontal", "Vertical",
                                                      "Gray", "Light Gray", "Black", "White", "Red", "Blue", "Green"}));
        auto *orientation = form.editor<QComboBox>(0);
        auto *thickness = form.editor<QSpinBox>(1);
        auto *colour = form.editor<QComboBox>(2);
        // The file's 50 shows as 20, where the editor stops.
        QCOMPARE(QStringList({orientation->currentText(), thickness->text(), colour->currentText()}),
                 QStringList({"Horizontal", "20", "Blue"}));

        orientation->setCurrentText(QStringLiteral("Vertical"));
        thickness->setValue(7);
        colour->setCurrentText(QStringLiteral("Light Gray"));
        line.applyConfigForm();
        const QJsonObject applied{{"orientation", "Vertical"}, {"thickness", 7}, {"color", "Light Gray"}};
        QCOMPARE(line.saveConfig(), applied);
        form.close();
        line.applyConfigForm(); // the editors are gone: nothing to read, no crash
        QCOMPARE(line.saveConfig(), applied);
    }

    void labelConfigForm()
    {
        TextLabelWidget label;
        label.loadConfig(QJsonObject{{"color", "Gray"}, {"align", "Right"}});
        ConfigFormHarness form(label);
        QCOMPARE(labelsAndChoices(form), QStringList({"Text:", "Color:", "Size:", QString(), "Align:", "Black", "Gray",
                                                      "White", "Red", "Blue", "Green", "Center", "Left", "Right"}));
        auto *text = form.editor<QLineEdit>(0);
        auto *colour = form.editor<QComboBox>(1);
        auto *size = form.editor<QSpinBox>(2);
        auto *bold = form.editor<QCheckBox>(3);
        auto *align = form.editor<QComboBox>(4);
        QCOMPARE(QStringList({text->text(), colour->currentText(), size->text(), bold->text(), align->currentText()}),
                 QStringList({"Label", "Gray", "12", "Bold", "Right"}));

        text->setText(QStringLiteral("Pump 2"));
        colour->setCurrentText(QStringLiteral("Blue"));
        size->setValue(18);
        bold->setChecked(true);
        align->setCurrentText(QStringLiteral("Center"));
        label.applyConfigForm();
        QCOMPARE(label.saveConfig(), (QJsonObject{{"text", "Pump 2"}, {"color", "Blue"}, {"point", 18}, {"bold", true},
                                                  {"align", "Center"}}));
    }

    void linePaintedAcrossTheMiddle_data()
    {
        QTest::addColumn<QString>("orientation");
        QTest::addColumn<QPoint>("onLine");
        QTest::addColumn<QPoint>("offLine");
        QTest::newRow("horizontal") << "Horizontal" << QPoint(2, 18) << QPoint(2, 22);
        QTest::newRow("vertical") << "Vertical" << QPoint(48, 38) << QPoint(52, 38);
    }

    void linePaintedAcrossTheMiddle()
    {
        QFETCH(QString, orientation);
        QFETCH(QPoint, onLine);
        QFETCH(QPoint, offLine);
        LineWidget line;
        line.resize(101, 41); // halved as integers: 4 pixels wide from 48 or 18 on
        line.loadConfig(QJsonObject{{"orientation", orientation}, {"thickness", 4}, {"color", "Green"}});
        const QImage image = render(line);
        QCOMPARE(image.pixelColor(onLine), QColor(Qt::darkGreen));
        QCOMPARE(image.pixelColor(offLine).alpha(), 0);
    }

    void labelTextPaintedWhereAligned_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("align");
        QTest::addColumn<bool>("inkOnTheLeft");
        QTest::addColumn<bool>("inkOnTheRight");
        QTest::newRow("Left") << "WWWW" << "Left" << true << false;
        QTest::newRow("Right") << "WWWW" << "Right" << false << true;
        QTest::newRow("Center") << "WWWW" << "Center" << true << true;
        QTest::newRow("names are case-sensitive") << "WWWW" << "left" << true << true;
        QTest::newRow("empty text: background only") << "" << "Center" << false << false;
    }

    void labelTextPaintedWhereAligned()
    {
        QFETCH(QString, text);
        QFETCH(QString, align);
        TextLabelWidget label;
        label.resize(240, 40);
        label.loadConfig(QJsonObject{{"text", text}, {"align", align}, {"color", "Red"}, {"bold", true}});
        const QImage image = render(label);
        const QColor window = label.palette().color(QPalette::Window);
        auto inked = [&image, &window](const QRect &area) {
            for (int y = area.top(); y <= area.bottom(); ++y) {
                for (int x = area.left(); x <= area.right(); ++x) {
                    if (image.pixelColor(x, y) != window)
                        return true;
                }
            }
            return false;
        };
        QTEST(inked(QRect(0, 0, 110, 40)), "inkOnTheLeft");
        QTEST(inked(QRect(130, 0, 110, 40)), "inkOnTheRight");
        // Clear of the 4-pixel side margins, and centred top to bottom.
        QVERIFY(!inked(QRect(0, 0, 4, 40)));
        QVERIFY(!inked(QRect(236, 0, 4, 40)));
        QVERIFY(!inked(QRect(0, 0, 240, 8)));
    }
};

QTEST_MAIN(tst_Decorations)
#include "tst_decorations.moc"
