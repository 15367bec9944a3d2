#include "SignalRouter.h"

#include "DashboardItem.h"
#include "DashboardWidget.h"
#include "DesignScene.h"
#include "IErrorConsumer.h"
#include "IMessageConsumer.h"
#include "IPlaybackPlot.h"
#include "IStateConsumer.h"
#include "ITimeStampedConsumer.h"

#include <QSet>

template<typename Consumer>
QList<Consumer *> SignalRouter::alive(const EventTargets<Consumer> &targets)
{
    QList<Consumer *> result;
    result.reserve(targets.size());
    for (const EventTarget<Consumer> &target : targets) {
        if (target.widget)
            result.append(target.consumer);
    }
    return result;
}

SignalRouter::SignalRouter(DesignScene *scene, QObject *parent)
    : QObject(parent)
    , m_scene(scene)
{
    if (m_scene)
        connect(m_scene, &DesignScene::dashboardItemsChanged, this, &SignalRouter::invalidate);
}

void SignalRouter::setDefinitions(const SignalDefinitions *defs)
{
    m_defs = defs;
    m_mappingsSource = nullptr;
    m_mappingsCount = -1;
}

QString SignalRouter::routingName(const QString &boundName)
{
    const qsizetype colon = boundName.indexOf(QLatin1Char(':'));
    return (colon < 0 ? boundName : boundName.left(colon)).trimmed();
}

void SignalRouter::ensureMappings() const
{
    const QList<SignalMapping> &mappings = m_defs->mappings();
    if (mappings.constData() == m_mappingsSource && mappings.size() == m_mappingsCount)
        return;
    m_mappings.clear();
    for (const SignalMapping &mapping : mappings) {
        if (!m_mappings.contains(mapping.name))
            m_mappings.insert(mapping.name, mapping);
    }
    m_mappingsSource = mappings.constData();
    m_mappingsCount = mappings.size();
}

double SignalRouter::mappedValue(const QString &name, double raw) const
{
    if (!m_defs)
        return raw;
    ensureMappings();
    const auto it = m_mappings.constFind(name);
    return it == m_mappings.constEnd() ? raw : it->apply(raw);
}

QString SignalRouter::errorText(const QString &errorId) const
{
    if (m_defs) {
        const auto error = m_defs->errorFor(errorId);
        if (error && !error->text.isEmpty())
            return error->text;
    }
    return errorId;
}

QString SignalRouter::stateLabel(const QString &groupId, const QString &stateId, const QString &label) const
{
    if (!label.isEmpty() || !m_defs)
        return label;
    const auto state = m_defs->stateFor(groupId, stateId);
    return state ? state->label : QString();
}

void SignalRouter::routeValue(const QString &name, double raw, double tSec)
{
    ensureIndex();
    deliver(name, mappedValue(name, raw), tSec, nullptr);
}

void SignalRouter::routeValues(const QMap<QString, double> &values, double tSec)
{
    ensureIndex();
    m_batch.clear();
    for (auto it = values.constBegin(); it != values.constEnd(); ++it)
        deliver(it.key(), mappedValue(it.key(), it.value()), tSec, &m_batch);
    for (IPlaybackPlot *plot : std::as_const(m_batch))
        plot->endBatch();
}

void SignalRouter::beginBurst()
{
    ++m_burstDepth;
}

void SignalRouter::endBurst()
{
    if (m_burstDepth > 0 && --m_burstDepth == 0)
        releaseHeld();
}

void SignalRouter::hold(int slot, double value, double tSec)
{
    Held &held = m_held[size_t(slot)];
    held.value = value;
    held.tSec = tSec;
    if (!held.holding) {
        held.holding = true;
        m_holding.append(slot);
    }
}

void SignalRouter::releaseHeld()
{
    // A widget may spin the event loop and start another burst meanwhile.
    for (qsizetype i = 0; i < m_holding.size(); ++i) {
        Held &held = m_held[size_t(m_holding.at(i))];
        held.holding = false;
        if (DashboardWidget *widget = held.widget.data())
            widget->setValueForSignalAt(held.name, held.value, held.tSec);
    }
    m_holding.clear();
}

void SignalRouter::deliver(const QString &name, double value, double tSec, QList<IPlaybackPlot *> *batch)
{
    const auto it = m_bySignal.constFind(name);
    if (it == m_bySignal.constEnd())
        return;
    for (const Target &target : *it) {
        DashboardWidget *widget = target.widget.data();
        if (!widget) {
            m_dirty = true;
            continue;
        }
        if (m_burstDepth > 0 && target.heldSlot >= 0) {
            hold(target.heldSlot, value, tSec);
            continue;
        }
        if (batch && target.plot && !batch->contains(target.plot)) {
            target.plot->beginBatch();
            batch->append(target.plot);
        }
        if (target.consumer)
            target.consumer->setValueForSignalAt(name, value, tSec);
        else
            widget->setValueForSignalAt(name, value, tSec);
    }
}

void SignalRouter::routeState(const QString &groupId, const QString &stateId, const QString &label)
{
    ensureIndex();
    const QString shown = stateLabel(groupId, stateId, label);
    for (IStateConsumer *consumer : alive(m_stateConsumers)) {
        if (consumer->groupId() == groupId)
            consumer->setState(stateId, shown);
    }
}

void SignalRouter::routeError(double tSec, const QString &errorId)
{
    ensureIndex();
    const QString text = errorText(errorId);
    for (IErrorConsumer *consumer : alive(m_errorConsumers))
        consumer->appendError(tSec, errorId, text);
}

void SignalRouter::routeMessage(double tSec, const QString &text)
{
    ensureIndex();
    for (IMessageConsumer *consumer : alive(m_messageConsumers))
        consumer->appendMessage(tSec, text);
}

void SignalRouter::clearErrors()
{
    ensureIndex();
    for (IErrorConsumer *consumer : alive(m_errorConsumers))
        consumer->clearErrors();
}

void SignalRouter::clearMessages()
{
    ensureIndex();
    for (IMessageConsumer *consumer : alive(m_messageConsumers))
        consumer->clearMessages();
}

QList<DashboardWidget *> SignalRouter::dashboardWidgets() const
{
    QList<DashboardWidget *> widgets;
    for (DashboardItem *item : DesignScene::dashboardItemsOf(m_scene)) {
        if (DashboardWidget *widget = item->dashboardWidget())
            widgets.append(widget);
    }
    return widgets;
}

QList<DashboardWidget *> SignalRouter::widgetsForSignal(const QString &name)
{
    ensureIndex();
    QList<DashboardWidget *> widgets;
    for (const Target &target : m_bySignal.value(name)) {
        if (target.widget)
            widgets.append(target.widget.data());
    }
    return widgets;
}

void SignalRouter::ensureIndex()
{
    if (!m_dirty)
        return;
    // Held values belong to the old bindings: delivered before they change.
    releaseHeld();
    rebuildIndex();
}

void SignalRouter::watch(DashboardWidget *widget)
{
    connect(widget, &DashboardWidget::signalNamesChanged, this, &SignalRouter::invalidate, Qt::UniqueConnection);
    connect(widget, &QObject::destroyed, this, &SignalRouter::invalidate, Qt::UniqueConnection);
}

void SignalRouter::rebuildIndex()
{
    m_dirty = false;
    m_bySignal.clear();
    m_held.clear();
    m_holding.clear();
    m_stateConsumers.clear();
    m_errorConsumers.clear();
    m_messageConsumers.clear();

    const QList<DashboardWidget *> widgets = dashboardWidgets();
    for (DashboardWidget *widget : widgets) {
        if (auto *states = dynamic_cast<IStateConsumer *>(widget))
            m_stateConsumers.append({widget, states});
        if (auto *errors = dynamic_cast<IErrorConsumer *>(widget))
            m_errorConsumers.append({widget, errors});
        if (auto *messages = dynamic_cast<IMessageConsumer *>(widget))
            m_messageConsumers.append({widget, messages});

        watch(widget);
        auto *consumer = dynamic_cast<ITimeStampedConsumer *>(widget);
        auto *plot = dynamic_cast<IPlaybackPlot *>(widget);
        QSet<QString> seen;
        const QStringList bound = widget->signalNames();
        for (const QString &entry : bound) {
            const QString name = routingName(entry);
            if (name.isEmpty() || seen.contains(name))
                continue;
            seen.insert(name);
            Target target{widget, consumer, plot};
            if (!consumer) {
                target.heldSlot = int(m_held.size());
                m_held.push_back(Held{widget, name});
            }
            m_bySignal[name].append(target);
        }
    }
}
