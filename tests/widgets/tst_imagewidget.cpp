#include "ConfigFormHarness.h"
#include "DashboardItem.h"
#include "DashboardWidgetFactory.h"
#include "ImageWidget.h"
#include "PictureFile.h"
#include "TestFiles.h"

#include <QBuffer>
#include <QCheckBox>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <memory>

class tst_ImageWidget : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString path(const QString &relative) const { return m_dir.filePath(relative); }

    static QByteArray png(const QImage &image)
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return buffer.data();
    }

    static QImage filled(const QSize &size, const QColor &colour)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        return image;
    }

    static QByteArray bigEndian(quint32 value)
    {
        QByteArray bytes(4, '\0');
        qToBigEndian(value, bytes.data());
        return bytes;
    }

    // A PNG whose header claims a size, with no pixel data behind it.
    static QByteArray pngHeaderOnly(quint32 width, quint32 height)
    {
        auto chunk = [](const QByteArray &typed) -> QByteArray {
            quint32 crc = 0xffffffffu;
            for (const char byte : typed) {
                crc ^= quint8(byte);
                for (int bit = 0; bit < 8; ++bit)
                    crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
            }
            return bigEndian(quint32(typed.size() - 4)) + typed + bigEndian(~crc);
        };
        const QByteArray header = bigEndian(width) + bigEndian(height) + QByteArray("\x08\x06\0\0\0", 5);
        return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR" + header) + chunk("IDAT") + chunk("IEND");
    }

    static QImage render(ImageWidget &widget)
    {
        QImage image(widget.size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        widget.render(&image);
        return image;
    }

    static bool red(QRgb pixel) { return qRed(pixel) > 200 && qGreen(pixel) < 60 && qBlue(pixel) < 60; }

private Q_SLOTS:
    void initTestCase()
    {
        DashboardWidgetFactory::instance().registerBuiltInTypes();
        const QByteArray wide = png(filled(QSize(40, 20), Qt::red));
        QVERIFY(writeFile(path("project/pictures/wide.png"), wide));
        QVERIFY(writeFile(path("elsewhere/wide.png"), wide));
        QVERIFY(writeFile(path("project-old/wide.png"), wide));
        QVERIFY(writeFile(path("project/pictures/wide.svg"),
                          "<svg xmlns='http://www.w3.org/2000/svg' width='40' height='20' viewBox='0 0 40 20'>"
                          "<rect width='40' height='20' fill='#ff0000'/></svg>"));
        QVERIFY(writeFile(path("project/pictures/broken.svg"), "<svg xmlns='http://www.w3.org/2000/svg'><rect"));
        QVERIFY(writeFile(path("project/pictures/long.png"), png(filled(QSize(5000, 10), Qt::red))));
        QVERIFY(writeFile(path("project/pictures/huge.png"), pngHeaderOnly(20000, 20000)));

        QImage noise(64, 64, QImage::Format_RGB32);
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x)
                noise.setPixel(x, y, qRgb(x * 37 % 256, y * 91 % 256, (x * y) % 256));
        }
        const QByteArray whole = png(noise);
        QVERIFY(writeFile(path("project/pictures/broken.png"), whole.left(whole.size() / 2)));
    }
    void init() { DashboardWidget::setProjectFolder(path("project")); }
    void cleanup() { DashboardWidget::setProjectFolder(QString()); }

    void pathIsKeptRelativeInsideTheProject_data()
    {
        QTest::addColumn<QString>("chosen"); // {dir} is the temporary folder
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("resolved");
        QTest::newRow("inside") << "{dir}/project/pictures/wide.png" << "pictures/wide.png"
                                << "{dir}/project/pictures/wide.png";
        QTest::newRow("typed relative to the project") << "pictures/wide.png" << "pictures/wide.png"
                                                       << "{dir}/project/pictures/wide.png";
        QTest::newRow("outside") << "{dir}/elsewhere/wide.png" << "{dir}/elsewhere/wide.png"
                                 << "{dir}/elsewhere/wide.png";
        QTest::newRow("a sibling sharing the prefix") << "{dir}/project-old/wide.png" << "{dir}/project-old/wide.png"
                                                      << "{dir}/project-old/wide.png";
        QTest::newRow("out through ..") << "{dir}/project/../elsewhere/wide.png" << "{dir}/elsewhere/wide.png"
                                        << "{dir}/elsewhere/wide.png";
    }

    void pathIsKeptRelativeInsideTheProject()
    {
        QFETCH(QString, chosen);
        QFETCH(QString, stored);
        QFETCH(QString, resolved);
        const QLatin1String dir("{dir}");
        ImageWidget widget;
        widget.setImagePath(chosen.replace(dir, m_dir.path()));
        QCOMPARE(widget.imagePath(), stored.replace(dir, m_dir.path()));

        // Loaded again, it is found against the project folder.
        ImageWidget restored;
        restored.loadConfig(widget.saveConfig());
        QCOMPARE(restored.imagePath(), stored);
        QCOMPARE(restored.resolvedPath(), resolved.replace(dir, m_dir.path()));
        QCOMPARE(restored.placeholderText(), QString());
    }

    void placeholderSaysWhyThereIsNoPicture_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("placeholder");
        QTest::newRow("none chosen") << "" << "No image \u2014 configure to choose one";
        QTest::newRow("missing") << "pictures/rig.svg" << "rig.svg not found";
        QTest::newRow("truncated") << "pictures/broken.png" << "broken.png: cannot be read";
        QTest::newRow("broken drawing") << "pictures/broken.svg" << "broken.svg: cannot be read";
        QTest::newRow("oversized, refused from its header")
            << "pictures/huge.png" << "huge.png: 20000 \u00d7 20000 pixels, over the limit of 40 megapixels";
    }

    void placeholderSaysWhyThereIsNoPicture()
    {
        QFETCH(QString, file);
        ImageWidget widget;
        widget.resize(300, 100);
        widget.setImagePath(file);
        QTEST(widget.placeholderText(), "placeholder");
        QVERIFY(widget.pictureRect().isEmpty());
        // Never an empty box: the reason is written in it.
        const QImage image = render(widget);
        int dark = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                dark += qGray(image.pixel(x, y)) < 110;
        }
        QVERIFY(dark > 50);
    }

    void pictureKeepsItsShapeOrStretches_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("keep");
        QTest::addColumn<bool>("topIsPicture");
        QTest::newRow("PNG kept, bands above and below") << "pictures/wide.png" << true << false;
        QTest::newRow("PNG stretched") << "pictures/wide.png" << false << true;
        QTest::newRow("SVG kept") << "pictures/wide.svg" << true << false;
        QTest::newRow("SVG stretched") << "pictures/wide.svg" << false << true;
    }

    void pictureKeepsItsShapeOrStretches()
    {
        QFETCH(QString, file);
        QFETCH(bool, keep);
        ImageWidget widget;
        widget.resize(100, 100);
        widget.setKeepAspectRatio(keep);
        widget.setImagePath(file);
        const QImage image = render(widget);
        QVERIFY(red(image.pixel(50, 50)));
        QVERIFY(red(image.pixel(2, 50)) && red(image.pixel(97, 50)));
        QTEST(red(image.pixel(50, 10)), "topIsPicture");
        QTEST(red(image.pixel(50, 90)), "topIsPicture");
    }

    void pictureIsDecodedBoundedAndScaledOncePerSize()
    {
        PictureFile picture;
        picture.load(path("project/pictures/long.png"));
        QCOMPARE(picture.size(), QSize(PictureFile::MaxDecodedSide, 8)); // not 5000 x 10

        ImageWidget widget;
        widget.resize(200, 100);
        widget.setImagePath(QStringLiteral("pictures/wide.png"));
        for (int frame = 0; frame < 3; ++frame)
            render(widget);
        QCOMPARE(widget.scaleCount(), 1);
        widget.resize(300, 100); // the picture keeps its 200 x 100
        render(widget);
        QCOMPARE(widget.scaleCount(), 1);
        widget.resize(400, 200);
        render(widget);
        render(widget);
        QCOMPARE(widget.scaleCount(), 2);
    }

    void layoutConfigRoundTripsAndWrongTypesKeepDefaults_data()
    {
        QTest::addColumn<QJsonObject>("config");
        QTest::addColumn<QJsonObject>("saved");
        const QJsonObject custom{{"imagePath", "pictures/wide.svg"}, {"keepAspectRatio", false}};
        const QJsonObject defaults{{"imagePath", ""}, {"keepAspectRatio", true}};
        QTest::newRow("every key") << custom << custom;
        QTest::newRow("wrong types") << QJsonObject{{"imagePath", QJsonArray{"a.png"}}, {"keepAspectRatio", "no"}}
                                     << defaults;
    }

    void layoutConfigRoundTripsAndWrongTypesKeepDefaults()
    {
        QFETCH(QJsonObject, config);
        QFETCH(QJsonObject, saved);
        const QJsonObject record{{"type", "Image"}, {"config", config}};
        const std::unique_ptr<DashboardItem> item(DashboardItem::fromJson(record));
        QVERIFY(item && item->dashboardWidget());
        QVERIFY(!item->dashboardWidget()->usesSignals());
        QCOMPARE(item->dashboardWidget()->saveConfig(), saved);
    }

    void configFormTakesAPathAndTheShape()
    {
        ImageWidget widget;
        ConfigFormHarness form(widget);
        QCOMPARE(form.rowCount(), 2);
        QCOMPARE(form.label(0), QStringLiteral("Image File:"));
        QCOMPARE(form.label(1), QStringLiteral("Keep Aspect Ratio:"));
        auto *fileRow = form.editor<QWidget>(0);
        QCOMPARE(fileRow->findChild<QPushButton *>()->text(), QStringLiteral("Browse\u2026"));

        fileRow->findChild<QLineEdit *>()->setText(path("project/pictures/wide.png"));
        form.editor<QCheckBox>(1)->setChecked(false);
        widget.applyConfigForm();
        QCOMPARE(widget.imagePath(), QStringLiteral("pictures/wide.png"));
        QCOMPARE(widget.placeholderText(), QString());
        QVERIFY(!widget.keepsAspectRatio());

        form.close();
        widget.applyConfigForm(); // the editors are gone: nothing to read
        QCOMPARE(widget.imagePath(), QStringLiteral("pictures/wide.png"));
    }
};

QTEST_MAIN(tst_ImageWidget)
#include "tst_imagewidget.moc"
