#include "SignalDefinitions.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestSignalDefinitions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void recognisesDeclarations_data();
    void recognisesDeclarations();
    void mappingArgumentOrder();
    void duplicateMappings();
    void duplicateGroupsStatesAndErrors();
    void implicitStateGroup();
    void lookUpsAreCaseSensitive();
    void lineEndingsAndTrailingText();
    void reloadClearsEverything();
    void failedLoads_data();
    void failedLoads();
    void emptyAndCommentOnlyFiles_data();
    void emptyAndCommentOnlyFiles();
    void demoProjectLoads();

private:
    QString write(const QByteArray &content);
    SignalDefinitions loaded(const QByteArray &content);

    QScopedPointer<QTemporaryDir> m_dir;
};

void TestSignalDefinitions::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
}

QString TestSignalDefinitions::write(const QByteArray &content)
{
    const QString path = m_dir->filePath(QStringLiteral("dashboard_signals.def"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return QString();
    file.write(content);
    return path;
}

SignalDefinitions TestSignalDefinitions::loaded(const QByteArray &content)
{
    SignalDefinitions defs;
    const bool ok = defs.load(write(content));
    if (!ok)
        qWarning() << "load failed:" << defs.lastError();
    return defs;
}

// Each row: one line of a definition file and how many records of each kind
// it yields (mappings, signals, groups, states, errors).
void TestSignalDefinitions::recognisesDeclarations_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QList<int>>("counts");

    QTest::newRow("mapping") << QByteArray("DASHBOARD_MAPPING(RPM, 10, 0.5)") << QList<int>{1, 0, 0, 0, 0};
    QTest::newRow("mapping negatives") << QByteArray("DASHBOARD_MAPPING(T, -40, -0.25)") << QList<int>{1, 0, 0, 0, 0};
    QTest::newRow("mapping trailing point") << QByteArray("DASHBOARD_MAPPING(T, 1., 2.)") << QList<int>{1, 0, 0, 0, 0};
    QTest::newRow("mapping exponent") << QByteArray("DASHBOARD_MAPPING(T, 0, 1e3)") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("mapping leading point") << QByteArray("DASHBOARD_MAPPING(T, 0, .5)") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("mapping leading plus") << QByteArray("DASHBOARD_MAPPING(T, +1, 2)") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("signal") << QByteArray("DASHBOARD_SIGNAL(RPM, \"Motor speed\", float)") << QList<int>{0, 1, 0, 0, 0};
    QTest::newRow("signal empty label") << QByteArray("DASHBOARD_SIGNAL(RPM, \"\", float)") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("signal unquoted label") << QByteArray("DASHBOARD_SIGNAL(RPM, speed, float)") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("signal spaced") << QByteArray("  DASHBOARD_SIGNAL ( RPM ,  \"a b\" , int ) ;") << QList<int>{0, 1, 0, 0, 0};
    QTest::newRow("group") << QByteArray("DASHBOARD_STATE_GROUP(MODE, \"Mode\")") << QList<int>{0, 0, 1, 0, 0};
    QTest::newRow("state") << QByteArray("DASHBOARD_STATE(MODE, RUN, \"Running\")") << QList<int>{0, 0, 1, 1, 0};
    QTest::newRow("error") << QByteArray("DASHBOARD_ERROR(E_HOT, 12, \"Too hot\")") << QList<int>{0, 0, 0, 0, 1};
    QTest::newRow("error negative code") << QByteArray("DASHBOARD_ERROR(E_X, -3, \"x\")") << QList<int>{0, 0, 0, 0, 1};
    QTest::newRow("error without code") << QByteArray("DASHBOARD_ERROR(E_X, \"x\")") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("line comment") << QByteArray("// DASHBOARD_SIGNAL(A, \"a\", float)") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("block comment") << QByteArray("  /* DASHBOARD_SIGNAL(A, \"a\", float) */") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("not anchored") << QByteArray("x DASHBOARD_SIGNAL(A, \"a\", float)") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("wrong case") << QByteArray("dashboard_signal(A, \"a\", float)") << QList<int>{0, 0, 0, 0, 0};
    QTest::newRow("garbage") << QByteArray("#define FOO 1") << QList<int>{0, 0, 0, 0, 0};
}

void TestSignalDefinitions::recognisesDeclarations()
{
    QFETCH(QByteArray, line);
    QFETCH(QList<int>, counts);
    const SignalDefinitions defs = loaded(line + '\n');
    const QList<int> actual{int(defs.mappings().size()), int(defs.signals().size()),
                            int(defs.stateGroups().size()), int(defs.states().size()),
                            int(defs.errors().size())};
    QCOMPARE(actual, counts);
}

void TestSignalDefinitions::mappingArgumentOrder()
{
    const SignalDefinitions defs = loaded("DASHBOARD_MAPPING(RPM, 10, 0.5)\n");
    const auto mapping = defs.mappingFor(QStringLiteral("RPM"));
    QVERIFY(mapping);
    QCOMPARE(mapping->offset, 10.0);
    QCOMPARE(mapping->scale, 0.5);
    QCOMPARE(mapping->apply(100), 60.0);
    QCOMPARE(defs.mapped(QStringLiteral("RPM"), 100), 60.0);
    QCOMPARE(defs.mapped(QStringLiteral("OTHER"), 100), 100.0);
}

void TestSignalDefinitions::duplicateMappings()
{
    const SignalDefinitions defs = loaded("DASHBOARD_MAPPING(A, 1, 2)\n"
                                          "DASHBOARD_MAPPING(A, 3, 4)\n");
    QCOMPARE(defs.mappings().size(), 2);
    QCOMPARE(defs.mappingFor(QStringLiteral("A"))->offset, 1.0);
    QCOMPARE(defs.mappingByName().value(QStringLiteral("A")).offset, 3.0);
}

void TestSignalDefinitions::duplicateGroupsStatesAndErrors()
{
    const SignalDefinitions defs = loaded("DASHBOARD_STATE_GROUP(G, \"First\")\n"
                                          "DASHBOARD_STATE(G, A, \"Alpha\")\n"
                                          "DASHBOARD_STATE(G, A, \"Alpha again\")\n"
                                          "DASHBOARD_STATE_GROUP(G, \"Second\")\n"
                                          "DASHBOARD_ERROR(E1, 7, \"one\")\n"
                                          "DASHBOARD_ERROR(E1, 8, \"one again\")\n"
                                          "DASHBOARD_ERROR(E2, 7, \"two\")\n");
    QCOMPARE(defs.stateGroups().size(), 2);
    QCOMPARE(defs.stateGroupFor(QStringLiteral("G"))->label, QStringLiteral("Second"));
    QCOMPARE(defs.stateGroupIds(), (QStringList{QStringLiteral("G"), QStringLiteral("G")}));
    QCOMPARE(defs.states().size(), 2);
    QCOMPARE(defs.stateFor(QStringLiteral("G"), QStringLiteral("A"))->label, QStringLiteral("Alpha again"));
    QCOMPARE(defs.statesOf(QStringLiteral("G")).size(), 2);
    QCOMPARE(defs.errors().size(), 3);
    QCOMPARE(defs.errorFor(QStringLiteral("E1"))->code, 8);
    QCOMPARE(defs.errorForCode(7)->name, QStringLiteral("E2"));
}

void TestSignalDefinitions::implicitStateGroup()
{
    const SignalDefinitions defs = loaded("DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                                          "DASHBOARD_STATE(MODE, STOP, \"Stopped\")\n");
    QCOMPARE(defs.stateGroups().size(), 1);
    const auto group = defs.stateGroupFor(QStringLiteral("MODE"));
    QVERIFY(group);
    QCOMPARE(group->id, QStringLiteral("MODE"));
    QCOMPARE(group->label, QStringLiteral("MODE"));
    const auto state = defs.stateFor(QStringLiteral("MODE"), QStringLiteral("RUN"));
    QVERIFY(state);
    QCOMPARE(state->key, QStringLiteral("ST_MODE_RUN"));
    QCOMPARE(state->label, QStringLiteral("Running"));
}

void TestSignalDefinitions::lookUpsAreCaseSensitive()
{
    const SignalDefinitions defs = loaded("DASHBOARD_SIGNAL(RPM, \"Speed\", float)\n"
                                          "DASHBOARD_MAPPING(RPM, 0, 2)\n"
                                          "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                                          "DASHBOARD_ERROR(E_HOT, 1, \"Hot\")\n");
    QVERIFY(defs.signalFor(QStringLiteral("RPM")));
    QVERIFY(!defs.signalFor(QStringLiteral("rpm")));
    QVERIFY(!defs.signalFor(QStringLiteral(" RPM")));
    QVERIFY(!defs.mappingFor(QStringLiteral("rpm")));
    QVERIFY(!defs.stateGroupFor(QStringLiteral("mode")));
    QVERIFY(!defs.stateFor(QStringLiteral("MODE"), QStringLiteral("run")));
    QVERIFY(!defs.errorFor(QStringLiteral("e_hot")));
    QCOMPARE(defs.displayNameFor(QStringLiteral("RPM")), QStringLiteral("Speed"));
    QCOMPARE(defs.displayNameFor(QStringLiteral("rpm")), QStringLiteral("rpm"));
}

void TestSignalDefinitions::lineEndingsAndTrailingText()
{
    const SignalDefinitions defs = loaded("DASHBOARD_SIGNAL(A, \"a\", float); // note\r\n"
                                          "\tDASHBOARD_SIGNAL(B, \"b\", int)   \r\n"
                                          "/* block start\n"
                                          "DASHBOARD_SIGNAL(C, \"inner lines are not tracked\", float)\n"
                                          "*/\n");
    QCOMPARE(defs.signals().size(), 3);
    QCOMPARE(defs.signals().at(0).name, QStringLiteral("A"));
    QCOMPARE(defs.signals().at(1).typeName, QStringLiteral("int"));
    QCOMPARE(defs.signals().at(2).name, QStringLiteral("C"));
}

void TestSignalDefinitions::reloadClearsEverything()
{
    SignalDefinitions defs;
    QVERIFY(defs.load(write("DASHBOARD_SIGNAL(A, \"a\", float)\nDASHBOARD_STATE(G, S, \"s\")\n")));
    QVERIFY(defs.load(write("DASHBOARD_ERROR(E, 1, \"e\")\n")));
    QVERIFY(defs.signals().isEmpty());
    QVERIFY(defs.stateGroups().isEmpty());
    QVERIFY(!defs.stateFor(QStringLiteral("G"), QStringLiteral("S")));
    QCOMPARE(defs.errors().size(), 1);
}

void TestSignalDefinitions::failedLoads_data()
{
    QTest::addColumn<QString>("relativePath");
    QTest::newRow("missing file") << QStringLiteral("absent.def");
    QTest::newRow("directory") << QStringLiteral(".");
}

void TestSignalDefinitions::failedLoads()
{
    QFETCH(QString, relativePath);
    SignalDefinitions defs;
    QVERIFY(defs.load(write("DASHBOARD_SIGNAL(A, \"a\", float)\n")));
    const QString path = m_dir->filePath(relativePath);
    QVERIFY(!defs.load(path));
    QCOMPARE(defs.lastError(), QStringLiteral("Could not open file: %1").arg(path));
    QVERIFY(defs.signals().isEmpty());
}

void TestSignalDefinitions::emptyAndCommentOnlyFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("comments") << QByteArray("// one\n/* two */\n\n   \n");
    QTest::newRow("binary") << QByteArray("\x00\xff\xfe\x01\x02\x80\n\x00" "DASHBOARD", 17);
    QTest::newRow("malformed") << QByteArray("DASHBOARD_SIGNAL(\nDASHBOARD_MAPPING(A,,)\nDASHBOARD_ERROR(E, x, \"e\")\n");
}

void TestSignalDefinitions::emptyAndCommentOnlyFiles()
{
    QFETCH(QByteArray, content);
    SignalDefinitions defs;
    QVERIFY(defs.load(write(content)));
    QVERIFY(defs.lastError().isEmpty());
    QVERIFY(defs.signals().isEmpty());
    QVERIFY(defs.mappings().isEmpty());
    QVERIFY(defs.stateGroups().isEmpty());
    QVERIFY(defs.errors().isEmpty());
}

void TestSignalDefinitions::demoProjectLoads()
{
    const QString path = QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo/dashboard_signals.def");
    if (!QFile::exists(path))
        QSKIP("demo project not present");
    SignalDefinitions defs;
    QVERIFY(defs.load(path));
    QVERIFY(defs.signals().size() >= 8);
    QVERIFY(defs.mappings().size() >= 3);
    QVERIFY(defs.stateGroups().size() >= 2);
    QVERIFY(defs.errors().size() >= 5);
    for (const SignalMapping &mapping : defs.mappings())
        QVERIFY2(defs.signalFor(mapping.name), qPrintable(mapping.name));
}

QTEST_GUILESS_MAIN(TestSignalDefinitions)
#include "tst_signaldefinitions.moc"
