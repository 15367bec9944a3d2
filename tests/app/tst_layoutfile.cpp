#include "ProbeWidget.h"

#include "Dashboard.h"
#include "DashboardItem.h"
#include "DesignScene.h"
#include "LayoutFile.h"
#include "TestFiles.h"

#include <QMainWindow>
#include <QTemporaryDir>
#include <QtTest>

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
        m_removed.clear();
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

        QCOMPARE(LayoutFile::load(path, &scene, &window, false, m_removed), LayoutFile::Result::Ok);
        QVERIFY(Dashboard::topLevelItems(&scene).isEmpty());
        QVERIFY(scene.items().contains(decoration));
        QCOMPARE(m_removed.size(), size_t(1));
        QCOMPARE(m_removed.front().get(), old);
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
        QCOMPARE(LayoutFile::load(write(QStringLiteral("invalid.json"), contents), &scene, nullptr, true, m_removed),
                 LayoutFile::Result::InvalidFormat);
        QVERIFY(m_removed.empty());
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
        QCOMPARE(LayoutFile::load(write(QStringLiteral("damaged.json"), json), &scene, &window, false, m_removed),
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
        QCOMPARE(LayoutFile::load(write(QStringLiteral("state.json"), json), &scene, &window, false, m_removed),
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
    LayoutFile::ItemList m_removed;
};

QTEST_MAIN(tst_LayoutFile)
#include "tst_layoutfile.moc"
