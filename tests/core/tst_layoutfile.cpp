#include "ProbeWidget.h"

#include "DashboardItem.h"
#include "DashboardWidgetFactory.h"
#include "DesignScene.h"
#include "LayoutFile.h"
#include "LayoutFormat.h"
#include "TestFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

int liveDashboardWidgets()
{
    const QWidgetList widgets = QApplication::allWidgets();
    return int(std::count_if(widgets.cbegin(), widgets.cend(),
                             [](QWidget *widget) { return qobject_cast<DashboardWidget *>(widget); }));
}

} // namespace

class tst_LayoutFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        ProbeWidget::registerTypes();
        DashboardWidgetFactory::instance().registerBuiltInTypes();
    }

    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    // The old dashboard leaves the scene at once and is deleted on the next
    // event-loop turn, so a widget still on the stack stays valid meanwhile.
    void loadReplacesTheDashboardAndFreesTheOldOne()
    {
        DesignScene scene;
        auto *old = new DashboardItem(new ProbeWidget);
        scene.addItem(old);
        QGraphicsRectItem *decoration = scene.addRect(0, 0, 5, 5);
        const QPointer<DashboardWidget> oldWidget = old->dashboardWidget();

        LayoutFile layout(&scene);
        const QString path = write("replace.json", R"({"items": [{"type": "TestProbe"}], "isMaximized": true})");
        QCOMPARE(layout.load(path, false), LayoutFile::Result::Ok);
        QCOMPARE(scene.dashboardItems().size(), 1);
        QVERIFY(scene.items().contains(decoration));
        QCOMPARE(old->scene(), nullptr);
        QVERIFY(oldWidget);
        QTRY_VERIFY(!oldWidget);
        // What the caller keeps beside the items is handed back.
        QCOMPARE(layout.topLevel().value(LayoutFormat::MaximizedKey), QJsonValue(true));
    }

    void replacedDashboardsAreFreed()
    {
        DesignScene scene;
        LayoutFile layout(&scene);
        const QString demo = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo/layouts/demo.json");
        const auto loadTimes = [&](int times) {
            for (int i = 0; i < times; ++i) {
                if (layout.load(demo, false) != LayoutFile::Result::Ok)
                    return -1;
                QCoreApplication::processEvents();
            }
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return liveDashboardWidgets();
        };
        const int afterTwo = loadTimes(2);
        QVERIFY(afterTwo > 10);
        QCOMPARE(loadTimes(18), afterTwo);
        QCOMPARE(scene.dashboardItems().size(), afterTwo);
    }

    // Unknown types, non-objects, no type, wrong value types and absurd
    // numbers: what can be built is, within the format's limits.
    void damagedRecordsLoadPartiallyWithinTheLimits()
    {
        const QByteArray json = R"({"items": [
            {"type": "TestProbe", "x": 10, "y": 10}, {"type": "NoSuchWidget"}, 5, null, "text", {},
            {"type": "TestProbe", "x": "left", "width": [], "signals": 12, "config": "none"},
            {"type": "TestProbe", "x": -1e15, "y": 1e9, "width": 1e12, "height": -1e12, "z": 1e300}],
            "windowGeometry": "!!not base64!!", "windowState": 42})";
        DesignScene scene;
        QCOMPARE(LayoutFile(&scene).load(write("damaged.json", json), true), LayoutFile::Result::Ok);
        const QList<DashboardItem *> loaded = scene.dashboardItems();
        QCOMPARE(loaded.size(), 3);
        for (DashboardItem *item : loaded) {
            QVERIFY(item->designMode());
            QVERIFY(item->size().width() <= LayoutFormat::MaxSize && item->size().height() >= 60);
            QVERIFY(item->dashboardWidget()->width() <= LayoutFormat::MaxSize);
            QVERIFY(qAbs(item->pos().x()) <= LayoutFormat::MaxExtent && qAbs(item->pos().y()) <= LayoutFormat::MaxExtent);
            QVERIFY(qAbs(item->zValue()) <= LayoutFormat::MaxExtent);
        }
    }

    void unknownRecordsSurviveLoadAndSave_data()
    {
        QTest::addColumn<int>("probesDeleted");
        QTest::addColumn<QList<int>>("expectedIndexes");
        QTest::newRow("in their places") << 0 << QList<int>{1, 3};
        QTest::newRow("clamped to the end") << 1 << QList<int>{1, 2};
    }

    void unknownRecordsSurviveLoadAndSave()
    {
        QFETCH(int, probesDeleted);
        QFETCH(QList<int>, expectedIndexes);
        const QByteArray json = R"({"items": [
            {"type": "TestProbe", "x": 10, "y": 10, "z": 2},
            {"type": "FutureDial", "x": 1.5, "signals": ["A", 7], "config": {"needle": [1, {"deep": null}]}, "extra": "kept"},
            {"type": "TestProbe", "x": 200, "y": 10, "z": 1},
            {"z": 9, "type": "FutureChart", "width": 1e300}]})";
        const QJsonArray read = QJsonDocument::fromJson(json).object().value(QLatin1String("items")).toArray();
        DesignScene scene;
        LayoutFile layout(&scene);
        QCOMPARE(layout.load(write("future.json", json), false), LayoutFile::Result::Ok);
        QCOMPARE(scene.dashboardItems().size(), 2);
        for (int i = 0; i < probesDeleted; ++i)
            delete scene.dashboardItems().first();

        const QString saved = m_dir.filePath(QStringLiteral("saved.json"));
        QCOMPARE(layout.save(saved, QJsonObject{{"isFullScreen", false}}), LayoutFile::Result::Ok);
        const QJsonObject root = QJsonDocument::fromJson(readFile(saved)).object();
        QCOMPARE(root.keys(), (QStringList{"isFullScreen", "items"}));
        const QJsonArray written = root.value(QLatin1String("items")).toArray();
        QCOMPARE(written.size(), 4 - probesDeleted);
        QCOMPARE(written.at(expectedIndexes.at(0)).toObject(), read.at(1).toObject());
        QCOMPARE(written.at(expectedIndexes.at(1)).toObject(), read.at(3).toObject());

        // Another layout replaces them.
        QCOMPARE(layout.load(write("plain.json", R"({"items": [{"type": "TestProbe"}]})"), false), LayoutFile::Result::Ok);
        QCOMPARE(layout.save(saved), LayoutFile::Result::Ok);
        QVERIFY(!readFile(saved).contains("Future"));
    }

    void cancelledLoadKeepsTheDashboard()
    {
        DesignScene scene;
        auto *kept = new DashboardItem(new ProbeWidget);
        scene.addItem(kept);
        LayoutFile layout(&scene);
        int reports = 0;
        const auto cancelAtSecond = [&reports](qint64, qint64) { return ++reports < 2; };
        const QByteArray json = R"({"items": [{"type": "TestProbe"}, {"type": "TestProbe"}]})";
        QCOMPARE(layout.load(write("cancelled.json", json), false, cancelAtSecond), LayoutFile::Result::Cancelled);
        QCOMPARE(scene.dashboardItems(), QList<DashboardItem *>{kept});
        QCOMPARE(liveDashboardWidgets(), 1);
    }

private:
    QString write(const char *name, const QByteArray &contents)
    {
        const QString path = m_dir.filePath(QLatin1String(name));
        return writeFile(path, contents) ? path : QString();
    }

    QTemporaryDir m_dir;
};

QTEST_MAIN(tst_LayoutFile)
#include "tst_layoutfile.moc"
