#include "SignalDefinitions.h"
#include "StateIndicatorWidget.h"

#include <QComboBox>
#include <QFile>
#include <QFormLayout>
#include <QImage>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class tst_StateIndicator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void colourFamilyFollowsTheStateId_data();
    void colourFamilyFollowsTheStateId();
    void pillIsPaintedInTheStateColour();
    void groupCaptionComesFromTheCatalogue_data();
    void groupCaptionComesFromTheCatalogue();
    void sameGroupAgainDoesNotRereadTheCatalogue();
    void pillTextFallsBack();
    void configRoundTrip();
    void configFormListsTheDeclaredGroups();

private:
    std::unique_ptr<SignalDefinitions> loadDefinitions(const QByteArray &text);

    QTemporaryDir m_dir;
    std::unique_ptr<SignalDefinitions> m_defs;
};

std::unique_ptr<SignalDefinitions> tst_StateIndicator::loadDefinitions(const QByteArray &text)
{
    static int counter = 0;
    const QString path = m_dir.filePath(QStringLiteral("defs%1.def").arg(++counter));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        return nullptr;
    file.close();
    auto defs = std::make_unique<SignalDefinitions>();
    return defs->load(path) ? std::move(defs) : nullptr;
}

void tst_StateIndicator::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_defs = loadDefinitions("DASHBOARD_STATE_GROUP(MODE, \"Operating mode\")\n"
                             "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                             "DASHBOARD_STATE(MODE, IDLE, \"Idle\")\n"
                             "DASHBOARD_STATE_GROUP(DOOR, \"Door\")\n"
                             "DASHBOARD_STATE(VALVE, OPEN, \"Open\")\n");
    QVERIFY(m_defs);
}

void tst_StateIndicator::cleanup()
{
    SignalDefinitions::setCurrent(nullptr);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_StateIndicator::colourFamilyFollowsTheStateId_data()
{
    QTest::addColumn<QString>("stateId");
    QTest::addColumn<QColor>("colour");
    const QColor red(200, 60, 60), green(60, 170, 80), amber(230, 170, 40), slate(90, 120, 160);
    QTest::newRow("out_of_range") << "out_of_range" << red;
    QTest::newRow("Running (contains IN)") << "Running" << green;
    QTest::newRow("paused") << "paused" << amber;
    QTest::newRow("IDLE") << "IDLE" << slate;
    QTest::newRow("TIMEOUT (red before green)") << "TIMEOUT" << red;
    QTest::newRow("stop") << "stop" << red;
    QTest::newRow("pass") << "Pass" << green;
    QTest::newRow("go") << "GO" << green;
    QTest::newRow("none") << "" << slate;
}

void tst_StateIndicator::colourFamilyFollowsTheStateId()
{
    QFETCH(QString, stateId);
    QFETCH(QColor, colour);
    StateIndicatorWidget indicator;
    indicator.setState(stateId, QString());
    QCOMPARE(indicator.stateColor(), colour);
}

void tst_StateIndicator::pillIsPaintedInTheStateColour()
{
    StateIndicatorWidget indicator;
    indicator.resize(200, 100);
    indicator.setState(QStringLiteral("FAIL"), QStringLiteral("Failed"));
    QImage image(indicator.size(), QImage::Format_ARGB32);
    indicator.render(&image);
    // Inside the pill, clear of its rounded corners and of its text.
    const QColor pixel = image.pixelColor(8 + 14, 100 - 8 - 6);
    QCOMPARE(pixel, QColor(200, 60, 60));
}

void tst_StateIndicator::groupCaptionComesFromTheCatalogue_data()
{
    QTest::addColumn<QString>("groupId");
    QTest::addColumn<QString>("title");
    QTest::newRow("declared, trimmed") << " MODE " << "Operating mode";
    QTest::newRow("implicit group") << "VALVE" << "VALVE";
    QTest::newRow("undeclared") << "PUMP" << "PUMP";
    QTest::newRow("case-sensitive") << "mode" << "mode";
}

void tst_StateIndicator::groupCaptionComesFromTheCatalogue()
{
    QFETCH(QString, groupId);
    SignalDefinitions::setCurrent(m_defs.get());
    StateIndicatorWidget indicator;
    indicator.setGroupId(groupId);
    QCOMPARE(indicator.groupId(), groupId.trimmed());
    QTEST(indicator.title(), "title");
}

void tst_StateIndicator::sameGroupAgainDoesNotRereadTheCatalogue()
{
    const auto other = loadDefinitions("DASHBOARD_STATE_GROUP(MODE, \"Mode (other)\")\n");
    QVERIFY(other);
    StateIndicatorWidget indicator;
    indicator.setGroupId(QStringLiteral("MODE"));
    QCOMPARE(indicator.title(), QStringLiteral("MODE")); // no catalogue yet

    SignalDefinitions::setCurrent(m_defs.get());
    indicator.setGroupId(QStringLiteral("MODE "));
    QCOMPARE(indicator.title(), QStringLiteral("MODE"));

    indicator.setGroupId(QStringLiteral("DOOR"));
    indicator.setGroupId(QStringLiteral("MODE"));
    QCOMPARE(indicator.title(), QStringLiteral("Operating mode"));

    SignalDefinitions::setCurrent(other.get());
    indicator.setGroupId(QStringLiteral("MODE"));
    QCOMPARE(indicator.title(), QStringLiteral("Operating mode"));
}

void tst_StateIndicator::pillTextFallsBack()
{
    StateIndicatorWidget indicator;
    QCOMPARE(indicator.pillText(), QStringLiteral("\u2014"));
    indicator.setState(QStringLiteral(" RUN "), QStringLiteral("Running"));
    QCOMPARE(indicator.stateId(), QStringLiteral("RUN"));
    QCOMPARE(indicator.pillText(), QStringLiteral("Running"));
    indicator.setState(QStringLiteral("IDLE"), QString());
    QCOMPARE(indicator.pillText(), QStringLiteral("IDLE"));
    indicator.setState(QString(), QString());
    QCOMPARE(indicator.pillText(), QStringLiteral("\u2014"));
}

void tst_StateIndicator::configRoundTrip()
{
    SignalDefinitions::setCurrent(m_defs.get());
    StateIndicatorWidget indicator;
    indicator.setGroupId(QStringLiteral("DOOR"));
    indicator.loadConfig(QJsonObject{{QStringLiteral("corner"), 4}});
    QCOMPARE(indicator.groupId(), QStringLiteral("DOOR"));
    QCOMPARE(indicator.corner(), 4);

    StateIndicatorWidget restored;
    restored.loadConfig(indicator.saveConfig());
    QCOMPARE(restored.groupId(), QStringLiteral("DOOR"));
    QCOMPARE(restored.title(), QStringLiteral("Door"));
    QCOMPARE(restored.corner(), 4);
    QCOMPARE(restored.saveConfig(), indicator.saveConfig());
}

void tst_StateIndicator::configFormListsTheDeclaredGroups()
{
    SignalDefinitions::setCurrent(m_defs.get());
    StateIndicatorWidget indicator;
    indicator.setGroupId(QStringLiteral("DOOR"));
    auto dialog = std::make_unique<QWidget>();
    auto *form = new QFormLayout(dialog.get());
    indicator.buildConfigForm(form, dialog.get());
    QCOMPARE(form->rowCount(), 1);
    auto *combo = qobject_cast<QComboBox *>(form->itemAt(0, QFormLayout::FieldRole)->widget());
    QVERIFY(combo);
    QCOMPARE(combo->count(), 3);
    QCOMPARE(combo->itemText(0), QStringLiteral("Operating mode"));
    QCOMPARE(combo->itemData(2).toString(), QStringLiteral("VALVE"));
    QCOMPARE(combo->currentData().toString(), QStringLiteral("DOOR"));

    combo->setCurrentIndex(0);
    indicator.applyConfigForm();
    QCOMPARE(indicator.groupId(), QStringLiteral("MODE"));
    QCOMPARE(indicator.title(), QStringLiteral("Operating mode"));
}

QTEST_MAIN(tst_StateIndicator)
#include "tst_stateindicator.moc"
