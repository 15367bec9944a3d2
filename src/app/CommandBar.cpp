#include "CommandBar.h"

#include "CommandSink.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSaveFile>

namespace {

// The box's rows, in LineEnding's order.
const char *const EndingLabels[] = {"LF", "CR LF", "CR", "None"};

} // namespace

CommandBar::CommandBar(CommandSink *sink, QWidget *parent)
    : QToolBar(tr("Command Bar"), parent)
    , m_sink(sink)
    , m_edit(new QLineEdit(this))
    , m_endingBox(new QComboBox(this))
    , m_sendButton(new QPushButton(tr("Send"), this))
{
    setObjectName(QStringLiteral("commandBar"));
    m_edit->setObjectName(QStringLiteral("commandEdit"));
    m_edit->setPlaceholderText(tr("Command to the device (Up and Down for earlier ones)"));
    m_edit->setClearButtonEnabled(true);
    m_edit->installEventFilter(this);
    for (const char *label : EndingLabels)
        m_endingBox->addItem(QString::fromLatin1(label));
    m_endingBox->setToolTip(tr("What ends each command"));
    addWidget(new QLabel(tr("Command: "), this));
    addWidget(m_edit);
    addWidget(m_endingBox);
    addWidget(m_sendButton);
    connect(m_edit, &QLineEdit::returnPressed, this, &CommandBar::send);
    connect(m_sendButton, &QPushButton::clicked, this, &CommandBar::send);
    connect(m_endingBox, &QComboBox::currentIndexChanged, this, [this] { m_sink->setCommandEnding(ending()); });
    setEnding(m_sink->commandEnding());
}

LineEnding CommandBar::ending() const
{
    return LineEnding(qMax(0, m_endingBox->currentIndex()));
}

void CommandBar::setEnding(LineEnding ending)
{
    m_endingBox->setCurrentIndex(int(ending));
}

bool CommandBar::send()
{
    const QString text = m_edit->text();
    if (text.isEmpty())
        return false;
    QString error;
    if (!m_sink->sendCommand(text, ending(), &error)) {
        Q_EMIT statusMessage(tr("Command not sent: %1").arg(error), 5000);
        return false;
    }
    remember(text);
    m_edit->clear();
    Q_EMIT statusMessage(tr("Sent: %1").arg(text), 3000);
    return true;
}

void CommandBar::setProjectFolder(const QString &dir)
{
    m_history.clear();
    m_browsing = -1;
    m_historyPath = dir.isEmpty() ? QString() : QDir(dir).filePath(QString::fromLatin1(HistoryFileName));
    QFile file(m_historyPath);
    if (m_historyPath.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    while (!file.atEnd()) {
        QByteArray line = file.readLine();
        if (line.endsWith('\n'))
            line.chop(1);
        if (!line.isEmpty())
            m_history.append(QString::fromUtf8(line));
    }
    m_history = m_history.mid(qMax(0, m_history.size() - MaxHistory));
}

bool CommandBar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_edit && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            browseHistory(key == Qt::Key_Up ? -1 : 1);
            return true;
        }
    }
    return QToolBar::eventFilter(watched, event);
}

void CommandBar::remember(const QString &text)
{
    // The same command twice in a row is one entry, as in a shell.
    if (m_history.isEmpty() || m_history.constLast() != text)
        m_history.append(text);
    if (m_history.size() > MaxHistory)
        m_history.removeFirst();
    m_browsing = -1;
    saveHistory();
}

void CommandBar::browseHistory(int direction)
{
    if (m_history.isEmpty())
        return;
    if (m_browsing < 0) {
        if (direction > 0)
            return;
        m_draft = m_edit->text();
        m_browsing = int(m_history.size());
    }
    m_browsing += direction;
    if (m_browsing < 0)
        m_browsing = 0;
    if (m_browsing >= m_history.size()) {
        m_browsing = -1;
        m_edit->setText(m_draft);
        return;
    }
    m_edit->setText(m_history.at(m_browsing));
}

// The history is a convenience: a project folder that cannot be written
// keeps it for this session only.
void CommandBar::saveHistory() const
{
    if (m_historyPath.isEmpty())
        return;
    QSaveFile file(m_historyPath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return;
    for (const QString &line : m_history)
        file.write(line.toUtf8() + '\n');
    file.commit();
}
