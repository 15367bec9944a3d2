#include "DashboardWidgetConfigDialog.h"
#include "ProbeWidget.h"
#include "SignalDefinitions.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFormLayout>
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
    void init();
    void cleanup();

    void rowsFollowSignalUsage_data();
    void rowsFollowSignalUsage();
    void listShowsCatalogueAndSelectsBoundNames();
    void comboPicksBoundSignal_data();
    void comboPicksBoundSignal();
    void cancelLeavesWidgetUntouched();
    void okAppliesSingleSelectionAndOwnRows();
    void okAppliesMultiSelection();
    void withoutCatalogue();

private:
    static void press(DashboardWidgetConfigDialog &dialog, QDialogButtonBox::StandardButton which);
    static QStringList rowLabels(const DashboardWidgetConfigDialog &dialog);

    QTemporaryDir m_dir;
    SignalDefinitions m_defs;
};

void TestDashboardWidgetConfigDialog::initTestCase()
{
    QVERIFY(m_dir.isValid());
    const QString path = m_dir.filePath(QStringLiteral("dashboard_signals.def"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("DASHBOARD_SIGNAL(rpm_max, \"Max RPM\", float)\n"
               "DASHBOARD_SIGNAL(rpm, \"Engine speed\", float)\n"
               "DASHBOARD_SIGNAL(temp, \"Temperature\", float)\n");
    file.close();
    QVERIFY(m_defs.load(path));
    QCOMPARE(m_defs.signals().size(), 3);
}

void TestDashboardWidgetConfigDialog::init()
{
    SignalDefinitions::setCurrent(&m_defs);
}

void TestDashboardWidgetConfigDialog::cleanup()
{
    SignalDefinitions::setCurrent(nullptr);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void TestDashboardWidgetConfigDialog::press(DashboardWidgetConfigDialog &dialog,
                                            QDialogButtonBox::StandardButton which)
{
    auto *box = dialog.findChild<QDialogButtonBox *>();
    QVERIFY(box);
    QVERIFY(box->button(which));
    box->button(which)->click();
}

QStringList TestDashboardWidgetConfigDialog::rowLabels(const DashboardWidgetConfigDialog &dialog)
{
    QStringList labels;
    auto *form = dialog.findChild<QFormLayout *>();
    if (!form)
        return labels;
    for (int row = 0; row < form->rowCount(); ++row) {
        if (auto *item = form->itemAt(row, QFormLayout::LabelRole)) {
            if (auto *label = qobject_cast<QLabel *>(item->widget()))
                labels.append(label->text());
        }
    }
    return labels;
}

void TestDashboardWidgetConfigDialog::rowsFollowSignalUsage_data()
{
    QTest::addColumn<bool>("multiple");
    QTest::addColumn<bool>("usesSignals");
    QTest::addColumn<QStringList>("labels");
    QTest::newRow("multi") << true << true << QStringList{QStringLiteral("Signals:"), QStringLiteral("Threshold:")};
    QTest::newRow("single") << false << true << QStringList{QStringLiteral("Signal:"), QStringLiteral("Threshold:")};
    QTest::newRow("no signals") << false << false << QStringList{QStringLiteral("Threshold:")};
}

void TestDashboardWidgetConfigDialog::rowsFollowSignalUsage()
{
    QFETCH(bool, multiple);
    QFETCH(bool, usesSignals);
    QFETCH(QStringList, labels);

    ProbeWidget widget;
    widget.multiple = multiple;
    widget.signalsUsed = usesSignals;
    DashboardWidgetConfigDialog dialog(&widget);

    QCOMPARE(dialog.windowTitle(), QStringLiteral("Configure Widget"));
    QCOMPARE(rowLabels(dialog), labels);
    QCOMPARE(dialog.signalList() != nullptr, multiple);
    QCOMPARE(dialog.signalCombo() != nullptr, !multiple && usesSignals);
    QCOMPARE(dialog.findChildren<QListWidget *>().size(), multiple ? 1 : 0);
    QCOMPARE(dialog.findChildren<QComboBox *>().size(), !multiple && usesSignals ? 1 : 0);
}

void TestDashboardWidgetConfigDialog::listShowsCatalogueAndSelectsBoundNames()
{
    ProbeWidget widget;
    widget.multiple = true;
    widget.setSignalNames({QStringLiteral("temp"), QStringLiteral("gone"), QStringLiteral("rpm_max")});
    DashboardWidgetConfigDialog dialog(&widget);

    QListWidget *list = dialog.signalList();
    QVERIFY(list);
    QCOMPARE(list->selectionMode(), QAbstractItemView::MultiSelection);
    QCOMPARE(list->count(), 3);
    QCOMPARE(list->item(0)->text(), QStringLiteral("rpm_max (Max RPM)"));
    QCOMPARE(list->item(1)->text(), QStringLiteral("rpm (Engine speed)"));
    QCOMPARE(list->item(2)->data(Qt::UserRole).toString(), QStringLiteral("temp"));
    QVERIFY(list->item(0)->isSelected());
    QVERIFY(!list->item(1)->isSelected());
    QVERIFY(list->item(2)->isSelected());
}

void TestDashboardWidgetConfigDialog::comboPicksBoundSignal_data()
{
    QTest::addColumn<QStringList>("bound");
    QTest::addColumn<QString>("expected");
    QTest::newRow("rpm by name, not rpm_max by text") << QStringList{QStringLiteral("rpm")} << QStringLiteral("rpm");
    QTest::newRow("exact name") << QStringList{QStringLiteral("temp")} << QStringLiteral("temp");
    QTest::newRow("first bound name counts") << QStringList{QStringLiteral("temp"), QStringLiteral("rpm")}
                                             << QStringLiteral("temp");
    QTest::newRow("falls back to text") << QStringList{QStringLiteral("Engine")} << QStringLiteral("rpm");
    QTest::newRow("name with other case falls back to text")
        << QStringList{QStringLiteral("TEMP")} << QStringLiteral("temp");
    QTest::newRow("unknown keeps first entry") << QStringList{QStringLiteral("gone")} << QStringLiteral("rpm_max");
    QTest::newRow("unbound keeps first entry") << QStringList() << QStringLiteral("rpm_max");
}

void TestDashboardWidgetConfigDialog::comboPicksBoundSignal()
{
    QFETCH(QStringList, bound);
    QFETCH(QString, expected);

    ProbeWidget widget;
    widget.setSignalNames(bound);
    DashboardWidgetConfigDialog dialog(&widget);
    QComboBox *combo = dialog.signalCombo();
    QVERIFY(combo);
    QCOMPARE(combo->count(), 3);
    QCOMPARE(combo->itemText(0), QStringLiteral("rpm_max : Max RPM"));
    QCOMPARE(combo->currentData(Qt::UserRole).toString(), expected);
}

void TestDashboardWidgetConfigDialog::cancelLeavesWidgetUntouched()
{
    ProbeWidget widget;
    widget.setSignalNames({QStringLiteral("rpm")});
    widget.threshold = 7;
    DashboardWidgetConfigDialog dialog(&widget);

    dialog.signalCombo()->setCurrentIndex(2);
    QVERIFY(widget.thresholdEdit());
    widget.thresholdEdit()->setValue(42);
    press(dialog, QDialogButtonBox::Cancel);

    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(widget.signalNames(), QStringList{QStringLiteral("rpm")});
    QCOMPARE(widget.threshold, 7);
}

void TestDashboardWidgetConfigDialog::okAppliesSingleSelectionAndOwnRows()
{
    ProbeWidget widget;
    widget.setSignalNames({QStringLiteral("rpm"), QStringLiteral("extra")});
    DashboardWidgetConfigDialog dialog(&widget);

    QCOMPARE(widget.thresholdEdit()->value(), 5);
    dialog.signalCombo()->setCurrentIndex(2);
    widget.thresholdEdit()->setValue(42);
    press(dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(widget.signalNames(), QStringList{QStringLiteral("temp")});
    QCOMPARE(widget.threshold, 42);
}

void TestDashboardWidgetConfigDialog::okAppliesMultiSelection()
{
    ProbeWidget widget;
    widget.multiple = true;
    widget.setSignalNames({QStringLiteral("rpm"), QStringLiteral("gone")});
    DashboardWidgetConfigDialog dialog(&widget);

    QListWidget *list = dialog.signalList();
    list->item(1)->setSelected(false);
    list->item(2)->setSelected(true);
    list->item(0)->setSelected(true);
    press(dialog, QDialogButtonBox::Ok);

    QStringList names = widget.signalNames();
    names.sort();
    QCOMPARE(names, (QStringList{QStringLiteral("rpm_max"), QStringLiteral("temp")}));
}

void TestDashboardWidgetConfigDialog::withoutCatalogue()
{
    SignalDefinitions::setCurrent(nullptr);

    ProbeWidget single;
    single.setSignalNames({QStringLiteral("rpm")});
    DashboardWidgetConfigDialog singleDialog(&single);
    QCOMPARE(singleDialog.signalCombo()->count(), 0);
    press(singleDialog, QDialogButtonBox::Ok);
    QCOMPARE(single.signalNames(), QStringList{QString()});

    ProbeWidget multi;
    multi.multiple = true;
    multi.setSignalNames({QStringLiteral("rpm")});
    DashboardWidgetConfigDialog multiDialog(&multi);
    QCOMPARE(multiDialog.signalList()->count(), 0);
    press(multiDialog, QDialogButtonBox::Ok);
    QVERIFY(multi.signalNames().isEmpty());
}

QTEST_MAIN(TestDashboardWidgetConfigDialog)
#include "tst_dashboardwidgetconfigdialog.moc"
