#include "DashboardWidgetConfigDialog.h"
#include "ProbeWidget.h"
#include "SignalDefinitions.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class TestDashboardWidgetConfigDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { SignalDefinitions::setCurrent(&m_defs); }
    void cleanup();

    void rowsFollowSignalUsage_data();
    void rowsFollowSignalUsage();
    void comboPicksBoundSignalByNameFirst_data();
    void comboPicksBoundSignalByNameFirst();
    void buttonDecidesWhatReachesTheWidget_data();
    void buttonDecidesWhatReachesTheWidget();
    void listSelectsBoundNamesAndAppliesTheSelection();
    void withoutCatalogueAcceptingBindsNothing();

private:
    static void press(DashboardWidgetConfigDialog &dialog, QDialogButtonBox::StandardButton which);

    QTemporaryDir m_dir;
    SignalDefinitions m_defs;
};

void TestDashboardWidgetConfigDialog::initTestCase()
{
    const QString path = m_dir.filePath(QStringLiteral("dashboard_signals.def"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("DASHBOARD_SIGNAL(rpm_max, \"Max RPM\", float)\n"
               "DASHBOARD_SIGNAL(rpm, \"Engine speed\", float)\n"
               "DASHBOARD_SIGNAL(temp, \"Temperature\", float)\n");
    file.close();
    QVERIFY(m_defs.load(path));
}

void TestDashboardWidgetConfigDialog::cleanup()
{
    SignalDefinitions::setCurrent(nullptr);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void TestDashboardWidgetConfigDialog::press(DashboardWidgetConfigDialog &dialog,
                                            QDialogButtonBox::StandardButton which)
{
    dialog.findChild<QDialogButtonBox *>()->button(which)->click();
}

void TestDashboardWidgetConfigDialog::rowsFollowSignalUsage_data()
{
    QTest::addColumn<bool>("multiple");
    QTest::addColumn<bool>("usesSignals");
    QTest::addColumn<QStringList>("labels");
    QTest::newRow("multi") << true << true << QStringList{"Signals:", "Threshold:"};
    QTest::newRow("single") << false << true << QStringList{"Signal:", "Threshold:"};
    QTest::newRow("no signals, own rows only") << false << false << QStringList{"Threshold:"};
}

void TestDashboardWidgetConfigDialog::rowsFollowSignalUsage()
{
    QFETCH(bool, multiple);
    QFETCH(bool, usesSignals);
    ProbeWidget widget;
    widget.multiple = multiple;
    widget.signalsUsed = usesSignals;
    DashboardWidgetConfigDialog dialog(&widget);

    QStringList labels;
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        labels.append(label->text());
    QTEST(labels, "labels");
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Configure Widget"));
    QCOMPARE(dialog.signalList() != nullptr, multiple);
    QCOMPARE(dialog.signalCombo() != nullptr, !multiple && usesSignals);
}

void TestDashboardWidgetConfigDialog::comboPicksBoundSignalByNameFirst_data()
{
    QTest::addColumn<QStringList>("bound");
    QTest::addColumn<QString>("expected");
    QTest::newRow("rpm by name, not rpm_max by text") << QStringList{"rpm"} << "rpm";
    QTest::newRow("first bound name counts") << QStringList{"temp", "rpm"} << "temp";
    QTest::newRow("falls back to text") << QStringList{"Engine"} << "rpm";
    QTest::newRow("unknown keeps first entry") << QStringList{"gone"} << "rpm_max";
    QTest::newRow("unbound keeps first entry") << QStringList() << "rpm_max";
}

void TestDashboardWidgetConfigDialog::comboPicksBoundSignalByNameFirst()
{
    QFETCH(QStringList, bound);
    ProbeWidget widget;
    widget.setSignalNames(bound);
    DashboardWidgetConfigDialog dialog(&widget);
    QCOMPARE(dialog.signalCombo()->itemText(0), QStringLiteral("rpm_max : Max RPM"));
    QTEST(dialog.signalCombo()->currentData(Qt::UserRole).toString(), "expected");
}

void TestDashboardWidgetConfigDialog::buttonDecidesWhatReachesTheWidget_data()
{
    QTest::addColumn<QDialogButtonBox::StandardButton>("button");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("threshold");
    QTest::newRow("Cancel leaves the widget untouched") << QDialogButtonBox::Cancel << QStringList{"rpm", "x"} << 7;
    QTest::newRow("Ok applies choice and own rows") << QDialogButtonBox::Ok << QStringList{"temp"} << 42;
}

void TestDashboardWidgetConfigDialog::buttonDecidesWhatReachesTheWidget()
{
    QFETCH(QDialogButtonBox::StandardButton, button);
    ProbeWidget widget;
    widget.setSignalNames({QStringLiteral("rpm"), QStringLiteral("x")});
    widget.threshold = 7;
    DashboardWidgetConfigDialog dialog(&widget);
    QCOMPARE(widget.thresholdEdit->value(), 7);

    dialog.signalCombo()->setCurrentIndex(2);
    widget.thresholdEdit->setValue(42);
    QCOMPARE(widget.threshold, 7);
    press(dialog, button);
    QCOMPARE(dialog.result(), button == QDialogButtonBox::Ok ? int(QDialog::Accepted) : int(QDialog::Rejected));
    QTEST(widget.signalNames(), "names");
    QTEST(widget.threshold, "threshold");
}

void TestDashboardWidgetConfigDialog::listSelectsBoundNamesAndAppliesTheSelection()
{
    ProbeWidget widget;
    widget.multiple = true;
    widget.setSignalNames({QStringLiteral("temp"), QStringLiteral("gone"), QStringLiteral("rpm_max")});
    DashboardWidgetConfigDialog dialog(&widget);
    QListWidget *list = dialog.signalList();
    QCOMPARE(list->selectionMode(), QAbstractItemView::MultiSelection);
    QCOMPARE(list->count(), 3);
    QCOMPARE(list->item(1)->text(), QStringLiteral("rpm (Engine speed)"));
    QCOMPARE(list->item(1)->data(Qt::UserRole).toString(), QStringLiteral("rpm"));
    QVERIFY(list->item(0)->isSelected() && !list->item(1)->isSelected() && list->item(2)->isSelected());

    list->item(0)->setSelected(false);
    list->item(1)->setSelected(true);
    press(dialog, QDialogButtonBox::Ok);
    QStringList names = widget.signalNames();
    names.sort();
    QCOMPARE(names, (QStringList{"rpm", "temp"}));
}

void TestDashboardWidgetConfigDialog::withoutCatalogueAcceptingBindsNothing()
{
    SignalDefinitions::setCurrent(nullptr);
    ProbeWidget single;
    single.setSignalName(QStringLiteral("rpm"));
    DashboardWidgetConfigDialog singleDialog(&single);
    QCOMPARE(singleDialog.signalCombo()->count(), 0);
    press(singleDialog, QDialogButtonBox::Ok);
    QCOMPARE(single.signalNames(), QStringList{QString()});

    ProbeWidget multi;
    multi.multiple = true;
    multi.setSignalName(QStringLiteral("rpm"));
    DashboardWidgetConfigDialog multiDialog(&multi);
    press(multiDialog, QDialogButtonBox::Ok);
    QVERIFY(multi.signalNames().isEmpty());
}

QTEST_MAIN(TestDashboardWidgetConfigDialog)
#include "tst_dashboardwidgetconfigdialog.moc"
