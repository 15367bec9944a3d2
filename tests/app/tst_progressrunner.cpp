#include "ProgressRunner.h"

#include <QProgressDialog>
#include <QtTest>

class tst_ProgressRunner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }
    void quickWorkShowsNothing();
    void cancelStopsTheWork();
};

void tst_ProgressRunner::quickWorkShowsNothing()
{
    QWidget window;
    ProgressRunner runner(QStringLiteral("Exporting"), &window);
    runner.setShowDelay(60 * 60 * 1000);
    const auto progress = runner.callback();
    for (qint64 i = 0; i <= 100; ++i)
        QVERIFY(progress(i, 100));
    QVERIFY(!window.findChild<QProgressDialog *>());
}

// The dialog's Cancel button is how a user stops a long export: from then
// on every report answers false.
void tst_ProgressRunner::cancelStopsTheWork()
{
    QWidget window;
    window.show();
    ProgressRunner runner(QStringLiteral("Exporting"), &window);
    runner.setShowDelay(0);
    const auto progress = runner.callback();
    QVERIFY(progress(10, 100));
    auto *dialog = window.findChild<QProgressDialog *>();
    QVERIFY(dialog);
    QCOMPARE(dialog->labelText(), QStringLiteral("Exporting"));
    dialog->cancel();
    QVERIFY(!progress(20, 100));
    QVERIFY(runner.wasCancelled());
}

QTEST_MAIN(tst_ProgressRunner)
#include "tst_progressrunner.moc"
