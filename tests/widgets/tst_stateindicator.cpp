#include "ConfigFormHarness.h"
#include "SignalDefinitions.h"
#include "StateIndicatorWidget.h"
#include "TestFiles.h"

#include <QComboBox>
#include <QImage>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

class tst_StateIndicator : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    SignalDefinitions m_defs;

private Q_SLOTS:
    void initTestCase()
    {
        const QString path = m_dir.filePath(QStringLiteral("dashboard_signals.def"));
        QVERIFY(writeFile(path, "DASHBOARD_STATE_GROUP(MODE, \"Operating mode\")\n"
                                "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                                "DASHBOARD_STATE_GROUP(DOOR, \"Door\")\n"
                                "DASHBOARD_STATE(VALVE, OPEN, \"Open\")\n"));
        QVERIFY(m_defs.load(path));
    }
    void init() { SignalDefinitions::setCurrent(&m_defs); }
    void cleanup() { SignalDefinitions::setCurrent(nullptr); }

    void pillColourFamilyFollowsTheStateId_data()
    {
        QTest::addColumn<QString>("stateId");
        QTest::addColumn<QColor>("colour");
        const QColor red(200, 60, 60), green(60, 170, 80), amber(230, 170, 40), slate(90, 120, 160);
        QTest::newRow("out_of_range") << "out_of_range" << red;
        QTest::newRow("Running (contains IN)") << "Running" << green;
        QTest::newRow("paused") << "paused" << amber;
        QTest::newRow("IDLE") << "IDLE" << slate;
        QTest::newRow("TIMEOUT (red before green)") << "TIMEOUT" << red;
        QTest::newRow("Pass") << "Pass" << green;
    }

    void pillColourFamilyFollowsTheStateId()
    {
        QFETCH(QString, stateId);
        QFETCH(QColor, colour);
        StateIndicatorWidget indicator;
        indicator.resize(200, 100);
        indicator.setState(stateId, QString());
        QImage image(indicator.size(), QImage::Format_ARGB32);
        indicator.render(&image);
        QCOMPARE(image.pixelColor(8 + 14, 100 - 8 - 6), colour); // inside the pill, clear of corners and text
    }

    void pillTextFallsBack()
    {
        StateIndicatorWidget indicator;
        QCOMPARE(indicator.pillText(), QStringLiteral("\u2014"));
        indicator.setState(QStringLiteral(" RUN "), QStringLiteral("Running"));
        QCOMPARE(indicator.stateId() % QLatin1Char('/') % indicator.pillText(), QStringLiteral("RUN/Running"));
        indicator.setState(QStringLiteral("IDLE"), QString());
        QCOMPARE(indicator.pillText(), QStringLiteral("IDLE"));
    }

    void groupCaptionComesFromTheCatalogue_data()
    {
        QTest::addColumn<QString>("groupId");
        QTest::addColumn<QString>("title");
        QTest::newRow("declared, trimmed") << " MODE " << "Operating mode";
        QTest::newRow("implicit group") << "VALVE" << "VALVE";
        QTest::newRow("undeclared") << "PUMP" << "PUMP";
    }

    void groupCaptionComesFromTheCatalogue()
    {
        QFETCH(QString, groupId);
        StateIndicatorWidget indicator;
        indicator.setGroupId(groupId);
        QCOMPARE(indicator.groupId(), groupId.trimmed());
        QTEST(indicator.title(), "title");
    }

    void sameGroupAgainDoesNotRereadTheCatalogue()
    {
        SignalDefinitions::setCurrent(nullptr);
        StateIndicatorWidget indicator;
        indicator.setGroupId(QStringLiteral("MODE"));
        SignalDefinitions::setCurrent(&m_defs);
        indicator.setGroupId(QStringLiteral("MODE "));
        QCOMPARE(indicator.title(), QStringLiteral("MODE"));
        indicator.setGroupId(QStringLiteral("DOOR"));
        QCOMPARE(indicator.title(), QStringLiteral("Door"));
    }

    void configRoundTripAndForm()
    {
        StateIndicatorWidget indicator;
        indicator.loadConfig(QJsonObject{{"groupId", "DOOR"}, {"corner", 4}});
        QCOMPARE(indicator.title(), QStringLiteral("Door"));
        QCOMPARE(indicator.saveConfig(), (QJsonObject{{"groupId", "DOOR"}, {"corner", 4}}));

        ConfigFormHarness form(indicator);
        auto *combo = form.editor<QComboBox>(0);
        QCOMPARE(combo->count(), 3);
        QCOMPARE(combo->itemText(0), QStringLiteral("Operating mode"));
        QCOMPARE(combo->currentData().toString(), QStringLiteral("DOOR"));
        combo->setCurrentIndex(0);
        indicator.applyConfigForm();
        QCOMPARE(indicator.title(), QStringLiteral("Operating mode"));
    }
};

QTEST_MAIN(tst_StateIndicator)
#include "tst_stateindicator.moc"
