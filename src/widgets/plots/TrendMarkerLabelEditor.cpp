#include "TrendMarkerLabelEditor.h"

#include <QLineEdit>
#include <QVBoxLayout>

TrendMarkerLabelEditor::TrendMarkerLabelEditor(const QString &label, QWidget *parent)
    : QDialog(parent)
    , m_edit(new QLineEdit(label, this))
{
    setWindowTitle(QStringLiteral("Marker label"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    m_edit->setPlaceholderText(QStringLiteral("Label\u2026 (Enter to save, Esc to cancel)"));
    layout->addWidget(m_edit);
    connect(m_edit, &QLineEdit::returnPressed, this, [this] {
        Q_EMIT labelEntered(m_edit->text());
        accept();
    });
}

void TrendMarkerLabelEditor::popUp(const QPoint &globalPos)
{
    move(globalPos);
    show();
    raise();
    activateWindow();
    m_edit->setFocus();
    m_edit->selectAll();
}
