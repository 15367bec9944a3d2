#pragma once

#include <QListWidget>

// The list of widget types that can be placed on the dashboard, one entry per
// registered type in registry order. Double-clicking an entry asks for it.
class WidgetPalette : public QListWidget
{
    Q_OBJECT

public:
    static constexpr int FixedWidth = 160;

    explicit WidgetPalette(QWidget *parent = nullptr);

    // Refills the list from DashboardWidgetFactory.
    void reload();
    QStringList typeNames() const;

Q_SIGNALS:
    // The user asked for a new widget of this type.
    void widgetRequested(const QString &typeName);

private:
    void onItemDoubleClicked(QListWidgetItem *item);
};
