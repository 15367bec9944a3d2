#include "SignalDefinitions.h"

#include <QTemporaryDir>
#include <QtTest>

class TestSignalDefinitions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void missingFileFails();
};

void TestSignalDefinitions::missingFileFails()
{
    QTemporaryDir dir;
    SignalDefinitions defs;
    const QString path = dir.filePath(QStringLiteral("absent.def"));
    QVERIFY(!defs.load(path));
    QCOMPARE(defs.lastError(), QStringLiteral("Could not open file: %1").arg(path));
}

QTEST_GUILESS_MAIN(TestSignalDefinitions)
#include "tst_signaldefinitions.moc"
