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

// Remembers the area of the last paint event it sees.
class PaintWatcher : public QObject
{
public:
    QRect lastRect;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            lastRect = static_cast<QPaintEvent *>(event)->region().boundingRect();
        return false;
    }
};

} // namespace

class tst_DesignScene : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void gridLinesFallOnMultiplesOfTenInDesignModeOnly_data()
    {
        QTest::addColumn<bool>("designMode");
        QTest::addColumn<QRectF>("exposed");
        QTest::addColumn<QList<int>>("expected");
        QTest::newRow("across the origin") << true << QRectF(-15, -15, 40, 40) << QList<int>{-10, 0, 10, 20};
        QTest::newRow("positive edges") << true << QRectF(15, 15, 30, 30) << QList<int>{20, 30, 40};
        QTest::newRow("negative only") << true << QRectF(-47, -47, 30, 30) << QList<int>{-40, -30, -20};
        QTest::newRow("edge on a line") << true << QRectF(-20, -20, 25, 25) << QList<int>{-20, -10, 0};
        QTest::newRow("design mode left") << false << QRectF(-15, -15, 40, 40) << QList<int>();
    }

    void gridLinesFallOnMultiplesOfTenInDesignModeOnly()
    {
        QFETCH(bool, designMode);
        QFETCH(QRectF, exposed);
        DesignScene scene;
        scene.setDesignMode(true);
        scene.setDesignMode(designMode);
        const QImage image = renderScene(scene, exposed);
        const int origin = int(exposed.left());
        const int between = ((5 - origin) % 10 + 10) % 10; // half way between grid lines
        QTEST(gridLinesAlong(image, between, origin), "expected");
        QTEST(gridLinesAlong(image, between, origin, true), "expected");
        QCOMPARE(image.pixelColor(between, between),
                 designMode ? QColor(Qt::white) : QApplication::palette().color(QPalette::Window));
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
        PaintWatcher watcher;
        view.viewport()->installEventFilter(&watcher);
        QCoreApplication::processEvents();
        watcher.lastRect = QRect();
        scene.setDesignMode(false);
        QTRY_VERIFY(!watcher.lastRect.isNull());
        QCOMPARE(watcher.lastRect, view.viewport()->rect());
    }
};

QTEST_MAIN(tst_DesignScene)
#include "tst_designscene.moc"
