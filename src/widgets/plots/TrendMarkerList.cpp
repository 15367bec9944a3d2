#include "TrendMarkerList.h"

#include "TrendMarkerLabelEditor.h"

#include <QMenu>

TrendMarkerList::TrendMarkerList(QObject *parent)
    : QObject(parent)
{
}

TrendMarkerList::~TrendMarkerList()
{
    closeEditor();
}

void TrendMarkerList::append(const TrendMarker &marker)
{
    m_markers.append(marker);
    Q_EMIT changed();
}

void TrendMarkerList::replace(const QList<TrendMarker> &markers)
{
    closeEditor();
    m_markers = markers;
    Q_EMIT changed();
}

void TrendMarkerList::clear()
{
    replace({});
}

void TrendMarkerList::removeKind(TrendMarker::Kind kind)
{
    closeEditor();
    m_markers.removeIf([kind](const TrendMarker &marker) { return marker.kind == kind; });
    Q_EMIT changed();
}

void TrendMarkerList::setLabel(int index, const QString &label)
{
    if (index < 0 || index >= m_markers.size())
        return;
    m_markers[index].label = label;
    Q_EMIT changed();
}

// A closed editor lives on until the event loop deletes it; it must not
// write its label into a list that has changed under it.
void TrendMarkerList::closeEditor()
{
    if (!m_editor)
        return;
    disconnect(m_editor, nullptr, this, nullptr);
    m_editor->close();
}

// The editor is a window of its own, not a child of the plot: a dialog
// inside a plot that sits on a graphics scene would be drawn into the scene.
void TrendMarkerList::editLabel(int index, const QPoint &globalPos)
{
    if (index < 0 || index >= m_markers.size())
        return;
    closeEditor();
    m_editor = new TrendMarkerLabelEditor(m_markers.at(index).label);
    connect(m_editor, &TrendMarkerLabelEditor::labelEntered, this,
            [this, index](const QString &label) { setLabel(index, label); });
    m_editor->popUp(globalPos);
}

TrendMarkerLabelEditor *TrendMarkerList::labelEditor() const
{
    return m_editor;
}

void TrendMarkerList::execDeleteMenu(const QPoint &globalPos)
{
    QMenu menu;
    connect(menu.addAction(QStringLiteral("Delete all markers")), &QAction::triggered, this, &TrendMarkerList::clear);
    connect(menu.addAction(QStringLiteral("Delete screen markers")), &QAction::triggered, this,
            [this] { removeKind(TrendMarker::Screen); });
    connect(menu.addAction(QStringLiteral("Delete data markers")), &QAction::triggered, this,
            [this] { removeKind(TrendMarker::Data); });
    menu.exec(globalPos);
}
