#include "EventsCsvExporter.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalsCsvExporter.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

using Rows = QList<QStringList>;

namespace {

// A deliberately plain CSV reader: quoted fields with doubled quotes, rows
// ended by a line feed.
Rows readCsv(const QString &text)
{
    Rows rows;
    QStringList row;
    QString field;
    bool inQuotes = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (inQuotes) {
            if (c == u'"' && i + 1 < text.size() && text.at(i + 1) == u'"') {
                field += u'"';
                ++i;
            } else if (c == u'"') {
                inQuotes = false;
            } else {
                field += c;
            }
        } else if (c == u'"') {
            inQuotes = true;
        } else if (c == u',') {
            row.append(field);
            field.clear();
        } else if (c == u'\n') {
            row.append(field);
            rows.append(row);
            row.clear();
            field.clear();
        } else {
            field += c;
        }
    }
    return rows;
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

const QByteArray Definitions =
    "DASHBOARD_MAPPING(A, 10, 0.5)\n"
    "DASHBOARD_SIGNAL(A, \"Alpha\", float)\n"
    "DASHBOARD_STATE_GROUP(MODE, \"Mode\")\n"
    "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
    "DASHBOARD_STATE(PUMP, OFF, \"Pump off\")\n"
    "DASHBOARD_ERROR(E_HOT, 3, \"Over, temperature\")\n";

} // namespace

class TestCsvExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void eventsFileByteForByte();
    void eventRows_data();
    void eventRows();
    void eventsWithoutCatalogueHaveEmptyDisplay();
    void eventsHeaderOnlyWithoutEvents();

    void signalsRecordedTimes();
    void signalsResampled();
    void signalsLastInstantIsTheDuration_data();
    void signalsLastInstantIsTheDuration();
    void signalsMapped();
    void signalsHeaderQuoting();
    void signalsRejectsBadOptions_data();
    void signalsRejectsBadOptions();

    void unwritableTargetLeavesNoFile_data();
    void unwritableTargetLeavesNoFile();
    void cancelKeepsExistingFile_data();
    void cancelKeepsExistingFile();
    void finishedExportReplacesExistingFile();
    void pythonReadsTheSameCells();

private:
    // Loads a recording written from text into m_recording.
    void record(const QByteArray &text);
    QString exportEvents(const SignalDefinitions *defs);
    QString exportSignals(const SignalsExportOptions &options, const SignalDefinitions *defs = nullptr);

    QTemporaryDir m_dir;
    Recording m_recording;
    SignalDefinitions m_defs;
};

void TestCsvExport::init()
{
    QVERIFY(m_dir.isValid());
    const QString defPath = m_dir.filePath(QStringLiteral("dashboard_signals.def"));
    QVERIFY(writeFile(defPath, Definitions));
    QVERIFY(m_defs.load(defPath));
}

void TestCsvExport::record(const QByteArray &text)
{
    const QString path = m_dir.filePath(QStringLiteral("test.rec"));
    QVERIFY(writeFile(path, text));
    m_recording = Recording();
    QVERIFY2(m_recording.load(path), qPrintable(m_recording.errorString()));
}

QString TestCsvExport::exportEvents(const SignalDefinitions *defs)
{
    const QString path = m_dir.filePath(QStringLiteral("events.csv"));
    QString error;
    if (!EventsCsvExporter::exportTo(path, m_recording, defs, {}, &error))
        qWarning() << "events export failed:" << error;
    return QString::fromUtf8(readAll(path));
}

QString TestCsvExport::exportSignals(const SignalsExportOptions &options, const SignalDefinitions *defs)
{
    const QString path = m_dir.filePath(QStringLiteral("signals.csv"));
    QFile::remove(path);
    QString error;
    if (!SignalsCsvExporter::exportTo(path, m_recording, defs, options, {}, &error))
        qWarning() << "signals export failed:" << error;
    return QString::fromUtf8(readAll(path));
}

// Errors come before states in the file, yet states are written first
// within a frame; a quote in a message is doubled.
void TestCsvExport::eventsFileByteForByte()
{
    record("0.000000 A=1\n"
           "0.500000 ERR=E_HOT\n"
           "0.500000 ST_MODE=RUN\n"
           "0.500000 ST_PUMP=OFF\n"
           "0.500000 RAWsay \"hi\", please\n"
           "1.250000 ERR=E_UNKNOWN\n");
    QCOMPARE(exportEvents(&m_defs),
             QStringLiteral("time,type,key,value,display\n"
                            "0.500000,STATE,\"MODE\",\"RUN\",\"Running\"\n"
                            "0.500000,STATE,\"PUMP\",\"OFF\",\"Pump off\"\n"
                            "0.500000,ERROR,\"E_HOT\",,\"Over, temperature\"\n"
                            "0.500000,MESSAGE,,\"say \"\"hi\"\", please\",\n"
                            "1.250000,ERROR,\"E_UNKNOWN\",,\"\"\n"));
}

void TestCsvExport::eventRows_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QStringList>("cells");

    QTest::newRow("declared state")
        << QByteArray("2.000000 ST_MODE=RUN")
        << QStringList{"2.000000", "STATE", "MODE", "RUN", "Running"};
    QTest::newRow("undeclared state keeps its row, empty display")
        << QByteArray("2.000000 ST_MODE=HALT")
        << QStringList{"2.000000", "STATE", "MODE", "HALT", ""};
    QTest::newRow("declared error, value column empty")
        << QByteArray("2.000000 ERR=E_HOT")
        << QStringList{"2.000000", "ERROR", "E_HOT", "", "Over, temperature"};
    QTest::newRow("message, key and display empty")
        << QByteArray("2.000000 RAWa,b \"c\"")
        << QStringList{"2.000000", "MESSAGE", "", "a,b \"c\"", ""};
}

void TestCsvExport::eventRows()
{
    QFETCH(QByteArray, line);
    QFETCH(QStringList, cells);
    record("0.000000 A=1\n" + line + '\n');
    const Rows rows = readCsv(exportEvents(&m_defs));
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.at(0), (QStringList{"time", "type", "key", "value", "display"}));
    QCOMPARE(rows.at(1), cells);
}

void TestCsvExport::eventsWithoutCatalogueHaveEmptyDisplay()
{
    record("0.000000 ST_MODE=RUN ERR=E_HOT\n");
    QCOMPARE(exportEvents(nullptr),
             QStringLiteral("time,type,key,value,display\n"
                            "0.000000,STATE,\"MODE\",\"RUN\",\"\"\n"
                            "0.000000,ERROR,\"E_HOT\",,\"\"\n"));
}

void TestCsvExport::eventsHeaderOnlyWithoutEvents()
{
    record("0.000000 A=1 B=2\n0.100000 A=3\n");
    QCOMPARE(exportEvents(&m_defs), EventsCsvExporter::header());
}

namespace {
const QByteArray SignalRecording =
    "0.000000 A=1\n"
    "0.250000 B=2\n"
    "0.600000 ST_X=Y\n"
    "0.800000 C=7\n"
    "1.000000 A=0.1234567890123456 C=8\n";
} // namespace

// One row per recorded time that sets a chosen signal; columns in the
// chosen order; empty before a signal's first value.
void TestCsvExport::signalsRecordedTimes()
{
    record(SignalRecording);
    QCOMPARE(exportSignals({{QStringLiteral("B"), QStringLiteral("A")}, 0.0, false}),
             QStringLiteral("time,B,A\n"
                            "0.000000,,1\n"
                            "0.250000,2,1\n"
                            "1.000000,2,0.123456789012\n"));
}

// Each instant holds the latest value at or before it: B set exactly at
// 0.25 is in the 0.25 row.
void TestCsvExport::signalsResampled()
{
    record(SignalRecording);
    QCOMPARE(exportSignals({{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}, 4.0, false}),
             QStringLiteral("time,A,B,C\n"
                            "0.000000,1,,\n"
                            "0.250000,1,2,\n"
                            "0.500000,1,2,\n"
                            "0.750000,1,2,\n"
                            "1.000000,0.123456789012,2,8\n"));
}

// duration * rate lands just below a whole number in floating point
// (0.29 * 100 = 28.999999999999996); the last instant must still be there.
void TestCsvExport::signalsLastInstantIsTheDuration_data()
{
    QTest::addColumn<QByteArray>("lastTime");
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("rows");

    QTest::newRow("0.29 s at 100 Hz") << QByteArray("0.290000") << 100.0 << 30;
    QTest::newRow("1 s at 3 Hz") << QByteArray("1.000000") << 3.0 << 4;
    QTest::newRow("0.7 s at 10 Hz") << QByteArray("0.700000") << 10.0 << 8;
    QTest::newRow("between instants") << QByteArray("0.749999") << 4.0 << 3;
}

void TestCsvExport::signalsLastInstantIsTheDuration()
{
    QFETCH(QByteArray, lastTime);
    QFETCH(double, rate);
    QFETCH(int, rows);
    record("0.000000 A=1\n" + lastTime + " A=2\n");
    const Rows csv = readCsv(exportSignals({{QStringLiteral("A")}, rate, false}));
    QCOMPARE(csv.size(), rows + 1);
    const QStringList last = csv.constLast();
    const bool atDuration = last.at(0) == QString::fromLatin1(lastTime);
    QCOMPARE(last.at(1), atDuration ? QStringLiteral("2") : QStringLiteral("1"));
    QCOMPARE(atDuration, lastTime != "0.749999");
}

void TestCsvExport::signalsMapped()
{
    record("0.000000 A=1 B=3\n");
    const QStringList names{QStringLiteral("A"), QStringLiteral("B")};
    QCOMPARE(exportSignals({names, 0.0, true}, &m_defs), QStringLiteral("time,A,B\n0.000000,10.5,3\n"));
    QCOMPARE(exportSignals({names, 0.0, false}, &m_defs), QStringLiteral("time,A,B\n0.000000,1,3\n"));
    QCOMPARE(exportSignals({names, 0.0, true}, nullptr), QStringLiteral("time,A,B\n0.000000,1,3\n"));
}

void TestCsvExport::signalsHeaderQuoting()
{
    QCOMPARE(SignalsCsvExporter::header({QStringLiteral("plain"), QStringLiteral("a,b"),
                                         QStringLiteral("q\"x"), QStringLiteral("l\nf")}),
             QStringLiteral("time,plain,\"a,b\",\"q\"\"x\",\"l\nf\"\n"));
}

void TestCsvExport::signalsRejectsBadOptions_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<double>("rate");

    QTest::newRow("no signals") << QStringList() << 0.0;
    QTest::newRow("negative rate") << QStringList{"A"} << -1.0;
    QTest::newRow("not a number") << QStringList{"A"} << qQNaN();
    QTest::newRow("absurd rate") << QStringList{"A"} << 1e300;
}

void TestCsvExport::signalsRejectsBadOptions()
{
    QFETCH(QStringList, names);
    QFETCH(double, rate);
    record(SignalRecording);
    const QString path = m_dir.filePath(QStringLiteral("bad.csv"));
    QString error;
    QVERIFY(!SignalsCsvExporter::exportTo(path, m_recording, nullptr, {names, rate, false}, {}, &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!QFile::exists(path));
}

namespace {

// Runs one of the two exporters; "kind" picks which.
bool runExport(const QString &kind, const QString &path, const Recording &recording,
               const Recording::Progress &progress, QString *error)
{
    if (kind == QLatin1String("events"))
        return EventsCsvExporter::exportTo(path, recording, nullptr, progress, error);
    return SignalsCsvExporter::exportTo(path, recording, nullptr, {{QStringLiteral("A")}, 0.0, false},
                                        progress, error);
}

QStringList entriesOf(const QString &dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

void TestCsvExport::unwritableTargetLeavesNoFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("folder"); // how the target folder is made unwritable

    for (const char *kind : {"events", "signals"}) {
        QTest::addRow("%s, missing folder", kind) << kind << "missing";
        QTest::addRow("%s, folder is a file", kind) << kind << "file";
        QTest::addRow("%s, read-only folder", kind) << kind << "read-only";
    }
}

void TestCsvExport::unwritableTargetLeavesNoFile()
{
    QFETCH(QString, kind);
    QFETCH(QString, folder);
    record("0.000000 A=1 ST_M=X\n");
    const QString target = m_dir.filePath(QStringLiteral("target"));
    if (folder == QLatin1String("file")) {
        QVERIFY(writeFile(target, "not a folder"));
    } else if (folder == QLatin1String("read-only")) {
        if (::geteuid() == 0)
            QSKIP("root writes into read-only folders");
        QVERIFY(QDir().mkpath(target));
        QVERIFY(QFile::setPermissions(target, QFile::ReadOwner | QFile::ExeOwner));
    }
    const QString path = target % QLatin1String("/out.csv");
    QString error;
    QVERIFY(!runExport(kind, path, m_recording, {}, &error));
    QCOMPARE(error, QStringLiteral("Could not open file for writing."));
    QVERIFY(!QFile::exists(path));
    if (folder == QLatin1String("read-only"))
        QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void TestCsvExport::cancelKeepsExistingFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("frames");
    QTest::addColumn<bool>("halfWay");

    // Small exports report once, at the end; large ones every few thousand frames.
    QTest::newRow("events, cancelled at the end") << "events" << 3 << false;
    QTest::newRow("signals, cancelled at the end") << "signals" << 3 << false;
    QTest::newRow("events, cancelled half-way") << "events" << 20000 << true;
    QTest::newRow("signals, cancelled half-way") << "signals" << 20000 << true;
}

void TestCsvExport::cancelKeepsExistingFile()
{
    QFETCH(QString, kind);
    QFETCH(int, frames);
    QFETCH(bool, halfWay);
    QByteArray text;
    for (int i = 0; i < frames; ++i)
        text += QByteArray::number(i * 0.001, 'f', 6) + " A=" + QByteArray::number(i) + " ST_M=X\n";
    record(text);

    QTemporaryDir outDir;
    const QString path = outDir.filePath(QStringLiteral("out.csv"));
    QVERIFY(writeFile(path, "precious"));
    qint64 done = -1;
    qint64 total = -1;
    const auto cancel = [&](qint64 d, qint64 t) {
        done = d;
        total = t;
        return false;
    };
    QString error;
    QVERIFY(!runExport(kind, path, m_recording, cancel, &error));
    QCOMPARE(error, QStringLiteral("Export cancelled."));
    QCOMPARE(total, qint64(frames));
    QCOMPARE(done < total, halfWay);
    QCOMPARE(readAll(path), QByteArray("precious"));
    QCOMPARE(entriesOf(outDir.path()), QStringList{QStringLiteral("out.csv")});
}

void TestCsvExport::finishedExportReplacesExistingFile()
{
    record("0.000000 A=1\n");
    QTemporaryDir outDir;
    const QString path = outDir.filePath(QStringLiteral("out.csv"));
    QVERIFY(writeFile(path, "old content that is longer than the new one\n"));
    QString error;
    QVERIFY2(runExport(QStringLiteral("signals"), path, m_recording, {}, &error), qPrintable(error));
    QCOMPARE(readAll(path), QByteArray("time,A\n0.000000,1\n"));
    QCOMPARE(entriesOf(outDir.path()), QStringList{QStringLiteral("out.csv")});
}

// What a spreadsheet or a script reads must be what we meant to write.
void TestCsvExport::pythonReadsTheSameCells()
{
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty() || QProcess::execute(python, {QStringLiteral("-c"), QStringLiteral("import csv")}) != 0)
        QSKIP("python3 with its csv module is not available");

    record("0.000000 A=1 ST_MODE=RUN ERR=E_HOT\n"
           "0.500000 RAWcomma, \"quoted\" text\n"
           "1.000000 B=-2.5e-07\n");
    const QString events = m_dir.filePath(QStringLiteral("events.csv"));
    const QString signalsCsv = m_dir.filePath(QStringLiteral("signals.csv"));
    QVERIFY(EventsCsvExporter::exportTo(events, m_recording, &m_defs));
    QVERIFY(SignalsCsvExporter::exportTo(signalsCsv, m_recording, &m_defs,
                                         {{QStringLiteral("A"), QStringLiteral("B")}, 2.0, true}));

    const QString script = QStringLiteral(
        "import csv, sys\n"
        "for path in sys.argv[1:]:\n"
        "    with open(path, newline='', encoding='utf-8') as f:\n"
        "        for row in csv.reader(f):\n"
        "            print('\\x1f'.join(row))\n");
    QProcess process;
    process.start(python, {QStringLiteral("-c"), script, events, signalsCsv});
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitCode(), 0);

    Rows expected = readCsv(QString::fromUtf8(readAll(events))) + readCsv(QString::fromUtf8(readAll(signalsCsv)));
    QStringList pythonRows = QString::fromUtf8(process.readAllStandardOutput()).split(u'\n');
    QCOMPARE(pythonRows.takeLast(), QString());
    QCOMPARE(pythonRows.size(), expected.size());
    for (int i = 0; i < expected.size(); ++i)
        QCOMPARE(pythonRows.at(i).split(QChar(0x1f)), expected.at(i));
    QCOMPARE(expected.constLast(), (QStringList{"1.000000", "10.5", "-2.5e-07"}));
}

QTEST_GUILESS_MAIN(TestCsvExport)
#include "tst_csvexport.moc"
