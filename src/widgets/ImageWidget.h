#pragma once

#include "DashboardWidget.h"
#include "PictureFile.h"

#include <QPixmap>
#include <QPointer>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QLineEdit;
QT_END_NAMESPACE

/**
 * A picture on the dashboard (PNG, JPEG, SVG): a rig drawing, a logo. It
 * binds no signals.
 *
 * The path is kept relative to the project folder when the picture lies
 * inside it, so a project copied elsewhere keeps its pictures, and absolute
 * otherwise. The picture is read once when the path is set (see PictureFile
 * for the bounds kept), then scaled once per widget size; painting only
 * draws the scaled copy. Where there is nothing to draw the widget says why:
 * no picture chosen yet, or the file's name and what is wrong with it.
 *
 * Config keys: "imagePath" (string, as described above) and
 * "keepAspectRatio" (bool, default true; false stretches the picture over
 * the whole widget). A missing key, or one of the wrong type, keeps the
 * current setting.
 */
class ImageWidget : public DashboardWidget
{
    Q_OBJECT

public:
    explicit ImageWidget(QWidget *parent = nullptr);

    /// Pictures take no values.
    void setValue(double value) override;
    QString typeName() const override;
    bool usesSignals() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    /// Shows the picture at `path` (absolute, or relative to the project
    /// folder), read at once; an empty path shows none.
    void setImagePath(const QString &path);
    /// As kept in the layout: relative to the project folder when inside it.
    QString imagePath() const { return m_path; }
    /// imagePath() made absolute against the project folder.
    QString resolvedPath() const;
    bool keepsAspectRatio() const { return m_keepAspect; }
    void setKeepAspectRatio(bool keep);

    /// The text shown instead of a picture; empty while one is shown.
    QString placeholderText() const;
    /// Where the picture is drawn: the whole widget when stretched, else
    /// the largest rectangle of the picture's shape, centred.
    QRect pictureRect() const;
    /// How often the picture has been scaled for drawing since construction.
    int scaleCount() const { return m_scales; }

    /// How a chosen path is kept: relative to the project folder when it
    /// lies inside it, else absolute and cleaned.
    static QString storedPath(const QString &path);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void readPicture();
    void drawPlaceholder(QPainter &painter) const;
    void browse(QWidget *dialogParent);

    PictureFile m_picture;
    QString m_path;
    bool m_keepAspect = true;
    QPixmap m_scaled;
    QSize m_scaledFor;
    int m_scales = 0;
    QPointer<QLineEdit> m_pathEdit;
    QPointer<QCheckBox> m_aspectEdit;
};
