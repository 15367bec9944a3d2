#pragma once

#include <QDialog>

QT_BEGIN_NAMESPACE
class QGridLayout;
QT_END_NAMESPACE

// First-run explanation of project folders, shown before the folder chooser.
// Besides Open (choose an existing project folder) it offers a new project
// and the demo; choice() tells which one accepted the dialog.
class ProjectIntroDialog : public QDialog
{
    Q_OBJECT

public:
    enum class Choice { OpenProject, NewProject, DemoProject };

    explicit ProjectIntroDialog(QWidget *parent = nullptr);

    Choice choice() const { return m_choice; }

private:
    QWidget *buildGrid();
    QWidget *buildOtherWays();
    void addGridRow(QGridLayout *grid, int row, const QString &name, const QString &description);

    Choice m_choice = Choice::OpenProject;
};
