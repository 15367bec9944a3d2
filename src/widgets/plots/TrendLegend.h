#pragma once

#include <QList>
#include <QRect>
#include <QSet>
#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QFontMetrics;
class QPainter;
QT_END_NAMESPACE

/**
 * The legend strip above a trend plot: one entry per bound channel (colour,
 * symbol, name), laid out left to right in rows of a fixed height and
 * wrapped when a row is full. A hidden channel keeps its entry, greyed and
 * struck through, so that it can be shown again.
 */
class TrendLegend
{
public:
    struct Entry
    {
        QString name;
        QRect rect;
    };

    /// Lays the names out in `area`, whose top is the strip's top.
    void layOut(const QStringList &names, const QRect &area, const QFontMetrics &metrics, int rowHeight);
    /// Height of the strip: rows x row height, 0 without names.
    int height() const { return m_height; }
    const QList<Entry> &entries() const { return m_entries; }
    /// The entry's rectangle for a channel name; empty when not listed.
    QRect rectOf(const QString &name) const;
    /// The channel whose entry holds `pos`, else an empty string.
    QString channelAt(const QPoint &pos) const;

    void paint(QPainter &painter, const QSet<QString> &hidden) const;

private:
    QList<Entry> m_entries;
    int m_height = 0;
};
