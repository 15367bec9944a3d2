#include "DesignScene.h"
#include "WidgetView.h"

#include <QApplication>
#include <QPainter>
#include <QtTest>

#include <memory>

namespace {

const QColor GridColour(220, 220, 220);

// Renders `source` of the scene 1:1 into an image of the same size.
QImage renderScene(DesignScene &scene, const QRectF &source)
{
    QImage image(source.size().toSize(), QImage::Format_ARGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing); // as the view paints
    scene.render(&painter, QRectF(QPointF(0, 0), source.size()), source);
    return image;
}

// Scene coordinates along one image row where the grid colour shows.
QList<int> gridColumns(const QImage &image, int row, int originX)
{
    QList<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, row) == GridColour)
            columns.append(x + originX);
    }
    return columns;
}

QList<int> gridRows(const QImage &image, int column, int originY)
{
    QList<int> rows;
    for (int y = 0; y < image.height(); ++y) {
        if (image.pixelColor(column, y) == GridColour)
            rows.append(y + originY);
    }
    return rows;
}

// Counts paint events of a widget and remembers the last painted region.
class PaintCounter : public QObject
{
public:
    int count = 0;
    QRegion lastRegion;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            ++count;
            lastRegion = static_cast<QPaintEvent *>(event)->region();
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

class TestDesignScene : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void gridLinesFallOnMultiplesOfTen_data();
    void gridLinesFallOnMultiplesOfTen();
    void whiteBetweenGridLines();
    void windowColourOutsideDesignMode();
    void leavingDesignModeRepaintsWholeView();
};

void TestDesignScene::gridLinesFallOnMultiplesOfTen_data()
{
    QTest::addColumn<QRectF>("exposed");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("across the origin") << QRectF(-15, -15, 40, 40) << QList<int>{-10, 0, 10, 20};
    QTest::newRow("positive edges") << QRectF(15, 15, 30, 30) << QList<int>{20, 30, 40};
    QTest::newRow("negative only") << QRectF(-47, -47, 30, 30) << QList<int>{-40, -30, -20};
    QTest::newRow("edge on a line") << QRectF(-20, -20, 25, 25) << QList<int>{-20, -10, 0};
}

void TestDesignScene::gridLinesFallOnMultiplesOfTen()
{
    QFETCH(QRectF, exposed);
    QFETCH(QList<int>, expected);

    DesignScene scene;
    scene.setDesignMode(true);
    const QImage image = renderScene(scene, exposed);
    const int originX = int(exposed.left());
    const int originY = int(exposed.top());

    // Sample a row and a column that lie between grid lines.
    const int between = 5 - (originX % 10 + 10) % 10;
    const int sample = between >= 0 ? between : between + 10;
    QCOMPARE(gridColumns(image, sample, originX), expected);
    QCOMPARE(gridRows(image, sample, originY), expected);
}

void TestDesignScene::whiteBetweenGridLines()
{
    DesignScene scene;
    scene.setDesignMode(true);
    const QImage image = renderScene(scene, QRectF(-15, -15, 40, 40));
    for (const QPoint &p : {QPoint(1, 1), QPoint(7, 13), QPoint(22, 28), QPoint(39, 39)})
        QCOMPARE(image.pixelColor(p), QColor(Qt::white));
}

void TestDesignScene::windowColourOutsideDesignMode()
{
    DesignScene scene;
    const QColor window = QApplication::palette().color(QPalette::Window);
    QImage image = renderScene(scene, QRectF(-15, -15, 40, 40));
    QCOMPARE(image.pixelColor(5, 10), window);
    QCOMPARE(image.pixelColor(20, 20), window);

    scene.setDesignMode(true);
    scene.setDesignMode(false);
    image = renderScene(scene, QRectF(-15, -15, 40, 40));
    QVERIFY(gridColumns(image, 10, -15).isEmpty());
    QCOMPARE(image.pixelColor(5, 10), window);
}

void TestDesignScene::leavingDesignModeRepaintsWholeView()
{
    DesignScene scene;
    scene.setSceneRect(0, 0, 300, 200);
    scene.addRect(10, 10, 20, 20);
    scene.setDesignMode(true);

    WidgetView view(&scene);
    view.resize(320, 220);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    PaintCounter counter;
    view.viewport()->installEventFilter(&counter);
    QCoreApplication::processEvents();
    const int before = counter.count;

    scene.setDesignMode(false);
    QTRY_VERIFY(counter.count > before);
    QCOMPARE(counter.lastRegion.boundingRect(), view.viewport()->rect());
}

QTEST_MAIN(TestDesignScene)
#include "tst_designscene.moc"
