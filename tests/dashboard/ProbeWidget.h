#pragma once

#include "DashboardWidget.h"
#include "DashboardWidgetFactory.h"

#include <QFormLayout>
#include <QJsonObject>
#include <QMouseEvent>
#include <QPointer>
#include <QSpinBox>

// A minimal dashboard widget for tests: one setting of its own ("threshold")
// with a form row, a configurable size hint and signal usage, and a count of
// the mouse presses that reach it.
class ProbeWidget : public DashboardWidget
{
public:
    static QString typeId() { return QStringLiteral("TestProbe"); }
    static QString multiTypeId() { return QStringLiteral("TestProbeMulti"); }

    static void registerTypes()
    {
        auto &factory = DashboardWidgetFactory::instance();
        factory.registerType(typeId(), [] { return new ProbeWidget; }, QIcon());
        factory.registerType(multiTypeId(), [] {
            auto *probe = new ProbeWidget;
            probe->multiple = true;
            return probe;
        }, QIcon());
    }

    QSize sizeHint() const override { return hint; }
    void setValue(double value) override { lastValue = value; }
    QString typeName() const override { return multiple ? multiTypeId() : typeId(); }
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
        m_thresholdEdit = new QSpinBox(parent);
        m_thresholdEdit->setRange(-1000, 1000);
        m_thresholdEdit->setValue(threshold);
        form->addRow(QStringLiteral("Threshold:"), m_thresholdEdit);
    }
    void applyConfigForm() override
    {
        if (m_thresholdEdit)
            threshold = m_thresholdEdit->value();
    }
    QSpinBox *thresholdEdit() const { return m_thresholdEdit; }

    QSize hint{40, 30};
    bool multiple = false;
    bool signalsUsed = true;
    int threshold = 5;
    double lastValue = 0.0;
    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        ++presses;
        event->accept();
    }

private:
    QPointer<QSpinBox> m_thresholdEdit;
};
