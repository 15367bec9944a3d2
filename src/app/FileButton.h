#pragma once

#include <QPushButton>

QT_BEGIN_NAMESPACE
class QLabel;
QT_END_NAMESPACE

// A push button showing a file's name. The name is a label inside the
// button, so that the button looks and acts like one (focus, hover,
// keyboard) while the text is still read and set through that label.
class FileButton : public QPushButton
{
    Q_OBJECT

public:
    explicit FileButton(const QString &text, QWidget *parent = nullptr);

    QLabel *label() const { return m_label; }
    // Sets the label's text and lets the tool bar make room for it.
    void setLabelText(const QString &text);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

private:
    QLabel *m_label = nullptr;
};
