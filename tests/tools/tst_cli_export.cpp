#include "EventsCsvExporter.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalsCsvExporter.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QString cliPath()
{
    const QString fromEnv = qEnvironmentVariable("OMBRIX_CLI");
    return fromEnv.isEmpty() ? QStringLiteral(OMBRIX_BINARY_DIR "/ombrix-cli") : fromEnv;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run runCli(const QStringList &args)
{
    QProcess process;
    process.start(cliPath(), args);
    Run run;
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

const QByteArray RecordingText =
    "0.000000 RPM=1000 TEMP=20.5\n"
    "0.000000 ST_MODE=IDLE\n"
    "0.250000 RPM=1500\n"
    "0.250000 ERR=E_HOT\n"
    "0.500000 RAWhello \"bench\", one\n"
    "0.750000 RPM=900 TEMP=-3.25\n"
    "0.750000 ST_MODE=RUN\n"
    "1.000000 TEMP=22\n";

const QByteArray Definitions =
    "DASHBOARD_MAPPING(RPM, 0, 0.1)\n"
    "DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n"
    "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
    "DASHBOARD_ERROR(E_HOT, 7, \"Too hot\")\n";

} // namespace

class TestCliExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void infoSummarisesTheRecording();
    void exportSignalsMatchesTheExporter_data();
    void exportSignalsMatchesTheExporter();
    void exportEventsMatchesTheExporter_data();
    void exportEventsMatchesTheExporter();
    void badArgumentsExitWithUsage_data();
    void badArgumentsExitWithUsage();
    void unknownSignalIsOneLine();
    void unwritableOutputFails();

private:
    QTemporaryDir m_dir;
    QString m_rec;
    QString m_otherDefs;
    Recording m_recording;
};

void TestCliExport::initTestCase()
{
    QVERIFY(QFile::exists(cliPath()));
    m_rec = m_dir.filePath(QStringLiteral("log_20240101_120000.rec"));
    QVERIFY(writeFile(m_rec, RecordingText));
    QVERIFY(writeFile(Recording::companionPathFor(m_rec), Definitions));
    m_otherDefs = m_dir.filePath(QStringLiteral("other.def"));
    QVERIFY(writeFile(m_otherDefs, "DASHBOARD_MAPPING(RPM, 5, 2)\n"
                                   "DASHBOARD_STATE(MODE, IDLE, \"Resting\")\n"));
    QVERIFY(m_recording.load(m_rec));
}

void TestCliExport::infoSummarisesTheRecording()
{
    const Run run = runCli({QStringLiteral("info"), m_rec});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(!run.err.contains("ombrix-cli"), run.err.constData()); // a progress line is fine
    QList<QByteArrayList> rows;
    for (const QByteArray &line : run.out.split('\n')) {
        QByteArrayList cells = line.simplified().split(' ');
        if (cells.constFirst() == "File:")
            QCOMPARE(line.mid(line.indexOf(':') + 1).trimmed(), m_rec.toUtf8());
        else if (!line.isEmpty())
            rows.append(cells);
    }
    const QList<QByteArrayList> expected = {
        {"Duration:", "1.000000", "s"},
        {"Frames:", "5"},
        {"Signals:", "2"},
        {"States:", "2"},
        {"Errors:", "1"},
        {"Messages:", "1"},
        {"Signal", "Samples", "Min", "Max"},
        {"RPM", "3", "900", "1500"},
        {"TEMP", "3", "-3.25", "22"},
    };
    QCOMPARE(rows, expected);
}

void TestCliExport::exportSignalsMatchesTheExporter_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<double>("rate");
    QTest::addColumn<bool>("mapped");
    QTest::addColumn<bool>("otherDefs");

    const QStringList all{QStringLiteral("RPM"), QStringLiteral("TEMP")};
    QTest::newRow("defaults: all signals, recorded times, raw") << QStringList() << all << 0.0 << false << false;
    QTest::newRow("chosen order, resampled, mapped")
        << QStringList{"--signals", "TEMP,RPM", "--rate", "8", "--mapped"}
        << QStringList{"TEMP", "RPM"} << 8.0 << true << false;
    QTest::newRow("short options") << QStringList{"-s", "RPM", "-r", "2.5", "-m"}
                                   << QStringList{"RPM"} << 2.5 << true << false;
    QTest::newRow("--def replaces the companion")
        << QStringList{"--mapped", "--def", "OTHER"} << all << 0.0 << true << true;
}

void TestCliExport::exportSignalsMatchesTheExporter()
{
    QFETCH(QStringList, args);
    QFETCH(QStringList, names);
    QFETCH(double, rate);
    QFETCH(bool, mapped);
    QFETCH(bool, otherDefs);
    args.replaceInStrings(QStringLiteral("OTHER"), m_otherDefs);

    const QString viaCli = m_dir.filePath(QStringLiteral("cli-signals.csv"));
    const Run run = runCli(QStringList{QStringLiteral("export-signals"), m_rec} + args
                           + QStringList{QStringLiteral("-o"), viaCli});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(!run.err.contains("ombrix-cli"), run.err.constData()); // a progress line is fine

    SignalDefinitions defs(otherDefs ? m_otherDefs : Recording::companionPathFor(m_rec));
    const QString direct = m_dir.filePath(QStringLiteral("direct-signals.csv"));
    QVERIFY(SignalsCsvExporter::exportTo(direct, m_recording, &defs, {names, rate, mapped}));
    QCOMPARE(readAll(viaCli), readAll(direct));
    QVERIFY(readAll(viaCli).count('\n') > 1);
}

void TestCliExport::exportEventsMatchesTheExporter_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<bool>("otherDefs");

    QTest::newRow("companion definitions") << QStringList() << false;
    QTest::newRow("--def") << QStringList{"--def", "OTHER"} << true;
}

void TestCliExport::exportEventsMatchesTheExporter()
{
    QFETCH(QStringList, args);
    QFETCH(bool, otherDefs);
    args.replaceInStrings(QStringLiteral("OTHER"), m_otherDefs);

    const QString viaCli = m_dir.filePath(QStringLiteral("cli-events.csv"));
    const Run run = runCli(QStringList{QStringLiteral("export-events"), m_rec, QStringLiteral("-o"), viaCli} + args);
    QCOMPARE(run.exitCode, 0);

    SignalDefinitions defs(otherDefs ? m_otherDefs : Recording::companionPathFor(m_rec));
    const QString direct = m_dir.filePath(QStringLiteral("direct-events.csv"));
    QVERIFY(EventsCsvExporter::exportTo(direct, m_recording, &defs));
    QCOMPARE(readAll(viaCli), readAll(direct));
    QVERIFY(readAll(viaCli).contains(otherDefs ? "\"Resting\"" : "\"Running\""));
}

void TestCliExport::badArgumentsExitWithUsage_data()
{
    QTest::addColumn<QStringList>("args");

    QTest::newRow("info without file") << QStringList{"info"};
    QTest::newRow("info, missing file") << QStringList{"info", "MISSING"};
    QTest::newRow("info, two files") << QStringList{"info", "REC", "REC"};
    QTest::newRow("info, unknown option") << QStringList{"info", "REC", "--colour"};
    QTest::newRow("export-signals without -o") << QStringList{"export-signals", "REC"};
    QTest::newRow("export-signals, bad rate") << QStringList{"export-signals", "REC", "--rate", "fast", "-o", "OUT"};
    QTest::newRow("export-signals, negative rate") << QStringList{"export-signals", "REC", "--rate=-1", "-o", "OUT"};
    QTest::newRow("export-signals, missing --def") << QStringList{"export-signals", "REC", "--def", "MISSING", "-o", "OUT"};
    QTest::newRow("export-events, missing file") << QStringList{"export-events", "MISSING", "-o", "OUT"};
    QTest::newRow("export-events, -o without value") << QStringList{"export-events", "REC", "-o"};
    QTest::newRow("record without port") << QStringList{"record", "--project", "DIR"};
    QTest::newRow("record without project") << QStringList{"record", "--port", "/dev/null"};
    QTest::newRow("record, missing project") << QStringList{"record", "--port", "/dev/null", "--project", "MISSING"};
    QTest::newRow("record, both limits")
        << QStringList{"record", "--port", "/dev/null", "--project", "DIR", "--lines", "3", "--duration", "1"};
    QTest::newRow("record, zero lines") << QStringList{"record", "--port", "/dev/null", "--project", "DIR", "--lines", "0"};
    QTest::newRow("record, bad baud") << QStringList{"record", "--port", "/dev/null", "--project", "DIR", "--baud", "x"};
}

void TestCliExport::badArgumentsExitWithUsage()
{
    QFETCH(QStringList, args);
    args.replaceInStrings(QStringLiteral("MISSING"), m_dir.filePath(QStringLiteral("missing")));
    args.replaceInStrings(QStringLiteral("REC"), m_rec);
    args.replaceInStrings(QStringLiteral("OUT"), m_dir.filePath(QStringLiteral("bad.csv")));
    args.replaceInStrings(QStringLiteral("DIR"), m_dir.path());

    const Run run = runCli(args);
    QCOMPARE(run.exitCode, 2);
    QVERIFY(run.out.isEmpty());
    const QByteArrayList lines = run.err.split('\n');
    QVERIFY2(lines.size() > 2, run.err.constData());
    const QByteArray command = args.at(0).toUtf8();
    QVERIFY2(lines.at(0).startsWith(QByteArray("ombrix-cli " + command + ": ")), run.err.constData());
    QVERIFY2(lines.at(1).startsWith(QByteArray("Usage: ombrix-cli " + command)), run.err.constData());
    QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("bad.csv"))));
}

void TestCliExport::unknownSignalIsOneLine()
{
    const QString out = m_dir.filePath(QStringLiteral("unknown.csv"));
    const Run run = runCli({QStringLiteral("export-signals"), m_rec, QStringLiteral("--signals"),
                            QStringLiteral("RPM,SPEED"), QStringLiteral("-o"), out});
    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.err.count('\n'), 1);
    QVERIFY(run.err.contains("'SPEED'"));
    QVERIFY(!QFile::exists(out));
}

void TestCliExport::unwritableOutputFails()
{
    const QString out = m_dir.filePath(QStringLiteral("no/such/folder/out.csv"));
    const Run run = runCli({QStringLiteral("export-events"), m_rec, QStringLiteral("-o"), out});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.err.count('\n'), 1);
    QVERIFY(run.err.contains("Could not open file for writing."));
}

QTEST_GUILESS_MAIN(TestCliExport)
#include "tst_cli_export.moc"
