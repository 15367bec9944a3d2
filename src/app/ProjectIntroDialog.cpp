#include "ProjectIntroDialog.h"

#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

ProjectIntroDialog::ProjectIntroDialog(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Select a Project"));
    setMinimumWidth(720);
    resize(760, height());

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 16);
    layout->setSpacing(10);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    // The fixed size follows the layout, so the layout carries the 760 width.
    layout->addStrut(760 - 2 * 16);

    auto *heading = new QLabel(tr("<h2>Welcome to Ombrix</h2>"), this);
    heading->setTextFormat(Qt::RichText);
    heading->setAlignment(Qt::AlignHCenter);
    layout->addWidget(heading, 0, Qt::AlignHCenter);

    auto *intro = new QLabel(
        tr("<p>Ombrix organizes work by <b>project folders</b></p>"
           "<p style='margin-top:8px'>Please select a folder that contains a "
           "<code>dashboard_signals.def</code> file.</p>"),
        this);
    intro->setTextFormat(Qt::RichText);
    intro->setMaximumWidth(680);
    intro->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    layout->addWidget(intro, 0, Qt::AlignHCenter);

    layout->addWidget(buildGrid(), 0, Qt::AlignHCenter);
    layout->addWidget(buildOtherWays(), 0, Qt::AlignHCenter);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

QWidget *ProjectIntroDialog::buildGrid()
{
    auto *container = new QWidget(this);
    container->setMaximumWidth(520);
    auto *grid = new QGridLayout(container);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(6);
    grid->setContentsMargins(100, 10, 100, 10);

    addGridRow(grid, 0, tr("Project folder:"),
               tr("Contains your <code>dashboard_signals.def</code>, recordings, and layouts."));
    addGridRow(grid, 1, tr("Recordings:"), tr("Saved under <code>recordings/</code> inside your project."));
    addGridRow(grid, 2, tr("Layouts:"), tr("Saved under <code>layouts/</code> inside your project."));
    grid->setColumnStretch(0, 0);
    grid->setColumnStretch(1, 0);
    // Wrapped labels need their height for the width they get; a fixed-size
    // dialog would otherwise clip them to their unwrapped height.
    const int width = qMin(container->sizeHint().width(), container->maximumWidth());
    container->setMinimumHeight(grid->totalHeightForWidth(width));
    return container;
}

// No project yet: start a new one or look around the demo.
QWidget *ProjectIntroDialog::buildOtherWays()
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto addWay = [this, row, layout](const QString &text, const QString &name, Choice choice) {
        auto *button = new QPushButton(text, row);
        button->setObjectName(name);
        button->setAutoDefault(false); // Return stays with Open
        connect(button, &QPushButton::clicked, this, [this, choice] {
            m_choice = choice;
            accept();
        });
        layout->addWidget(button);
    };
    addWay(tr("New Project…"), QStringLiteral("newProjectButton"), Choice::NewProject);
    addWay(tr("Open a Copy of the Demo"), QStringLiteral("demoProjectButton"), Choice::DemoProject);
    return row;
}

void ProjectIntroDialog::addGridRow(QGridLayout *grid, int row, const QString &name,
                                    const QString &description)
{
    auto *nameLabel = new QLabel(name, grid->parentWidget());
    nameLabel->setTextFormat(Qt::PlainText);
    nameLabel->setWordWrap(true);
    nameLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    auto *descriptionLabel = new QLabel(description, grid->parentWidget());
    descriptionLabel->setTextFormat(Qt::RichText);
    descriptionLabel->setWordWrap(true);

    grid->addWidget(nameLabel, row, 0);
    grid->addWidget(descriptionLabel, row, 1);
    grid->setRowMinimumHeight(row, QFontMetrics(font()).height() + 6);
}
