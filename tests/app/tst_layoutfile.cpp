#include "../dashboard/ProbeWidget.h"

#include "DashboardItem.h"
#include "DesignScene.h"
#include "LayoutFile.h"

#include <QFile>
#include <QGraphicsRectItem>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

namespace {

QList<DashboardItem *> dashboardItems(QGraphicsScene &scene)
{
    QList<DashboardItem *> items;
    const QList<QGraphicsItem *> all = scene.items();
    for (QGraphicsItem *item : all) {
        if (auto *dashboardItem = qgraphicsitem_cast<DashboardItem *>(item))
            items.append(dashboardItem);
    }
    return items;
}

// The records of a scene in a stable order, for comparing two scenes.
QStringList records(QGraphicsScene &scene)
{
    QStringList result;
    for (DashboardItem *item : dashboardItems(scene))
        result.append(QString::fromUtf8(QJsonDocument(item->toJson()).toJson(QJsonDocument::Compact)));
    result.sort();
    return result;
}

DashboardItem *addProbe(QGraphicsScene &scene, const QPointF &pos, const QSizeF &size, qreal z,
                        const QStringList &names, int threshold)
{
    auto *probe = new ProbeWidget;
    probe->setSignalNames(names);
    probe->threshold = threshold;
    auto *item = new DashboardItem(probe);
    item->setPos(pos);
    item->setSize(size);
    item->setZValue(z);
    scene.addItem(item);
    return item;
}

QJsonObject probeRecord(qreal x, qreal y)
{
    return QJsonObject{{QLatin1String("type"), ProbeWidget::typeId()},
                       {QLatin1String("x"), x},
                       {QLatin1String("y"), y}};
}

} // namespace

class TestLayoutFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void roundTripRestoresItemsAndWindow();
    void savedFileIsIndentedObject();
    void loadHandsOverPreviousItems();
    void notAnObjectIsInvalidAndLeavesScene_data();
    void notAnObjectIsInvalidAndLeavesScene();
    void unopenablePaths();
    void missingItemsEmptiesDashboardAndKeepsWindow();
    void damagedRecordsLoadPartially();
    void itemsEditableExactlyInDesignMode_data();
    void itemsEditableExactlyInDesignMode();
    void maximisedAndFullScreenFlags_data();
    void maximisedAndFullScreenFlags();

private:
    QString writeFile(const QString &name, const QByteArray &contents);
    QString writeLayout(const QString &name, const QJsonObject &root);

    QTemporaryDir m_dir;
};

void TestLayoutFile::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    ProbeWidget::registerTypes();
}

void TestLayoutFile::cleanup()
{
    QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty());
}

QString TestLayoutFile::writeFile(const QString &name, const QByteArray &contents)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write(contents);
    return path;
}

QString TestLayoutFile::writeLayout(const QString &name, const QJsonObject &root)
{
    return writeFile(name, QJsonDocument(root).toJson());
}

void TestLayoutFile::roundTripRestoresItemsAndWindow()
{
    const QString path = m_dir.filePath(QStringLiteral("roundtrip.json"));
    QRect savedGeometry;
    QStringList savedRecords;
    {
        DesignScene scene;
        addProbe(scene, QPointF(10, 20), QSizeF(120, 90), 2.0, {QStringLiteral("rpm")}, 11);
        addProbe(scene, QPointF(-40, 300), QSizeF(200, 60), -1.5, {QStringLiteral("a"), QStringLiteral("b")}, 12);
        addProbe(scene, QPointF(500, 0), QSizeF(80, 400), 0.0, {}, 13);
        scene.addRect(0, 0, 5, 5); // not a dashboard item: not saved

        QMainWindow window;
        window.setGeometry(60, 70, 520, 410);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        savedGeometry = window.geometry();
        savedRecords = records(scene);
        QCOMPARE(LayoutFile::save(path, &scene, &window), LayoutFile::Result::Ok);
    }

    DesignScene fresh;
    QMainWindow window;
    window.setGeometry(10, 10, 300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    LayoutFile::ItemList removed;
    QCOMPARE(LayoutFile::load(path, &fresh, &window, false, removed), LayoutFile::Result::Ok);

    QCOMPARE(dashboardItems(fresh).size(), 3);
    QCOMPARE(records(fresh), savedRecords);
    QTRY_COMPARE(window.geometry(), savedGeometry);
    QVERIFY(removed.empty());

    auto thresholds = QList<int>();
    for (DashboardItem *item : dashboardItems(fresh))
        thresholds.append(static_cast<ProbeWidget *>(item->dashboardWidget())->threshold);
    std::sort(thresholds.begin(), thresholds.end());
    QCOMPARE(thresholds, (QList<int>{11, 12, 13}));
}

void TestLayoutFile::savedFileIsIndentedObject()
{
    DesignScene scene;
    addProbe(scene, QPointF(0, 0), QSizeF(100, 100), 1.0, {QStringLiteral("x")}, 1);
    addProbe(scene, QPointF(0, 0), QSizeF(100, 100), 3.0, {QStringLiteral("y")}, 1);
    QMainWindow window;
    const QString path = m_dir.filePath(QStringLiteral("format.json"));
    QCOMPARE(LayoutFile::save(path, &scene, &window), LayoutFile::Result::Ok);

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    QVERIFY(bytes.contains("\n    \"items\""));
    const QJsonObject root = QJsonDocument::fromJson(bytes).object();
    QVERIFY(root.value(QLatin1String("windowGeometry")).isString());
    QVERIFY(!root.value(QLatin1String("windowGeometry")).toString().isEmpty());
    QVERIFY(root.value(QLatin1String("windowState")).isString());
    QCOMPARE(root.value(QLatin1String("isMaximized")), QJsonValue(false));
    QCOMPARE(root.value(QLatin1String("isFullScreen")), QJsonValue(false));

    // Scene order: topmost first.
    const QJsonArray items = root.value(QLatin1String("items")).toArray();
    QCOMPARE(items.size(), 2);
    QCOMPARE(items.at(0).toObject().value(QLatin1String("z")).toDouble(), 3.0);
    QCOMPARE(items.at(1).toObject().value(QLatin1String("z")).toDouble(), 1.0);
}

void TestLayoutFile::loadHandsOverPreviousItems()
{
    const QString path = writeLayout(QStringLiteral("one.json"),
                                     QJsonObject{{QLatin1String("items"), QJsonArray{probeRecord(30, 40)}}});
    DesignScene scene;
    DashboardItem *old = addProbe(scene, QPointF(0, 0), QSizeF(100, 100), 0.0, {}, 1);
    QGraphicsRectItem *decoration = scene.addRect(0, 0, 5, 5);

    LayoutFile::ItemList removed;
    QCOMPARE(LayoutFile::load(path, &scene, nullptr, false, removed), LayoutFile::Result::Ok);

    QCOMPARE(removed.size(), size_t(1));
    QCOMPARE(removed.front().get(), old);
    QCOMPARE(old->scene(), nullptr);
    QVERIFY(old->dashboardWidget());
    QVERIFY(scene.items().contains(decoration));
    const QList<DashboardItem *> items = dashboardItems(scene);
    QCOMPARE(items.size(), 1);
    QCOMPARE(items.first()->pos(), QPointF(30, 40));
}

void TestLayoutFile::notAnObjectIsInvalidAndLeavesScene_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::newRow("top-level array") << QByteArray(R"([{"type": "TestProbe"}])");
    QTest::newRow("not json") << QByteArray("items = nothing");
    QTest::newRow("truncated") << QByteArray(R"({"items": [)");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("binary") << QByteArray("\x00\xff\xfe{", 4);
}

void TestLayoutFile::notAnObjectIsInvalidAndLeavesScene()
{
    QFETCH(QByteArray, contents);
    const QString path = writeFile(QStringLiteral("invalid.json"), contents);

    DesignScene scene;
    DashboardItem *kept = addProbe(scene, QPointF(20, 20), QSizeF(100, 100), 0.0, {}, 1);
    QMainWindow window;
    window.setGeometry(30, 40, 350, 250);
    const QRect geometry = window.geometry();

    LayoutFile::ItemList removed;
    QCOMPARE(LayoutFile::load(path, &scene, &window, true, removed), LayoutFile::Result::InvalidFormat);
    QVERIFY(removed.empty());
    QCOMPARE(dashboardItems(scene), QList<DashboardItem *>{kept});
    QVERIFY(!kept->designMode());
    QCOMPARE(window.geometry(), geometry);
}

void TestLayoutFile::unopenablePaths()
{
    DesignScene scene;
    addProbe(scene, QPointF(0, 0), QSizeF(100, 100), 0.0, {}, 1);
    LayoutFile::ItemList removed;

    QCOMPARE(LayoutFile::load(m_dir.filePath(QStringLiteral("absent.json")), &scene, nullptr, false, removed),
             LayoutFile::Result::OpenFailed);
    QCOMPARE(LayoutFile::load(m_dir.path(), &scene, nullptr, false, removed), LayoutFile::Result::OpenFailed);
    QVERIFY(removed.empty());
    QCOMPARE(dashboardItems(scene).size(), 1);

    const QString inMissingFolder = m_dir.filePath(QStringLiteral("no/such/folder/layout.json"));
    QCOMPARE(LayoutFile::save(inMissingFolder, &scene, nullptr), LayoutFile::Result::OpenFailed);
    QVERIFY(!QFile::exists(inMissingFolder));
    QCOMPARE(LayoutFile::save(m_dir.path(), &scene, nullptr), LayoutFile::Result::OpenFailed);

    // A scene-less save still writes a loadable, empty layout.
    const QString empty = m_dir.filePath(QStringLiteral("empty.json"));
    QCOMPARE(LayoutFile::save(empty, nullptr, nullptr), LayoutFile::Result::Ok);
    QCOMPARE(LayoutFile::load(empty, &scene, nullptr, false, removed), LayoutFile::Result::Ok);
    QVERIFY(dashboardItems(scene).isEmpty());
}

void TestLayoutFile::missingItemsEmptiesDashboardAndKeepsWindow()
{
    const QString path = writeLayout(QStringLiteral("noitems.json"),
                                     QJsonObject{{QLatin1String("isMaximized"), false}});
    DesignScene scene;
    addProbe(scene, QPointF(0, 0), QSizeF(100, 100), 0.0, {}, 1);
    addProbe(scene, QPointF(200, 0), QSizeF(100, 100), 0.0, {}, 1);
    QMainWindow window;
    window.setGeometry(30, 40, 350, 250);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QRect geometry = window.geometry();

    LayoutFile::ItemList removed;
    QCOMPARE(LayoutFile::load(path, &scene, &window, false, removed), LayoutFile::Result::Ok);
    QVERIFY(dashboardItems(scene).isEmpty());
    QCOMPARE(removed.size(), size_t(2));
    QCOMPARE(window.geometry(), geometry);
    QVERIFY(!window.isMaximized());
}

void TestLayoutFile::damagedRecordsLoadPartially()
{
    QJsonObject wrongTypes{{QLatin1String("type"), ProbeWidget::typeId()},
                           {QLatin1String("x"), QStringLiteral("left")},
                           {QLatin1String("width"), QJsonArray{}},
                           {QLatin1String("signals"), 12},
                           {QLatin1String("config"), QStringLiteral("none")}};
    QJsonObject absurd{{QLatin1String("type"), ProbeWidget::typeId()},
                       {QLatin1String("x"), -1e15},
                       {QLatin1String("width"), 1e12},
                       {QLatin1String("height"), -1e12},
                       {QLatin1String("z"), 1e300}};
    const QJsonArray items{probeRecord(10, 10),
                           QJsonObject{{QLatin1String("type"), QStringLiteral("NoSuchWidget")}},
                           5,
                           QJsonValue(),
                           QStringLiteral("text"),
                           QJsonObject(),
                           wrongTypes,
                           absurd};
    const QString path = writeLayout(QStringLiteral("damaged.json"),
                                     QJsonObject{{QLatin1String("items"), items},
                                                 {QLatin1String("windowGeometry"), QStringLiteral("!!not base64!!")},
                                                 {QLatin1String("windowState"), 42}});
    DesignScene scene;
    QMainWindow window;
    LayoutFile::ItemList removed;
    QCOMPARE(LayoutFile::load(path, &scene, &window, false, removed), LayoutFile::Result::Ok);

    const QList<DashboardItem *> loaded = dashboardItems(scene);
    QCOMPARE(loaded.size(), 3);
    for (DashboardItem *item : loaded) {
        QVERIFY(item->size().width() <= DashboardItem::MaxExtent);
        QVERIFY(item->size().height() >= 60);
        QVERIFY(qAbs(item->pos().x()) <= DashboardItem::MaxExtent);
        QVERIFY(qAbs(item->zValue()) <= DashboardItem::MaxExtent);
    }
}

void TestLayoutFile::itemsEditableExactlyInDesignMode_data()
{
    QTest::addColumn<bool>("designMode");
    QTest::newRow("design") << true;
    QTest::newRow("other modes") << false;
}

void TestLayoutFile::itemsEditableExactlyInDesignMode()
{
    QFETCH(bool, designMode);
    const QString path = writeLayout(QStringLiteral("modes.json"),
                                     QJsonObject{{QLatin1String("items"), QJsonArray{probeRecord(0, 0), probeRecord(100, 0)}}});
    DesignScene scene;
    LayoutFile::ItemList removed;
    QCOMPARE(LayoutFile::load(path, &scene, nullptr, designMode, removed), LayoutFile::Result::Ok);

    const QList<DashboardItem *> loaded = dashboardItems(scene);
    QCOMPARE(loaded.size(), 2);
    for (DashboardItem *item : loaded) {
        QCOMPARE(item->designMode(), designMode);
        QCOMPARE(item->overlay()->isVisible(), designMode);
        QCOMPARE(bool(item->flags() & QGraphicsItem::ItemIsMovable), designMode);
    }
}

void TestLayoutFile::maximisedAndFullScreenFlags_data()
{
    QTest::addColumn<bool>("maximized");
    QTest::addColumn<bool>("fullScreen");
    QTest::addColumn<int>("expectedState");
    QTest::newRow("maximised") << true << false << int(Qt::WindowMaximized);
    QTest::newRow("full screen wins") << true << true << int(Qt::WindowFullScreen);
    QTest::newRow("neither") << false << false << int(Qt::WindowNoState);
}

void TestLayoutFile::maximisedAndFullScreenFlags()
{
    QFETCH(bool, maximized);
    QFETCH(bool, fullScreen);
    QFETCH(int, expectedState);
    const QString path = writeLayout(QStringLiteral("state.json"),
                                     QJsonObject{{QLatin1String("items"), QJsonArray()},
                                                 {QLatin1String("isMaximized"), maximized},
                                                 {QLatin1String("isFullScreen"), fullScreen}});
    DesignScene scene;
    QMainWindow window;
    LayoutFile::ItemList removed;
    QCOMPARE(LayoutFile::load(path, &scene, &window, false, removed), LayoutFile::Result::Ok);
    const Qt::WindowStates relevant = Qt::WindowMaximized | Qt::WindowFullScreen;
    QCOMPARE(int(window.windowState() & relevant), expectedState);
}

QTEST_MAIN(TestLayoutFile)
#include "tst_layoutfile.moc"
