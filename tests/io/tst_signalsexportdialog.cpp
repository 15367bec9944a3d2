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
    void optionsFollowTheChoices();
};

// Every signal is listed by its display name and preselected; OK needs at
// least one checked; the options carry names, rate and mapping choice.
void TestSignalsExportDialog::optionsFollowTheChoices()
{
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("dashboard_signals.def")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n") > 0);
    file.close();
    SignalDefinitions defs;
    QVERIFY(defs.load(file.fileName()));

    SignalsExportDialog dialog({QStringLiteral("RPM"), QStringLiteral("TEMP"), QStringLiteral("C")}, &defs);
    auto *list = dialog.findChild<QListWidget *>();
    QCOMPARE(list->item(0)->text(), QStringLiteral("Engine speed"));
    QCOMPARE(list->item(1)->text(), QStringLiteral("TEMP"));
    SignalsExportOptions options = dialog.options();
    QCOMPARE(options.signalNames, (QStringList{"RPM", "TEMP", "C"}));
    QCOMPARE(options.rateHz, 0.0);
    QVERIFY(!options.applyMappings);

    QPushButton *ok = dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
    dialog.selectNone();
    QVERIFY(!ok->isEnabled());
    list->item(0)->setCheckState(Qt::Checked);
    list->item(2)->setCheckState(Qt::Checked);
    QVERIFY(ok->isEnabled());
    dialog.findChild<QDoubleSpinBox *>()->setValue(25.0);
    auto *mapped = dialog.findChild<QCheckBox *>();
    QCOMPARE(mapped->text(), QStringLiteral("Apply mappings (physical units)"));
    mapped->setChecked(true);
    options = dialog.options();
    QCOMPARE(options.signalNames, (QStringList{"RPM", "C"}));
    QCOMPARE(options.rateHz, 25.0);
    QVERIFY(options.applyMappings);
    dialog.selectAll();
    QCOMPARE(dialog.options().signalNames.size(), 3);
}

QTEST_MAIN(TestSignalsExportDialog)
#include "tst_signalsexportdialog.moc"
