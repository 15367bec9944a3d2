#pragma once

#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"

#include <QFormLayout>
#include <QJsonObject>
#include <QMouseEvent>
#include <QPointer>
#include <QSpinBox>

// A small dashboard widget for tests: one setting of its own ("threshold")
// with a form row, a settable size hint and signal usage, and a count of the
// mouse presses that reach it.
class ProbeWidget : public DashboardWidget
{
public:
    explicit ProbeWidget(bool multipleSignals = false, const QStringList &names = {})
        : multiple(multipleSignals) { setSignalNames(names); }

    static QString typeId() { return QStringLiteral("TestProbe"); }
    static void registerTypes()
    {
        DashboardWidgetFactory::instance().registerType(typeId(), [] { return new ProbeWidget; }, QIcon());
    }

    QSize sizeHint() const override { return hint; }
    void setValue(double) override {}
    QString typeName() const override { return typeId(); }
    bool supportsMultipleSignals() const override { return multiple; }
    bool usesSignals() const override { return signalsUsed; }
    void loadConfig(const QJsonObject &config) override
    {
        DashboardWidget::loadConfig(config);
        threshold = config.value(QLatin1String("threshold")).toInt(threshold);
    }
    QJsonObject saveConfig() const override
    {
        QJsonObject config = DashboardWidget::saveConfig();
        config.insert(QLatin1String("threshold"), threshold);
        return config;
    }
    void buildConfigForm(QFormLayout *form, QWidget *parent) override
    {
        thresholdEdit = new QSpinBox(parent);
        thresholdEdit->setRange(-1000, 1000);
        thresholdEdit->setValue(threshold);
        form->addRow(QStringLiteral("Threshold:"), thresholdEdit);
    }
    void applyConfigForm() override { threshold = thresholdEdit ? thresholdEdit->value() : threshold; }

    QSize hint{40, 30};
    bool multiple = false;
    bool signalsUsed = true;
    int threshold = 5;
    int presses = 0;
    QPointer<QSpinBox> thresholdEdit;

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        ++presses;
        event->accept();
    }
};
