#include "PlaybackScrubber.h"
#include "SignalPlaybackEngine.h"
#include "TestFiles.h"

#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

#include <utility>

// A 20 s recording. The slider is driven through its own API (setSliderDown
// emits pressed and released, setSliderPosition while down emits moved), as
// a mouse would.
class tst_PlaybackScrubber : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QByteArray recording;
        for (int i = 0; i <= 40; ++i)
            recording += QByteArray::number(i * 0.5, 'f', 6) + " A=" + QByteArray::number(i) + "\n";
        const QString path = m_dir.filePath(QStringLiteral("r.rec"));
        QVERIFY(writeFile(path, recording));

        m_slider = std::make_unique<QSlider>(Qt::Horizontal);
        m_engine = std::make_unique<SignalPlaybackEngine>();
        QVERIFY(m_engine->load(path));
        m_scrubber = std::make_unique<PlaybackScrubber>(m_slider.get(), m_engine.get());
        m_playMode = false;
        m_windowMs = 0.0;
        m_scrubber->setPlayModeQuery([this] { return m_playMode; });
        m_scrubber->setTimeWindowProvider([this] { return m_windowMs; });
    }

    void cleanup()
    {
        m_scrubber.reset();
        m_engine.reset();
        m_slider.reset();
    }

    void pressStopsEngineAndTicksSeekWhileHeld()
    {
        QSignalSpy started(m_scrubber.get(), &PlaybackScrubber::scrubStarted);
        QSignalSpy scrubbed(m_scrubber.get(), &PlaybackScrubber::positionScrubbed);
        QSignalSpy reset(m_engine.get(), &SignalPlaybackEngine::dataReset);
        m_engine->start();
        m_slider->setValue(300);
        m_slider->setSliderDown(true);
        QVERIFY(!m_engine->isPlaying());
        QCOMPARE(started.size(), 1);
        QCOMPARE(m_scrubber->pendingPosition(), 300);
        QVERIFY(m_scrubber->isScrubTimerActive());

        m_slider->setSliderPosition(250);
        QTRY_VERIFY(!scrubbed.isEmpty());
        QCOMPARE(scrubbed.constLast().at(0).toLongLong(), 5000); // 20 s x 250 / 1000
        QCOMPARE(m_engine->currentTime(), 5.0);
        QVERIFY(reset.size() >= 1); // stopped: the plots are refilled
        m_slider->setSliderPosition(500);
        QTRY_COMPARE(scrubbed.constLast().at(0).toLongLong(), 10000);
        QVERIFY(m_scrubber->isScrubTimerActive());
    }

    void releaseResumesOnlyInPlay_data()
    {
        QTest::addColumn<bool>("playMode");
        QTest::newRow("play") << true;
        QTest::newRow("pause") << false;
    }

    void releaseResumesOnlyInPlay()
    {
        QFETCH(bool, playMode);
        m_playMode = playMode;
        m_engine->start();
        QSignalSpy scrubbed(m_scrubber.get(), &PlaybackScrubber::positionScrubbed);
        m_slider->setSliderDown(true);
        m_slider->setSliderPosition(750);
        m_slider->setSliderDown(false);
        QVERIFY(!m_scrubber->isDragging() && !m_scrubber->isScrubTimerActive());
        QCOMPARE(scrubbed.size(), 1);
        QCOMPARE(scrubbed.at(0).at(0).toLongLong(), 15000);
        QCOMPARE(m_engine->isPlaying(), playMode);
        m_engine->pause();
    }

    void previewWindowFromPlots_data()
    {
        QTest::addColumn<double>("windowMs");
        QTest::addColumn<double>("seconds");
        QTest::newRow("no trend plot: 10 s") << 0.0 << 10.0;
        QTest::newRow("negative") << -5.0 << 10.0;
        QTest::newRow("plot window") << 4000.0 << 4.0;
        QTest::newRow("capped at 30 s") << 45000.0 << 30.0;
        QTest::newRow("floor 0.1 s") << 50.0 << 0.1;
    }

    void previewWindowFromPlots()
    {
        QFETCH(double, windowMs);
        QFETCH(double, seconds);
        m_windowMs = windowMs;
        m_slider->setSliderDown(true);
        m_slider->setSliderDown(false);
        QCOMPARE(m_engine->previewWindow(), seconds);
    }

    void previewResentOnlyOnRealChange()
    {
        m_windowMs = 5000.0;
        m_slider->setSliderDown(true);
        for (const auto &[ms, seconds] : std::initializer_list<std::pair<double, double>>{{5000, 5.0}, {5050, 5.0}, {5200, 5.2}}) {
            m_windowMs = ms;
            m_scrubber->scrubTick();
            QCOMPARE(m_engine->previewWindow(), seconds);
        }
        m_windowMs = 5250.0;
        m_slider->setSliderDown(false); // release always sends
        QCOMPARE(m_engine->previewWindow(), 5.25);
    }

    void grooveClickSeeksAtOnceAndShowsTime()
    {
        QSignalSpy scrubbed(m_scrubber.get(), &PlaybackScrubber::positionScrubbed);
        QSignalSpy text(m_scrubber.get(), &PlaybackScrubber::timeTextChanged);
        m_slider->setPageStep(100);
        m_slider->triggerAction(QAbstractSlider::SliderPageStepAdd);
        QCOMPARE(scrubbed.size(), 1);
        QCOMPARE(m_engine->currentTime(), 2.0);
        QCOMPARE(text.constLast().at(0).toString(), QStringLiteral("2.000"));

        // The wheel moves the slider without a press.
        m_slider->setSliderPosition(333);
        m_slider->triggerAction(QAbstractSlider::SliderMove);
        QCOMPARE(scrubbed.constLast().at(0).toLongLong(), 6660);
        QCOMPARE(text.constLast().at(0).toString(), QStringLiteral("6.660"));
        QVERIFY(!m_engine->isPlaying());
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<QSlider> m_slider;
    std::unique_ptr<SignalPlaybackEngine> m_engine;
    std::unique_ptr<PlaybackScrubber> m_scrubber;
    bool m_playMode = false;
    double m_windowMs = 0.0;
};

QTEST_MAIN(tst_PlaybackScrubber)
#include "tst_playbackscrubber.moc"
