#include "PictureFile.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHash>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>

namespace {

// The file as it is now: a picture changed on disk is read again.
QString versionKey(const QFileInfo &info)
{
    return info.absoluteFilePath() + QLatin1Char('\n') + QString::number(info.lastModified().toMSecsSinceEpoch())
        + QLatin1Char('\n') + QString::number(info.size());
}

} // namespace

PictureFile::PictureFile() = default;
PictureFile::~PictureFile() = default;

void PictureFile::clear()
{
    m_decoded.reset();
    m_size = QSize();
    m_problem.clear();
}

bool PictureFile::isLoaded() const
{
    return m_decoded != nullptr;
}

void PictureFile::load(const QString &path)
{
    clear();
    const QFileInfo info(path);
    if (!info.exists()) {
        m_problem = tr("%1 not found").arg(info.fileName());
        return;
    }
    // Pictures in use, by file version; the GUI thread's only.
    using Shared = QHash<QString, std::weak_ptr<Decoded>>;
    static Shared shared;
    const QString key = versionKey(info);
    m_decoded = shared.value(key).lock();
    if (!m_decoded) {
        const QString suffix = info.suffix().toLower();
        const bool drawing = suffix == QLatin1String("svg") || suffix == QLatin1String("svgz");
        m_decoded = drawing ? loadDrawing(path, info.fileName()) : loadRaster(path, info.fileName());
        if (!m_decoded)
            return;
        shared.removeIf([](Shared::iterator entry) { return entry.value().expired(); });
        shared.insert(key, m_decoded);
    }
    m_size = m_decoded->size;
}

std::shared_ptr<PictureFile::Decoded> PictureFile::loadRaster(const QString &path, const QString &fileName)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isEmpty()) {
        m_problem = tr("%1: cannot be read").arg(fileName);
        return nullptr;
    }
    if (qint64(size.width()) * size.height() > MaxPixels) {
        m_problem = tr("%1: %2 \u00d7 %3 pixels, over the limit of %4 megapixels")
                        .arg(fileName)
                        .arg(size.width())
                        .arg(size.height())
                        .arg(MaxPixels / 1'000'000);
        return nullptr;
    }
    // Decoders that can (JPEG) scale while decoding; the others scale after.
    if (size.width() > MaxDecodedSide || size.height() > MaxDecodedSide)
        reader.setScaledSize(size.scaled(MaxDecodedSide, MaxDecodedSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    auto decoded = std::make_shared<Decoded>();
    decoded->image = reader.read();
    if (decoded->image.isNull()) {
        m_problem = tr("%1: cannot be read").arg(fileName);
        return nullptr;
    }
    decoded->size = decoded->image.size();
    return decoded;
}

std::shared_ptr<PictureFile::Decoded> PictureFile::loadDrawing(const QString &path, const QString &fileName)
{
    if (QFileInfo(path).size() > MaxSvgBytes) {
        m_problem = tr("%1: over the limit of %2 MB for drawings").arg(fileName).arg(MaxSvgBytes / (1024 * 1024));
        return nullptr;
    }
    auto decoded = std::make_shared<Decoded>();
    decoded->drawing = std::make_unique<QSvgRenderer>();
    if (!decoded->drawing->load(path)) {
        m_problem = tr("%1: cannot be read").arg(fileName);
        return nullptr;
    }
    // A drawing without a size of its own is taken as square.
    const QSize own = decoded->drawing->defaultSize();
    decoded->size = own.isEmpty() ? QSize(100, 100) : own;
    return decoded;
}

QImage PictureFile::render(const QSize &target) const
{
    if (target.isEmpty() || !isLoaded())
        return QImage();
    if (!m_decoded->drawing)
        return m_decoded->image.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QImage image(target, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    m_decoded->drawing->render(&painter, QRectF(QPointF(0, 0), QSizeF(target)));
    return image;
}
