#pragma once

#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>

#include <vector>

#include "SignalDefinitions.h"

class DashboardWidget;
class DesignScene;
class IErrorConsumer;
class IMessageConsumer;
class IPlaybackPlot;
class IStateConsumer;
class ITimeStampedConsumer;

/**
 * Fans live and played-back data out to the widgets on a scene.
 *
 * Only widgets hosted by top-level DashboardItems take part. A widget receives
 * a value when one of its bound names, cut at the first ':' and trimmed,
 * equals the signal name; the first such entry wins, so a widget gets each
 * value once, through setValueForSignalAt(name, value, tSec).
 *
 * The name -> widgets index is cached and rebuilt on the next delivery after
 * the scene announced items coming or going, a widget announced new bound
 * names, or an indexed widget was destroyed; nothing polls the scene. (A
 * state indicator's group is read at delivery time and needs no rebuild.)
 *
 * Time-stamped values reach plots through ITimeStampedConsumer; plots get a
 * whole frame between one beginBatch() and one endBatch(). States, errors
 * and messages reach the widgets that take them through IStateConsumer,
 * IErrorConsumer and IMessageConsumer.
 *
 * Lines that arrive in one read form a burst (beginBurst() .. endBurst()):
 * plots still get every value at once, since they draw its history, but a
 * widget that shows one value per signal gets only the last value of each
 * signal of the burst, at its end. It would show nothing else, and a fast
 * device delivers dozens of lines per read.
 *
 * The router neither owns the scene nor the catalogue.
 */
class SignalRouter : public QObject
{
    Q_OBJECT

public:
    explicit SignalRouter(DesignScene *scene, QObject *parent = nullptr);

    /// The catalogue in force (recording-specific or current); may be null.
    /// Call again after reloading it, so the cached mappings are re-read.
    void setDefinitions(const SignalDefinitions *defs);
    const SignalDefinitions *definitions() const { return m_defs; }

    /// Drops the cached index; the next delivery rebuilds it.
    void invalidate() { m_dirty = true; }

    /// physical = raw * scale + offset when the signal is declared with a
    /// mapping, else raw unchanged.
    double mappedValue(const QString &name, double raw) const;
    /// The error's description when declared and non-empty, else the id.
    QString errorText(const QString &errorId) const;
    /// `label` when non-empty, else the state's label from the catalogue,
    /// else empty (the indicator then shows the state id).
    QString stateLabel(const QString &groupId, const QString &stateId,
                       const QString &label = QString()) const;

    /// Maps one raw value and hands it to every widget bound to `name`.
    void routeValue(const QString &name, double raw, double tSec);
    /// A whole line or frame: every value mapped and delivered, each batching
    /// widget repainted once at the end.
    void routeValues(const QMap<QString, double> &values, double tSec);
    /// The lines of one read follow; bursts may nest.
    void beginBurst();
    /// Hands the held last values to their widgets.
    void endBurst();
    /// To every state indicator whose group equals `groupId`; an empty label
    /// is looked up in the catalogue.
    void routeState(const QString &groupId, const QString &stateId,
                    const QString &label = QString());
    /// To every error console, with the text from errorText().
    void routeError(double tSec, const QString &errorId);
    /// To every messages console.
    void routeMessage(double tSec, const QString &text);
    void clearErrors();
    void clearMessages();

    /// Widgets of every top-level DashboardItem, in scene order.
    QList<DashboardWidget *> dashboardWidgets() const;
    /// Widgets bound to `name` (cached index).
    QList<DashboardWidget *> widgetsForSignal(const QString &name);

    /// The bound name as routing compares it: cut at the first ':' and trimmed.
    static QString routingName(const QString &boundName);

private:
    struct Target
    {
        QPointer<DashboardWidget> widget;
        ITimeStampedConsumer *consumer = nullptr;
        IPlaybackPlot *plot = nullptr;
        int heldSlot = -1; // a value widget's place in m_held
    };
    // A widget that takes states, errors or messages, as the interface it
    // implements; the pointer is only used while the widget lives.
    template<typename Consumer>
    struct EventTarget
    {
        QPointer<DashboardWidget> widget;
        Consumer *consumer = nullptr;
    };
    template<typename Consumer>
    using EventTargets = QList<EventTarget<Consumer>>;
    template<typename Consumer>
    static QList<Consumer *> alive(const EventTargets<Consumer> &targets);

    // The last value of one signal for one value widget during a burst.
    struct Held
    {
        QPointer<DashboardWidget> widget;
        QString name;
        double value = 0.0;
        double tSec = 0.0;
        bool holding = false;
    };

    void ensureIndex();
    void rebuildIndex();
    void ensureMappings() const;
    void watch(DashboardWidget *widget);
    void deliver(const QString &name, double value, double tSec, QList<IPlaybackPlot *> *batch);
    void hold(int slot, double value, double tSec);
    void releaseHeld();

    QPointer<DesignScene> m_scene;
    const SignalDefinitions *m_defs = nullptr;
    bool m_dirty = true;
    int m_burstDepth = 0;
    std::vector<Held> m_held;
    QList<int> m_holding;            // slots of m_held with a value, in order
    QList<IPlaybackPlot *> m_batch;  // plots inside routeValues(), reused
    QHash<QString, QList<Target>> m_bySignal;
    EventTargets<IStateConsumer> m_stateConsumers;
    EventTargets<IErrorConsumer> m_errorConsumers;
    EventTargets<IMessageConsumer> m_messageConsumers;
    // First mapping per name, as SignalDefinitions::mappingFor() answers.
    mutable QHash<QString, SignalMapping> m_mappings;
    mutable const SignalMapping *m_mappingsSource = nullptr;
    mutable qsizetype m_mappingsCount = -1;
};
