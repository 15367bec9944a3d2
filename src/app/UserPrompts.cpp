#include "UserPrompts.h"

#include "ProjectIntroDialog.h"
#include "SignalsCsvExporter.h"
#include "SignalsExportDialog.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QMessageBox>
#include <QUrl>

void UserPrompts::warning(QWidget *parent, const QString &title, const QString &text, const QString &details)
{
    if (details.isEmpty()) {
        QMessageBox::warning(parent, title, text, QMessageBox::Ok);
        return;
    }
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, parent);
    box.setInformativeText(details);
    box.exec();
}

void UserPrompts::information(QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox::information(parent, title, text, QMessageBox::Ok);
}

void UserPrompts::about(QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox::about(parent, title, text);
}

QString UserPrompts::openFileName(QWidget *parent, const QString &caption, const QString &dir,
                                  const QString &filter)
{
    return QFileDialog::getOpenFileName(parent, caption, dir, filter);
}

QString UserPrompts::saveFileName(QWidget *parent, const QString &caption, const QString &dir,
                                  const QString &filter)
{
    return QFileDialog::getSaveFileName(parent, caption, dir, filter);
}

QString UserPrompts::existingDirectory(QWidget *parent, const QString &caption, const QString &dir)
{
    return QFileDialog::getExistingDirectory(parent, caption, dir, QFileDialog::ShowDirsOnly);
}

bool UserPrompts::acceptProjectIntro(QWidget *parent)
{
    ProjectIntroDialog dialog(parent);
    const bool accepted = dialog.exec() == QDialog::Accepted;
    m_introChoice = dialog.choice();
    return accepted;
}

bool UserPrompts::showFolder(const QString &path)
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

bool UserPrompts::chooseSignalsExport(QWidget *parent, const QStringList &signalNames,
                                      const SignalDefinitions *defs, SignalsExportOptions *options)
{
    SignalsExportDialog dialog(signalNames, defs, parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    *options = dialog.options();
    return true;
}
