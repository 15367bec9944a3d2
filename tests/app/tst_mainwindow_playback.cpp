#include "WindowFixture.h"

#include "AnalogGaugeWidget.h"
#include "DiskFull.h"
#include "ErrorConsoleWidget.h"
#include "EventsCsvExporter.h"
#include "MainToolBars.h"
#include "MessagesConsoleWidget.h"
#include "PtyPair.h"
#include "RecordingWriter.h"
#include "SignalDefinitions.h"
#include "SignalPlaybackEngine.h"
#include "SignalsCsvExporter.h"
#include "StateIndicatorWidget.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSlider>
#include <QStatusBar>
#include <QToolButton>

namespace {

const QByteArray kRecording = QByteArrayLiteral("0.000000 RPM=100 TEMP=20\n"
                                                "0.000000 ST_MODE=RUN\n"
                                                "0.500000 ERR=E_HOT\n"
                                                "1.000000 RAWfirst message\n"
                                                "1.000000 RPM=200\n"
                                                "2.000000 ERR=E_HOT\n"
                                                "2.000000 RAWsecond message\n"
                                                "3.000000 RPM=300\n"
                                                "3.000000 ST_MODE=STOP\n");

// Connects the window to the pseudo-terminal and starts recording.
bool startRecording(WindowFixture &f, PtyPair &pty)
{
    if (!f.window->connectPort(pty.slavePath(), 115200))
        return false;
    f.window->recordButton();
    return f.window->mode() == Ombrix::Record;
}

// A window with a gauge on RPM, a state pill on MODE and both consoles,
// whose engine runs on a clock the test advances.
struct PlaybackFixture : WindowFixture
{
    PlaybackFixture()
    {
        gauge = widgetOf<AnalogGaugeWidget>(add(QStringLiteral("AnalogGauge"), {QStringLiteral("RPM")}));
        gauge->setRange(0, 1000);
        indicator = widgetOf<StateIndicatorWidget>(add(QStringLiteral("StateIndicator")));
        indicator->setGroupId(QStringLiteral("MODE"));
        errors = widgetOf<ErrorConsoleWidget>(add(QStringLiteral("ErrorConsole")));
        messages = widgetOf<MessagesConsoleWidget>(add(QStringLiteral("MessagesConsole")));
        window->engine()->setClockSource([this] { return now; });
        recording = project + QStringLiteral("/recordings/bench.rec");
        writeFile(recording, kRecording);
    }

    // Selects the recording, presses Play and lets ms of wall-clock time pass.
    void play(int ms)
    {
        window->setPlaybackFile(recording);
        window->playButton();
        advance(ms);
    }

    // Runs the engine's ticks for ms of wall-clock time.
    void advance(int ms)
    {
        for (int step = 0; step < ms; step += 50) {
            now += 50;
            if (window->engine()->isPlaying())
                window->engine()->tick();
        }
    }

    // The mode, the gauge's value and the number of lines on each console, in one line.
    QString state() const
    {
        const char *const modes[] = {"Design", "Record", "Play", "Pause", "Idle"};
        return QLatin1String(modes[window->mode()]) + QStringLiteral(" gauge=%1 errors=%2 messages=%3")
            .arg(gauge->value()).arg(errors->lines().size()).arg(messages->lines().size());
    }

    qint64 now = 1000;
    QString recording;
    AnalogGaugeWidget *gauge = nullptr;
    StateIndicatorWidget *indicator = nullptr;
    ErrorConsoleWidget *errors = nullptr;
    MessagesConsoleWidget *messages = nullptr;
};

} // namespace

class tst_MainWindowPlayback : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void recordingFromDeviceWritesEveryEventForm()
    {
        PtyPair pty;
        WindowFixture f;
        QVERIFY(startRecording(f, pty));
        const QString path = f.window->recordingWriter()->filePath();
        QCOMPARE(QFileInfo(path).absolutePath(), f.project + QStringLiteral("/recordings"));
        QCOMPARE(f.window->statusBar()->currentMessage(), QStringLiteral("Recording → %1").arg(path));

        QVERIFY(pty.write("10.0 RPM=100 TEMP=20\n10.5 ST_MODE=RUN ERR=E_HOT\n11.0 hello world\n"));
        QVERIFY(pty.write("12.25 RPM=1.5 A=0.333333333333333\n"));
        QTRY_COMPARE(f.window->latestValues().value(QStringLiteral("RPM")), 1.5);

        f.window->stopButton();
        QCOMPARE(f.window->mode(), Ombrix::Idle);
        QCOMPARE(f.window->statusBar()->currentMessage(), QStringLiteral("Recording stopped."));
        QCOMPARE(readFile(path), QByteArray("0.000000 RPM=100 TEMP=20\n"
                                            "0.500000 ST_MODE=RUN\n"
                                            "0.500000 ERR=E_HOT\n"
                                            "1.000000 RAWhello world\n"
                                            "2.250000 A=0.333333333333 RPM=1.5\n"));
        QCOMPARE(readFile(Recording::companionPathFor(path)), WindowFixture::definitions());

        // The new recording becomes the playback file, loaded and rewound.
        QCOMPARE(f.window->toolBars()->playbackFileLabel->text(), QFileInfo(path).fileName());
        QCOMPARE(f.window->engine()->frames().duration(), 2.25);
        QCOMPARE(f.window->engine()->currentTime(), 0.0);
    }

    // A full disk ends the recording: the user learns which file, why, and
    // what it keeps, and the file ends on its last whole line.
    void refusedWritesEndTheRecording()
    {
        PtyPair pty;
        WindowFixture f;
        QVERIFY(startRecording(f, pty));
        const QString path = f.window->recordingWriter()->filePath();
        QVERIFY(pty.write("0.5 RPM=1\n"));
        QTRY_COMPARE(f.window->recordingWriter()->linesWritten(), 1);
        f.window->recordingWriter()->flush();
        {
            const DiskFull full;
            QVERIFY(pty.write("1.0 RPM=2\n"));
            QTRY_COMPARE(f.prompts->warnings.size(), 1);
        }
        QCOMPARE(f.window->mode(), Ombrix::Idle);
        const ScriptedPrompts::Shown shown = f.prompts->warnings.at(0);
        QVERIFY2(shown.text.contains(QFileInfo(path).fileName()) && shown.text.contains(QLatin1String("It keeps the 1 line")),
                 qPrintable(shown.text));
        QCOMPARE(shown.details, path);
        QCOMPARE(readFile(path), QByteArray("0.000000 RPM=1\n"));
        QCOMPARE(f.window->playbackFile(), path);
    }

    void playbackRoutesEventsAtTheirTimesAndPauses()
    {
        PlaybackFixture f;
        f.window->toolBars()->speedBox->setValue(2.0);
        QCOMPARE(f.window->engine()->playbackRate(), 2.0);
        f.window->toolBars()->speedBox->setValue(1.0);
        f.play(0);
        QCOMPARE(f.state(), QStringLiteral("Play gauge=60 errors=0 messages=0")); // the first frame at once: RPM 100 mapped

        f.advance(1200);
        QCOMPARE(f.indicator->stateLabel(), QStringLiteral("Running"));
        QCOMPARE(f.gauge->value(), 110.0);
        QCOMPARE(f.errors->lines(), QStringList{QStringLiteral("[0.500] E_HOT : Overheated")});
        QCOMPARE(f.messages->lines(), QStringList{QStringLiteral("[1.000] first message")});

        f.window->stopButton();
        f.advance(2000);
        QCOMPARE(f.state(), QStringLiteral("Pause gauge=110 errors=1 messages=1"));

        // Play resumes where the pause left it.
        f.window->playButton();
        f.advance(1000);
        QCOMPARE(f.state(), QStringLiteral("Play gauge=110 errors=2 messages=2"));
        QVERIFY(f.window->engine()->currentTime() > 2.0);

        // Another recording chosen while paused plays from its own start.
        f.window->stopButton();
        const QString other = f.project + QStringLiteral("/recordings/other.rec");
        QVERIFY(writeFile(other, "0.000000 RPM=400\n1.000000 RPM=500\n"));
        f.window->setPlaybackFile(other);
        f.window->playButton();
        QCOMPARE(f.gauge->value(), 210.0);
        f.advance(500);
        QCOMPARE(f.window->mode(), Ombrix::Play);
    }

    // While playback owns the widgets live values are muted, but live states,
    // errors and messages still reach the dashboard.
    void liveEventsReachTheDashboardWhileValuesAreMuted_data()
    {
        QTest::addColumn<bool>("paused");
        QTest::newRow("Play") << false;
        QTest::newRow("Pause") << true;
    }

    void liveEventsReachTheDashboardWhileValuesAreMuted()
    {
        QFETCH(bool, paused);
        PtyPair pty;
        PlaybackFixture f;
        QVERIFY(f.window->connectPort(pty.slavePath(), 115200));
        f.play(0);
        if (paused)
            f.window->stopButton();
        const QString mode = paused ? QStringLiteral("Pause") : QStringLiteral("Play");
        QCOMPARE(f.state(), mode + QStringLiteral(" gauge=60 errors=0 messages=0"));

        // The message is the last thing a line hands on.
        QVERIFY(pty.write("RPM=900 ST_MODE=STOP ERR=E_HOT live words\n"));
        QTRY_COMPARE(f.messages->lines().size(), 1);
        QCOMPARE(f.state(), mode + QStringLiteral(" gauge=60 errors=1 messages=1"));
        QCOMPARE(f.indicator->stateLabel(), QStringLiteral("Stopped"));
        QVERIFY(f.errors->lines().at(0).endsWith(QLatin1String("E_HOT : Overheated")));
        QVERIFY(f.messages->lines().at(0).endsWith(QLatin1String("live words")));
        QVERIFY(!f.window->latestValues().contains(QStringLiteral("RPM")));
    }

    void endOfPlaybackReturnsToIdleAndPlayRewinds()
    {
        PlaybackFixture f;
        f.play(2900);
        f.window->stopButton();
        // A key on the slider seeks at once: everything before the last frame is in force.
        QTest::keyClick(f.window->toolBars()->positionSlider, Qt::Key_End);
        QCOMPARE(f.window->toolBars()->positionSlider->value(), 1000);
        QCOMPARE(f.window->toolBars()->timeLabel->text(), QStringLiteral("3.000"));
        QCOMPARE(f.messages->lines().size(), 2);

        // At the slider's end Play starts over from the beginning.
        f.window->playButton();
        QCOMPARE(f.window->engine()->currentTime(), 0.0);
        QCOMPARE(f.gauge->value(), 60.0);

        f.advance(3200);
        QCOMPARE(f.window->mode(), Ombrix::Idle);
        QVERIFY(f.window->toolBars()->playAction->isEnabled());
    }

    void recordingDefinitionsTakePrecedenceUntilDesign()
    {
        PlaybackFixture f;
        // The recording was made with RPM mapped as raw * 2.
        QVERIFY(writeFile(Recording::companionPathFor(f.recording),
                          "DASHBOARD_SIGNAL(RPM, \"Speed\", float)\nDASHBOARD_MAPPING(RPM, 0, 2)\n"));
        f.window->toolBars()->useRecordingDefinitionsBox->setChecked(true);
        f.play(0);
        QCOMPARE(f.gauge->value(), 200.0);

        f.window->designButton();
        QCOMPARE(f.window->definitionsInForce(), f.window->definitions());
        f.window->designButton();

        f.window->toolBars()->useRecordingDefinitionsBox->setChecked(false);
        f.window->playButton();
        f.window->engine()->seek(0.0);
        QCOMPARE(f.gauge->value(), 60.0);
    }

    void exportsThroughWindowEqualExporters()
    {
        PlaybackFixture f;
        // Without data both exports only inform.
        f.window->exportEventsButton();
        f.window->exportButton();
        QCOMPARE(f.prompts->informations.size(), 2);
        QCOMPARE(f.prompts->informations.at(0).text, QStringLiteral("No playback data loaded."));
        QVERIFY(f.prompts->captions.isEmpty());

        f.window->setPlaybackFile(f.recording);
        const QString exports = f.project + QStringLiteral("/exports/");
        auto path = [&](const char *name) -> QString { return exports + QLatin1String(name); };
        auto read = [&](const char *name) { return readFile(path(name)); };
        QVERIFY(f.window->exportEventsTo(path("events.csv")));
        QCOMPARE(f.window->statusBar()->currentMessage(), QStringLiteral("Events CSV exported → events.csv"));
        QVERIFY(EventsCsvExporter::exportTo(path("reference.csv"), f.window->engine()->frames(), f.window->definitions()));
        QCOMPARE(read("events.csv"), read("reference.csv"));
        QVERIFY(read("events.csv").contains("\"MODE\",\"RUN\",\"Running\""));

        // The dialog route ends in the same twin.
        f.prompts->fileAnswers = {path("dialog.csv")};
        f.window->exportEventsButton();
        QCOMPARE(read("dialog.csv"), read("events.csv"));

        SignalsExportOptions options;
        options.signalNames = {QStringLiteral("RPM")};
        options.applyMappings = true;
        QVERIFY(f.window->exportSignalsTo(path("signals.csv"), options));
        QVERIFY(SignalsCsvExporter::exportTo(path("signals-ref.csv"), f.window->engine()->frames(),
                                             f.window->definitions(), options));
        QCOMPARE(read("signals.csv"), read("signals-ref.csv"));

        const QString unwritable = f.project + QStringLiteral("/no/such/folder/events.csv");
        QVERIFY(!f.window->exportEventsTo(unwritable));
        QCOMPARE(f.prompts->warningTexts(), QStringList{QStringLiteral("Export Events CSV: Could not open file for writing.")});
        QVERIFY(f.prompts->warnings.at(0).details.contains(unwritable + QLatin1String(": No such file or directory")));
    }

};

QTEST_MAIN(tst_MainWindowPlayback)
#include "tst_mainwindow_playback.moc"
