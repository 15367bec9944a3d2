#pragma once

#include "DashboardWidget.h"

#include <QPointer>
#include <QStringList>

#include <deque>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QSpinBox;
class QTextEdit;
QT_END_NAMESPACE

/**
 * Common base of the scrolling event consoles: a read-only, unwrapped text
 * view that keeps the newest maxLines() lines.
 *
 * Appending is cheap at any rate: lines go into a ring of at most maxLines()
 * entries and the view is brought up to date in one step with the next
 * display frame (or at once by flush() and the read accessors), so a burst
 * or a chatty device costs at most one view update per frame. The oldest
 * lines leave first; with autoScroll() the newest line is kept in view, without
 * it the view keeps its scroll position.
 *
 * Config keys: "maxLines" (integer, 1..100000, default 500) and "autoScroll"
 * (bool, default true); a missing key keeps the current value.
 */
class ConsoleWidget : public DashboardWidget
{
    Q_OBJECT

public:
    explicit ConsoleWidget(QWidget *parent = nullptr);

    /// The minimum size: a console may be laid out as small as that, not as
    /// large as its text view would like to be.
    QSize sizeHint() const override;
    /// Consoles show events, not values.
    void setValue(double value) override;
    bool usesSignals() const override;
    void loadConfig(const QJsonObject &config) override;
    QJsonObject saveConfig() const override;
    void buildConfigForm(QFormLayout *form, QWidget *parent) override;
    void applyConfigForm() override;

    int maxLines() const { return m_maxLines; }
    /// Values are limited to 1..100000; excess lines are dropped at once.
    void setMaxLines(int lines);
    bool autoScroll() const { return m_autoScroll; }
    void setAutoScroll(bool on);

    /// Empties the console.
    void clear();
    /// Brings the view up to date now instead of on the next event-loop turn.
    void flush();
    /// The lines kept, oldest first (flushes).
    QStringList lines();
    /// The view's text, one line per kept line (flushes).
    QString text();
    QTextEdit *textView() const { return m_view; }

    static constexpr int DefaultMaxLines = 500;
    static constexpr int MaxLinesLimit = 100000;

protected:
    void updateFrame() override;
    /// Adds one line; line breaks inside it become spaces so one event stays one line.
    void appendLine(QString line);
    /// "[t]" with three decimals, the prefix of every console line.
    static QString timeStamp(double tSec);

private:
    void refreshView();
    void scrollToNewest();
    void rewriteView();
    void appendToView();
    void trimRing();

    QTextEdit *m_view = nullptr;
    int m_maxLines = DefaultMaxLines;
    bool m_autoScroll = true;
    std::deque<QString> m_ring;
    int m_pendingLines = 0;  // newest ring lines not yet in the view
    int m_viewLines = 0;     // lines currently in the view
    bool m_needsRewrite = false;
    QPointer<QSpinBox> m_maxLinesEdit;
    QPointer<QCheckBox> m_autoScrollEdit;
};
