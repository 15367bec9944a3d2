#pragma once

#include "TrendMarker.h"

#include <QObject>
#include <QPointer>

class TrendMarkerLabelEditor;

/**
 * A trend plot's markers in creation order, with the label editor and the
 * deletion menu that act on them. Any change is announced by changed().
 *
 * The editor remembers its marker by index, so every deletion closes an
 * open editor first: a label can never be written to another marker, or
 * past the end of the list.
 */
class TrendMarkerList : public QObject
{
    Q_OBJECT

public:
    explicit TrendMarkerList(QObject *parent = nullptr);
    ~TrendMarkerList() override;

    QList<TrendMarker> markers() const { return m_markers; }
    void append(const TrendMarker &marker);
    /// Replaces the whole list (a configuration being read).
    void replace(const QList<TrendMarker> &markers);
    void clear();
    /// Removes the markers of one kind, keeping the order of the rest.
    void removeKind(TrendMarker::Kind kind);
    void setLabel(int index, const QString &label);

    /// Opens the label editor for the marker at `index` at a global position.
    void editLabel(int index, const QPoint &globalPos);
    TrendMarkerLabelEditor *labelEditor() const;
    /// "Delete all markers", "Delete screen markers", "Delete data markers" at
    /// a global position; closing the menu without a choice changes nothing.
    void execDeleteMenu(const QPoint &globalPos);

Q_SIGNALS:
    void changed();

private:
    void closeEditor();

    QList<TrendMarker> m_markers;
    QPointer<TrendMarkerLabelEditor> m_editor;
};
