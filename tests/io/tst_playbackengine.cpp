#include "SignalPlaybackEngine.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

using Values = QMap<QString, double>;

static QString text(const Values &values)
{
    QStringList parts;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        parts.append(it.key() + u'=' + QString::number(it.value()));
    return parts.join(u',');
}

// Drives the engine with a hand-moved clock (tick() after advancing it) and
// logs every signal as one line of text, in emission order.
class tst_PlaybackEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void rateScalesPlayTime_data()
    {
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("ticksBefore"); // 50 ms ticks that must not yet reach the frame
        QTest::addColumn<double>("frameTime");
        QTest::newRow("double speed reaches 10 s after 5 s") << 2.0 << 99 << 10.0;
        QTest::newRow("real time") << 1.0 << 39 << 2.0;
        QTest::newRow("hundredth steps 0.0005 s per tick") << 0.01 << 1 << 0.00075;
    }

    void rateScalesPlayTime()
    {
        QFETCH(double, rate);
        QFETCH(int, ticksBefore);
        QFETCH(double, frameTime);
        load("0 A=0\n" + QByteArray::number(frameTime, 'f', 6) + " A=1\n100 A=2\n");
        m_engine->setPlaybackRate(rate);
        m_engine->start();
        advance(50, ticksBefore);
        QCOMPARE(m_log.filter(QStringLiteral("values ")), QStringList{"values A=0"});
        QCOMPARE(m_playTime, ticksBefore * 0.05 * rate);
        advance(50);
        QCOMPARE(m_log.filter(QStringLiteral("values ")), QStringList({"values A=0", "values A=1"}));
    }

    // A new rate applies from the tick it is set; a gap of two seconds or more
    // between ticks (a stalled application) adds nothing.
    void rateChangeAndStalls()
    {
        load("0 A=0\n100 A=1\n");
        m_engine->start();
        advance(50, 20);
        m_engine->setPlaybackRate(4.0);
        advance(50, 20);
        QCOMPARE(m_playTime, 1.0 + 4.0);
        advance(2000);
        advance(5000);
        QCOMPARE(m_playTime, 5.0);
        advance(1999);
        QCOMPARE(m_playTime, 5.0 + 4 * 1.999);
    }

    void framesReachedInOneTickInOrder()
    {
        // The second value set at 0.01 is a frame of its own; the clock going
        // back to 0.015 is played in file order.
        load("0.01 A=1 ST_G=ON ERR=E1\n0.01 RAWfirst\n0.01 B=2 ERR=E2\n0.02 RAWsecond\n0.015 A=3 ST_G=OFF\n1 A=4\n");
        m_engine->start();
        m_log.clear();
        advance(50);
        QCOMPARE(m_log, QStringList({"values A=1", "at 0.01 A=1", "state 0.01 G=ON", "error 0.01 E1",
                                     "message 0.01 first", "values B=2", "at 0.01 B=2", "error 0.01 E2", "values ",
                                     "at 0.02 ", "message 0.02 second", "values A=3", "at 0.015 A=3",
                                     "state 0.015 G=OFF", "time 0.05"}));
        QCOMPARE(m_engine->index(), 4);
    }

    void sliderFollowsPlayTimeAndResetRewinds();
    void seekReannouncesWhatIsInForce_data();
    void seekReannouncesWhatIsInForce();
    void playFromASeekToTheEnd();
    void loadKeepsPositionAndFailedLoadKeepsRecording();

private:
    void load(const QByteArray &content, const QString &name = QStringLiteral("r.rec"))
    {
        QVERIFY(writeFile(m_dir->filePath(name), content));
        QVERIFY(m_engine->load(m_dir->filePath(name)));
    }

    void advance(qint64 ms, int ticks = 1)
    {
        for (int i = 0; i < ticks; ++i) {
            m_now += ms;
            m_engine->tick();
        }
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SignalPlaybackEngine> m_engine;
    qint64 m_now = 0;
    double m_playTime = -1; // the last playbackTimeAdvanced
    QStringList m_log;
};

void tst_PlaybackEngine::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_engine = std::make_unique<SignalPlaybackEngine>();
    m_now = 1000000;
    m_engine->setClockSource([this] { return m_now; });
    m_log.clear();
    SignalPlaybackEngine *e = m_engine.get();
    const auto log = [this](const QString &line) { m_log.append(line); };
    connect(e, &SignalPlaybackEngine::signalValuesUpdated, this, [=](const Values &v) { log(u"values " + text(v)); });
    connect(e, &SignalPlaybackEngine::signalValuesUpdatedAt, this,
            [=](double t, const Values &v) { log(QStringLiteral("at %1 ").arg(t) + text(v)); });
    connect(e, &SignalPlaybackEngine::playbackFinished, this, [=] { log(QStringLiteral("finished")); });
    connect(e, &SignalPlaybackEngine::stateEvent, this,
            [=](double t, const QString &g, const QString &s) { log(QStringLiteral("state %1 %2=%3").arg(t).arg(g, s)); });
    connect(e, &SignalPlaybackEngine::errorEvent, this,
            [=](double t, const QString &id) { log(QStringLiteral("error %1 %2").arg(t).arg(id)); });
    connect(e, &SignalPlaybackEngine::errorReset, this, [=] { log(QStringLiteral("errorReset")); });
    connect(e, &SignalPlaybackEngine::messageEvent, this,
            [=](double t, const QString &m) { log(QStringLiteral("message %1 %2").arg(t).arg(m)); });
    connect(e, &SignalPlaybackEngine::messageReset, this, [=] { log(QStringLiteral("messageReset")); });
    connect(e, &SignalPlaybackEngine::dataReset, this, [=] { log(QStringLiteral("dataReset")); });
    connect(e, &SignalPlaybackEngine::playbackTimeAdvanced, this, [=](double t) {
        m_playTime = t;
        log(QStringLiteral("time %1").arg(t));
    });
}

// Reset rewinds the slider and, while playing, the next tick replays from
// the start.
void tst_PlaybackEngine::sliderFollowsPlayTimeAndResetRewinds()
{
    load("0 A=0\n10 A=1\n");
    int slider = -1;
    connect(m_engine.get(), &SignalPlaybackEngine::sliderPositionChanged, this, [&](int position) { slider = position; });
    m_engine->setSliderSteps(1000);
    m_engine->start();
    advance(50, 100);
    QCOMPARE(slider, 500);
    m_engine->reset();
    QCOMPARE(slider, 0);
    QCOMPARE(m_engine->currentTime(), 0.0);
    m_log.clear();
    advance(50);
    QCOMPARE(m_log.filter(QStringLiteral("at ")), QStringList{"at 0 A=0"});
    advance(50, 200);
    QVERIFY(!m_engine->isPlaying());
    QCOMPARE(slider, 1000);
}

void tst_PlaybackEngine::seekReannouncesWhatIsInForce_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("knownGroups");
    QTest::addColumn<bool>("playing");
    QTest::addColumn<double>("position");
    QTest::addColumn<QStringList>("log");

    QByteArray ramp;
    for (int i = 0; i <= 20; ++i)
        ramp += QByteArray::number(i) + " A=" + QByteArray::number(i) + '\n';
    // The preview window is 5 s here: a stopped seek refills plots from 7.5 s on.
    QTest::newRow("stopped: preview history, then the values in force")
        << ramp << QStringList() << false << 12.5
        << QStringList{"dataReset", "at 8 A=8", "at 9 A=9", "at 10 A=10", "at 11 A=11", "at 12 A=12", "values A=12",
                       "errorReset", "messageReset"};
    const QByteArray events = "0 A=0 ERR=E0\n0 RAWm0\n1 A=1 ERR=E1\n1 RAWm1\n2 A=2 ERR=E2\n3 A=3\n";
    QTest::newRow("playing: no history, consoles exactly up to the position")
        << events << QStringList() << true << 2.5
        << QStringList{"values A=2", "errorReset", "error 0 E0", "error 1 E1", "error 2 E2", "messageReset",
                       "message 0 m0", "message 1 m1"};
    QTest::newRow("back to the start: frame 0's events only")
        << events << QStringList() << false << 0.0
        << QStringList{"dataReset", "values A=0", "errorReset", "error 0 E0", "messageReset", "message 0 m0"};
    QTest::newRow("before the first frame: frame 0 is in force")
        << QByteArray("1 A=1 ERR=E1\n2 A=2\n") << QStringList() << false << 0.5
        << QStringList{"dataReset", "values A=1", "errorReset", "error 1 E1", "messageReset"};
    // Known groups without a state yet are cleared first, in their order;
    // then the states in force follow in group order.
    const QStringList groups = {"C", "A", "B"};
    QTest::newRow("states in force")
        << QByteArray("0 ST_B=ON\n1 ST_B=OFF ST_C=X\n2 ST_A=LATE\n") << groups << false << 1.5
        << QStringList{"dataReset", "at 0 ", "at 1 ", "values ", "state 1 A=", "state 1 B=OFF", "state 1 C=X",
                       "errorReset", "messageReset"};
    QTest::newRow("empty recording clears the known groups")
        << QByteArray() << groups << false << 1.0
        << QStringList{"dataReset", "state 0 C=", "state 0 A=", "state 0 B=", "errorReset", "messageReset"};
}

void tst_PlaybackEngine::seekReannouncesWhatIsInForce()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, knownGroups);
    QFETCH(bool, playing);
    QFETCH(double, position);
    QFETCH(QStringList, log);
    load(content);
    m_engine->setPreviewWindow(5.0);
    m_engine->setKnownGroups(knownGroups);
    if (playing)
        m_engine->start();
    m_engine->seek(1.0); // from elsewhere
    m_log.clear();
    m_engine->seek(position);
    QCOMPARE(m_log, log);
    QCOMPARE(m_engine->currentTime(), position);
    QCOMPARE(m_engine->isPlaying(), playing);
}

// Start shows the frame about to play; a seek while playing carries the
// clock on from the new position; the last frame ends playback, and a start
// at the end finishes at the first tick.
void tst_PlaybackEngine::playFromASeekToTheEnd()
{
    load("0 A=0\n1 A=1\n2 A=2\n3 A=3\n");
    m_engine->seek(1.5);
    m_log.clear();
    m_engine->start();
    QCOMPARE(m_log, QStringList({"at 2 A=2", "time 1.5"}));
    m_engine->seek(2.5);
    advance(50, 9);
    m_log.clear();
    advance(50);
    QCOMPARE(m_log, QStringList({"values A=3", "at 3 A=3", "time 3", "finished"}));
    QVERIFY(!m_engine->isPlaying());
    m_log.clear();
    m_engine->start();
    advance(50);
    QCOMPARE(m_log, QStringList({"time 3", "finished"}));
}

// Play after Pause loads the file again and must resume, not restart; a
// failed load keeps what was loaded.
void tst_PlaybackEngine::loadKeepsPositionAndFailedLoadKeepsRecording()
{
    load("0 A=0\n1 A=1\n2 A=2\n3 A=3\n");
    m_engine->seek(1.5);
    load("0 A=0\n1 A=1\n2 A=2\n3 A=3\n");
    QCOMPARE(m_engine->index(), 2);
    QCOMPARE(m_engine->currentTime(), 1.5);
    load("0 B=1\n7 B=2\n", QStringLiteral("other.rec"));
    QCOMPARE(m_engine->duration(), 7.0);
    QCOMPARE(m_engine->index(), 2);

    QVERIFY(!m_engine->load(m_dir->filePath(QStringLiteral("missing.rec"))));
    QVERIFY(!m_engine->errorString().isEmpty());
    QCOMPARE(m_engine->frames().frameAt(1).values, (Values{{QStringLiteral("B"), 2.0}}));
    QCOMPARE(m_engine->duration(), 7.0);
}

QTEST_MAIN(tst_PlaybackEngine)
#include "tst_playbackengine.moc"
