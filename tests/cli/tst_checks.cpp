#include "CliRun.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

const QByteArray Definitions = "DASHBOARD_SIGNAL(A, \"Alpha\", float)\n"
                               "DASHBOARD_STATE_GROUP(MODE, \"Mode\")\n";

// A layout of one item: the record's own keys, then `extra` ones.
QByteArray layoutOf(const QByteArray &type, const QByteArray &extra)
{
    return R"({"items": [{"type": ")" + type + R"(", "x": 0, "y": 0, "width": 200, "height": 200)" + extra + "}]}";
}

} // namespace

class tst_Checks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(CliRun::program()), "OMBRIX_CLI must name the ombrix-cli binary");
        m_project = m_dir.filePath(QStringLiteral("bench"));
        QVERIFY(writeFile(m_project + QStringLiteral("/dashboard_signals.def"), Definitions));
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
        QTest::newRow("check-layout of no file") << QStringList{"check-layout", "missing.json"};
        QTest::newRow("check-layout in no project")
            << QStringList{"check-layout", OMBRIX_SOURCE_DIR "/examples/demo/layouts/demo.json", "--project", "/"};
    }

    void usageErrors()
    {
        QFETCH(QStringList, args);
        CliRun run = CliRun::run(args);
        // Without XDG_RUNTIME_DIR, the offscreen platform says so first.
        if (run.err.startsWith("QStandardPaths:"))
            run.err.remove(0, run.err.indexOf('\n') + 1);
        QVERIFY2(run.isUsageError(args.constFirst()), run.err.constData());
    }

    // An empty message: the layout is clean.
    void checkLayoutReportsWhatLoadingChanges_data()
    {
        QTest::addColumn<QByteArray>("layout");
        QTest::addColumn<bool>("inProject");
        QTest::addColumn<QString>("message");
        const QByteArray gauge = "AnalogGauge";
        QTest::newRow("clean") << layoutOf(gauge, R"(, "signals": ["A:rpm"], "config": {"min": 0, "max": 100}, "z": 1)")
                                      + "\n"
                               << true << "";
        QTest::newRow("unknown type") << layoutOf("Gauge", "") << false
                                      << "item 1: unknown widget type \"Gauge\": loading skips the item";
        QTest::newRow("wrong case of type") << layoutOf("analogGauge", "") << false << "did you mean AnalogGauge?";
        QTest::newRow("wrong value type") << layoutOf("ErrorConsole", R"(, "config": {"maxLines": "500"})") << false
                                          << "item 1 (ErrorConsole): config \"maxLines\": \"500\" is a string where a number is expected";
        QTest::newRow("value not taken") << layoutOf(gauge, R"(, "config": {"min": 0.5, "max": 10})") << false
                                         << "item 1 (AnalogGauge): config \"min\": 0.5 was read as 0";
        QTest::newRow("unknown config key") << layoutOf(gauge, R"(, "config": {"colour": "red"})") << false
                                            << "config \"colour\" is not one of its settings (max, min)";
        QTest::newRow("record value type") << layoutOf(gauge, R"(, "z": "top")") << false
                                           << "\"z\" is a string, not a number: it reads as 0";
        QTest::newRow("unknown record key") << layoutOf(gauge, R"(, "widht": 100)") << false
                                            << "unknown key \"widht\"";
        QTest::newRow("position out of range") << layoutOf(gauge, R"(, "y": -30000)") << false
                                               << "\"y\" -30000 lies beyond 20000 either way and is read as -20000";
        QTest::newRow("absurd size") << layoutOf(gauge, R"(, "width": 50000)") << false
                                     << "\"width\" 50000 is over the limit of 10000 and is cut down to it";
        QTest::newRow("size raised") << layoutOf(gauge, R"(, "height": 5)") << false
                                     << "\"height\" 5 is below the widget's minimum and is raised to";
        QTest::newRow("size rounded") << layoutOf(gauge, R"(, "width": 135)") << false
                                      << "\"width\" 135 is rounded up to 140, on the 10-unit grid";
        QTest::newRow("undeclared signal") << layoutOf(gauge, R"(, "signals": [" B :rpm"])") << true
                                           << "signal B (bound as \" B :rpm\") is not declared";
        QTest::newRow("undeclared signal, no project") << layoutOf(gauge, R"(, "signals": ["B"])") << false << "";
        QTest::newRow("undeclared group") << layoutOf("StateIndicator", R"(, "config": {"groupId": "PUMP"})") << true
                                          << "state group PUMP is not declared";
        QTest::newRow("item not an object") << QByteArray(R"({"items": [3]})") << false
                                            << "item 1: a number, not an object: loading skips it";
        QTest::newRow("top level not an object") << QByteArray("[]") << false
                                                 << "the top level is an array, not an object";
        QTest::newRow("unreadable JSON") << QByteArray("{\n  \"items\": [\n}") << false
                                         << "unreadable JSON at offset 16 (line 3, column 2): ";
    }

    void checkLayoutReportsWhatLoadingChanges()
    {
        QFETCH(QByteArray, layout);
        QFETCH(bool, inProject);
        QFETCH(QString, message);
        const QString path = m_dir.filePath(QStringLiteral("layout.json"));
        QVERIFY(writeFile(path, layout));
        QStringList args{"check-layout", path};
        if (inProject)
            args << "--project" << m_project;
        const CliRun run = CliRun::run(args);
        if (message.isEmpty()) {
            QCOMPARE(run.exitCode, 0);
            QCOMPARE(run.out, QByteArray());
            return;
        }
        QCOMPARE(run.exitCode, 1);
        const QString prefix = path + QStringLiteral(": ");
        const QStringList lines = QString::fromUtf8(run.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QVERIFY(std::all_of(lines.cbegin(), lines.cend(), [&](const QString &line) { return line.startsWith(prefix); }));
        QVERIFY2(run.out.contains(message.toUtf8()), run.out.constData());
    }

    void checkLayoutOfTheDemo()
    {
        const CliRun run = CliRun::run({"check-layout", OMBRIX_SOURCE_DIR "/examples/demo/layouts/demo.json",
                                        "--project", OMBRIX_SOURCE_DIR "/examples/demo"});
        QCOMPARE(run.out, QByteArray());
        QCOMPARE(run.exitCode, 0);
    }

private:
    QTemporaryDir m_dir;
    QString m_project;
};

QTEST_MAIN(tst_Checks)
#include "tst_checks.moc"
