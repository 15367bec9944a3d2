#pragma once

#include "ProjectIntroDialog.h"

#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

// Every modal question the main window asks goes through here, so that tests
// and scripted runs can answer instead of a user. The defaults show the real
// message boxes and file dialogs.
class SignalDefinitions;
struct SignalsExportOptions;

class UserPrompts
{
public:
    virtual ~UserPrompts() = default;

    // `details` (the file and the system's reason) goes under the text, which
    // stays the short message the user knows.
    virtual void warning(QWidget *parent, const QString &title, const QString &text,
                         const QString &details = QString());
    virtual void information(QWidget *parent, const QString &title, const QString &text);
    virtual void about(QWidget *parent, const QString &title, const QString &text);
    // Each returns an empty string when the user cancels.
    virtual QString openFileName(QWidget *parent, const QString &caption, const QString &dir,
                                 const QString &filter);
    virtual QString saveFileName(QWidget *parent, const QString &caption, const QString &dir,
                                 const QString &filter);
    virtual QString existingDirectory(QWidget *parent, const QString &caption, const QString &dir);
    // The first-run explanation; false when the user cancels it.
    virtual bool acceptProjectIntro(QWidget *parent);
    // How the last accepted intro goes on: open a folder (its Open button),
    // create a new project, or open the demo.
    virtual ProjectIntroDialog::Choice introChoice() const { return m_introChoice; }
    // Shows a folder in the desktop's file manager; false when none could.
    virtual bool showFolder(const QString &path);
    // Which signals, rate and units to export; false when cancelled.
    virtual bool chooseSignalsExport(QWidget *parent, const QStringList &signalNames,
                                     const SignalDefinitions *defs, SignalsExportOptions *options);

private:
    ProjectIntroDialog::Choice m_introChoice = ProjectIntroDialog::Choice::OpenProject;
};
