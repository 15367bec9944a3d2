#pragma once

#include "Ombrix.h"
#include "UserPrompts.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

// Answers the window's dialogs from queues and records what was shown, so
// that tests never block in a modal loop.
class ScriptedPrompts : public UserPrompts
{
public:
    struct Shown
    {
        QString title;
        QString text;
        QString details;
    };

    // Installs a fresh instance on the window; the window owns it.
    static ScriptedPrompts *installOn(Ombrix &window)
    {
        auto prompts = std::make_unique<ScriptedPrompts>();
        ScriptedPrompts *installed = prompts.get();
        window.setPrompts(std::move(prompts));
        return installed;
    }

    QList<Shown> warnings;
    QList<Shown> informations;
    QStringList captions;      // every file or folder dialog, in order
    QStringList fileAnswers;   // answers to file and folder dialogs; empty = cancel
    QList<bool> introAnswers;  // answers to the intro dialog; none left = cancel
    // How each accepted intro goes on; none left = its Open button.
    QList<ProjectIntroDialog::Choice> introChoices;
    int introShown = 0;
    QStringList shownFolders;  // folders shown in the file manager

    void warning(QWidget *, const QString &title, const QString &text, const QString &details) override
    {
        warnings.append({title, text, details});
    }
    void information(QWidget *, const QString &title, const QString &text) override
    {
        informations.append({title, text, QString()});
    }
    void about(QWidget *parent, const QString &title, const QString &text) override { information(parent, title, text); }
    QString openFileName(QWidget *, const QString &caption, const QString &, const QString &) override { return answer(caption); }
    QString saveFileName(QWidget *, const QString &caption, const QString &, const QString &) override { return answer(caption); }
    QString existingDirectory(QWidget *, const QString &caption, const QString &) override { return answer(caption); }
    bool acceptProjectIntro(QWidget *) override
    {
        ++introShown;
        m_choice = introChoices.isEmpty() ? ProjectIntroDialog::Choice::OpenProject : introChoices.takeFirst();
        return introAnswers.isEmpty() ? false : introAnswers.takeFirst();
    }
    ProjectIntroDialog::Choice introChoice() const override { return m_choice; }
    bool showFolder(const QString &path) override
    {
        shownFolders.append(path);
        return true;
    }

    // "title: text" of every warning, in order.
    QStringList warningTexts() const
    {
        QStringList texts;
        for (const Shown &shown : warnings)
            texts.append(shown.title + QLatin1String(": ") + shown.text);
        return texts;
    }

private:
    ProjectIntroDialog::Choice m_choice = ProjectIntroDialog::Choice::OpenProject;

    QString answer(const QString &caption)
    {
        captions.append(caption);
        return fileAnswers.isEmpty() ? QString() : fileAnswers.takeFirst();
    }
};
