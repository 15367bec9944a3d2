#include "PictureFile.h"

#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>

PictureFile::PictureFile() = default;
PictureFile::~PictureFile() = default;

void PictureFile::clear()
{
    m_image = QImage();
    m_drawing.reset();
    m_size = QSize();
    m_problem.clear();
}

bool PictureFile::isLoaded() const
{
    return !m_image.isNull() || m_drawing;
}

void PictureFile::load(const QString &path)
{
    clear();
    const QFileInfo info(path);
    if (!info.exists()) {
        m_problem = tr("%1 not found").arg(info.fileName());
        return;
    }
    const QString suffix = info.suffix().toLower();
    if (suffix == QLatin1String("svg") || suffix == QLatin1String("svgz"))
        loadDrawing(path, info.fileName());
    else
        loadRaster(path, info.fileName());
}

void PictureFile::loadRaster(const QString &path, const QString &fileName)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isEmpty()) {
        m_problem = tr("%1: cannot be read").arg(fileName);
        return;
    }
    if (qint64(size.width()) * size.height() > MaxPixels) {
        m_problem = tr("%1: %2 \u00d7 %3 pixels, over the limit of %4 megapixels")
                        .arg(fileName)
                        .arg(size.width())
                        .arg(size.height())
                        .arg(MaxPixels / 1'000'000);
        return;
    }
    // Decoders that can (JPEG) scale while decoding; the others scale after.
    if (size.width() > MaxDecodedSide || size.height() > MaxDecodedSide)
        reader.setScaledSize(size.scaled(MaxDecodedSide, MaxDecodedSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    m_image = reader.read();
    if (m_image.isNull()) {
        m_problem = tr("%1: cannot be read").arg(fileName);
        return;
    }
    m_size = m_image.size();
}

void PictureFile::loadDrawing(const QString &path, const QString &fileName)
{
    if (QFileInfo(path).size() > MaxSvgBytes) {
        m_problem = tr("%1: over the limit of %2 MB for drawings").arg(fileName).arg(MaxSvgBytes / (1024 * 1024));
        return;
    }
    auto drawing = std::make_unique<QSvgRenderer>();
    if (!drawing->load(path)) {
        m_problem = tr("%1: cannot be read").arg(fileName);
        return;
    }
    // A drawing without a size of its own is taken as square.
    m_size = drawing->defaultSize().isEmpty() ? QSize(100, 100) : drawing->defaultSize();
    m_drawing = std::move(drawing);
}

QImage PictureFile::render(const QSize &target) const
{
    if (target.isEmpty() || !isLoaded())
        return QImage();
    if (!m_drawing)
        return m_image.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QImage image(target, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    m_drawing->render(&painter, QRectF(QPointF(0, 0), QSizeF(target)));
    return image;
}
