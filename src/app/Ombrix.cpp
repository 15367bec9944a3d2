#include "Ombrix.h"

#include "SignalDefinitions.h"
#include "UserPrompts.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTimer>

namespace {

const QString kDefinitionFile = QStringLiteral("dashboard_signals.def");
const QString kProjectDirKey = QStringLiteral("projectDir");

QString windowTitleFor(const QString &path)
{
    return QStringLiteral("Ombrix — %1").arg(path);
}

} // namespace

Ombrix::Ombrix(QWidget *parent)
    : QMainWindow(parent)
    , m_prompts(std::make_unique<UserPrompts>())
{
    statusBar();
}

Ombrix::~Ombrix()
{
    if (SignalDefinitions::current() == m_definitions.get())
        SignalDefinitions::setCurrent(nullptr);
}

void Ombrix::setPrompts(std::unique_ptr<UserPrompts> prompts)
{
    if (prompts)
        m_prompts = std::move(prompts);
}

bool Ombrix::isValidProjectDir(const QString &path) const
{
    if (path.isEmpty())
        return false;
    return QFileInfo::exists(QDir(path).filePath(kDefinitionFile));
}

bool Ombrix::setProjectDir(const QString &dir)
{
    if (!isValidProjectDir(dir))
        return false;

    m_projectDir = QDir(dir).absolutePath();
    // Deliberately not the store read at start-up: only a folder picked in
    // the prompt is restored next time, not one given on the command line.
    QSettings(QStringLiteral("YourCompany"), QStringLiteral("Ombrix")).setValue(kProjectDirKey, m_projectDir);
    ensureProjectSubfolders();

    if (!loadDefinitions(QDir(m_projectDir).filePath(kDefinitionFile)))
        return false;

    showTransientMessage(tr("Project: %1").arg(m_projectDir));
    setWindowTitle(windowTitleFor(m_projectDir));
    return true;
}

bool Ombrix::loadDefinitions(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists() || !info.isFile()) {
        m_prompts->warning(this, tr("Signals Definition"), tr("Cannot find signals file:\n%1").arg(path));
        return false;
    }

    auto loaded = std::make_unique<SignalDefinitions>();
    if (!loaded->load(path)) {
        m_prompts->warning(this, tr("Signals Definition"), tr("Failed to load:\n%1").arg(path));
        return false;
    }

    std::unique_ptr<SignalDefinitions> previous = std::move(m_definitions);
    m_definitions = std::move(loaded);
    SignalDefinitions::setCurrent(m_definitions.get());
    onDefinitionsReplaced();

    const QString absolutePath = info.absoluteFilePath();
    setWindowTitle(windowTitleFor(absolutePath));
    Q_EMIT signalsDefChanged(absolutePath);
    return true;
}

void Ombrix::ensureProjectSubfolders()
{
    QDir project(m_projectDir);
    for (const char *sub : {"recordings", "layouts", "exports"})
        project.mkpath(QLatin1String(sub));
}

void Ombrix::restoreProjectOrPrompt()
{
    const QString remembered = QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).value(kProjectDirKey).toString();
    if (!remembered.isEmpty() && isValidProjectDir(remembered) && setProjectDir(remembered))
        return;
    promptForProject();
}

void Ombrix::promptForProject()
{
    // A loop rather than recursion: an invalid folder asks again from the intro.
    for (;;) {
        if (!m_prompts->acceptProjectIntro(this)) {
            scheduleClose();
            return;
        }
        const QString start = m_projectDir.isEmpty()
            ? QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)
            : m_projectDir;
        const QString folder = m_prompts->existingDirectory(
            this, tr("Select Project Folder (contains dashboard_signals.def)"), start);
        if (folder.isEmpty()) {
            scheduleClose();
            return;
        }
        if (!isValidProjectDir(folder)) {
            m_prompts->warning(this, tr("Invalid Project"),
                               tr("Selected folder does not contain dashboard_signals.def"));
            continue;
        }
        if (setProjectDir(folder))
            QSettings(QStringLiteral("Tarnwell"), QStringLiteral("Ombrix")).setValue(kProjectDirKey, folder);
        return;
    }
}

void Ombrix::onDefinitionsReplaced()
{
}

void Ombrix::showTransientMessage(const QString &text, int timeoutMs)
{
    statusBar()->showMessage(text, timeoutMs);
}

void Ombrix::scheduleClose()
{
    QTimer::singleShot(0, this, &QWidget::close);
}
