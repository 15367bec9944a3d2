#include "DashboardWidget.h"

#include "FrameClock.h"

#include <QJsonArray>
#include <QScreen>

DashboardWidget::DashboardWidget(QWidget *parent)
    : QWidget(parent)
{
}

DashboardWidget::~DashboardWidget()
{
    if (m_framePending)
        FrameClock::instance().cancel(this);
}

namespace {
QString s_projectFolder;
}

QString DashboardWidget::projectFolder()
{
    return s_projectFolder;
}

void DashboardWidget::setProjectFolder(const QString &folder)
{
    s_projectFolder = folder;
}

QSize DashboardWidget::cacheLimit() const
{
    // Without a screen (none attached yet), that of a large monitor.
    const QScreen *shown = screen();
    if (!shown)
        return QSize(3840, 2160);
    return (QSizeF(shown->virtualSize()) * shown->devicePixelRatio()).toSize();
}

bool DashboardWidget::fitsCacheLimit(const QSize &pixels) const
{
    const QSize limit = cacheLimit();
    return pixels.width() <= limit.width() && pixels.height() <= limit.height();
}

QSize DashboardWidget::minimumDesignSize() const
{
    return sizeHint().expandedTo(QSize(80, 60));
}

void DashboardWidget::setValueForSignal(const QString &name, double value)
{
    Q_UNUSED(name);
    setValue(value);
}

void DashboardWidget::setValueForSignalAt(const QString &name, double value, double tSec)
{
    Q_UNUSED(tSec);
    setValueForSignal(name, value);
}

bool DashboardWidget::supportsMultipleSignals() const
{
    return false;
}

bool DashboardWidget::usesSignals() const
{
    return true;
}

QString DashboardWidget::primarySignal() const
{
    return m_signals.isEmpty() ? QString() : m_signals.first();
}

QStringList DashboardWidget::signalNames() const
{
    return m_signals;
}

void DashboardWidget::setSignalName(const QString &name)
{
    m_signals = QStringList{name};
    Q_EMIT signalNamesChanged();
}

void DashboardWidget::setSignalNames(const QStringList &names)
{
    m_signals = names;
    Q_EMIT signalNamesChanged();
}

void DashboardWidget::loadConfig(const QJsonObject &config)
{
    const QJsonValue value = config.value(QLatin1String("signals"));
    if (!value.isArray())
        return;
    QStringList names;
    for (const QJsonValue &element : value.toArray()) {
        if (element.isString())
            names.append(element.toString());
    }
    m_signals = names;
    Q_EMIT signalNamesChanged();
}

QJsonObject DashboardWidget::saveConfig() const
{
    QJsonObject config;
    config.insert(QLatin1String("signals"), QJsonArray::fromStringList(m_signals));
    return config;
}

void DashboardWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    Q_UNUSED(form);
    Q_UNUSED(parent);
}

void DashboardWidget::applyConfigForm()
{
}

void DashboardWidget::markDirty()
{
    if (m_framePending)
        return;
    m_framePending = true;
    FrameClock::instance().schedule(this);
}

void DashboardWidget::finishFrame()
{
    m_framePending = false;
    updateFrame();
}

void DashboardWidget::updateFrame()
{
    update();
}
