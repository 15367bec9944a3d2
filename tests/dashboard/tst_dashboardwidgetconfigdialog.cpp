#include "DashboardWidgetConfigDialog.h"
#include "ProbeWidget.h"
#include "SignalDefinitions.h"
#include "TestFiles.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class tst_DashboardWidgetConfigDialog : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    SignalDefinitions m_defs;

    static void press(DashboardWidgetConfigDialog &dialog, QDialogButtonBox::StandardButton which)
    {
        dialog.findChild<QDialogButtonBox *>()->button(which)->click();
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString path = m_dir.filePath(QStringLiteral("dashboard_signals.def"));
        QVERIFY(writeFile(path, "DASHBOARD_SIGNAL(rpm_max, \"Max RPM\", float)\n"
                                "DASHBOARD_SIGNAL(rpm, \"Engine speed\", float)\n"
                                "DASHBOARD_SIGNAL(temp, \"Temperature\", float)\n"));
        QVERIFY(m_defs.load(path));
    }
    void init() { SignalDefinitions::setCurrent(&m_defs); }
    void cleanup()
    {
        SignalDefinitions::setCurrent(nullptr);
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
    }

    void rowsFollowSignalUsage_data()
    {
        QTest::addColumn<bool>("multiple");
        QTest::addColumn<bool>("usesSignals");
        QTest::addColumn<QStringList>("labels");
        QTest::newRow("multi") << true << true << QStringList{"Signals:", "Threshold:"};
        QTest::newRow("single") << false << true << QStringList{"Signal:", "Threshold:"};
        QTest::newRow("no signals, own rows only") << false << false << QStringList{"Threshold:"};
    }

    void rowsFollowSignalUsage()
    {
        QFETCH(bool, multiple);
        ProbeWidget widget(multiple);
        QFETCH(bool, usesSignals);
        widget.signalsUsed = usesSignals;
        DashboardWidgetConfigDialog dialog(&widget);
        QStringList labels;
        for (const QLabel *label : dialog.findChildren<QLabel *>())
            labels.append(label->text());
        QTEST(labels, "labels");
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Configure Widget"));
    }

    void comboPicksBoundSignalByNameFirst_data()
    {
        QTest::addColumn<QStringList>("bound");
        QTest::addColumn<QString>("expected");
        QTest::newRow("rpm by name, not rpm_max by text") << QStringList{"rpm"} << "rpm";
        QTest::newRow("first bound name counts") << QStringList{"temp", "rpm"} << "temp";
        QTest::newRow("falls back to text") << QStringList{"Engine"} << "rpm";
        QTest::newRow("unknown keeps first entry") << QStringList{"gone"} << "rpm_max";
    }

    void comboPicksBoundSignalByNameFirst()
    {
        QFETCH(QStringList, bound);
        ProbeWidget widget(false, bound);
        DashboardWidgetConfigDialog dialog(&widget);
        QCOMPARE(dialog.signalCombo()->itemText(0), QStringLiteral("rpm_max : Max RPM"));
        QTEST(dialog.signalCombo()->currentData(Qt::UserRole).toString(), "expected");
    }

    void buttonDecidesWhatReachesTheWidget_data()
    {
        QTest::addColumn<QDialogButtonBox::StandardButton>("button");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<int>("threshold");
        QTest::newRow("Cancel leaves the widget untouched") << QDialogButtonBox::Cancel << QStringList{"rpm", "x"} << 7;
        QTest::newRow("Ok applies choice and own rows") << QDialogButtonBox::Ok << QStringList{"temp"} << 42;
    }

    void buttonDecidesWhatReachesTheWidget()
    {
        QFETCH(QDialogButtonBox::StandardButton, button);
        ProbeWidget widget(false, {QStringLiteral("rpm"), QStringLiteral("x")});
        widget.threshold = 7;
        DashboardWidgetConfigDialog dialog(&widget);
        QCOMPARE(widget.thresholdEdit->value(), 7);
        dialog.signalCombo()->setCurrentIndex(2);
        widget.thresholdEdit->setValue(42);
        press(dialog, button);
        QTEST(widget.signalNames(), "names");
        QTEST(widget.threshold, "threshold");
    }

    void listSelectsBoundNamesAndAppliesTheSelection()
    {
        ProbeWidget widget(true, {QStringLiteral("temp"), QStringLiteral("gone"), QStringLiteral("rpm_max")});
        DashboardWidgetConfigDialog dialog(&widget);
        QListWidget *list = dialog.signalList();
        QCOMPARE(list->selectionMode(), QAbstractItemView::MultiSelection);
        QCOMPARE(list->item(1)->text(), QStringLiteral("rpm (Engine speed)"));
        QVERIFY(list->item(0)->isSelected() && !list->item(1)->isSelected() && list->item(2)->isSelected());
        list->item(0)->setSelected(false);
        list->item(1)->setSelected(true);
        press(dialog, QDialogButtonBox::Ok);
        QStringList names = widget.signalNames();
        names.sort();
        QCOMPARE(names, (QStringList{"rpm", "temp"}));
    }

    void withoutCatalogueAcceptingBindsNothing_data()
    {
        QTest::addColumn<bool>("multiple");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("single: one empty name") << false << QStringList{QString()};
        QTest::newRow("multi: no names") << true << QStringList();
    }

    void withoutCatalogueAcceptingBindsNothing()
    {
        QFETCH(bool, multiple);
        SignalDefinitions::setCurrent(nullptr);
        ProbeWidget widget(multiple, {QStringLiteral("rpm")});
        DashboardWidgetConfigDialog dialog(&widget);
        press(dialog, QDialogButtonBox::Ok);
        QTEST(widget.signalNames(), "names");
    }
};

QTEST_MAIN(tst_DashboardWidgetConfigDialog)
#include "tst_dashboardwidgetconfigdialog.moc"
