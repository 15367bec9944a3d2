#pragma once

#include <QCoreApplication>
#include <QImage>
#include <QSize>
#include <QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QSvgRenderer;
QT_END_NAMESPACE

/**
 * A picture file read within bounds, ready to be drawn at any size.
 *
 * Raster pictures (PNG, JPEG and whatever else the image plugins read) are
 * measured from their header before anything is decoded: a picture of more
 * than MaxPixels is refused, so a huge or hostile file costs neither the
 * memory nor the time of its full size. Any other is kept at most
 * MaxDecodedSide pixels on its long side; decoders that cannot scale while
 * decoding (PNG) hold the full picture for a moment, MaxPixels at most.
 * SVG drawings stay vectors and are rendered at the size asked for, so they
 * stay crisp; a drawing file of more than MaxSvgBytes is refused.
 *
 * What cannot be shown is told in problem(), naming the file.
 *
 * The same unchanged file read again (a logo on many widgets of a large
 * layout) shares the decoded picture instead of decoding another copy; it
 * goes when the last PictureFile holding it does.
 */
class PictureFile
{
    Q_DECLARE_TR_FUNCTIONS(PictureFile)

public:
    static constexpr qint64 MaxPixels = 40'000'000;
    static constexpr int MaxDecodedSide = 4096;
    static constexpr qint64 MaxSvgBytes = 16 * 1024 * 1024;

    PictureFile();
    ~PictureFile();

    /// Forgets the previous picture, then reads `path`.
    void load(const QString &path);
    void clear();

    bool isLoaded() const;
    /// Why the last load gave nothing to draw ("rig.svg not found"); empty
    /// after a good load and after clear().
    QString problem() const { return m_problem; }
    /// The picture's own shape: the decoded size of a raster picture, the
    /// default size of a drawing.
    QSize size() const { return m_size; }
    /// The whole picture drawn into an image of `target` pixels.
    QImage render(const QSize &target) const;

private:
    struct Decoded
    {
        QImage image;
        std::unique_ptr<QSvgRenderer> drawing;
        QSize size;
    };

    std::shared_ptr<Decoded> loadRaster(const QString &path, const QString &fileName);
    std::shared_ptr<Decoded> loadDrawing(const QString &path, const QString &fileName);

    std::shared_ptr<Decoded> m_decoded;
    QSize m_size;
    QString m_problem;
};
