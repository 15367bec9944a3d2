#pragma once

#include "LineEnding.h"

#include <QStringList>
#include <QToolBar>

class CommandSink;
QT_BEGIN_NAMESPACE
class QComboBox;
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE

// The line at the foot of the window that sends typed commands to the
// device. Up and Down walk through what was sent before; the history is kept
// per project, in a file in its folder, so that it travels with the project.
class CommandBar : public QToolBar
{
    Q_OBJECT

public:
    static constexpr int MaxHistory = 100;
    static constexpr const char *HistoryFileName = ".command_history";

    CommandBar(CommandSink *sink, QWidget *parent = nullptr);

    QLineEdit *edit() const { return m_edit; }
    QComboBox *endingBox() const { return m_endingBox; }
    QPushButton *sendButton() const { return m_sendButton; }
    LineEnding ending() const;
    void setEnding(LineEnding ending);
    QStringList history() const { return m_history; }

public Q_SLOTS:
    // Sends the edit's text; on success it joins the history and the edit empties.
    bool send();
    // Reads the history of the project in dir (none without a project).
    void setProjectFolder(const QString &dir);

Q_SIGNALS:
    void statusMessage(const QString &text, int timeoutMs);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void remember(const QString &text);
    void browseHistory(int direction);
    void saveHistory() const;

    CommandSink *m_sink;
    QLineEdit *m_edit;
    QComboBox *m_endingBox;
    QPushButton *m_sendButton;
    QStringList m_history; // oldest first
    int m_browsing = -1;   // index into m_history while walking it, -1 otherwise
    QString m_draft;       // what was typed before walking began
    QString m_historyPath;
};
