#include "ConfigFormHarness.h"
#include "TrendMarkerLabelEditor.h"
#include "TrendMarkerList.h"
#include "TrendPlotWidget.h"
#include "TrendSeries.h"

#include <QApplication>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QLineEdit>
#include <QMenu>
#include <QRandomGenerator>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

class tst_TrendPlot : public QObject
{
    Q_OBJECT

    // A playback plot whose area is 400 px wide: 25 ms per pixel over 10 s.
    static void playback(TrendPlotWidget &plot, const QStringList &names, int windowMs = 10000)
    {
        plot.resize(452, 240);
        plot.setSignalNames(names);
        plot.loadConfig(QJsonObject{{"timeWindowMs", windowMs}});
        plot.setTimeDriven(true);
    }

    static void feed(TrendPlotWidget &plot, const QString &name, qint64 ms, double value)
    {
        plot.setValueForSignalAt(name, value, ms / 1000.0);
    }

    // "name:ms=value ..." in order; a name may hold a ":" itself.
    static void feed(TrendPlotWidget &plot, const QString &input)
    {
        for (const QString &token : input.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const qsizetype equals = token.lastIndexOf(QLatin1Char('='));
            const qsizetype colon = token.lastIndexOf(QLatin1Char(':'), equals);
            feed(plot, token.left(colon), token.mid(colon + 1, equals - colon - 1).toLongLong(),
                 token.mid(equals + 1).toDouble());
        }
    }

    // "ms:value" of each stored sample, oldest first.
    static QString stored(const TrendPlotWidget &plot, const QString &name)
    {
        const TrendSeries *series = plot.series(name);
        QStringList samples;
        for (qsizetype i = 0; series && i < series->size(); ++i)
            samples.append(QStringLiteral("%1:%2").arg(series->at(i).tMs).arg(series->at(i).value));
        return samples.join(QLatin1Char(' '));
    }

    static QImage render(QWidget &widget)
    {
        QImage image(widget.size(), QImage::Format_ARGB32);
        widget.render(&image);
        return image;
    }

    // A pixel of `color` drawn over white at some coverage, antialiased edges included.
    static bool isInk(QRgb pixel, const QColor &color)
    {
        const int drawn[3] = {qRed(pixel), qGreen(pixel), qBlue(pixel)};
        const int ink[3] = {color.red(), color.green(), color.blue()};
        const int strongest = int(std::min_element(ink, ink + 3) - ink);
        const double coverage = double(255 - drawn[strongest]) / (255 - ink[strongest]);
        if (coverage < 0.35 || coverage > 1.05)
            return false;
        for (int i = 0; i < 3; ++i) {
            if (std::abs(drawn[i] - (255.0 - coverage * (255 - ink[i]))) > 12.0)
                return false;
        }
        return true;
    }

    // White where nothing was drawn, black elsewhere.
    static QImage inked(const QImage &image)
    {
        QImage mask(image.size(), QImage::Format_Grayscale8);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                mask.setPixel(x, y, image.pixel(x, y) == qRgb(255, 255, 255) ? 0xffffffff : 0xff000000);
        }
        return mask;
    }

    // The column of `area` that holds the most pixels of `color`, or -1.
    static int columnOf(const QImage &image, const QColor &color, const QRect &area)
    {
        int best = -1;
        int bestCount = 0;
        for (int x = area.left(); x <= area.right(); ++x) {
            int count = 0;
            for (int y = area.top(); y <= area.bottom(); ++y)
                count += isInk(image.pixel(x, y), color) ? 1 : 0;
            if (count > bestCount) {
                best = x;
                bestCount = count;
            }
        }
        return best;
    }

    static QStringList labels(const QList<TrendMarker> &markers)
    {
        QStringList result;
        for (const TrendMarker &marker : markers)
            result.append(marker.label);
        return result;
    }

    // Answers the next popup menu: records its entries, picks `choice` (or nothing).
    static void answerMenu(const QString &choice, QStringList *entries)
    {
        QTimer::singleShot(0, [choice, entries] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (!menu)
                return;
            for (QAction *action : menu->actions()) {
                entries->append(action->text());
                if (action->text() == choice)
                    action->trigger();
            }
            menu->close();
        });
    }

private Q_SLOTS:
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void timeStampedValuesAreStoredWhenTheyChange_data()
    {
        QTest::addColumn<bool>("sampleAndHold");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("stored");
        QTest::newRow("hold: a repeat is never stored") << true << "A:0=1 A:10=1 A:60=1 A:900=1" << "0:1";
        QTest::newRow("hold: changes are") << true << "A:0=1 A:10=2 A:20=2 A:30=1" << "0:1 10:2 30:1";
        QTest::newRow("no hold: a steady value every 50 ms")
            << false << "A:0=1 A:20=1 A:49=1 A:50=1 A:70=1 A:120=1" << "0:1 50:1 120:1";
        QTest::newRow("within epsilon is the same value") << true << "A:0=1 A:10=1.0000000001" << "0:1";
        QTest::newRow("4.35 s is 4350 ms") << true << "A:4350=1 A:4351=2" << "4350:1 4351:2";
        QTest::newRow("a name with a unit suffix") << true << "A:rpm:0=3" << "0:3";
        QTest::newRow("names are case-sensitive") << true << "a:0=3" << "";
    }

    void timeStampedValuesAreStoredWhenTheyChange()
    {
        QFETCH(bool, sampleAndHold);
        QFETCH(QString, input);
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A")});
        plot.loadConfig(QJsonObject{{"sampleAndHold", sampleAndHold ? 1 : 0}});
        feed(plot, input);
        QTEST(stored(plot, QStringLiteral("A")), "stored");
    }

    void boundNamesWithASuffixTakeThePlainName()
    {
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("SPEED:rpm")});
        feed(plot, QStringLiteral("SPEED"), 0, 1500.0);
        QCOMPARE(stored(plot, QStringLiteral("SPEED:rpm")), QStringLiteral("0:1500"));
    }

    void steadyLiveValueStoresOneSampleAndReachesTheRightEdge()
    {
        TrendPlotWidget plot;
        plot.resize(452, 240);
        plot.setSignalNames({QStringLiteral("A")});
        plot.setValueForSignal(QStringLiteral("A"), 5.0);
        QTest::qWait(300); // repeats move the time axis on without being stored
        for (int i = 0; i < 4; ++i)
            plot.setValueForSignal(QStringLiteral("A"), 5.0);
        QCOMPARE(plot.series(QStringLiteral("A"))->size(), 1);
        const QRect area = plot.plotRect();
        const QImage image = render(plot);
        const QColor line(0, 114, 178);
        QVERIFY(columnOf(image, line, QRect(area.right() - 3, area.top(), 3, area.height())) >= 0);
        // The line starts at its sample.
        QVERIFY(columnOf(image, line, QRect(area.left() + 1, area.top(), 3, area.height())) < 0);
    }

    void trimmingKeepsOneSampleBeforeTheWindow()
    {
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A"), QStringLiteral("B")}, 1000);
        feed(plot, QStringLiteral("B"), 0, 7.0);
        for (int i = 0; i <= 30; ++i)
            feed(plot, QStringLiteral("A"), i * 100, i);
        // The window is [2000, 3000]: 1900 is the last sample before 2000 is inside.
        QVERIFY(stored(plot, QStringLiteral("A")).startsWith(QLatin1String("1900:19 2000:20 ")));
        QCOMPARE(stored(plot, QStringLiteral("B")), QStringLiteral("0:7")); // never emptied
        QCOMPARE(plot.lastTrimMs(), 3000);
    }

    void seekDropsTheFutureAndTrimsToTheNewWindow_data()
    {
        QTest::addColumn<qint64>("seekMs");
        QTest::addColumn<QString>("firstAndLast");
        QTest::newRow("back into the history") << qint64(5000) << "2900 5000";
        QTest::newRow("forward past the data") << qint64(20000) << "10000 10000";
        QTest::newRow("before the first sample") << qint64(-1) << "";
    }

    void seekDropsTheFutureAndTrimsToTheNewWindow()
    {
        QFETCH(qint64, seekMs);
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A")}, 2000);
        plot.loadConfig(QJsonObject{{"timeWindowMs", 100000}}); // keep everything while feeding
        for (int i = 0; i <= 100; ++i)
            feed(plot, QStringLiteral("A"), i * 100, i);
        plot.loadConfig(QJsonObject{{"timeWindowMs", 2000}});
        plot.setPlaybackTimeMs(seekMs);
        plot.seekTo(seekMs);
        const TrendSeries *series = plot.series(QStringLiteral("A"));
        const QString firstAndLast =
            series->isEmpty() ? QString() : QStringLiteral("%1 %2").arg(series->front().tMs).arg(series->back().tMs);
        QTEST(firstAndLast, "firstAndLast");
        QCOMPARE(plot.nowMs(), seekMs); // the window ends at the new position
    }

    void seriesExtremesAgreeWithEverySampleAfterTrimmingAndDropping()
    {
        // Block summaries must follow samples leaving at the front (with the
        // compaction that moves the rest) and at the back.
        TrendSeries series;
        for (qint64 t = 0; t < 5000; ++t)
            series.append({t, std::sin(t * 0.37) * (t % 97)});
        series.trimBefore(1300);
        series.dropAfter(4100);
        series.append({4200, 1e6});
        for (const auto &[from, to] : {std::pair<qsizetype, qsizetype>{0, 1}, {0, 64}, {3, 200}, {63, 1900},
                                       {100, series.size()}, {series.size() - 5, series.size()}}) {
            const double *values = series.values();
            const auto [lo, hi] = std::minmax_element(values + from, values + to);
            QCOMPARE(series.extremes(from, to), std::make_pair(*lo, *hi));
        }
    }

    void valueRange_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QStringList>("hidden");
        QTest::addColumn<QJsonObject>("config");
        QTest::addColumn<double>("lower");
        QTest::addColumn<double>("upper");
        const QJsonObject autoscale;
        QTest::newRow("constant v gives v +- 1") << "A:0=5 B:0=5" << QStringList() << autoscale << 4.0 << 6.0;
        QTest::newRow("0 and 10 get 10 % padding") << "A:0=0 B:500=10" << QStringList() << autoscale << -1.0 << 11.0;
        QTest::newRow("hidden channels do not count") << "A:0=0 B:500=100" << QStringList{"B"} << autoscale << -1.0
                                                      << 1.0;
        QTest::newRow("every channel hidden") << "A:0=3 B:0=4" << QStringList{"A", "B"} << autoscale << -1.0 << 1.0;
        QTest::newRow("the sample before the window does not count")
            << "A:0=100 A:11000=10 A:12000=20" << QStringList() << autoscale << 9.0 << 21.0;
        QTest::newRow("fixed range") << "A:0=100" << QStringList()
                                     << QJsonObject{{"autoscale", false}, {"yMin", -5}, {"yMax", 5}} << -5.0 << 5.0;
    }

    void valueRange()
    {
        QFETCH(QString, input);
        QFETCH(QStringList, hidden);
        QFETCH(QJsonObject, config);
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A"), QStringLiteral("B")});
        plot.loadConfig(config);
        feed(plot, input);
        for (const QString &name : hidden)
            plot.toggleChannel(name);
        QTEST(plot.valueRange().lower, "lower");
        QTEST(plot.valueRange().upper, "upper");
    }

    void linesAreDrawnOnTheValueRange()
    {
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A")});
        feed(plot, QStringLiteral("A:0=100 A:10500=5 A:11000=10 A:11500=7.5 A:12000=20")); // 100 is before the window
        const TrendPlotWidget::ValueRange range = plot.valueRange();
        QCOMPARE(range.upper, 21.5);
        const QRectF area(plot.plotRect());
        // Held at 7.5 up to the newest sample, which sits on the right edge.
        const int y = int(area.bottom() - area.height() * (7.5 - range.lower) / (range.upper - range.lower));
        const int x = plot.plotRect().right() - 2;
        QVERIFY(columnOf(render(plot), QColor(0, 114, 178), QRect(x, y - 1, 1, 3)) == x);
    }

    void altLeftPinsAMarker_data()
    {
        QTest::addColumn<bool>("timeDriven");
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("moved");
        QTest::newRow("live: a screen marker stays in place") << false << int(TrendMarker::Screen) << 0;
        QTest::newRow("playback: a data marker scrolls with the data") << true << int(TrendMarker::Data) << -100;
    }

    void altLeftPinsAMarker()
    {
        QFETCH(bool, timeDriven);
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A")});
        plot.setTimeDriven(timeDriven);
        feed(plot, QStringLiteral("A"), 10000, 1.0);
        const QRect area = plot.plotRect();
        const QPoint press(area.left() + 300, area.center().y());
        QTest::mousePress(&plot, Qt::LeftButton, Qt::NoModifier, press);
        QVERIFY(plot.markers().isEmpty()); // without Alt the press is the base's

        QTest::mousePress(&plot, Qt::LeftButton, Qt::AltModifier, press);
        QCOMPARE(plot.markers().size(), 1);
        const TrendMarker marker = plot.markers().first();
        QTEST(marker.kind, "kind");
        QCOMPARE(marker.xFrac, 0.75);
        if (timeDriven)
            QCOMPARE(marker.tMs, 7500);

        const QColor color = timeDriven ? plot.dataMarkerColor() : plot.screenMarkerColor();
        const int before = columnOf(render(plot), color, area);
        QVERIFY(std::abs(before - press.x()) <= 1);
        // A quarter of the window passes: the lines move 100 px to the left.
        QTest::qWait(timeDriven ? 0 : 300);
        feed(plot, QStringLiteral("A"), 12500, 2.0);
        QTEST(columnOf(render(plot), color, area) - before, "moved");
    }

    void altShiftLeftOpensTheLabelEditor()
    {
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A")});
        QTest::mousePress(&plot, Qt::LeftButton, Qt::AltModifier | Qt::ShiftModifier, plot.plotRect().center());
        QCOMPARE(plot.markers().size(), 1);
        QTRY_VERIFY(plot.markerList()->labelEditor());
        TrendMarkerLabelEditor *editor = plot.markerList()->labelEditor();
        QCOMPARE(editor->windowTitle(), QStringLiteral("Marker label"));
        QCOMPARE(editor->lineEdit()->placeholderText(), QStringLiteral("Label\u2026 (Enter to save, Esc to cancel)"));
        QTest::keyClicks(editor->lineEdit(), QStringLiteral("load step"));
        QTest::keyClick(editor->lineEdit(), Qt::Key_Return);
        QCOMPARE(plot.markers().first().label, QStringLiteral("load step"));
        QTRY_VERIFY(!plot.markerList()->labelEditor());

        plot.markerList()->editLabel(0, QPoint(10, 10));
        QCOMPARE(plot.markerList()->labelEditor()->lineEdit()->selectedText(), QStringLiteral("load step"));
        QTest::keyClicks(plot.markerList()->labelEditor()->lineEdit(), QStringLiteral("other"));
        QTest::keyClick(plot.markerList()->labelEditor(), Qt::Key_Escape);
        QTRY_VERIFY(!plot.markerList()->labelEditor());
        QCOMPARE(plot.markers().first().label, QStringLiteral("load step"));
    }

    void deletingMarkersClosesTheLabelEditor()
    {
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A")});
        plot.loadConfig(QJsonObject{{"markers", QJsonArray{QJsonObject{{"kind", "data"}, {"label", "a"}},
                                                           QJsonObject{{"kind", "screen"}, {"label", "b"}}}}});
        plot.markerList()->editLabel(0, QPoint(10, 10));
        const QPointer<TrendMarkerLabelEditor> editor = plot.markerList()->labelEditor();
        plot.markerList()->removeKind(TrendMarker::Data);
        QVERIFY(!editor->isVisible());
        // Still alive until the event loop deletes it, the editor's index 0 now
        // names the screen marker: Enter must not label it.
        editor->lineEdit()->setText(QStringLiteral("oops"));
        Q_EMIT editor->lineEdit()->returnPressed();
        QCOMPARE(labels(plot.markers()), QStringList{QStringLiteral("b")});
        QTRY_VERIFY(!editor);
    }

    void altRightDeletesMarkersByKind_data()
    {
        QTest::addColumn<QStringList>("kinds");
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QStringList>("left");
        const QStringList mixed{"data", "screen", "data"};
        QTest::newRow("all") << mixed << "Delete all markers" << QStringList();
        QTest::newRow("screen") << mixed << "Delete screen markers" << QStringList{"0", "2"};
        QTest::newRow("data") << mixed << "Delete data markers" << QStringList{"1"};
        QTest::newRow("data when there are none") << QStringList{"screen", "screen"} << "Delete data markers"
                                                   << QStringList{"0", "1"};
        QTest::newRow("menu closed without a choice") << mixed << QString() << QStringList{"0", "1", "2"};
    }

    void altRightDeletesMarkersByKind()
    {
        QFETCH(QStringList, kinds);
        QFETCH(QString, choice);
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A")});
        QJsonArray markers;
        for (int i = 0; i < kinds.size(); ++i)
            markers.append(QJsonObject{{"kind", kinds.at(i)}, {"label", QString::number(i)}});
        plot.loadConfig(QJsonObject{{"markers", markers}});

        QStringList entries;
        answerMenu(choice, &entries);
        QTest::mousePress(&plot, Qt::RightButton, Qt::AltModifier, plot.plotRect().center());
        QCOMPARE(entries, (QStringList{"Delete all markers", "Delete screen markers", "Delete data markers"}));
        QTEST(labels(plot.markers()), "left");
    }

    void altLeftOnTheLegendHidesAndShowsAChannel()
    {
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A"), QStringLiteral("B")});
        feed(plot, QStringLiteral("A:0=0 B:0=100 A:5000=10"));
        const QColor channelB(213, 94, 0);
        auto pressLegend = [&plot](const QString &name) {
            QTest::mousePress(&plot, Qt::LeftButton, Qt::AltModifier, plot.legend().rectOf(name).center());
        };
        QVERIFY(columnOf(render(plot), channelB, plot.plotRect()) >= 0);

        pressLegend(QStringLiteral("B"));
        QCOMPARE(plot.hiddenChannels(), QSet<QString>{QStringLiteral("B")});
        QVERIFY(plot.markers().isEmpty());
        QCOMPARE(plot.valueRange().upper, 11.0);
        QCOMPARE(columnOf(render(plot), channelB, plot.plotRect()), -1);

        pressLegend(QStringLiteral("A")); // every channel hidden: an empty plot, a legend still there
        QCOMPARE(plot.valueRange().upper, 1.0);
        pressLegend(QStringLiteral("B"));
        QCOMPARE(plot.hiddenChannels(), QSet<QString>{QStringLiteral("A")});
        QCOMPARE(plot.valueRange().upper, 101.0);
    }

    void hoverReadsTheHeldValues_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QStringList>("hidden");
        QTest::addColumn<QStringList>("readout");
        // Column k of the plot area shows the time (k + 0.5) * 25 ms.
        QTest::newRow("last sample at or before the time") << 300 << QStringList()
                                                          << QStringList{"t = 7.512 s", "A: 5"};
        QTest::newRow("hidden channel left out") << 390 << QStringList{"A"} << QStringList{"t = 9.762 s", "B: 2"};
        QTest::newRow("outside the plot area") << -20 << QStringList() << QStringList();
    }

    void hoverReadsTheHeldValues()
    {
        QFETCH(int, column);
        QFETCH(QStringList, hidden);
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A"), QStringLiteral("B")});
        feed(plot, QStringLiteral("A:0=0 A:7000=5 A:8000=9 B:9000=2 A:10000=9"));
        for (const QString &name : hidden)
            plot.toggleChannel(name);
        plot.show();
        QVERIFY(QTest::qWaitForWindowExposed(&plot));
        QTest::mouseMove(&plot, QPoint(plot.plotRect().left() + column, plot.plotRect().center().y()));
        QTRY_VERIFY(plot.isHovering());
        QTEST(plot.hoverReadout(), "readout");

        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(&plot, &leave);
        QCOMPARE(plot.hoverReadout(), QStringList());
    }

    void markersRoundTripThroughTheConfig()
    {
        TrendPlotWidget plot;
        const QJsonArray saved{QJsonObject{{"kind", "data"}, {"t", 1234.9}, {"xFrac", 0.5}, {"label", "step"}},
                               QJsonObject{{"kind", "screen"}, {"xFrac", 0.25}},
                               QJsonObject{{"kind", "Screen"}, {"t", 7}}};
        plot.loadConfig(QJsonObject{{"markers", saved}});
        const QJsonArray expected{
            QJsonObject{{"kind", "data"}, {"t", 1234}, {"xFrac", 0.5}, {"label", "step"}},
            QJsonObject{{"kind", "screen"}, {"t", 0}, {"xFrac", 0.25}, {"label", ""}},
            QJsonObject{{"kind", "data"}, {"t", 7}, {"xFrac", 0}, {"label", ""}}}; // the kind is case-sensitive
        QCOMPARE(plot.saveConfig().value(QLatin1String("markers")).toArray(), expected);

        TrendPlotWidget restored;
        restored.loadConfig(plot.saveConfig());
        QCOMPARE(restored.saveConfig(), plot.saveConfig());
        restored.loadConfig(QJsonObject{{"gridLines", 4}}); // no "markers": kept
        QCOMPARE(restored.markers().size(), 3);
        restored.loadConfig(QJsonObject{{"markers", QJsonArray()}});
        QVERIFY(restored.markers().isEmpty());
    }

    void configFormEditsTheSettings()
    {
        TrendPlotWidget plot;
        plot.loadConfig(QJsonObject{{"sampleAndHold", 1}, {"margin", 3}});
        ConfigFormHarness form(plot);
        QStringList rows;
        for (int row = 0; row < form.rowCount(); ++row)
            rows.append(form.label(row));
        QCOMPARE(rows, (QStringList{"Time window (ms):", "Autoscale Y:", "Y min:", "Y max:", "Show grid:",
                                    "Grid lines:", "Step plot style:"}));
        auto *autoscale = form.editor<QCheckBox>(1);
        auto *yMin = form.editor<QDoubleSpinBox>(2);
        auto *yMax = form.editor<QDoubleSpinBox>(3);
        QVERIFY(!yMin->isEnabled() && !yMax->isEnabled());
        autoscale->setChecked(false);
        QVERIFY(yMin->isEnabled() && yMax->isEnabled());
        QCOMPARE(yMin->decimals(), 4);

        form.editor<QSpinBox>(0)->setValue(2500);
        yMin->setValue(-3.5);
        yMax->setValue(3.5);
        form.editor<QCheckBox>(4)->setChecked(false);
        form.editor<QSpinBox>(5)->setValue(4);
        form.editor<QCheckBox>(6)->setChecked(false);
        plot.applyConfigForm();
        QJsonObject config = plot.saveConfig();
        config.remove(QLatin1String("markers"));
        QCOMPARE(config, (QJsonObject{{"timeWindowMs", 2500}, {"margin", 3}, {"autoscale", false}, {"yMin", -3.5},
                                      {"yMax", 3.5}, {"showGrid", false}, {"gridLines", 4}, {"leftAxis", 40},
                                      {"bottomPad", 20}, {"sampleAndHold", 0}}));
    }

    void decimatedLinesCoverTheSamePixelsAsEverySample_data()
    {
        QTest::addColumn<bool>("step");
        QTest::addColumn<int>("samples");
        QTest::addColumn<bool>("outOfOrder");
        QTest::newRow("dense, straight") << false << 20000 << false;
        QTest::newRow("dense, step") << true << 20000 << false;
        QTest::newRow("sparse, straight") << false << 40 << false;
        QTest::newRow("sparse, step") << true << 40 << false;
        QTest::newRow("out of time order") << false << 5000 << true;
    }

    void decimatedLinesCoverTheSamePixelsAsEverySample()
    {
        QFETCH(bool, step);
        QFETCH(int, samples);
        QFETCH(bool, outOfOrder);
        TrendPlotWidget plot;
        playback(plot, {QStringLiteral("A"), QStringLiteral("B")});
        plot.loadConfig(QJsonObject{{"sampleAndHold", step ? 1 : 0}, {"timeWindowMs", 100000}, {"showGrid", false}});
        QRandomGenerator random(samples);
        double walk = 0.0;
        for (int i = 0; i < samples; ++i) {
            qint64 t = qint64(i) * 12000 / samples;
            if (outOfOrder && random.bounded(10) == 0)
                t -= random.bounded(600);
            walk += random.bounded(2.0) - 1.0;
            feed(plot, QStringLiteral("A"), t, walk);
            feed(plot, QStringLiteral("B"), t, std::sin(i * 0.01) * 20.0 + random.bounded(3.0));
        }
        plot.loadConfig(QJsonObject{{"timeWindowMs", 10000}}); // 2 s of the data lie before the window

        const QImage decimated = render(plot);
        plot.setDecimation(false);
        const QImage everySample = render(plot);
        // Overlapping antialiased segments of every sample may shade a pixel
        // more deeply; which pixels are drawn must not change.
        QCOMPARE(inked(decimated), inked(everySample));
    }
};

QTEST_MAIN(tst_TrendPlot)
#include "tst_trendplot.moc"
