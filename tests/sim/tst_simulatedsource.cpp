#include "DeviceSimulator.h"
#include "SerialManager.h"
#include "SignalDefinitions.h"
#include "SimulatedLineSource.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

const QString DemoDefinitions = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo/dashboard_signals.def");

SerialSettings sourceNamed(const QString &name)
{
    SerialSettings settings;
    settings.portName = name;
    return settings;
}

} // namespace

// "sim:" as any source is opened: the built-in device of the project's definitions.
class tst_SimulatedSource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { SimulatedLineSource::registerScheme(); }

    // The same lines, in the same order, as `ombrix-cli simulate --seed 3` sends.
    void speaksTheSimulatorsLines()
    {
        SerialManager manager;
        manager.setDefinitionsPath(DemoDefinitions);
        QSignalSpy raw(&manager, &SerialManager::rawLineReceived);
        QVERIFY(manager.open(sourceNamed(QStringLiteral("sim:?rate=1000&seed=3"))));
        QVERIFY(manager.isOpen());
        QTRY_VERIFY(raw.count() >= 200);
        QString error;
        QVERIFY(manager.write("START\n", &error)); // taken, whatever the device makes of it

        SignalDefinitions defs;
        QVERIFY(defs.load(DemoDefinitions));
        DeviceSimulator simulator(defs, 3);
        simulator.setLineInterval(0.001);
        for (int i = 0; i < 200; ++i)
            QCOMPARE(raw.at(i).at(1).toString(), QString::fromUtf8(simulator.nextLine()).trimmed());
    }

    void refusedWithTheReason_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("definitions");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no definitions") << "sim:" << QString() << "needs a definition file";
        QTest::newRow("unreadable definitions") << "sim:" << "/nonexistent/x.def" << "/nonexistent/x.def";
        QTest::newRow("negative rate") << "sim:?rate=-1" << DemoDefinitions << "rate must be a number from 0";
        QTest::newRow("unknown option") << "sim:?speed=2" << DemoDefinitions << "unknown option \"speed\"";
        QTest::newRow("a host") << "sim://localhost" << DemoDefinitions << "expected sim:";
    }

    void refusedWithTheReason()
    {
        QFETCH(QString, source);
        QFETCH(QString, definitions);
        QFETCH(QString, reason);
        SerialManager manager;
        manager.setDefinitionsPath(definitions);
        QSignalSpy errors(&manager, &SerialManager::errorOccurred);
        QVERIFY(!manager.open(sourceNamed(source)));
        QCOMPARE(errors.count(), 1);
        QVERIFY2(errors.at(0).at(0).toString().contains(reason), qPrintable(errors.at(0).at(0).toString()));
    }
};

QTEST_GUILESS_MAIN(tst_SimulatedSource)
#include "tst_simulatedsource.moc"
