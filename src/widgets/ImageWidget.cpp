#include "ImageWidget.h"

#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QJsonObject>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>

namespace {

const QLatin1String PathKey("imagePath");
const QLatin1String KeepAspectKey("keepAspectRatio");

QString absoluteInProject(const QString &path)
{
    const QString project = DashboardWidget::projectFolder();
    return QDir::cleanPath(QDir(project).absoluteFilePath(QDir::fromNativeSeparators(path)));
}

} // namespace

ImageWidget::ImageWidget(QWidget *parent)
    : DashboardWidget(parent)
{
    setMinimumSize(80, 60);
}

void ImageWidget::setValue(double value)
{
    Q_UNUSED(value);
}

QString ImageWidget::typeName() const
{
    return QStringLiteral("Image");
}

bool ImageWidget::usesSignals() const
{
    return false;
}

QString ImageWidget::storedPath(const QString &path)
{
    if (path.trimmed().isEmpty())
        return QString();
    const QString absolute = absoluteInProject(path.trimmed());
    const QString project = projectFolder();
    if (project.isEmpty())
        return absolute;
    const QString relative = QDir(project).relativeFilePath(absolute);
    const bool inside = QDir::isRelativePath(relative) && relative != QLatin1String("..")
                        && !relative.startsWith(QLatin1String("../"));
    return inside ? relative : absolute;
}

QString ImageWidget::resolvedPath() const
{
    return m_path.isEmpty() ? QString() : absoluteInProject(m_path);
}

void ImageWidget::setImagePath(const QString &path)
{
    m_path = storedPath(path);
    readPicture();
}

void ImageWidget::setKeepAspectRatio(bool keep)
{
    m_keepAspect = keep;
    update();
}

void ImageWidget::readPicture()
{
    if (m_path.isEmpty())
        m_picture.clear();
    else
        m_picture.load(resolvedPath());
    m_scaled = QPixmap();
    m_scaledFor = QSize();
    update();
}

void ImageWidget::loadConfig(const QJsonObject &config)
{
    m_keepAspect = config.value(KeepAspectKey).toBool(m_keepAspect);
    // Kept as written: it is resolved against the project folder, not rewritten.
    const QJsonValue path = config.value(PathKey);
    if (path.isString()) {
        m_path = QDir::fromNativeSeparators(path.toString().trimmed());
        readPicture();
    }
    update();
}

QJsonObject ImageWidget::saveConfig() const
{
    return QJsonObject{{PathKey, m_path}, {KeepAspectKey, m_keepAspect}};
}

void ImageWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    auto *fileRow = new QWidget(parent);
    auto *layout = new QHBoxLayout(fileRow);
    layout->setContentsMargins(0, 0, 0, 0);
    m_pathEdit = new QLineEdit(m_path, fileRow);
    m_pathEdit->setPlaceholderText(tr("A PNG, JPEG or SVG file"));
    auto *browseButton = new QPushButton(tr("Browse\u2026"), fileRow);
    connect(browseButton, &QPushButton::clicked, fileRow, [this, fileRow] { browse(fileRow); });
    layout->addWidget(m_pathEdit, 1);
    layout->addWidget(browseButton);

    m_aspectEdit = new QCheckBox(parent);
    m_aspectEdit->setChecked(m_keepAspect);

    form->addRow(tr("Image File:"), fileRow);
    form->addRow(tr("Keep Aspect Ratio:"), m_aspectEdit);
}

void ImageWidget::browse(QWidget *dialogParent)
{
    // Next to the current picture if it is still there, else in the project.
    const QFileInfo current(resolvedPath());
    const QString start = !m_path.isEmpty() && current.exists() ? current.absoluteFilePath() : projectFolder();
    const QString chosen = QFileDialog::getOpenFileName(
        dialogParent, tr("Choose Image"), start,
        tr("Images (*.png *.jpg *.jpeg *.svg *.svgz);;All files (*)"));
    if (!chosen.isEmpty() && m_pathEdit)
        m_pathEdit->setText(storedPath(chosen));
}

void ImageWidget::applyConfigForm()
{
    if (m_aspectEdit)
        setKeepAspectRatio(m_aspectEdit->isChecked());
    // Read again even when unchanged: applying picks up an edited file.
    if (m_pathEdit)
        setImagePath(m_pathEdit->text());
}

QString ImageWidget::placeholderText() const
{
    if (m_path.isEmpty())
        return tr("No image \u2014 configure to choose one");
    return m_picture.problem();
}

QRect ImageWidget::pictureRect() const
{
    if (!m_picture.isLoaded())
        return QRect();
    if (!m_keepAspect)
        return rect();
    // A sliver of a picture is still drawn, one pixel thin.
    const QSize fitted = m_picture.size().scaled(size(), Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    return QRect(QPoint((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted);
}

void ImageWidget::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    if (!m_picture.isLoaded()) {
        drawPlaceholder(painter);
        return;
    }
    const QRect target = pictureRect();
    if (target.isEmpty())
        return;
    // At the screen's pixels, but never more than a decoded picture holds nor
    // than the screen shows: a widget stretched beyond that is scaled up
    // while drawing.
    const QSize most = cacheLimit().boundedTo(QSize(PictureFile::MaxDecodedSide, PictureFile::MaxDecodedSide));
    QSize pixels = (QSizeF(target.size()) * devicePixelRatioF()).toSize().expandedTo(QSize(1, 1));
    if (pixels.width() > most.width() || pixels.height() > most.height())
        pixels = pixels.scaled(most, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    if (pixels != m_scaledFor) {
        m_scaled = QPixmap::fromImage(m_picture.render(pixels));
        m_scaledFor = pixels;
        ++m_scales;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(QRectF(target), m_scaled, QRectF(m_scaled.rect()));
}

void ImageWidget::drawPlaceholder(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    painter.setPen(QPen(QColor(150, 150, 150), 1.0, Qt::DashLine));
    painter.setBrush(QColor(245, 245, 245));
    painter.drawRoundedRect(box, 4, 4);
    painter.setPen(QColor(80, 80, 80));
    painter.drawText(box.adjusted(6, 6, -6, -6), Qt::AlignCenter | Qt::TextWordWrap, placeholderText());
}
