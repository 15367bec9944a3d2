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
    void cleanup() { QVERIFY(QApplication::topLevelWidgets().isEmpty()); }
    void listsEverySignalPreselectedByDisplayName();
    void optionsFollowTheChoices();
};

void TestSignalsExportDialog::listsEverySignalPreselectedByDisplayName()
{
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("dashboard_signals.def")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n");
    file.close();
    SignalDefinitions defs;
    QVERIFY(defs.load(file.fileName()));

    SignalsExportDialog dialog({QStringLiteral("RPM"), QStringLiteral("TEMP")}, &defs);
    const auto *list = dialog.findChild<QListWidget *>();
    QCOMPARE(list->count(), 2);
    QCOMPARE(list->item(0)->text(), QStringLiteral("Engine speed"));
    QCOMPARE(list->item(1)->text(), QStringLiteral("TEMP"));
    const SignalsExportOptions options = dialog.options();
    QCOMPARE(options.signalNames, (QStringList{QStringLiteral("RPM"), QStringLiteral("TEMP")}));
    QCOMPARE(options.rateHz, 0.0);
    QVERIFY(!options.applyMappings);
}

void TestSignalsExportDialog::optionsFollowTheChoices()
{
    SignalsExportDialog dialog({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}, nullptr);
    QPushButton *ok = dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
    QVERIFY(ok->isEnabled());
    dialog.selectNone();
    QVERIFY(!ok->isEnabled()); // nothing to export
    auto *list = dialog.findChild<QListWidget *>();
    list->item(0)->setCheckState(Qt::Checked);
    list->item(2)->setCheckState(Qt::Checked);
    QVERIFY(ok->isEnabled());
    dialog.findChild<QDoubleSpinBox *>()->setValue(25.0);
    auto *mapped = dialog.findChild<QCheckBox *>();
    QCOMPARE(mapped->text(), QStringLiteral("Apply mappings (physical units)"));
    mapped->setChecked(true);

    const SignalsExportOptions options = dialog.options();
    QCOMPARE(options.signalNames, (QStringList{QStringLiteral("A"), QStringLiteral("C")}));
    QCOMPARE(options.rateHz, 25.0);
    QVERIFY(options.applyMappings);
    dialog.selectAll();
    QCOMPARE(dialog.options().signalNames.size(), 3);
}

QTEST_MAIN(TestSignalsExportDialog)
#include "tst_signalsexportdialog.moc"
