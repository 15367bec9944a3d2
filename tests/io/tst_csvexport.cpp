#include "EventsCsvExporter.h"
#include "Recording.h"
#include "SignalDefinitions.h"
#include "SignalsCsvExporter.h"
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

Q_DECLARE_METATYPE(SignalsExportOptions)

class tst_CsvExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        const QString defPath = m_dir->filePath(QStringLiteral("dashboard_signals.def"));
        QVERIFY(writeFile(defPath, "DASHBOARD_MAPPING(A, 10, 0.5)\n"
                                   "DASHBOARD_STATE_GROUP(MODE, \"Mode\")\n"
                                   "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                                   "DASHBOARD_STATE(PUMP, OFF, \"Pump off\")\n"
                                   "DASHBOARD_ERROR(E_HOT, 3, \"Over, temperature\")\n"));
        QVERIFY(m_defs.load(defPath));
    }
    void eventsCellByCell_data();
    void eventsCellByCell()
    {
        QFETCH(QByteArray, recording);
        QFETCH(bool, catalogue);
        QFETCH(QString, csv);
        record(recording);
        const QString path = m_dir->filePath(QStringLiteral("events.csv"));
        QString error;
        QVERIFY2(EventsCsvExporter::exportTo(path, m_recording, catalogue ? &m_defs : nullptr, {}, &error),
                 qPrintable(error));
        QCOMPARE(QString::fromUtf8(readFile(path)), csv);
    }

    void signalsCellByCell_data();
    void signalsCellByCell()
    {
        QFETCH(SignalsExportOptions, options);
        QFETCH(QString, csv);
        record("0.000000 A=1\n0.250000 B=2\n0.600000 ST_X=Y\n0.800000 C=7\n1.000000 A=0.1234567890123456 C=8\n");
        const QString path = m_dir->filePath(QStringLiteral("signals.csv"));
        const QByteArray old(4096, 'x');
        QVERIFY(writeFile(path, old)); // a finished export replaces it whole
        QString error;
        QCOMPARE(SignalsCsvExporter::exportTo(path, m_recording, &m_defs, options, {}, &error), !csv.isEmpty());
        QCOMPARE(error.isEmpty(), !csv.isEmpty());
        QCOMPARE(readFile(path), csv.isEmpty() ? old : csv.toUtf8());
    }

    // duration * rate lands just below a whole number in floating point
    // (0.29 * 100 = 28.999999999999996); the last instant must still be there.
    void signalsLastInstantIsTheDuration_data()
    {
        QTest::addColumn<QByteArray>("lastTime");
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("rows");
        QTest::addColumn<QString>("lastRow");

        QTest::newRow("0.29 s at 100 Hz") << QByteArray("0.290000") << 100.0 << 30 << QStringLiteral("0.290000,2");
        QTest::newRow("1 s at 3 Hz") << QByteArray("1.000000") << 3.0 << 4 << QStringLiteral("1.000000,2");
        QTest::newRow("0.7 s at 10 Hz") << QByteArray("0.700000") << 10.0 << 8 << QStringLiteral("0.700000,2");
        QTest::newRow("between instants") << QByteArray("0.749999") << 4.0 << 3 << QStringLiteral("0.500000,1");
    }

    void signalsLastInstantIsTheDuration()
    {
        QFETCH(QByteArray, lastTime);
        QFETCH(double, rate);
        QFETCH(int, rows);
        QFETCH(QString, lastRow);
        record("0.000000 A=1\n" + lastTime + " A=2\n");
        const QString path = m_dir->filePath(QStringLiteral("signals.csv"));
        QVERIFY(SignalsCsvExporter::exportTo(path, m_recording, nullptr, {{QStringLiteral("A")}, rate, false}));
        const QStringList csv = QString::fromUtf8(readFile(path)).split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(csv.size(), rows + 1);
        QCOMPARE(csv.constLast(), lastRow);
    }

    // Exports are atomic: a target that cannot be written, or an export
    // cancelled at the end or half-way, leaves no file and no temporary behind,
    // and an existing file exactly as it was.
    void failedExportLeavesTargetAlone_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("failure");
        for (const char *kind : {"events", "signals"}) {
            for (const char *failure : {"missing folder", "folder is a file", "read-only folder", "cancelled at the end",
                                        "cancelled half-way"})
                QTest::addRow("%s, %s", kind, failure) << kind << failure;
        }
    }

    void failedExportLeavesTargetAlone();

private:
    void record(const QByteArray &text)
    {
        const QString path = m_dir->filePath(QStringLiteral("test.rec"));
        QVERIFY(writeFile(path, text));
        QVERIFY2(m_recording.load(path), qPrintable(m_recording.errorString()));
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    Recording m_recording;
    SignalDefinitions m_defs;
};

void tst_CsvExport::eventsCellByCell_data()
{
    QTest::addColumn<QByteArray>("recording");
    QTest::addColumn<bool>("catalogue");
    QTest::addColumn<QString>("csv");

    // Errors come before states in the file, yet states are written first
    // within a frame; a quote in a message is doubled; undeclared states and
    // errors keep their rows with an empty display.
    QTest::newRow("every kind of row")
        << QByteArray("0.000000 A=1\n0.500000 ERR=E_HOT\n0.500000 ST_MODE=RUN\n0.500000 ST_PUMP=OFF\n"
                      "0.500000 RAWsay \"hi\", please\n1.250000 ERR=E_UNKNOWN ST_MODE=HALT\n")
        << true
        << QStringLiteral("time,type,key,value,display\n"
                          "0.500000,STATE,\"MODE\",\"RUN\",\"Running\"\n"
                          "0.500000,STATE,\"PUMP\",\"OFF\",\"Pump off\"\n"
                          "0.500000,ERROR,\"E_HOT\",,\"Over, temperature\"\n"
                          "0.500000,MESSAGE,,\"say \"\"hi\"\", please\",\n"
                          "1.250000,STATE,\"MODE\",\"HALT\",\"\"\n"
                          "1.250000,ERROR,\"E_UNKNOWN\",,\"\"\n");
    QTest::newRow("no catalogue, no display") << QByteArray("0.000000 ST_MODE=RUN ERR=E_HOT\n") << false
                                              << QStringLiteral("time,type,key,value,display\n"
                                                                "0.000000,STATE,\"MODE\",\"RUN\",\"\"\n"
                                                                "0.000000,ERROR,\"E_HOT\",,\"\"\n");
    QTest::newRow("no events, only the header") << QByteArray("0.000000 A=1 B=2\n0.100000 A=3\n") << true
                                                << QStringLiteral("time,type,key,value,display\n");
}

void tst_CsvExport::signalsCellByCell_data()
{
    QTest::addColumn<SignalsExportOptions>("options");
    QTest::addColumn<QString>("csv");

    // Recorded times: one row per time that sets a chosen signal, columns in
    // the chosen order, empty before a signal's first value.
    QTest::newRow("recorded times") << SignalsExportOptions{{"B", "A"}, 0.0, false}
                                    << QStringLiteral("time,B,A\n0.000000,,1\n0.250000,2,1\n1.000000,2,0.123456789012\n");
    // Each instant holds the latest value at or before it: B set exactly at
    // 0.25 is in the 0.25 row.
    QTest::newRow("resampled at 4 Hz") << SignalsExportOptions{{"A", "B", "C"}, 4.0, false}
                                       << QStringLiteral("time,A,B,C\n0.000000,1,,\n0.250000,1,2,\n0.500000,1,2,\n"
                                                         "0.750000,1,2,\n1.000000,0.123456789012,2,8\n");
    QTest::newRow("mapped") << SignalsExportOptions{{"A", "B"}, 0.0, true}
                            << QStringLiteral("time,A,B\n0.000000,10.5,\n0.250000,10.5,2\n1.000000,10.0617283945,2\n");
    QTest::newRow("a name chosen twice fills both columns") << SignalsExportOptions{{"A", "B", "A"}, 0.0, false}
                                                           << QStringLiteral("time,A,B,A\n0.000000,1,,1\n0.250000,1,2,1\n"
                                                                             "1.000000,0.123456789012,2,0.123456789012\n");
    QTest::newRow("names quoted where needed") << SignalsExportOptions{{"plain", "a,b", "q\"x", "l\nf"}, 0.0, false}
                                               << QStringLiteral("time,plain,\"a,b\",\"q\"\"x\",\"l\nf\"\n");
    // Rejected choices: no file is touched.
    QTest::newRow("no signals") << SignalsExportOptions{{}, 0.0, false} << QString();
    QTest::newRow("negative rate") << SignalsExportOptions{{"A"}, -1.0, false} << QString();
    QTest::newRow("rate not a number") << SignalsExportOptions{{"A"}, qQNaN(), false} << QString();
    QTest::newRow("absurd rate") << SignalsExportOptions{{"A"}, 1e300, false} << QString();
}

void tst_CsvExport::failedExportLeavesTargetAlone()
{
    QFETCH(QString, kind);
    QFETCH(QString, failure);
    const bool cancelled = failure.startsWith(u"cancelled");
    const int frames = failure.endsWith(u"half-way") ? 20000 : 3; // small exports report once, at the end
    QByteArray text;
    for (int i = 0; i < frames; ++i)
        text += QByteArray::number(i * 0.001, 'f', 6) + " A=" + QByteArray::number(i) + " ST_M=X\n";
    record(text);

    const QString folder = m_dir->filePath(QStringLiteral("out"));
    if (failure == u"folder is a file") {
        QVERIFY(writeFile(folder, "not a folder"));
    } else if (failure != u"missing folder") {
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(writeFile(folder + u"/out.csv", "precious"));
    }
    if (failure == u"read-only folder") {
        if (::geteuid() == 0)
            QSKIP("root writes into read-only folders");
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    }
    qint64 done = -1, total = -1;
    const auto cancel = [&](qint64 d, qint64 t) {
        done = d;
        total = t;
        return false;
    };
    QString error;
    const QString target = folder + u"/out.csv";
    const Recording::Progress progress = cancelled ? cancel : Recording::Progress();
    QVERIFY(kind == u"events"
                ? !EventsCsvExporter::exportTo(target, m_recording, nullptr, progress, &error)
                : !SignalsCsvExporter::exportTo(target, m_recording, nullptr, {{"A"}, 0, false}, progress, &error));
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (cancelled)
        QCOMPARE(error, QStringLiteral("Export cancelled."));
    else // the message, then the file and the system's reason
        QVERIFY2(error.startsWith(QLatin1String("Could not open file for writing. (") + target + u':'), qPrintable(error));
    if (cancelled) {
        QCOMPARE(total, qint64(frames));
        QCOMPARE(done < total, frames > 3);
    }
    const bool hadFile = failure != u"missing folder" && failure != u"folder is a file";
    QCOMPARE(readFile(target), hadFile ? QByteArray("precious") : QByteArray());
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), hadFile ? QStringList{"out.csv"} : QStringList());
}

QTEST_GUILESS_MAIN(tst_CsvExport)
#include "tst_csvexport.moc"
