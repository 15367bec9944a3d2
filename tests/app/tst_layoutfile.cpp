#include "ProbeWidget.h"

#include "Dashboard.h"
#include "DashboardItem.h"
#include "DesignScene.h"
#include "LayoutFile.h"
#include "TestFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <vector>

class tst_LayoutFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_dir.isValid());
        ProbeWidget::registerTypes();
    }

    void cleanup()
    {
        QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty());
    }

    void loadDetachesPreviousItemsAndKeepsWindowWithoutKeys()
    {
        const QString path = write(QStringLiteral("noitems.json"), "{\"isMaximized\": false}");
        DesignScene scene;
        auto *old = new DashboardItem(new ProbeWidget);
        scene.addItem(old);
        QGraphicsRectItem *decoration = scene.addRect(0, 0, 5, 5);
        QMainWindow window;
        window.setGeometry(30, 40, 350, 250);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QRect geometry = window.geometry();

        LayoutFile layout(&scene, &window);
        QCOMPARE(layout.load(path, false), LayoutFile::Result::Ok);
        QVERIFY(Dashboard::topLevelItems(&scene).isEmpty());
        QVERIFY(scene.items().contains(decoration));
        QCOMPARE(layout.removedItems().size(), size_t(1));
        QCOMPARE(layout.removedItems().front().get(), old);
        QCOMPARE(old->scene(), nullptr);
        QCOMPARE(window.geometry(), geometry);
    }

    void notAnObjectIsInvalidAndLeavesScene_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("top-level array") << QByteArray(R"([{"type": "TestProbe"}])");
        QTest::newRow("not json") << QByteArray("items = nothing");
        QTest::newRow("truncated") << QByteArray(R"({"items": [)");
        QTest::newRow("binary") << QByteArray("\x00\xff\xfe{", 4);
    }

    void notAnObjectIsInvalidAndLeavesScene()
    {
        QFETCH(QByteArray, contents);
        DesignScene scene;
        auto *kept = new DashboardItem(new ProbeWidget);
        kept->setPos(20, 20);
        scene.addItem(kept);
        LayoutFile layout(&scene, nullptr);
        QCOMPARE(layout.load(write(QStringLiteral("invalid.json"), contents), true), LayoutFile::Result::InvalidFormat);
        QVERIFY(layout.removedItems().empty());
        QCOMPARE(Dashboard::topLevelItems(&scene), QList<DashboardItem *>{kept});
        QVERIFY(!kept->designMode());
    }

    void damagedRecordsLoadPartially()
    {
        // Unknown type, non-objects, no type, wrong value types, absurd numbers, bad window keys.
        const QByteArray json = R"({"items": [
            {"type": "TestProbe", "x": 10, "y": 10}, {"type": "NoSuchWidget"}, 5, null, "text", {},
            {"type": "TestProbe", "x": "left", "width": [], "signals": 12, "config": "none"},
            {"type": "TestProbe", "x": -1e15, "width": 1e12, "height": -1e12, "z": 1e300}],
            "windowGeometry": "!!not base64!!", "windowState": 42})";
        DesignScene scene;
        QMainWindow window;
        QCOMPARE(LayoutFile(&scene, &window).load(write(QStringLiteral("damaged.json"), json), false),
                 LayoutFile::Result::Ok);

        const QList<DashboardItem *> loaded = Dashboard::topLevelItems(&scene);
        QCOMPARE(loaded.size(), 3);
        for (DashboardItem *item : loaded) {
            QVERIFY(item->size().width() <= DashboardItem::MaxExtent);
            QVERIFY(item->size().height() >= 60);
            QVERIFY(qAbs(item->pos().x()) <= DashboardItem::MaxExtent);
            QVERIFY(qAbs(item->zValue()) <= DashboardItem::MaxExtent);
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
        LayoutFile layout(&scene, nullptr);
        QCOMPARE(layout.load(write(QStringLiteral("future.json"), json), false), LayoutFile::Result::Ok);
        QCOMPARE(Dashboard::topLevelItems(&scene).size(), 2);
        std::vector<std::unique_ptr<DashboardItem>> deleted;
        for (int i = 0; i < probesDeleted; ++i) {
            deleted.emplace_back(Dashboard::topLevelItems(&scene).first());
            scene.removeItem(deleted.back().get());
        }

        const QString saved = m_dir.filePath(QStringLiteral("saved.json"));
        QCOMPARE(layout.save(saved), LayoutFile::Result::Ok);
        const QJsonArray written = QJsonDocument::fromJson(readFile(saved)).object().value(QLatin1String("items")).toArray();
        QCOMPARE(written.size(), 4 - probesDeleted);
        QCOMPARE(written.at(expectedIndexes.at(0)).toObject(), read.at(1).toObject());
        QCOMPARE(written.at(expectedIndexes.at(1)).toObject(), read.at(3).toObject());

        // Another layout replaces them.
        QCOMPARE(layout.load(write(QStringLiteral("plain.json"), R"({"items": [{"type": "TestProbe"}]})"), false),
                 LayoutFile::Result::Ok);
        QCOMPARE(layout.save(saved), LayoutFile::Result::Ok);
        QVERIFY(!readFile(saved).contains("Future"));
    }

    void cancelledLoadKeepsTheDashboard()
    {
        DesignScene scene;
        auto *kept = new DashboardItem(new ProbeWidget);
        scene.addItem(kept);
        QMainWindow window;
        window.setGeometry(30, 40, 350, 250);
        const QByteArray json = R"({"items": [{"type": "TestProbe"}, {"type": "TestProbe"}], "isMaximized": true})";
        LayoutFile layout(&scene, &window);
        int reports = 0;
        const auto cancelAtSecond = [&reports](qint64, qint64) { return ++reports < 2; };
        QCOMPARE(layout.load(write(QStringLiteral("cancelled.json"), json), false, cancelAtSecond),
                 LayoutFile::Result::Cancelled);
        QCOMPARE(Dashboard::topLevelItems(&scene), QList<DashboardItem *>{kept});
        QVERIFY(layout.removedItems().empty());
        QVERIFY(!window.isMaximized());
    }

    void absurdSizesAreBounded()
    {
        const QByteArray json = R"({"items": [
            {"type": "TestProbe", "width": 1e9, "height": 1e9, "x": 1e9, "y": -1e9},
            {"type": "TestProbe", "width": 1e300, "height": 30}]})";
        DesignScene scene;
        QCOMPARE(LayoutFile(&scene, nullptr).load(write(QStringLiteral("absurd.json"), json), false),
                 LayoutFile::Result::Ok);
        const QList<DashboardItem *> items = Dashboard::topLevelItems(&scene);
        QCOMPARE(items.size(), 2);
        for (DashboardItem *item : items) {
            QCOMPARE(item->size().width(), DashboardItem::MaxSize);
            QVERIFY(item->size().height() <= DashboardItem::MaxSize);
            QVERIFY(item->dashboardWidget()->width() <= DashboardItem::MaxSize);
            QVERIFY(item->dashboardWidget()->height() <= DashboardItem::MaxSize);
            QVERIFY(qAbs(item->pos().x()) <= DashboardItem::MaxExtent && qAbs(item->pos().y()) <= DashboardItem::MaxExtent);
        }
    }

    void maximisedAndFullScreenFlags_data()
    {
        QTest::addColumn<bool>("maximized");
        QTest::addColumn<bool>("fullScreen");
        QTest::addColumn<int>("expectedState");
        QTest::newRow("maximised") << true << false << int(Qt::WindowMaximized);
        QTest::newRow("full screen wins") << true << true << int(Qt::WindowFullScreen);
        QTest::newRow("neither") << false << false << int(Qt::WindowNoState);
    }

    void maximisedAndFullScreenFlags()
    {
        QFETCH(bool, maximized);
        QFETCH(bool, fullScreen);
        QFETCH(int, expectedState);
        const QByteArray json = QByteArray(R"({"isMaximized": )") + (maximized ? "true" : "false")
            + R"(, "isFullScreen": )" + (fullScreen ? "true" : "false") + "}";
        DesignScene scene;
        QMainWindow window;
        QCOMPARE(LayoutFile(&scene, &window).load(write(QStringLiteral("state.json"), json), false),
                 LayoutFile::Result::Ok);
        QCOMPARE(int(window.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)), expectedState);
    }

private:
    QString write(const QString &name, const QByteArray &contents)
    {
        const QString path = m_dir.filePath(name);
        return writeFile(path, contents) ? path : QString();
    }

    QTemporaryDir m_dir;
};

QTEST_MAIN(tst_LayoutFile)
#include "tst_layoutfile.moc"
