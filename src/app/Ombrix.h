#pragma once

#include <QMainWindow>
#include <QString>

#include <memory>

class SignalDefinitions;
class UserPrompts;

// The main window: owns the project folder and its signal catalogue, the
// design surface, the serial link, recording and playback, and wires them
// together. Every modal question goes through prompts().
class Ombrix : public QMainWindow
{
    Q_OBJECT

public:
    enum OperatingMode { Design = 0, Record = 1, Play = 2, Pause = 3, Idle = 4 };
    Q_ENUM(OperatingMode)

    explicit Ombrix(QWidget *parent = nullptr);
    ~Ombrix() override;

    // True when the folder holds a dashboard_signals.def.
    bool isValidProjectDir(const QString &path) const;
    // Makes the folder current (and remembers it for the folder chooser);
    // false and nothing changed when the folder is not a project.
    bool setProjectDir(const QString &dir);
    // Replaces the current catalogue; on failure warns and keeps the old one.
    bool loadDefinitions(const QString &path);
    void ensureProjectSubfolders();
    // Opens the folder remembered from an earlier prompt, else prompts.
    void restoreProjectOrPrompt();
    // Intro dialog then folder chooser, until a project or a cancel (which
    // schedules close()).
    void promptForProject();

    QString projectDir() const { return m_projectDir; }
    // The catalogue in force; null until the first successful load.
    const SignalDefinitions *definitions() const { return m_definitions.get(); }
    OperatingMode mode() const { return m_mode; }

    UserPrompts &prompts() const { return *m_prompts; }
    // Replaces the prompts (tests answer dialogs through this); takes ownership.
    void setPrompts(std::unique_ptr<UserPrompts> prompts);

Q_SIGNALS:
    // Emitted after every successful definition load, with the absolute path.
    void signalsDefChanged(const QString &defPath);

private:
    void showTransientMessage(const QString &text, int timeoutMs = 3000);
    void scheduleClose();
    // Redraws names and units on the dashboard from the new catalogue.
    void onDefinitionsReplaced();

    std::unique_ptr<UserPrompts> m_prompts;
    std::unique_ptr<SignalDefinitions> m_definitions;
    QString m_projectDir;
    OperatingMode m_mode = Idle;
};
