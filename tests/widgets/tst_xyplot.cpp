#include "ConfigFormHarness.h"
#include "XYPlotWidget.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QImage>
#include <QJsonObject>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

class tst_XYPlot : public QObject
{
    Q_OBJECT

    // "NAME@ms=value ..." in order.
    static void feed(XYPlotWidget &plot, const QString &input)
    {
        for (const QString &token : input.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const qsizetype at = token.indexOf(QLatin1Char('@'));
            const qsizetype equals = token.indexOf(QLatin1Char('='));
            plot.setValueForSignalAt(token.left(at), token.mid(equals + 1).toDouble(),
                                     token.mid(at + 1, equals - at - 1).toDouble() / 1000.0);
        }
    }

    // "x,y" of each point, oldest first.
    static QString history(const XYPlotWidget &plot)
    {
        QStringList points;
        for (int age = 0; age < plot.points().size(); ++age) {
            const QPointF p = plot.points().chronological(age);
            points.append(QStringLiteral("%1,%2").arg(p.x()).arg(p.y()));
        }
        return points.join(QLatin1Char(' '));
    }

    // The x of each ring slot in storage order.
    static QString slots(const XYPlotWidget &plot)
    {
        QStringList xs;
        for (const QPointF &p : plot.points().slots())
            xs.append(QString::number(p.x()));
        return xs.join(QLatin1Char(' '));
    }

    static QJsonObject speedAgainstTorque(int maxPoints = 2000)
    {
        return QJsonObject{{"xSignal", "SPEED"}, {"ySignal", "TORQUE"}, {"maxPoints", maxPoints}};
    }

    static QImage render(QWidget &widget)
    {
        QImage image(widget.size(), QImage::Format_ARGB32);
        widget.render(&image);
        return image;
    }

    static bool bluish(QRgb pixel) { return qBlue(pixel) > qRed(pixel) + 60; }

private Q_SLOTS:
    void pointsPairTheLatestValues_data()
    {
        QTest::addColumn<QString>("ySignal");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("points");
        QTest::newRow("nothing until both are seen") << "TORQUE" << "SPEED@0=1 SPEED@40=2" << "";
        QTest::newRow("one frame, one point") << "TORQUE" << "SPEED@0=1 TORQUE@0=5" << "1,5";
        QTest::newRow("one 20 ms bucket, the first pairing") << "TORQUE" << "SPEED@0=1 TORQUE@0=5 SPEED@19=2"
                                                             << "1,5";
        QTest::newRow("later buckets pair the newest values")
            << "TORQUE" << "SPEED@0=1 TORQUE@0=5 SPEED@20=2 TORQUE@25=6 SPEED@40=3" << "1,5 2,5 3,6";
        QTest::newRow("names with a unit suffix") << "TORQUE" << "SPEED:rpm@0=1 TORQUE:Nm@0=5" << "1,5";
        QTest::newRow("other signals are ignored") << "TORQUE" << "BUS_V@0=9 SPEED@0=1 TORQUE@0=5 BUS_V@40=8"
                                                   << "1,5";
        QTest::newRow("one signal as X and Y is X") << "SPEED" << "SPEED@0=1 SPEED@20=2" << "";
    }

    void pointsPairTheLatestValues()
    {
        QFETCH(QString, ySignal);
        QFETCH(QString, input);
        XYPlotWidget plot;
        plot.loadConfig(QJsonObject{{"xSignal", "SPEED"}, {"ySignal", ySignal}});
        feed(plot, input);
        QTEST(history(plot), "points");
    }

    // The part of a name before its first ":" is compared as it stands.
    void nameWithASpaceBeforeTheColonIsAnotherSignal()
    {
        XYPlotWidget plot;
        plot.loadConfig(speedAgainstTorque());
        plot.setValueForSignalAt(QStringLiteral("SPEED :rpm"), 1.0, 0.0);
        plot.setValueForSignalAt(QStringLiteral("TORQUE"), 5.0, 0.0);
        QCOMPARE(history(plot), QString());
    }

    void ringBufferKeepsTheNewestPoints()
    {
        XYPlotWidget plot;
        plot.loadConfig(speedAgainstTorque(3));
        feed(plot, QStringLiteral("TORQUE@0=0 SPEED@0=1 SPEED@20=2 SPEED@40=3 SPEED@60=4 SPEED@80=5"));
        QCOMPARE(slots(plot), QStringLiteral("4 5 3")); // the fourth replaced the first, the fifth the second
        QCOMPARE(plot.points().writeIndex(), 2);
        QCOMPARE(history(plot), QStringLiteral("3,0 4,0 5,0"));

        plot.loadConfig(QJsonObject{{"maxPoints", 2}});
        QCOMPARE(slots(plot), QStringLiteral("4 5"));
        QCOMPARE(plot.points().writeIndex(), 0);
        plot.loadConfig(QJsonObject{{"maxPoints", 3}});
        feed(plot, QStringLiteral("SPEED@100=6 SPEED@120=7"));
        QCOMPARE(history(plot), QStringLiteral("5,0 6,0 7,0"));
    }

    void signalNamesFollowTheConfiguration()
    {
        XYPlotWidget plot;
        QVERIFY(!plot.usesSignals()); // the X and Y rows are the binding
        QSignalSpy changed(&plot, &DashboardWidget::signalNamesChanged);
        plot.loadConfig(QJsonObject{{"ySignal", "TORQUE"}});
        QCOMPARE(plot.signalNames(), QStringList{QStringLiteral("TORQUE")});
        QCOMPARE(plot.title(), QStringLiteral("(none) vs TORQUE"));
        plot.loadConfig(QJsonObject{{"ySignal", "TORQUE"}, {"drawLines", true}});
        QCOMPARE(changed.count(), 1);

        ConfigFormHarness form(plot);
        form.editor<QLineEdit>(0)->setText(QStringLiteral(" SPEED "));
        plot.applyConfigForm();
        QCOMPARE(plot.signalNames(), (QStringList{"SPEED", "TORQUE"}));
        QCOMPARE(changed.count(), 2);
    }

    void autoscaleFollowsThePoints()
    {
        XYPlotWidget plot;
        plot.loadConfig(speedAgainstTorque(3));
        feed(plot, QStringLiteral("SPEED@0=2 TORQUE@0=2"));
        QCOMPARE(plot.ranges().xLo, 1.0); // a single point: widened around it
        QCOMPARE(plot.ranges().yHi, 3.0);
        feed(plot, QStringLiteral("SPEED@20=4 TORQUE@40=30"));
        QCOMPARE(plot.ranges().xLo, 2.0);
        QCOMPARE(plot.ranges().yHi, 30.0);
        feed(plot, QStringLiteral("SPEED@60=3")); // replaces (2, 2), the only point at x = 2
        QCOMPARE(plot.ranges().xLo, 3.0);
        QCOMPARE(plot.ranges().yLo, 2.0);
        plot.loadConfig(QJsonObject{{"autoScaleX", false}, {"xMin", -5}, {"xMax", 5}});
        QCOMPARE(plot.ranges().xLo, -5.0);
        QCOMPARE(plot.ranges().yHi, 30.0);
    }

    void configRoundTripAndForm()
    {
        XYPlotWidget plot;
        const QJsonObject config{{"xSignal", "SPEED"}, {"ySignal", "TORQUE"}, {"autoScaleX", false},
                                 {"autoScaleY", true},  {"xMin", 0},           {"xMax", 4000},
                                 {"yMin", -1},          {"yMax", 1},            {"maxPoints", 500},
                                 {"drawLines", true},   {"showGrid", false}};
        plot.loadConfig(config);
        QCOMPARE(plot.saveConfig(), config);

        ConfigFormHarness form(plot);
        QStringList rows;
        for (int row = 0; row < form.rowCount(); ++row) {
            const auto *check = form.editor<QCheckBox>(row);
            rows.append(check ? check->text() : form.label(row));
        }
        QCOMPARE(rows, (QStringList{"X Signal:", "Y Signal:", "Auto-scale X", "Auto-scale Y", "X Min:", "X Max:",
                                    "Y Min:", "Y Max:", "Max points:", "Connect points", "Show grid"}));
        QCOMPARE(form.editor<QDoubleSpinBox>(5)->value(), 4000.0);
        QCOMPARE(form.editor<QSpinBox>(8)->maximum(), 200000);
        form.editor<QCheckBox>(2)->setChecked(true);
        form.editor<QSpinBox>(8)->setValue(3);
        form.editor<QCheckBox>(9)->setChecked(false);
        plot.applyConfigForm();
        QCOMPARE(plot.saveConfig().value(QLatin1String("autoScaleX")), QJsonValue(true));
        QCOMPARE(plot.maxPoints(), 3);
        QVERIFY(!plot.drawLines());
    }

    void pointsArePaintedWhereTheyMap()
    {
        XYPlotWidget plot;
        plot.resize(300, 240);
        plot.loadConfig(QJsonObject{{"xSignal", "SPEED"}, {"ySignal", "TORQUE"}, {"autoScaleX", false},
                                    {"autoScaleY", false}, {"xMin", 0}, {"xMax", 100}, {"yMin", 0}, {"yMax", 100}});
        feed(plot, QStringLiteral("SPEED@0=25 TORQUE@0=25 SPEED@20=75 TORQUE@40=75 SPEED@60=50 TORQUE@80=50"));
        const QRect area = plot.plotRect();
        auto at = [&area](double x, double y) {
            return QPoint(area.left() + int(x / 100.0 * area.width()),
                          area.top() + int((100.0 - y) / 100.0 * area.height()));
        };
        const QImage dots = render(plot);
        QVERIFY(bluish(dots.pixel(at(25, 25))));
        QVERIFY(bluish(dots.pixel(at(75, 75))));
        QVERIFY(!bluish(dots.pixel(at(50, 25)))); // on the way from the first point to the second
        const QRgb newest = dots.pixel(at(50, 50));
        QVERIFY(qRed(newest) > 180 && qBlue(newest) < 80); // the newest point stands out

        plot.loadConfig(QJsonObject{{"drawLines", true}});
        QVERIFY(bluish(render(plot).pixel(at(50, 25))));
    }

    void clearDataForgetsPointsAndLatestValues()
    {
        XYPlotWidget plot;
        plot.loadConfig(speedAgainstTorque());
        feed(plot, QStringLiteral("SPEED@0=1 TORQUE@0=2"));
        plot.clearData();
        QCOMPARE(plot.points().size(), 0);
        feed(plot, QStringLiteral("TORQUE@0=3")); // no stale X to pair with, even in the same bucket
        QCOMPARE(history(plot), QString());
        feed(plot, QStringLiteral("SPEED@0=4"));
        QCOMPARE(history(plot), QStringLiteral("4,3"));
    }
};

QTEST_MAIN(tst_XYPlot)
#include "tst_xyplot.moc"
