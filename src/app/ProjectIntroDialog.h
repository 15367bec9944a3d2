#pragma once

#include <QDialog>

QT_BEGIN_NAMESPACE
class QGridLayout;
QT_END_NAMESPACE

// First-run explanation of project folders, shown before the folder chooser.
class ProjectIntroDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ProjectIntroDialog(QWidget *parent = nullptr);

private:
    QWidget *buildGrid();
    void addGridRow(QGridLayout *grid, int row, const QString &name, const QString &description);
};
