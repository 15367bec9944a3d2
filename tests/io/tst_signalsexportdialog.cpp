#include "SignalDefinitions.h"
#include "SignalsExportDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class TestSignalsExportDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsEverySignalPreselected();
    void optionsFollowTheChoices();
    void okNeedsAtLeastOneSignal();
    void cleanup();

private:
    static QPushButton *okButton(const SignalsExportDialog &dialog);
};

QPushButton *TestSignalsExportDialog::okButton(const SignalsExportDialog &dialog)
{
    return dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
}

void TestSignalsExportDialog::cleanup()
{
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void TestSignalsExportDialog::listsEverySignalPreselected()
{
    QTemporaryDir dir;
    const QString defPath = dir.filePath(QStringLiteral("dashboard_signals.def"));
    QFile file(defPath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n");
    file.close();
    SignalDefinitions defs;
    QVERIFY(defs.load(defPath));

    SignalsExportDialog dialog({QStringLiteral("RPM"), QStringLiteral("TEMP")}, &defs);
    const auto *list = dialog.findChild<QListWidget *>();
    QCOMPARE(list->count(), 2);
    QCOMPARE(list->item(0)->text(), QStringLiteral("Engine speed"));
    QCOMPARE(list->item(1)->text(), QStringLiteral("TEMP"));
    QCOMPARE(list->item(0)->checkState(), Qt::Checked);
    QCOMPARE(list->item(1)->checkState(), Qt::Checked);

    const SignalsExportOptions options = dialog.options();
    QCOMPARE(options.signalNames, (QStringList{QStringLiteral("RPM"), QStringLiteral("TEMP")}));
    QCOMPARE(options.rateHz, 0.0);
    QVERIFY(!options.applyMappings);
    QVERIFY(okButton(dialog)->isEnabled());
}

void TestSignalsExportDialog::optionsFollowTheChoices()
{
    SignalsExportDialog dialog({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}, nullptr);
    dialog.findChild<QListWidget *>()->item(1)->setCheckState(Qt::Unchecked);
    dialog.findChild<QDoubleSpinBox *>()->setValue(25.0);
    auto *mapped = dialog.findChild<QCheckBox *>();
    QCOMPARE(mapped->text(), QStringLiteral("Apply mappings (physical units)"));
    mapped->setChecked(true);

    const SignalsExportOptions options = dialog.options();
    QCOMPARE(options.signalNames, (QStringList{QStringLiteral("A"), QStringLiteral("C")}));
    QCOMPARE(options.rateHz, 25.0);
    QVERIFY(options.applyMappings);
}

void TestSignalsExportDialog::okNeedsAtLeastOneSignal()
{
    SignalsExportDialog dialog({QStringLiteral("A"), QStringLiteral("B")}, nullptr);
    dialog.selectNone();
    QVERIFY(!okButton(dialog)->isEnabled());
    QVERIFY(dialog.options().signalNames.isEmpty());

    dialog.findChild<QListWidget *>()->item(1)->setCheckState(Qt::Checked);
    QVERIFY(okButton(dialog)->isEnabled());

    dialog.selectAll();
    QCOMPARE(dialog.options().signalNames, (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
}

QTEST_MAIN(TestSignalsExportDialog)
#include "tst_signalsexportdialog.moc"
