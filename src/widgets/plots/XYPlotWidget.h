#pragma once

#include "DashboardWidget.h"
#include "IPlaybackPlot.h"
#include "ITimeStampedConsumer.h"
#include "XYPointHistory.h"
#include "XYPointRaster.h"

#include <QFont>
#include <QPixmap>
#include <QPointer>

#include <limits>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QDoubleSpinBox;
class QLineEdit;
class QPainter;
class QSpinBox;
QT_END_NAMESPACE

/**
 * One signal plotted against another: each point pairs the newest X value
 * with the newest Y value at the moment either of them arrives, at most one
 * point per 20 ms bucket of input time (so the X and Y values of one frame
 * make one point). The newest maxPoints points are kept in a ring buffer and
 * drawn as dots, or joined oldest to newest.
 *
 * The bound signals are the configured X and Y names; signalNamesChanged()
 * is emitted when the configuration changes them.
 *
 * Config keys: "xSignal", "ySignal", "autoScaleX", "autoScaleY", "xMin",
 * "xMax", "yMin", "yMax", "maxPoints", "drawLines", "showGrid"; a missing key
 * keeps the current value.
 */
class XYPlotWidget : public DashboardWidget, public ITimeStampedConsumer, public IPlaybackPlot
{
    Q_OBJECT

public:
    explicit XYPlotWidget(QWidget *parent = nullptr);

    /// A point needs to know which signal a value belongs to: ignored.
    void setValue(double value) override;
    QString typeName() const override;
    /// Live input: stamped with the wall clock and taken like played-back input.
    void setValueForSignal(const QString &name, double value) override;
    /// The X and Y rows of the form are the binding.
    bool usesSignals() const override;
    /// xSignal and ySignal, each when not empty.
    QStringList signalNames() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    QString xSignal() const { return m_xSignal; }
    QString ySignal() const { return m_ySignal; }
    int maxPoints() const { return m_points.capacity(); }
    bool drawLines() const { return m_drawLines; }
    const XYPointHistory &points() const { return m_points; }
    double latestX() const { return m_latestX; }
    double latestY() const { return m_latestY; }
    qint64 lastPointMs() const { return m_lastPointMs; }
    /// The axis ranges of the next paint: configured, or the points' extent.
    XYPointRaster::Ranges ranges() const;
    QRect plotRect() const;
    /// xSignal + " vs " + ySignal; a missing name reads "(none)".
    QString title() const;

public Q_SLOTS:
    /// Updates the latest value of the X or Y signal (a name is also matched
    /// by its part before ":") and stores a point when both are known and
    /// the time's 20 ms bucket has none yet.
    void setValueForSignalAt(const QString &name, double value, double tSec) override;
    void clearData() override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void setNames(const QString &x, const QString &y);
    // The cached backdrop, or the backdrop itself when the plot is larger than the screen.
    void drawBackdrop(QPainter &painter) const;
    void paintBackdrop(QPainter &painter) const;
    void drawAxes(QPainter &painter, const QRect &area) const;
    void drawLabels(QPainter &painter, const QRect &area, const XYPointRaster::Ranges &ranges) const;
    void drawYLabel(QPainter &painter, const QRect &area, int top, const QString &text) const;
    void drawPoints(QPainter &painter, const QRect &area, const QRect &exposed,
                    const XYPointRaster::Ranges &ranges) const;

    QString m_xSignal;
    QString m_ySignal;
    bool m_autoScaleX = true;
    bool m_autoScaleY = true;
    double m_xMin = -1.0;
    double m_xMax = 1.0;
    double m_yMin = -1.0;
    double m_yMax = 1.0;
    bool m_drawLines = false;
    bool m_showGrid = true;
    int m_gridLines = 5;
    int m_tickLength = 8;
    int m_leftAxis = 40;
    int m_bottomPad = 20;
    QFont m_font;
    XYPointHistory m_points{2000};
    int m_bucketMs = 20;
    qint64 m_lastBucket = -1;
    double m_latestX = std::numeric_limits<double>::quiet_NaN();
    double m_latestY = std::numeric_limits<double>::quiet_NaN();
    qint64 m_lastPointMs = -1;

    QPointer<QLineEdit> m_xEdit;
    QPointer<QLineEdit> m_yEdit;
    QPointer<QCheckBox> m_autoXEdit;
    QPointer<QCheckBox> m_autoYEdit;
    QPointer<QDoubleSpinBox> m_xMinEdit;
    QPointer<QDoubleSpinBox> m_xMaxEdit;
    QPointer<QDoubleSpinBox> m_yMinEdit;
    QPointer<QDoubleSpinBox> m_yMaxEdit;
    QPointer<QSpinBox> m_maxPointsEdit;
    QPointer<QCheckBox> m_linesEdit;
    QPointer<QCheckBox> m_gridEdit;

    // Title, frame, grid and ticks, painted once per size and settings
    // (unless the plot is larger than the screen).
    mutable QPixmap m_backdrop;
    mutable QString m_backdropKey;
};
