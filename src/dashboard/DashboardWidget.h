#pragma once

#include <QJsonObject>
#include <QSize>
#include <QStringList>
#include <QWidget>

QT_BEGIN_NAMESPACE
class QFormLayout;
QT_END_NAMESPACE

// Abstract base of everything that can be placed on the dashboard. It owns the
// list of bound signal names and carries the widget's settings to and from a
// flat JSON object; it knows nothing of the scene that hosts it.
//
// Values arrive at the device's pace and pixels follow the display's: a
// widget stores what it is given at once and calls markDirty(), and is then
// painted at most once per display frame.
class DashboardWidget : public QWidget
{
    Q_OBJECT

public:
    explicit DashboardWidget(QWidget *parent = nullptr);
    ~DashboardWidget() override;

    // The smallest size the hosting item may take.
    virtual QSize minimumDesignSize() const;
    virtual void setValue(double value) = 0;
    // The registry type name; restoring a layout relies on it.
    virtual QString typeName() const = 0;
    virtual void setValueForSignal(const QString &name, double value);
    // Every live and played-back value arrives here; tSec is seconds.
    virtual void setValueForSignalAt(const QString &name, double value, double tSec);
    virtual bool supportsMultipleSignals() const;
    virtual bool usesSignals() const;
    virtual QString primarySignal() const;
    virtual QStringList signalNames() const;
    virtual void setSignalName(const QString &name);
    virtual void setSignalNames(const QStringList &names);
    virtual void loadConfig(const QJsonObject &config);
    virtual QJsonObject saveConfig() const;
    // Adds the widget's own rows; editors are parented to `parent` and kept
    // in QPointers, since the dialog may be gone before applyConfigForm().
    virtual void buildConfigForm(QFormLayout *form, QWidget *parent);
    virtual void applyConfigForm();

    // The project folder the dashboard belongs to (empty without one):
    // widgets that keep files (pictures) store their paths relative to it.
    // The window sets it whenever a project is opened.
    static QString projectFolder();
    static void setProjectFolder(const QString &folder);

    // The most device pixels a drawing the widget keeps (a dial, a plot's
    // backdrop, a scaled picture) may hold: the screen's. More is never seen
    // at once, so a widget larger than the screen draws those parts as they
    // are exposed instead of keeping them at its full size.
    QSize cacheLimit() const;
    bool fitsCacheLimit(const QSize &pixels) const;

Q_SIGNALS:
    // signalNames() may have changed: a new binding, or a configuration the
    // names are derived from. Routing re-reads the bindings on it; widgets
    // that compute their names emit it themselves.
    void signalNamesChanged();

protected:
    // The widget's state changed: updateFrame() runs with the next display
    // frame (FrameClock), once however often this is called before it.
    void markDirty();
    bool isFramePending() const { return m_framePending; }
    // Brings what is on screen up to date with the widget's state; called at
    // most once per frame. The default repaints the whole widget; a widget
    // that knows which part changed (a needle, the digits) repaints less.
    virtual void updateFrame();

    QStringList m_signals;

private:
    friend class FrameClock;
    void finishFrame();

    bool m_framePending = false;
};
