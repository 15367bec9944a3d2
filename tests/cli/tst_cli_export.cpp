#include "CliRun.h"
#include "EventsCsvExporter.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalsCsvExporter.h"
#include "TestFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QByteArray RecordingText = "0.000000 RPM=1000 TEMP=20.5\n"
                                 "0.000000 ST_MODE=IDLE\n"
                                 "0.250000 RPM=1500\n"
                                 "0.250000 ERR=E_HOT\n"
                                 "0.500000 RAWhello \"bench\", one\n"
                                 "0.750000 RPM=900 TEMP=-3.25\n"
                                 "0.750000 ST_MODE=RUN\n"
                                 "1.000000 TEMP=22\n";

const QByteArray Definitions = "DASHBOARD_MAPPING(RPM, 0, 0.1)\n"
                               "DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n"
                               "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                               "DASHBOARD_ERROR(E_HOT, 7, \"Too hot\")\n";

} // namespace

// info, export-signals and export-events, and the argument checks of every command.
class tst_CliExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(CliRun::program()), "OMBRIX_CLI must name the ombrix-cli binary");
        m_rec = m_dir.filePath(QStringLiteral("log_20240101_120000.rec"));
        m_otherDefs = m_dir.filePath(QStringLiteral("other.def"));
        QVERIFY(writeFile(m_rec, RecordingText));
        QVERIFY(writeFile(Recording::companionPathFor(m_rec), Definitions));
        QVERIFY(writeFile(m_otherDefs, "DASHBOARD_MAPPING(RPM, 5, 2)\nDASHBOARD_STATE(MODE, IDLE, \"Resting\")\n"));
        QVERIFY(writeFile(m_dir.filePath(QStringLiteral("empty.rec")), "# nothing recorded\n"));
        QVERIFY(m_recording.load(m_rec));
    }

    void infoSummarisesTheRecording()
    {
        const CliRun run = CliRun::run({"info", m_rec});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.out.startsWith(QByteArray("File:     " + m_rec.toUtf8() + '\n')));
        QList<QByteArrayList> rows;
        for (const QByteArray &line : run.out.split('\n').mid(1))
            rows.append(line.simplified().split(' '));
        const QList<QByteArrayList> expected = {
            {"Duration:", "1.000000", "s"}, {"Frames:", "8"}, {"Signals:", "2"}, {"States:", "2"},
            {"Errors:", "1"}, {"Messages:", "1"}, {""}, {"Signal", "Samples", "Min", "Max"},
            {"RPM", "3", "900", "1500"}, {"TEMP", "3", "-3.25", "22"}, {""},
        };
        QCOMPARE(rows, expected);
    }

    void exportsEqualTheWindowExporters_data();
    void exportsEqualTheWindowExporters();

    // A fast device repeats its time stamp, and one that restarts sends its
    // clock backwards: every value set must still come back.
    void repeatedAndBackwardTimesKeepEverySample()
    {
        const QString rec = m_dir.filePath(QStringLiteral("fast.rec"));
        QVERIFY(writeFile(rec, "5.000000 A=1\n5.000000 A=2\n5.000000 ERR=E1\n5.000000 A=3\n3.000000 A=4\n"));
        const CliRun info = CliRun::run({"info", rec});
        QVERIFY2(info.out.contains("Frames:   4\n"), info.out.constData());
        QVERIFY2(info.out.contains("\nA             4    1    4\n"), info.out.constData());
        const QString out = m_dir.filePath(QStringLiteral("fast.csv"));
        QCOMPARE(CliRun::run({"export-signals", rec, "-o", out}).exitCode, 0);
        QCOMPARE(readFile(out), QByteArray("time,A\n5.000000,1\n5.000000,2\n5.000000,3\n3.000000,4\n"));
        QCOMPARE(CliRun::run({"export-events", rec, "-o", out}).exitCode, 0);
        QCOMPARE(readFile(out), QByteArray("time,type,key,value,display\n5.000000,ERROR,\"E1\",,\"\"\n"));
    }

    void helpGoesToStdout()
    {
        const CliRun run = CliRun::run({"simulate", "--help"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.out.startsWith("Usage: ombrix-cli simulate"));
        QVERIFY(run.out.contains("--link PATH"));
    }

    void versionGoesToStdout()
    {
        const CliRun run = CliRun::run({"--version"});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QByteArray("ombrix-cli " OMBRIX_VERSION "\n"));
    }

    void badArgumentsExitWithUsage_data();
    void badArgumentsExitWithUsage()
    {
        QFETCH(QStringList, args);
        const CliRun run = CliRun::run(withPaths(args));
        QVERIFY2(run.isUsageError(args.at(0)), run.err.constData());
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("out.csv"))));
    }

    void failedExportsAreOneLine_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("unknown signal") << QStringList{"export-signals", "REC", "--signals", "RPM,SPEED", "-o", "OUT"}
                                        << 2 << QByteArray("'SPEED'");
        QTest::newRow("unwritable output") << QStringList{"export-events", "REC", "-o", "DIR/no/such/folder/out.csv"}
                                           << 1 << QByteArray("Could not open file for writing.");
        QTest::newRow("recording without data") << QStringList{"export-events", "EMPTY", "-o", "OUT"} << 1
                                                << QByteArray("no playback data");
    }

    void failedExportsAreOneLine()
    {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, message);
        const CliRun run = CliRun::run(withPaths(args));
        QCOMPARE(run.exitCode, exitCode);
        QCOMPARE(run.err.count('\n'), 1);
        QVERIFY2(run.err.contains(message), run.err.constData());
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("out.csv"))));
    }

private:
    // REC, OTHER, EMPTY, MISSING, OUT and DIR stand for paths in the test folder, DEMO for the demo project.
    QStringList withPaths(QStringList args) const
    {
        const QHash<QString, QString> paths = {
            {"REC", m_rec}, {"OTHER", m_otherDefs}, {"EMPTY", m_dir.filePath("empty.rec")},
            {"MISSING", m_dir.filePath("missing")}, {"OUT", m_dir.filePath("out.csv")},
            {"DEMO", QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo")},
        };
        for (QString &arg : args) {
            if (paths.contains(arg))
                arg = paths.value(arg);
            else if (arg == QLatin1String("DIR") || arg.startsWith(QLatin1String("DIR/")))
                arg.replace(0, 3, m_dir.path());
        }
        return args;
    }

    QTemporaryDir m_dir;
    QString m_rec;
    QString m_otherDefs;
    Recording m_recording;
};

void tst_CliExport::exportsEqualTheWindowExporters_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QStringList>("names"); // empty: the events export
    QTest::addColumn<double>("rate");
    QTest::addColumn<bool>("mapped"); // OTHER among the args: other.def replaces the companion
    const QStringList all{"RPM", "TEMP"};
    QTest::newRow("signals: all, recorded times, raw") << QStringList{"export-signals"} << all << 0.0 << false;
    QTest::newRow("signals: chosen order, resampled, mapped")
        << QStringList{"export-signals", "--signals", "TEMP,RPM", "--rate", "8", "--mapped"}
        << QStringList{"TEMP", "RPM"} << 8.0 << true;
    QTest::newRow("signals: short options") << QStringList{"export-signals", "-s", "RPM", "-r", "2.5", "-m"}
                                            << QStringList{"RPM"} << 2.5 << true;
    QTest::newRow("signals: --def replaces the companion")
        << QStringList{"export-signals", "--mapped", "--def", "OTHER"} << all << 0.0 << true;
    QTest::newRow("events: companion texts") << QStringList{"export-events"} << QStringList() << 0.0 << false;
    QTest::newRow("events: --def texts") << QStringList{"export-events", "-d", "OTHER"} << QStringList() << 0.0 << false;
}

// Byte for byte what the window writes, through the same exporter classes.
void tst_CliExport::exportsEqualTheWindowExporters()
{
    QFETCH(QStringList, args);
    QFETCH(QStringList, names);
    QFETCH(double, rate);
    QFETCH(bool, mapped);
    const QString viaCli = m_dir.filePath(QStringLiteral("cli.csv"));
    const CliRun run = CliRun::run(withPaths(args) + QStringList{m_rec, "-o", viaCli});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(!run.err.contains("ombrix-cli"), run.err.constData()); // a progress line is fine

    const SignalDefinitions defs(args.contains(u"OTHER") ? m_otherDefs : Recording::companionPathFor(m_rec));
    const QString direct = m_dir.filePath(QStringLiteral("direct.csv"));
    QVERIFY(names.isEmpty() ? EventsCsvExporter::exportTo(direct, m_recording, &defs)
                            : SignalsCsvExporter::exportTo(direct, m_recording, &defs, {names, rate, mapped}));
    QCOMPARE(readFile(viaCli), readFile(direct));
    QVERIFY(readFile(viaCli).count('\n') > 1);
}

void tst_CliExport::badArgumentsExitWithUsage_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("info without file") << QStringList{"info"};
    QTest::newRow("info, missing file") << QStringList{"info", "MISSING"};
    QTest::newRow("info, unknown option") << QStringList{"info", "REC", "--colour"};
    QTest::newRow("export-signals without -o") << QStringList{"export-signals", "REC"};
    QTest::newRow("export-signals, bad rate") << QStringList{"export-signals", "REC", "--rate", "fast", "-o", "OUT"};
    QTest::newRow("export-events, missing --def") << QStringList{"export-events", "REC", "-d", "MISSING", "-o", "OUT"};
    QTest::newRow("export onto the recording") << QStringList{"export-signals", "REC", "-o", "DIR/./log_20240101_120000.rec"};
    const QStringList record{"record", "--port", "/dev/null", "--project"};
    QTest::newRow("record without port") << QStringList{"record", "--project", "DIR"};
    QTest::newRow("record, missing project") << record + QStringList{"MISSING"};
    QTest::newRow("record, both limits") << record + QStringList{"DIR", "--lines", "3", "--duration", "1"};
    QTest::newRow("record, zero lines") << record + QStringList{"DIR", "--lines", "0"};
    QTest::newRow("record, bad baud") << record + QStringList{"DIR", "--baud", "x"};
    const QStringList simulate{"simulate", "--stdout", "--count", "1"};
    QTest::newRow("simulate, unknown option") << simulate + QStringList{"--project", "DEMO", "--bogus"};
    QTest::newRow("simulate, neither --def nor --project") << simulate;
    QTest::newRow("simulate, project without definitions") << simulate + QStringList{"--project", "MISSING"};
    QTest::newRow("simulate, rate not a number") << simulate + QStringList{"--project", "DEMO", "--rate", "fast"};
    QTest::newRow("simulate, negative seed") << simulate + QStringList{"--project", "DEMO", "--seed", "-3"};
    QTest::newRow("simulate, stray argument") << simulate + QStringList{"--project", "DEMO", "now"};
}

QTEST_GUILESS_MAIN(tst_CliExport)
#include "tst_cli_export.moc"
