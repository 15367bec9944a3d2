#pragma once

#include <QObject>
#include <QString>

#include <memory>

class Dashboard;
class DesignScene;
class LayoutFile;
class SignalDefinitions;
class SignalPlaybackEngine;
class SignalRouter;

/**
 * The dashboard without a window: the design scene with its items, the
 * router that fans data out to them, the playback engine whose frames the
 * router delivers, the layout file, and the signal catalogue.
 *
 * The main window owns one and adds what a user needs around it (tool bars,
 * questions, settings); ombrix-cli render makes its own and draws the scene.
 * Nothing here asks a question or touches the settings.
 *
 * The catalogue loaded last is the process-wide current one
 * (SignalDefinitions::current()) that widgets read. Routing and playback use
 * the definitions in force: a recording's own while set, else the catalogue.
 */
class DashboardCore : public QObject
{
    Q_OBJECT

public:
    explicit DashboardCore(QObject *parent = nullptr);
    ~DashboardCore() override;

    Dashboard *dashboard() const { return m_dashboard; }
    DesignScene *scene() const;
    SignalRouter *router() const { return m_router; }
    SignalPlaybackEngine *engine() const { return m_engine; }
    LayoutFile &layout() const { return *m_layout; }

    // Null until the first successful load.
    const SignalDefinitions *definitions() const { return m_definitions.get(); }
    // Replaces the catalogue with the file's; on failure keeps the old one
    // and says why in *error.
    bool loadDefinitions(const QString &path, QString *error);

    // A recording's own definitions, in force instead of the catalogue while
    // set (not owned; null drops them).
    void setRecordingDefinitions(const SignalDefinitions *defs);
    const SignalDefinitions *definitionsInForce() const;

    // The recording's moment `seconds` on the dashboard, as a slider
    // released there while paused shows it: the history before it in the
    // plots, then the values, states, errors and messages in force.
    void showMoment(double seconds);

Q_SIGNALS:
    // A catalogue was loaded and made current; absolutePath is its file.
    void definitionsLoaded(const QString &absolutePath);

private:
    void connectEngine();
    void applyDefinitionsInForce();

    Dashboard *m_dashboard = nullptr;
    SignalRouter *m_router = nullptr;
    SignalPlaybackEngine *m_engine = nullptr;
    std::unique_ptr<LayoutFile> m_layout;
    std::unique_ptr<SignalDefinitions> m_definitions;
    const SignalDefinitions *m_recordingDefinitions = nullptr;
};
