#include "DashboardWidget.h"
#include "FrameClock.h"

#include <QTest>

namespace {

// Counts its paints and remembers the value each one showed.
class FrameProbe : public DashboardWidget
{
public:
    void setValue(double v) override
    {
        value = v;
        markDirty();
    }
    QString typeName() const override { return QStringLiteral("FrameProbe"); }

    double value = 0.0;
    int paints = 0;
    double painted = -1.0;

protected:
    void paintEvent(QPaintEvent *) override
    {
        ++paints;
        painted = value;
    }
};

} // namespace

class tst_FrameClock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (FrameProbe *probe : {&m_busy, &m_idle}) {
            probe->resize(100, 100);
            probe->show();
            QVERIFY(QTest::qWaitForWindowExposed(probe));
            QTRY_VERIFY(probe->paints > 0);
        }
    }

    void init()
    {
        QTest::qWait(50);
        m_busy.paints = m_idle.paints = 0;
    }

    void cleanup()
    {
        FrameClock::instance().start();
        FrameClock::instance().setFramesPerSecond(FrameClock::DefaultFramesPerSecond);
    }

    void aBurstPaintsOnceWithItsLastValue()
    {
        for (int i = 1; i <= 1000; ++i)
            m_busy.setValue(i);
        QCOMPARE(m_busy.value, 1000.0); // the state is there before any paint
        QTRY_COMPARE(m_busy.paints, 1);
        QCOMPARE(m_busy.painted, 1000.0);
        QTest::qWait(100);
        QCOMPARE(m_busy.paints, 1);
        QCOMPARE(m_idle.paints, 0);
    }

    void aStoppedClockPaintsNothingAndLosesNothing()
    {
        FrameClock::instance().stop();
        m_busy.setValue(42.0);
        QTest::qWait(100);
        QCOMPARE(m_busy.paints, 0);
        FrameClock::instance().start();
        QTRY_COMPARE(m_busy.paints, 1);
        QCOMPARE(m_busy.painted, 42.0);
    }

    void aDestroyedWidgetLeavesTheClock()
    {
        auto *doomed = new FrameProbe;
        doomed->setValue(1.0);
        QCOMPARE(FrameClock::instance().pendingCount(), 1);
        delete doomed;
        QCOMPARE(FrameClock::instance().pendingCount(), 0);
        FrameClock::instance().finishFrame();
    }

private:
    FrameProbe m_busy;
    FrameProbe m_idle;
};

QTEST_MAIN(tst_FrameClock)
#include "tst_frameclock.moc"
