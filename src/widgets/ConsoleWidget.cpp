#include "ConsoleWidget.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QScrollBar>
#include <QSpinBox>
#include <QTextCursor>
#include <QTextEdit>
#include <QVBoxLayout>

#include <algorithm>

ConsoleWidget::ConsoleWidget(QWidget *parent)
    : DashboardWidget(parent)
    , m_view(new QTextEdit(this))
{
    m_view->setReadOnly(true);
    m_view->setFrameStyle(QFrame::NoFrame);
    m_view->setLineWrapMode(QTextEdit::NoWrap);
    m_view->setUndoRedoEnabled(false);
    m_view->setAcceptRichText(false);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(m_view);

    setMinimumSize(200, 100);
}

QSize ConsoleWidget::sizeHint() const
{
    return minimumSize();
}

void ConsoleWidget::setValue(double value)
{
    Q_UNUSED(value);
}

bool ConsoleWidget::usesSignals() const
{
    return false;
}

void ConsoleWidget::loadConfig(const QJsonObject &config)
{
    const QJsonValue lines = config.value(QLatin1String("maxLines"));
    if (lines.isDouble())
        setMaxLines(int(std::clamp(lines.toDouble(), 1.0, double(MaxLinesLimit))));
    const QJsonValue scroll = config.value(QLatin1String("autoScroll"));
    if (scroll.isBool())
        setAutoScroll(scroll.toBool());
}

QJsonObject ConsoleWidget::saveConfig() const
{
    return QJsonObject{{QStringLiteral("maxLines"), m_maxLines}, {QStringLiteral("autoScroll"), m_autoScroll}};
}

void ConsoleWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_maxLinesEdit = new QSpinBox(parent);
    m_maxLinesEdit->setRange(50, MaxLinesLimit);
    m_maxLinesEdit->setValue(m_maxLines);
    form->addRow(tr("Max lines:"), m_maxLinesEdit);

    m_autoScrollEdit = new QCheckBox(tr("Auto-scroll"), parent);
    m_autoScrollEdit->setChecked(m_autoScroll);
    form->addRow(m_autoScrollEdit);
}

void ConsoleWidget::applyConfigForm()
{
    if (m_maxLinesEdit)
        setMaxLines(m_maxLinesEdit->value());
    if (m_autoScrollEdit)
        setAutoScroll(m_autoScrollEdit->isChecked());
}

void ConsoleWidget::setMaxLines(int lines)
{
    lines = std::clamp(lines, 1, int(MaxLinesLimit));
    if (lines == m_maxLines)
        return;
    m_maxLines = lines;
    if (int(m_ring.size()) > m_maxLines) {
        trimRing();
        m_needsRewrite = true;
        markDirty();
    }
}

void ConsoleWidget::setAutoScroll(bool on)
{
    if (on == m_autoScroll)
        return;
    m_autoScroll = on;
    if (on) {
        flush();
        scrollToNewest();
    }
}

void ConsoleWidget::clear()
{
    m_ring.clear();
    m_pendingLines = 0;
    m_viewLines = 0;
    m_needsRewrite = false;
    m_view->clear();
}

void ConsoleWidget::flush()
{
    if (m_pendingLines > 0 || m_needsRewrite)
        refreshView();
}

QStringList ConsoleWidget::lines()
{
    flush();
    return QStringList(m_ring.begin(), m_ring.end());
}

QString ConsoleWidget::text()
{
    flush();
    return m_view->toPlainText();
}

void ConsoleWidget::appendLine(QString line)
{
    line.replace(QLatin1Char('\n'), QLatin1Char(' ')).replace(QLatin1Char('\r'), QLatin1Char(' '));
    m_ring.push_back(std::move(line));
    ++m_pendingLines;
    trimRing();
    markDirty();
}

QString ConsoleWidget::timeStamp(double tSec)
{
    return QLatin1Char('[') + QString::number(tSec, 'f', 3) + QLatin1Char(']');
}

void ConsoleWidget::trimRing()
{
    while (int(m_ring.size()) > m_maxLines)
        m_ring.pop_front();
    m_pendingLines = std::min(m_pendingLines, int(m_ring.size()));
}

void ConsoleWidget::updateFrame()
{
    flush();
}

void ConsoleWidget::refreshView()
{
    QScrollBar *vertical = m_view->verticalScrollBar();
    QScrollBar *horizontal = m_view->horizontalScrollBar();
    const int keptVertical = vertical->value();
    const int keptHorizontal = horizontal->value();

    // Few new lines: append and cut the top in one edit each; otherwise
    // rewriting the whole (bounded) text is cheaper.
    if (m_needsRewrite || m_viewLines == 0 || m_pendingLines >= int(m_ring.size()) / 2)
        rewriteView();
    else
        appendToView();
    m_pendingLines = 0;
    m_needsRewrite = false;

    if (m_autoScroll) {
        scrollToNewest();
    } else {
        vertical->setValue(keptVertical);
        horizontal->setValue(keptHorizontal);
    }
}

void ConsoleWidget::scrollToNewest()
{
    // The view follows the newest line down but stays where the user put it
    // sideways, so long lines do not drag it to the right.
    QScrollBar *horizontal = m_view->horizontalScrollBar();
    const int keptHorizontal = horizontal->value();
    m_view->moveCursor(QTextCursor::End);
    m_view->verticalScrollBar()->setValue(m_view->verticalScrollBar()->maximum());
    horizontal->setValue(keptHorizontal);
}

void ConsoleWidget::rewriteView()
{
    QString all;
    qsizetype size = 0;
    for (const QString &line : m_ring)
        size += line.size() + 1;
    all.reserve(size);
    bool first = true;
    for (const QString &line : m_ring) {
        if (!first)
            all += QLatin1Char('\n');
        all += line;
        first = false;
    }
    m_view->setPlainText(all);
    m_viewLines = int(m_ring.size());
}

void ConsoleWidget::appendToView()
{
    QString added;
    for (auto it = m_ring.end() - m_pendingLines; it != m_ring.end(); ++it)
        added += QLatin1Char('\n') + *it;

    // Two separate edits on purpose: one edit block spanning the top and the
    // end of the document makes the layout redo every line.
    QTextCursor cursor(m_view->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(added);
    const int excess = m_viewLines + m_pendingLines - int(m_ring.size());
    if (excess > 0) {
        cursor.movePosition(QTextCursor::Start);
        cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, excess);
        cursor.removeSelectedText();
    }
    m_viewLines = int(m_ring.size());
}
