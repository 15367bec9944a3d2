#include "DesignScene.h"
#include "WidgetView.h"

#include <QApplication>
#include <QPainter>
#include <QtTest>

namespace {

const QColor GridColour(220, 220, 220);

// Renders `source` of the scene 1:1 into an image, antialiased as the view paints.
QImage renderScene(DesignScene &scene, const QRectF &source)
{
    QImage image(source.size().toSize(), QImage::Format_ARGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    scene.render(&painter, QRectF(QPointF(0, 0), source.size()), source);
    return image;
}

// Scene coordinates of the grid-coloured pixels along image row `line`, or
// along image column `line` when transposed.
QList<int> gridLinesAlong(const QImage &image, int line, int origin, bool transposed = false)
{
    QList<int> found;
    for (int i = 0; i < (transposed ? image.height() : image.width()); ++i) {
        if (image.pixelColor(transposed ? line : i, transposed ? i : line) == GridColour)
            found.append(i + origin);
    }
    return found;
}

class PaintCounter : public QObject
{
public:
    int count = 0;
    QRect lastRect;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            ++count;
            lastRect = static_cast<QPaintEvent *>(event)->region().boundingRect();
        }
        return false;
    }
};

} // namespace

class TestDesignScene : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void gridLinesFallOnMultiplesOfTen_data()
    {
        QTest::addColumn<QRectF>("exposed");
        QTest::addColumn<QList<int>>("expected");
        QTest::newRow("across the origin") << QRectF(-15, -15, 40, 40) << QList<int>{-10, 0, 10, 20};
        QTest::newRow("positive edges") << QRectF(15, 15, 30, 30) << QList<int>{20, 30, 40};
        QTest::newRow("negative only") << QRectF(-47, -47, 30, 30) << QList<int>{-40, -30, -20};
        QTest::newRow("edge on a line") << QRectF(-20, -20, 25, 25) << QList<int>{-20, -10, 0};
    }

    void gridLinesFallOnMultiplesOfTen()
    {
        QFETCH(QRectF, exposed);
        DesignScene scene;
        scene.setDesignMode(true);
        const QImage image = renderScene(scene, exposed);
        const int origin = int(exposed.left());
        const int between = ((5 - origin) % 10 + 10) % 10; // half way between grid lines
        QTEST(gridLinesAlong(image, between, origin), "expected");
        QTEST(gridLinesAlong(image, between, origin, true), "expected");
        QCOMPARE(image.pixelColor(between, between), QColor(Qt::white));
    }

    void windowColourAndNoGridOutsideDesignMode()
    {
        DesignScene scene;
        scene.setDesignMode(true);
        scene.setDesignMode(false);
        const QImage image = renderScene(scene, QRectF(-15, -15, 40, 40));
        QVERIFY(gridLinesAlong(image, 10, -15).isEmpty());
        QCOMPARE(image.pixelColor(5, 10), QApplication::palette().color(QPalette::Window));
    }

    void leavingDesignModeRepaintsWholeView()
    {
        DesignScene scene;
        scene.setSceneRect(0, 0, 300, 200);
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
        QCOMPARE(counter.lastRect, view.viewport()->rect());
    }
};

QTEST_MAIN(TestDesignScene)
#include "tst_designscene.moc"
