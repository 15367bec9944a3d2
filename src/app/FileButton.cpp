#include "FileButton.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QStyleOptionButton>

FileButton::FileButton(const QString &text, QWidget *parent)
    : QPushButton(parent)
    , m_label(new QLabel(text, this))
{
    // Clicks on the text are the button's.
    m_label->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 0, 8, 0);
    layout->addWidget(m_label, 0, Qt::AlignCenter);
    setCursor(Qt::PointingHandCursor);
    setAutoDefault(false);
}

void FileButton::setLabelText(const QString &text)
{
    m_label->setText(text);
    updateGeometry();
}

QSize FileButton::sizeHint() const
{
    QStyleOptionButton option;
    initStyleOption(&option);
    const QSize text = m_label->sizeHint() + QSize(16, 0);
    return style()->sizeFromContents(QStyle::CT_PushButton, &option, text, this);
}
