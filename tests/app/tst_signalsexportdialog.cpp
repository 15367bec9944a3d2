#include "SignalDefinitions.h"
#include "SignalsExportDialog.h"
#include "TestFiles.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

// The options as "names|rate|mapped or raw".
static QString describe(const SignalsExportOptions &options)
{
    return options.signalNames.join(u',') + u'|' + QString::number(options.rateHz) + u'|'
        + (options.applyMappings ? u"mapped" : u"raw");
}

class tst_SignalsExportDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QVERIFY(QApplication::topLevelWidgets().isEmpty()); }
    // Every signal is listed by its display name and preselected; OK needs at
    // least one checked; the options carry names, rate and mapping choice.
    void optionsFollowTheChoices()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("dashboard_signals.def"));
        SignalDefinitions defs;
        QVERIFY(writeFile(path, "DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n") && defs.load(path));

        SignalsExportDialog dialog({QStringLiteral("RPM"), QStringLiteral("TEMP"), QStringLiteral("C")}, &defs);
        auto *list = dialog.findChild<QListWidget *>();
        QCOMPARE(list->item(0)->text(), QStringLiteral("Engine speed"));
        QCOMPARE(list->item(1)->text(), QStringLiteral("TEMP"));
        QCOMPARE(describe(dialog.options()), QStringLiteral("RPM,TEMP,C|0|raw"));

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
        QCOMPARE(describe(dialog.options()), QStringLiteral("RPM,C|25|mapped"));
        dialog.selectAll();
        QCOMPARE(dialog.options().signalNames.size(), 3);
    }
};

QTEST_MAIN(tst_SignalsExportDialog)
#include "tst_signalsexportdialog.moc"
