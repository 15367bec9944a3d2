#include "CliRun.h"
#include "TestFiles.h"

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

const QByteArray Definitions = "DASHBOARD_SIGNAL(A, \"Alpha\", float)\n"
                               "DASHBOARD_STATE(MODE, IDLE, \"Idle\")\n"
                               "DASHBOARD_STATE(MODE, RUN, \"Running\")\n";

// A gauge of A (0..100) at the origin, 200 x 200, and the pill of MODE beside it.
const QByteArray Layout = R"({"items": [
  {"type": "AnalogGauge", "signals": ["A"], "x": 0, "y": 0, "width": 200, "height": 200,
   "config": {"min": 0, "max": 100}, "z": 1},
  {"type": "StateIndicator", "signals": [], "x": 210, "y": 0, "width": 190, "height": 80,
   "config": {"groupId": "MODE", "corner": 10}, "z": 2}
]})";

const QByteArray RecordingText = "0.000000 A=10\n"
                                 "0.000000 ST_MODE=IDLE\n"
                                 "2.000000 A=90\n"
                                 "2.000000 ST_MODE=RUN\n"
                                 "4.000000 A=50\n";

// Whether the gauge's red needle passes 50 pixels out from the centre at
// the angle that shows `value`.
bool needleShows(const QImage &image, double value)
{
    const double radians = (value * 270.0 / 100.0 - 135.0) * M_PI / 180.0;
    const QRgb pixel = image.pixel(int(std::lround(100 + 50 * std::sin(radians))),
                                   int(std::lround(100 - 50 * std::cos(radians))));
    return qRed(pixel) > 200 && qGreen(pixel) < 80 && qBlue(pixel) < 80;
}

} // namespace

class tst_Render : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(CliRun::program()), "OMBRIX_CLI must name the ombrix-cli binary");
        m_project = m_dir.filePath(QStringLiteral("bench"));
        QVERIFY(writeFile(m_project + QStringLiteral("/dashboard_signals.def"), Definitions));
        m_layout = m_project + QStringLiteral("/layouts/gauge.json");
        QVERIFY(writeFile(m_layout, Layout));
        m_recording = m_project + QStringLiteral("/recordings/run.rec");
        QVERIFY(writeFile(m_recording, RecordingText));
    }

    void picturesShowTheRecordingAtTheirMoment()
    {
        const QImage early = render(1.0);
        const QImage late = render(3.0);
        QCOMPARE(early.size(), QSize(410, 210)); // the items and a margin
        QVERIFY(needleShows(early, 10.0));
        QVERIFY(!needleShows(early, 90.0));
        QVERIFY(needleShows(late, 90.0));
        QVERIFY(!needleShows(late, 10.0));
        // The pill changed with the state in force.
        QVERIFY(early.copy(220, 40, 170, 30) != late.copy(220, 40, 170, 30));
    }

    // A script rendering pictures changes nothing the window offers next time.
    void renderingLeavesAFreshHomeUntouched()
    {
        QTemporaryDir home;
        QVERIFY(home.isValid());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home.path());
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
            environment.insert(QLatin1String(name), home.path() + QLatin1Char('/') + QLatin1String(name));
        const QString out = m_dir.filePath(QStringLiteral("fresh.png"));
        const CliRun run = CliRun::run({"render", m_layout, "--project", m_project, "--recording", m_recording,
                                        "--at", "1", "-o", out},
                                       environment);
        QCOMPARE(run.exitCode, 0);
        QVERIFY(QFile::exists(out));
        QCOMPARE(QDir(home.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
    }

    void sizeIsTaken()
    {
        const QString out = m_dir.filePath(QStringLiteral("sized.png"));
        const CliRun run = CliRun::run({"render", m_layout, "--project", m_project, "--size", "640x360", "-o", out});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(QImage(out).size(), QSize(640, 360));
    }

    void badInputSaysWhatIsWrong_data()
    {
        QTest::addColumn<QStringList>("extra");
        QTest::addColumn<QString>("layout");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        QTest::newRow("layout missing") << QStringList() << "missing.json" << 1 << "layout not found";
        QTest::newRow("layout not an object") << QStringList() << "array.json" << 1 << "Invalid layout format.";
        QTest::newRow("time past the end") << QStringList{"--recording", "REC", "--at", "4.5"} << "" << 1
                                           << "4.5 s is outside the recording, which runs from 0 to 4.000 s";
        QTest::newRow("recording missing") << QStringList{"--recording", "nothing.rec", "--at", "1"} << "" << 1
                                           << "recording not found";
        QTest::newRow("time without recording") << QStringList{"--at", "1"} << "" << 2 << "--recording and --at go together";
        QTest::newRow("negative time") << QStringList{"--recording", "REC", "--at", "-1"} << "" << 2 << "--at needs";
        QTest::newRow("bad size") << QStringList{"--size", "12x9000000"} << "" << 2 << "--size needs";
    }

    void badInputSaysWhatIsWrong()
    {
        QFETCH(QStringList, extra);
        QFETCH(QString, layout);
        QFETCH(int, exitCode);
        QFETCH(QString, message);
        QVERIFY(writeFile(m_dir.filePath(QStringLiteral("array.json")), "[1, 2]"));
        extra.replaceInStrings(QStringLiteral("REC"), m_recording);
        const QString layoutPath = layout.isEmpty() ? m_layout : m_dir.filePath(layout);
        const QString out = m_dir.filePath(QStringLiteral("bad.png"));
        const CliRun run = CliRun::run(QStringList{"render", layoutPath, "--project", m_project, "-o", out} + extra);
        QCOMPARE(run.exitCode, exitCode);
        QVERIFY2(run.err.contains(message.toUtf8()), run.err.constData());
        QVERIFY(!QFile::exists(out));
    }

private:
    QImage render(double atSeconds)
    {
        const QString out = m_dir.filePath(QStringLiteral("at%1.png").arg(atSeconds));
        const CliRun run = CliRun::run({"render", m_layout, "--project", m_project, "--recording", m_recording, "--at",
                                        QString::number(atSeconds), "-o", out});
        [&] { QCOMPARE(run.exitCode, 0); }();
        return QImage(out).convertToFormat(QImage::Format_ARGB32);
    }

    QTemporaryDir m_dir;
    QString m_project;
    QString m_layout;
    QString m_recording;
};

QTEST_MAIN(tst_Render)
#include "tst_render.moc"
