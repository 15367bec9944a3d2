#include "XYPlotWidget.h"

#include "PlotInput.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QLineEdit>
#include <QPaintEvent>
#include <QPainter>
#include <QSpinBox>

#include <cmath>

namespace {

const QLatin1String XSignalKey("xSignal");
const QLatin1String YSignalKey("ySignal");
const QLatin1String AutoXKey("autoScaleX");
const QLatin1String AutoYKey("autoScaleY");
const QLatin1String XMinKey("xMin");
const QLatin1String XMaxKey("xMax");
const QLatin1String YMinKey("yMin");
const QLatin1String YMaxKey("yMax");
const QLatin1String MaxPointsKey("maxPoints");
const QLatin1String DrawLinesKey("drawLines");
const QLatin1String ShowGridKey("showGrid");

constexpr double LimitEditorRange = 1e9;
constexpr int MaxPointsLimit = 200000;
const QColor PointColor(0, 114, 178);
const QColor NewestColor(213, 94, 0);
const QColor TextColor(50, 50, 50);

// "SPEED:rpm" reaches a plot of SPEED. The part before the colon is taken
// as it stands: "SPEED :rpm" names another signal.
bool namesSignal(const QString &name, const QString &bound)
{
    if (bound.isEmpty())
        return false;
    return name == bound || QStringView(name).left(name.indexOf(QLatin1Char(':'))) == bound;
}

// A range that can be mapped: a degenerate or reversed one becomes +-1 around its start.
void widen(double &lo, double &hi)
{
    if (!(hi - lo >= 1e-12)) {
        hi = lo + 1.0;
        lo -= 1.0;
    }
}

} // namespace

XYPlotWidget::XYPlotWidget(QWidget *parent)
    : DashboardWidget(parent)
{
    m_font = font();
    m_font.setPointSize(9);
    setMinimumSize(140, 120);
}

void XYPlotWidget::setValue(double value)
{
    Q_UNUSED(value);
}

QString XYPlotWidget::typeName() const
{
    return QStringLiteral("XYPlot");
}

bool XYPlotWidget::usesSignals() const
{
    return false;
}

QStringList XYPlotWidget::signalNames() const
{
    QStringList names;
    if (!m_xSignal.isEmpty())
        names.append(m_xSignal);
    if (!m_ySignal.isEmpty())
        names.append(m_ySignal);
    return names;
}

void XYPlotWidget::setValueForSignal(const QString &name, double value)
{
    setValueForSignalAt(name, value, PlotInput::wallClockMs() / 1000.0);
}

void XYPlotWidget::setValueForSignalAt(const QString &name, double value, double tSec)
{
    if (!std::isfinite(value) || !std::isfinite(tSec))
        return;
    if (namesSignal(name, m_xSignal))
        m_latestX = value;
    else if (namesSignal(name, m_ySignal))
        m_latestY = value;
    else
        return;
    if (std::isnan(m_latestX) || std::isnan(m_latestY)) {
        markDirty();
        return;
    }
    const qint64 tMs = PlotInput::msFromSeconds(tSec);
    const qint64 key = m_bucketMs > 0 ? qint64(std::floor(double(tMs) / m_bucketMs)) * m_bucketMs : tMs;
    // The X and Y values of one frame arrive one after the other: one point.
    if (key == m_lastBucket)
        return;
    m_points.append(QPointF(m_latestX, m_latestY));
    m_lastBucket = key;
    m_lastPointMs = tMs;
    markDirty();
}

void XYPlotWidget::clearData()
{
    m_points.clear();
    m_lastBucket = -1;
    m_lastPointMs = -1;
    m_latestX = m_latestY = std::numeric_limits<double>::quiet_NaN();
    markDirty();
}

void XYPlotWidget::setNames(const QString &x, const QString &y)
{
    if (x == m_xSignal && y == m_ySignal)
        return;
    m_xSignal = x;
    m_ySignal = y;
    clearData();
    Q_EMIT signalNamesChanged();
}

void XYPlotWidget::loadConfig(const QJsonObject &config)
{
    m_autoScaleX = config.value(AutoXKey).toBool(m_autoScaleX);
    m_autoScaleY = config.value(AutoYKey).toBool(m_autoScaleY);
    m_xMin = config.value(XMinKey).toDouble(m_xMin);
    m_xMax = config.value(XMaxKey).toDouble(m_xMax);
    m_yMin = config.value(YMinKey).toDouble(m_yMin);
    m_yMax = config.value(YMaxKey).toDouble(m_yMax);
    m_points.setCapacity(std::min(MaxPointsLimit, config.value(MaxPointsKey).toInt(m_points.capacity())));
    m_drawLines = config.value(DrawLinesKey).toBool(m_drawLines);
    m_showGrid = config.value(ShowGridKey).toBool(m_showGrid);
    m_points.invalidateExtents();
    setNames(config.value(XSignalKey).toString(m_xSignal), config.value(YSignalKey).toString(m_ySignal));
    markDirty();
}

QJsonObject XYPlotWidget::saveConfig() const
{
    return QJsonObject{{XSignalKey, m_xSignal},   {YSignalKey, m_ySignal},
                       {AutoXKey, m_autoScaleX},  {AutoYKey, m_autoScaleY},
                       {XMinKey, m_xMin},         {XMaxKey, m_xMax},
                       {YMinKey, m_yMin},         {YMaxKey, m_yMax},
                       {MaxPointsKey, maxPoints()}, {DrawLinesKey, m_drawLines},
                       {ShowGridKey, m_showGrid}};
}

void XYPlotWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    auto makeCheck = [parent](const QString &text, bool on) {
        auto *box = new QCheckBox(text, parent);
        box->setChecked(on);
        return box;
    };
    auto makeLimit = [parent](double value) {
        auto *editor = new QDoubleSpinBox(parent);
        editor->setRange(-LimitEditorRange, LimitEditorRange);
        editor->setDecimals(3);
        editor->setValue(value);
        return editor;
    };
    m_xEdit = new QLineEdit(m_xSignal, parent);
    m_yEdit = new QLineEdit(m_ySignal, parent);
    m_autoXEdit = makeCheck(QStringLiteral("Auto-scale X"), m_autoScaleX);
    m_autoYEdit = makeCheck(QStringLiteral("Auto-scale Y"), m_autoScaleY);
    m_xMinEdit = makeLimit(m_xMin);
    m_xMaxEdit = makeLimit(m_xMax);
    m_yMinEdit = makeLimit(m_yMin);
    m_yMaxEdit = makeLimit(m_yMax);
    m_maxPointsEdit = new QSpinBox(parent);
    m_maxPointsEdit->setRange(1, MaxPointsLimit);
    m_maxPointsEdit->setValue(maxPoints());
    m_linesEdit = makeCheck(QStringLiteral("Connect points"), m_drawLines);
    m_gridEdit = makeCheck(QStringLiteral("Show grid"), m_showGrid);

    form->addRow(QStringLiteral("X Signal:"), m_xEdit);
    form->addRow(QStringLiteral("Y Signal:"), m_yEdit);
    form->addRow(m_autoXEdit);
    form->addRow(m_autoYEdit);
    form->addRow(QStringLiteral("X Min:"), m_xMinEdit);
    form->addRow(QStringLiteral("X Max:"), m_xMaxEdit);
    form->addRow(QStringLiteral("Y Min:"), m_yMinEdit);
    form->addRow(QStringLiteral("Y Max:"), m_yMaxEdit);
    form->addRow(QStringLiteral("Max points:"), m_maxPointsEdit);
    form->addRow(m_linesEdit);
    form->addRow(m_gridEdit);
}

void XYPlotWidget::applyConfigForm()
{
    const auto readCheck = [](const QPointer<QCheckBox> &box, bool &field) {
        if (box)
            field = box->isChecked();
    };
    const auto readLimit = [](const QPointer<QDoubleSpinBox> &editor, double &field) {
        if (editor)
            field = editor->value();
    };
    readCheck(m_autoXEdit, m_autoScaleX);
    readCheck(m_autoYEdit, m_autoScaleY);
    readLimit(m_xMinEdit, m_xMin);
    readLimit(m_xMaxEdit, m_xMax);
    readLimit(m_yMinEdit, m_yMin);
    readLimit(m_yMaxEdit, m_yMax);
    readCheck(m_linesEdit, m_drawLines);
    readCheck(m_gridEdit, m_showGrid);
    if (m_maxPointsEdit)
        m_points.setCapacity(m_maxPointsEdit->value());
    if (m_xEdit && m_yEdit)
        setNames(m_xEdit->text().trimmed(), m_yEdit->text().trimmed());
    markDirty();
}

XYPointRaster::Ranges XYPlotWidget::ranges() const
{
    XYPointRaster::Ranges r{m_xMin, m_xMax, m_yMin, m_yMax};
    auto fromExtent = [](const XYPointHistory::Extent &extent, double &lo, double &hi) {
        lo = extent.isEmpty() ? -1.0 : extent.lo;
        hi = extent.isEmpty() ? 1.0 : extent.hi;
    };
    if (m_autoScaleX)
        fromExtent(m_points.xExtent(), r.xLo, r.xHi);
    if (m_autoScaleY)
        fromExtent(m_points.yExtent(), r.yLo, r.yHi);
    widen(r.xLo, r.xHi);
    widen(r.yLo, r.yHi);
    return r;
}

QString XYPlotWidget::title() const
{
    const QString none = QStringLiteral("(none)");
    return (m_xSignal.isEmpty() ? none : m_xSignal) + QStringLiteral(" vs ") + (m_ySignal.isEmpty() ? none : m_ySignal);
}

QRect XYPlotWidget::plotRect() const
{
    const int titleHeight = QFontMetrics(m_font).height() + 6;
    return QRect(m_leftAxis, titleHeight, width() - m_leftAxis - 12, height() - titleHeight - m_bottomPad);
}

void XYPlotWidget::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    drawBackdrop(painter);
    const QRect area = plotRect();
    if (area.width() <= 0 || area.height() <= 0)
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(m_font);
    const XYPointRaster::Ranges r = ranges();
    drawPoints(painter, area, event->rect(), r);
    drawLabels(painter, area, r);
}

void XYPlotWidget::drawBackdrop(QPainter &painter) const
{
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = size() * ratio;
    // A plot larger than the screen draws its backdrop where it is exposed.
    if (!fitsCacheLimit(pixels)) {
        m_backdrop = QPixmap();
        m_backdropKey.clear();
        painter.save();
        painter.fillRect(rect(), palette().window().color());
        paintBackdrop(painter);
        painter.restore();
        return;
    }
    // Title, frame, grid and ticks change only with the size and the
    // settings; text and lines are dear to draw again with every point.
    const QString key = QStringList{QString::number(width()), QString::number(height()),
                                    QString::number(devicePixelRatioF()), title(), m_font.toString(),
                                    QString::number(int(m_showGrid)), QString::number(m_gridLines),
                                    palette().window().color().name()}
                            .join(QLatin1Char('\n'));
    if (key != m_backdropKey || m_backdrop.isNull()) {
        m_backdrop = QPixmap(pixels);
        m_backdrop.setDevicePixelRatio(ratio);
        m_backdrop.fill(palette().window().color());
        QPainter cached(&m_backdrop);
        paintBackdrop(cached);
        m_backdropKey = key;
    }
    painter.drawPixmap(0, 0, m_backdrop);
}

void XYPlotWidget::paintBackdrop(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(m_font);
    painter.setPen(TextColor);
    painter.drawText(QRect(0, 2, width(), QFontMetrics(m_font).height()), Qt::AlignCenter, title());
    const QRect area = plotRect();
    if (area.width() > 0 && area.height() > 0) {
        painter.fillRect(area, Qt::white);
        drawAxes(painter, area);
    }
}

void XYPlotWidget::drawAxes(QPainter &painter, const QRect &area) const
{
    const QRectF frame = QRectF(area).adjusted(-0.5, -0.5, 0.5, 0.5);
    const int tick = m_tickLength / 2;
    for (int i = 0; i <= m_gridLines; ++i) {
        const double x = frame.left() + frame.width() * i / m_gridLines;
        const double y = frame.top() + frame.height() * i / m_gridLines;
        if (m_showGrid && i > 0 && i < m_gridLines) {
            painter.setPen(QPen(QColor(228, 228, 228), 1.0));
            painter.drawLine(QPointF(x, frame.top()), QPointF(x, frame.bottom()));
            painter.drawLine(QPointF(frame.left(), y), QPointF(frame.right(), y));
        }
        painter.setPen(QPen(QColor(90, 90, 90), 1.0));
        painter.drawLine(QPointF(x, frame.bottom()), QPointF(x, frame.bottom() + tick));
        painter.drawLine(QPointF(frame.left() - tick, y), QPointF(frame.left(), y));
    }
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame);
}

void XYPlotWidget::drawLabels(QPainter &painter, const QRect &area, const XYPointRaster::Ranges &r) const
{
    const int tick = m_tickLength / 2;
    const int h = QFontMetrics(m_font).height();
    const int below = area.bottom() + tick + 1;
    const int flags = Qt::AlignVCenter | Qt::TextDontClip;
    painter.setPen(TextColor);
    painter.drawText(QRect(area.left(), below, area.width() / 2, h), Qt::AlignLeft | flags, QString::number(r.xLo));
    painter.drawText(QRect(area.center().x(), below, area.width() / 2, h), Qt::AlignRight | flags,
                     QString::number(r.xHi));
    drawYLabel(painter, area, area.top(), QString::number(r.yHi));
    drawYLabel(painter, area, area.bottom() - h, QString::number(r.yLo));
}

// Right-aligned left of the axis; a label wider than that strip is written
// just inside the plot instead, on a pale box, so that no digit is cut off.
void XYPlotWidget::drawYLabel(QPainter &painter, const QRect &area, int top, const QString &text) const
{
    const QFontMetrics metrics(m_font);
    const int width = metrics.horizontalAdvance(text);
    const int strip = area.left() - m_tickLength / 2 - 2;
    if (width <= strip) {
        painter.drawText(QRect(0, top, strip, metrics.height()), Qt::AlignRight | Qt::AlignVCenter, text);
        return;
    }
    const QRect box(area.left() + 3, top + (top <= area.top() ? 2 : -2), width + 4, metrics.height());
    painter.fillRect(box, QColor(255, 255, 255, 210));
    painter.drawText(box, Qt::AlignCenter, text);
}

void XYPlotWidget::drawPoints(QPainter &painter, const QRect &area, const QRect &exposed,
                              const XYPointRaster::Ranges &r) const
{
    if (m_points.isEmpty())
        return;
    const XYPointRaster raster(area, r);
    painter.save();
    painter.setClipRect(area);
    // Only what is exposed, and the margin the dots' soft edges need: an area
    // larger than the screen is never seen whole.
    const QRect part = area & exposed.adjusted(-2, -2, 2, 2);
    if (!part.isEmpty()) {
        const QImage drawn =
            m_drawLines ? raster.trace(m_points, PointColor, part) : raster.dots(m_points, PointColor, part);
        painter.drawImage(part.topLeft(), drawn);
    }
    // The newest point: where the pair of signals stands now.
    painter.setPen(QPen(Qt::white, 1.0));
    painter.setBrush(NewestColor);
    painter.drawEllipse(raster.map(m_points.newest()), 3.5, 3.5);
    painter.restore();
}
