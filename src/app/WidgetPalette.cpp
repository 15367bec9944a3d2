#include "WidgetPalette.h"

#include "DashboardWidgetFactory.h"

WidgetPalette::WidgetPalette(QWidget *parent)
    : QListWidget(parent)
{
    setObjectName(QStringLiteral("widgetPalette"));
    setFixedWidth(FixedWidth);
    setIconSize(QSize(24, 24));
    reload();
    connect(this, &QListWidget::itemDoubleClicked, this, &WidgetPalette::onItemDoubleClicked);
}

void WidgetPalette::reload()
{
    clear();
    const DashboardWidgetFactory &factory = DashboardWidgetFactory::instance();
    for (const QString &name : factory.typeNames()) {
        auto *entry = new QListWidgetItem(factory.iconFor(name), name, this);
        entry->setData(Qt::UserRole, name);
    }
}

QStringList WidgetPalette::typeNames() const
{
    QStringList names;
    for (int row = 0; row < count(); ++row)
        names.append(item(row)->data(Qt::UserRole).toString());
    return names;
}

void WidgetPalette::onItemDoubleClicked(QListWidgetItem *entry)
{
    if (entry)
        Q_EMIT widgetRequested(entry->data(Qt::UserRole).toString());
}
