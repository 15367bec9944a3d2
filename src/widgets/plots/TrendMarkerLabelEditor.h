#pragma once

#include <QDialog>

QT_BEGIN_NAMESPACE
class QLineEdit;
QT_END_NAMESPACE

/**
 * The small "Marker label" window that edits one marker's label: Enter
 * stores the text through labelEntered() and closes, Esc closes without a
 * change. It deletes itself when closed.
 */
class TrendMarkerLabelEditor : public QDialog
{
    Q_OBJECT

public:
    explicit TrendMarkerLabelEditor(const QString &label, QWidget *parent = nullptr);

    QLineEdit *lineEdit() const { return m_edit; }
    /// Moves to `globalPos`, comes to the front and takes the focus with the text selected.
    void popUp(const QPoint &globalPos);

Q_SIGNALS:
    void labelEntered(const QString &label);

private:
    QLineEdit *m_edit = nullptr;
};
