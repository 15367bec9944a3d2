#include "CliRun.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_Checks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(CliRun::program()), "OMBRIX_CLI must name the ombrix-cli binary");
    }

    void checkDefListsFindingsByLine()
    {
        const QString path = m_dir.filePath(QStringLiteral("findings.def"));
        QVERIFY(writeFile(path, "DASHBOARD_MAPPING(B, 0, 1)\n"
                                "// a comment\n"
                                "DASHBOARD_SIGNAL(A, \"\", float)\n"
                                "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"));
        const CliRun run = CliRun::run({"check-def", path});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.err, QByteArray());
        const QString expected = path + ":1: B is mapped but never declared with DASHBOARD_SIGNAL\n" + path
            + ":3: DASHBOARD_SIGNAL: the label is empty\n" + path
            + ":4: warning: state group MODE is not declared before its state: the state declares it, "
              "with MODE as its label\n";
        QCOMPARE(QString::fromUtf8(run.out), expected);
    }

    void checkDefIsQuietOnACleanFile()
    {
        const CliRun run = CliRun::run({"check-def", OMBRIX_SOURCE_DIR "/examples/demo/dashboard_signals.def"});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QByteArray());
        QCOMPARE(run.err, QByteArray());
    }

    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::newRow("check-def without a file") << QStringList{"check-def"};
        QTest::newRow("check-def of no file") << QStringList{"check-def", "missing.def"};
        QTest::newRow("check-def with two files") << QStringList{"check-def", "a.def", "b.def"};
    }

    void usageErrors()
    {
        QFETCH(QStringList, args);
        const CliRun run = CliRun::run(args);
        QVERIFY2(run.isUsageError(args.constFirst()), run.err.constData());
    }

private:
    QTemporaryDir m_dir;
};

QTEST_MAIN(tst_Checks)
#include "tst_checks.moc"
