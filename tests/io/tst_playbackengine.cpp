#include "SignalPlaybackEngine.h"

#include <QFile>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

namespace {
using Values = QMap<QString, double>;
}

// Drives the engine with a hand-moved clock: tick() after advancing it.
class TestPlaybackEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void rateScalesPlayTime_data();
    void rateScalesPlayTime();
    void rateChangeMidRun();
    void stallAddsNothing();
    void framesReachedInOneTickInOrder();
    void startShowsTheFrameAboutToPlay();
    void endOfDataFinishes();
    void emptyRecording();
    void sliderFollowsPlayTime();
    void seekBeforeFirstFrame();
    void seekWhileStoppedRefillsPreview();
    void seekWhilePlaying();
    void seekBackToStart();
    void seekAnnouncesStatesInForce();
    void seekIntoEmptyRecordingClearsKnownGroups();
    void resetRewinds();
    void failedLoadKeepsRecording();
    void loadKeepsPosition();
    void settersClamp();

private:
    void load(const QByteArray &content);
    void advance(qint64 ms, int ticks = 1);
    // Every signal of the engine as one line of text, in emission order.
    void record();

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SignalPlaybackEngine> m_engine;
    qint64 m_now = 0;
    QStringList m_log;
};

void TestPlaybackEngine::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_engine = std::make_unique<SignalPlaybackEngine>();
    m_now = 1000000;
    m_engine->setClockSource([this] { return m_now; });
    m_log.clear();
}

void TestPlaybackEngine::cleanup()
{
    m_engine.reset();
}

void TestPlaybackEngine::load(const QByteArray &content)
{
    const QString path = m_dir->filePath(QStringLiteral("r.rec"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    QVERIFY(m_engine->load(path));
}

void TestPlaybackEngine::advance(qint64 ms, int ticks)
{
    for (int i = 0; i < ticks; ++i) {
        m_now += ms;
        m_engine->tick();
    }
}

void TestPlaybackEngine::record()
{
    const auto values = [](const Values &v) {
        QStringList parts;
        for (auto it = v.cbegin(); it != v.cend(); ++it)
            parts.append(it.key() + QLatin1Char('=') + QString::number(it.value()));
        return parts.join(QLatin1Char(','));
    };
    SignalPlaybackEngine *e = m_engine.get();
    connect(e, &SignalPlaybackEngine::signalValuesUpdated, this,
            [this, values](const Values &v) { m_log.append(QStringLiteral("values ") + values(v)); });
    connect(e, &SignalPlaybackEngine::signalValuesUpdatedAt, this, [this, values](double t, const Values &v) {
        m_log.append(QStringLiteral("at %1 ").arg(t) + values(v));
    });
    connect(e, &SignalPlaybackEngine::playbackFinished, this, [this] { m_log.append(QStringLiteral("finished")); });
    connect(e, &SignalPlaybackEngine::stateEvent, this, [this](double t, const QString &g, const QString &s) {
        m_log.append(QStringLiteral("state %1 %2=%3").arg(t).arg(g, s));
    });
    connect(e, &SignalPlaybackEngine::errorEvent, this,
            [this](double t, const QString &id) { m_log.append(QStringLiteral("error %1 %2").arg(t).arg(id)); });
    connect(e, &SignalPlaybackEngine::errorReset, this, [this] { m_log.append(QStringLiteral("errorReset")); });
    connect(e, &SignalPlaybackEngine::messageEvent, this,
            [this](double t, const QString &m) { m_log.append(QStringLiteral("message %1 %2").arg(t).arg(m)); });
    connect(e, &SignalPlaybackEngine::messageReset, this, [this] { m_log.append(QStringLiteral("messageReset")); });
    connect(e, &SignalPlaybackEngine::dataReset, this, [this] { m_log.append(QStringLiteral("dataReset")); });
}

void TestPlaybackEngine::rateScalesPlayTime_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("ticksBefore"); // 50 ms ticks that must not yet reach the frame
    QTest::addColumn<double>("frameTime");
    QTest::newRow("double speed reaches 10 s after 5 s") << 2.0 << 99 << 10.0;
    QTest::newRow("real time") << 1.0 << 39 << 2.0;
    QTest::newRow("hundredth steps 0.0005 s per tick") << 0.01 << 1 << 0.00075;
}

void TestPlaybackEngine::rateScalesPlayTime()
{
    QFETCH(double, rate);
    QFETCH(int, ticksBefore);
    QFETCH(double, frameTime);
    load(QByteArray("0 A=0\n") + QByteArray::number(frameTime, 'f', 6) + " A=1\n100 A=2\n");
    m_engine->setPlaybackRate(rate);
    QSignalSpy reached(m_engine.get(), &SignalPlaybackEngine::signalValuesUpdated);
    QSignalSpy advanced(m_engine.get(), &SignalPlaybackEngine::playbackTimeAdvanced);
    m_engine->start();
    advance(50, ticksBefore);
    QCOMPARE(reached.size(), 1); // frame 0 only
    QCOMPARE(advanced.constLast().at(0).toDouble(), ticksBefore * 0.05 * rate);
    advance(50);
    QCOMPARE(reached.size(), 2);
    QCOMPARE(reached.constLast().at(0).value<Values>().value(QStringLiteral("A")), 1.0);
}

void TestPlaybackEngine::rateChangeMidRun()
{
    load("0 A=0\n100 A=1\n");
    m_engine->start();
    QSignalSpy advanced(m_engine.get(), &SignalPlaybackEngine::playbackTimeAdvanced);
    advance(50, 20);
    m_engine->setPlaybackRate(4.0);
    advance(50, 20);
    QCOMPARE(advanced.constLast().at(0).toDouble(), 1.0 + 4.0);
}

void TestPlaybackEngine::stallAddsNothing()
{
    load("0 A=0\n100 A=1\n");
    QSignalSpy advanced(m_engine.get(), &SignalPlaybackEngine::playbackTimeAdvanced);
    m_engine->start();
    advance(50);
    advance(2000);
    QCOMPARE(advanced.constLast().at(0).toDouble(), 0.05);
    advance(5000);
    QCOMPARE(advanced.constLast().at(0).toDouble(), 0.05);
    advance(1999);
    QCOMPARE(advanced.constLast().at(0).toDouble(), 0.05 + 1.999);
}

void TestPlaybackEngine::framesReachedInOneTickInOrder()
{
    load("0.01 A=1 ST_G=ON ERR=E1\n0.01 RAWfirst\n0.01 B=2 ERR=E2\n0.02 RAWsecond\n0.03 A=3 ST_G=OFF\n1 A=4\n");
    m_engine->start();
    record();
    advance(50);
    const QStringList expected = {
        QStringLiteral("values A=1,B=2"), QStringLiteral("at 0.01 A=1,B=2"), QStringLiteral("state 0.01 G=ON"),
        QStringLiteral("error 0.01 E1"), QStringLiteral("error 0.01 E2"), QStringLiteral("message 0.01 first"),
        QStringLiteral("values "), QStringLiteral("at 0.02 "), QStringLiteral("message 0.02 second"),
        QStringLiteral("values A=3"), QStringLiteral("at 0.03 A=3"), QStringLiteral("state 0.03 G=OFF"),
    };
    QCOMPARE(m_log, expected);
    QCOMPARE(m_engine->index(), 3);
}

void TestPlaybackEngine::startShowsTheFrameAboutToPlay()
{
    load("1 A=1\n2 A=2\n");
    record();
    QSignalSpy advanced(m_engine.get(), &SignalPlaybackEngine::playbackTimeAdvanced);
    m_engine->start();
    QCOMPARE(m_log, QStringList{QStringLiteral("at 1 A=1")});
    QCOMPARE(advanced.size(), 1);
    QCOMPARE(advanced.at(0).at(0).toDouble(), 0.0);
    QVERIFY(m_engine->isPlaying());
}

void TestPlaybackEngine::endOfDataFinishes()
{
    load("0 A=1\n0.1 A=2\n");
    QSignalSpy finished(m_engine.get(), &SignalPlaybackEngine::playbackFinished);
    m_engine->start();
    advance(50);
    QCOMPARE(finished.size(), 0);
    advance(50);
    QCOMPARE(finished.size(), 1);
    QVERIFY(!m_engine->isPlaying());
    QCOMPARE(m_engine->index(), 2);

    // Starting again at the end finishes at the first tick.
    m_engine->start();
    advance(50);
    QCOMPARE(finished.size(), 2);
}

void TestPlaybackEngine::emptyRecording()
{
    load("# nothing recorded\n");
    record();
    QSignalSpy advanced(m_engine.get(), &SignalPlaybackEngine::playbackTimeAdvanced);
    m_engine->start();
    QVERIFY(m_log.isEmpty());
    QCOMPARE(advanced.size(), 1);
    advance(50);
    QCOMPARE(m_log, QStringList{QStringLiteral("finished")});
    QCOMPARE(m_engine->duration(), 0.0);
}

void TestPlaybackEngine::sliderFollowsPlayTime()
{
    load("0 A=0\n10 A=1\n");
    QSlider slider;
    slider.setRange(0, 1000);
    m_engine->bindSlider(&slider, 1000);
    m_engine->start();
    advance(50, 100);
    QCOMPARE(slider.value(), 500);
    advance(50, 101);
    QVERIFY(!m_engine->isPlaying());
    QCOMPARE(slider.value(), 1000);
    m_engine->reset();
    QCOMPARE(slider.value(), 0);
}

void TestPlaybackEngine::seekBeforeFirstFrame()
{
    load("1 A=1 ERR=E1\n2 A=2\n");
    record();
    m_engine->seek(0.5);
    QCOMPARE(m_engine->index(), 0);
    QCOMPARE(m_engine->currentTime(), 0.5);
    const QStringList expected = {QStringLiteral("dataReset"), QStringLiteral("values A=1"),
                                  QStringLiteral("errorReset"), QStringLiteral("error 1 E1"),
                                  QStringLiteral("messageReset")};
    QCOMPARE(m_log, expected);
}

void TestPlaybackEngine::seekWhileStoppedRefillsPreview()
{
    QByteArray content;
    for (int i = 0; i <= 20; ++i)
        content += QByteArray::number(i) + " A=" + QByteArray::number(i) + '\n';
    load(content);
    m_engine->setPreviewWindow(5.0);
    QSignalSpy reset(m_engine.get(), &SignalPlaybackEngine::dataReset);
    QSignalSpy history(m_engine.get(), &SignalPlaybackEngine::signalValuesUpdatedAt);
    QSignalSpy values(m_engine.get(), &SignalPlaybackEngine::signalValuesUpdated);
    m_engine->seek(12.5);
    QCOMPARE(reset.size(), 1);
    QList<double> times;
    for (const auto &args : std::as_const(history))
        times.append(args.at(0).toDouble());
    QCOMPARE(times, (QList<double>{8, 9, 10, 11, 12}));
    QCOMPARE(values.size(), 1);
    QCOMPARE(values.at(0).at(0).value<Values>().value(QStringLiteral("A")), 12.0);
    QCOMPARE(m_engine->index(), 13);

    // Playing on from there emits frame 13 next.
    history.clear();
    m_engine->start();
    QCOMPARE(history.size(), 1);
    QCOMPARE(history.at(0).at(0).toDouble(), 13.0);
    advance(50, 10);
    QCOMPARE(history.size(), 2);
    QCOMPARE(history.at(1).at(0).toDouble(), 13.0);
}

void TestPlaybackEngine::seekWhilePlaying()
{
    load("0 A=0 ERR=E0\n1 A=1\n1 RAWm1\n2 A=2 ERR=E2\n3 A=3\n");
    m_engine->start();
    record();
    m_engine->seek(2.5);
    const QStringList expected = {
        QStringLiteral("values A=2"), QStringLiteral("errorReset"), QStringLiteral("error 0 E0"),
        QStringLiteral("error 2 E2"), QStringLiteral("messageReset"), QStringLiteral("message 1 m1"),
    };
    QCOMPARE(m_log, expected);
    QVERIFY(m_engine->isPlaying());

    // The clock carries on from the new position.
    m_log.clear();
    advance(50, 10);
    QCOMPARE(m_log, (QStringList{QStringLiteral("values A=3"), QStringLiteral("at 3 A=3"),
                                 QStringLiteral("finished")}));
}

void TestPlaybackEngine::seekBackToStart()
{
    load("0 A=0 ERR=E0\n0 RAWm0\n1 A=1 ERR=E1\n1 RAWm1\n2 ERR=E2\n");
    m_engine->seek(2.0);
    record();
    m_engine->seek(0.0);
    const QStringList expected = {
        QStringLiteral("dataReset"), QStringLiteral("values A=0"), QStringLiteral("errorReset"),
        QStringLiteral("error 0 E0"), QStringLiteral("messageReset"), QStringLiteral("message 0 m0"),
    };
    QCOMPARE(m_log, expected);
}

void TestPlaybackEngine::seekAnnouncesStatesInForce()
{
    load("0 ST_B=ON\n1 ST_B=OFF ST_C=X\n2 ST_A=LATE\n");
    m_engine->setKnownGroups({QStringLiteral("C"), QStringLiteral("A"), QStringLiteral("B")});
    QSignalSpy states(m_engine.get(), &SignalPlaybackEngine::stateEvent);
    m_engine->seek(1.5);
    QStringList got;
    for (const auto &args : std::as_const(states))
        got.append(QStringLiteral("%1 %2=%3").arg(args.at(0).toDouble()).arg(args.at(1).toString(), args.at(2).toString()));
    QCOMPARE(got, (QStringList{QStringLiteral("1 A="), QStringLiteral("1 B=OFF"), QStringLiteral("1 C=X")}));
}

void TestPlaybackEngine::seekIntoEmptyRecordingClearsKnownGroups()
{
    load("");
    m_engine->setKnownGroups({QStringLiteral("G")});
    record();
    m_engine->seek(1.0);
    QCOMPARE(m_log, (QStringList{QStringLiteral("dataReset"), QStringLiteral("state 0 G="),
                                 QStringLiteral("errorReset"), QStringLiteral("messageReset")}));
}

void TestPlaybackEngine::resetRewinds()
{
    load("0 A=0\n1 A=1\n2 A=2\n");
    m_engine->start();
    advance(50, 30);
    QCOMPARE(m_engine->index(), 2);
    m_engine->reset();
    QCOMPARE(m_engine->index(), 0);
    QCOMPARE(m_engine->currentTime(), 0.0);
    // Still playing: the next ticks replay from the start.
    QSignalSpy at(m_engine.get(), &SignalPlaybackEngine::signalValuesUpdatedAt);
    advance(50);
    QCOMPARE(at.size(), 1);
    QCOMPARE(at.at(0).at(0).toDouble(), 0.0);
}

void TestPlaybackEngine::failedLoadKeepsRecording()
{
    load("0 A=0\n5 A=1\n");
    QVERIFY(!m_engine->load(m_dir->filePath(QStringLiteral("missing.rec"))));
    QVERIFY(!m_engine->errorString().isEmpty());
    QCOMPARE(m_engine->frames().frameCount(), 2);
    QCOMPARE(m_engine->duration(), 5.0);
}

void TestPlaybackEngine::loadKeepsPosition()
{
    // Play after Pause loads the file again and must resume, not restart.
    load("0 A=0\n1 A=1\n2 A=2\n3 A=3\n");
    m_engine->seek(1.5);
    load("0 A=0\n1 A=1\n2 A=2\n3 A=3\n");
    QCOMPARE(m_engine->index(), 2);
    QCOMPARE(m_engine->currentTime(), 1.5);

    const QString other = m_dir->filePath(QStringLiteral("other.rec"));
    QFile file(other);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("0 B=1\n7 B=2\n");
    file.close();
    QVERIFY(m_engine->load(other));
    QCOMPARE(m_engine->duration(), 7.0);
    QCOMPARE(m_engine->frames().frameAt(1).values.value(QStringLiteral("B")), 2.0);
    QCOMPARE(m_engine->index(), 2);
    m_engine->reset();
    QCOMPARE(m_engine->index(), 0);
}

void TestPlaybackEngine::settersClamp()
{
    m_engine->setPlaybackRate(0.0);
    QCOMPARE(m_engine->playbackRate(), 0.01);
    m_engine->setPlaybackRate(1000.0);
    QCOMPARE(m_engine->playbackRate(), 100.0);
    m_engine->setPlaybackRate(qQNaN());
    QCOMPARE(m_engine->playbackRate(), 100.0);
    m_engine->setPreviewWindow(0.0);
    QCOMPARE(m_engine->previewWindow(), 0.1);
    m_engine->setPreviewWindow(120.0);
    QCOMPARE(m_engine->previewWindow(), 60.0);
}

QTEST_MAIN(TestPlaybackEngine)
#include "tst_playbackengine.moc"
