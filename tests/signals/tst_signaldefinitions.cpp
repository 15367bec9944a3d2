#include "SignalDefinitions.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_SignalDefinitions : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    SignalDefinitions loaded(const QByteArray &content)
    {
        const QString path = m_dir.filePath(QStringLiteral("dashboard_signals.def"));
        SignalDefinitions defs;
        if (!writeFile(path, content) || !defs.load(path))
            qWarning() << "load failed:" << defs.lastError();
        return defs;
    }

private Q_SLOTS:
    // Each row: a file and how many declarations of each kind it yields.
    void recognisesDeclarations_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("mappings");
        QTest::addColumn<int>("signals");
        QTest::addColumn<int>("groups");
        QTest::addColumn<int>("states");
        QTest::addColumn<int>("errors");
        QTest::newRow("mapping") << QByteArray("DASHBOARD_MAPPING(T, -40, -0.25)") << 1 << 0 << 0 << 0 << 0;
        QTest::newRow("mapping, trailing point") << QByteArray("DASHBOARD_MAPPING(T, 1., 2.)") << 1 << 0 << 0 << 0 << 0;
        QTest::newRow("mapping, exponent") << QByteArray("DASHBOARD_MAPPING(T, 0, 1e3)") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("mapping, leading point") << QByteArray("DASHBOARD_MAPPING(T, 0, .5)") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("mapping, leading plus") << QByteArray("DASHBOARD_MAPPING(T, +1, 2)") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("signal, spaced") << QByteArray("  DASHBOARD_SIGNAL ( RPM ,  \"a b\" , int ) ;") << 0 << 1 << 0 << 0 << 0;
        QTest::newRow("signal, empty label") << QByteArray("DASHBOARD_SIGNAL(RPM, \"\", float)") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("signal, unquoted label") << QByteArray("DASHBOARD_SIGNAL(RPM, speed, float)") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("group") << QByteArray("DASHBOARD_STATE_GROUP(MODE, \"Mode\")") << 0 << 0 << 1 << 0 << 0;
        QTest::newRow("state") << QByteArray("DASHBOARD_STATE(MODE, RUN, \"Running\")") << 0 << 0 << 1 << 1 << 0;
        QTest::newRow("error, negative code") << QByteArray("DASHBOARD_ERROR(E_X, -3, \"x\")") << 0 << 0 << 0 << 0 << 1;
        QTest::newRow("error without code") << QByteArray("DASHBOARD_ERROR(E_X, \"x\")") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("line comment") << QByteArray("// DASHBOARD_SIGNAL(A, \"a\", float)") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("block comment") << QByteArray("  /* DASHBOARD_SIGNAL(A, \"a\", float) */") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("not anchored") << QByteArray("x DASHBOARD_SIGNAL(A, \"a\", float)") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("wrong case") << QByteArray("dashboard_signal(A, \"a\", float)") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("CR LF, trailing text, untracked block comment")
            << QByteArray("DASHBOARD_SIGNAL(A, \"a\", float); // note\r\n\tDASHBOARD_SIGNAL(B, \"b\", int)  \r\n"
                          "/* start\nDASHBOARD_SIGNAL(C, \"inner\", float)\n*/")
            << 0 << 3 << 0 << 0 << 0;
        QTest::newRow("empty file") << QByteArray() << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("binary") << QByteArray("\x00\xff\xfe\x01\x02\x80\n\x00" "DASHBOARD", 17) << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("malformed") << QByteArray("DASHBOARD_SIGNAL(\nDASHBOARD_MAPPING(A,,)\n#define X 1\n")
                                   << 0 << 0 << 0 << 0 << 0;
    }

    void recognisesDeclarations()
    {
        QFETCH(QByteArray, content);
        SignalDefinitions fromText; // the same text held in memory reads the same
        fromText.loadText(QString::fromUtf8(content + '\n'));
        for (const SignalDefinitions &defs : {loaded(content + '\n'), fromText}) {
            QTEST(int(defs.mappings().size()), "mappings");
            QTEST(int(defs.signals().size()), "signals");
            QTEST(int(defs.stateGroups().size()), "groups");
            QTEST(int(defs.states().size()), "states");
            QTEST(int(defs.errors().size()), "errors");
        }
    }

    // Every line is kept in file order. Of two mapping lines for a name the
    // look-up takes the first, the name index the last; a repeated group, state
    // or error name points at its latest line. Mapping arguments are (name, offset, scale).
    void duplicatesKeepFileOrder()
    {
        const SignalDefinitions defs = loaded("DASHBOARD_MAPPING(RPM, 10, 0.5)\n"
                                              "DASHBOARD_MAPPING(RPM, 3, 4)\n"
                                              "DASHBOARD_STATE_GROUP(G, \"First\")\n"
                                              "DASHBOARD_STATE(G, A, \"Alpha\")\n"
                                              "DASHBOARD_STATE(G, A, \"Alpha again\")\n"
                                              "DASHBOARD_STATE_GROUP(G, \"Second\")\n"
                                              "DASHBOARD_ERROR(E1, 7, \"one\")\n"
                                              "DASHBOARD_ERROR(E1, 8, \"one again\")\n"
                                              "DASHBOARD_ERROR(E2, 7, \"two\")\n");
        QCOMPARE(defs.mappings().size(), 2);
        QCOMPARE(defs.mapped(QStringLiteral("RPM"), 100), 60.0);
        QCOMPARE(defs.mapped(QStringLiteral("OTHER"), 100), 100.0);
        QCOMPARE(defs.mappingByName().value(QStringLiteral("RPM")).offset, 3.0);
        QCOMPARE(defs.stateGroupIds(), (QStringList{QStringLiteral("G"), QStringLiteral("G")}));
        QCOMPARE(defs.stateGroupFor(QStringLiteral("G"))->label, QStringLiteral("Second"));
        QCOMPARE(defs.statesOf(QStringLiteral("G")).size(), 2);
        QCOMPARE(defs.stateFor(QStringLiteral("G"), QStringLiteral("A"))->label, QStringLiteral("Alpha again"));
        QCOMPARE(defs.errors().size(), 3);
        QCOMPARE(defs.errorForCode(7)->name, QStringLiteral("E2"));
        QCOMPARE(defs.errorFor(QStringLiteral("E1"))->code, 8);
    }

    void stateBeforeItsGroupDeclaresTheGroup()
    {
        const SignalDefinitions defs = loaded("DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                                              "DASHBOARD_STATE(MODE, STOP, \"Stopped\")\n");
        QCOMPARE(defs.stateGroups().size(), 1);
        QCOMPARE(defs.stateGroupFor(QStringLiteral("MODE"))->label, QStringLiteral("MODE"));
        const auto state = defs.stateFor(QStringLiteral("MODE"), QStringLiteral("RUN"));
        QVERIFY(state);
        QCOMPARE(state->key % QLatin1Char(' ') % state->label, QStringLiteral("ST_MODE_RUN Running"));
    }

    void lookUpsAreExactAndCaseSensitive()
    {
        const SignalDefinitions defs = loaded("DASHBOARD_SIGNAL(RPM, \"Speed\", float)\n"
                                              "DASHBOARD_MAPPING(RPM, 0, 2)\n"
                                              "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                                              "DASHBOARD_ERROR(E_HOT, 1, \"Hot\")\n");
        QVERIFY(defs.signalFor(QStringLiteral("RPM")));
        QVERIFY(!defs.signalFor(QStringLiteral("rpm")) && !defs.signalFor(QStringLiteral(" RPM")));
        QVERIFY(!defs.mappingFor(QStringLiteral("rpm")) && !defs.stateGroupFor(QStringLiteral("mode")));
        QVERIFY(!defs.stateFor(QStringLiteral("MODE"), QStringLiteral("run")) && !defs.errorFor(QStringLiteral("e_hot")));
        // Ids may hold underscores: MOTOR/FAULT_HI and MOTOR_FAULT/HI share the key ST_MOTOR_FAULT_HI.
        const SignalDefinitions both = loaded("DASHBOARD_STATE(MOTOR, FAULT_HI, \"Motor fault high\")\n"
                                              "DASHBOARD_STATE(MOTOR_FAULT, HI, \"Fault level high\")\n");
        QCOMPARE(both.stateFor(QStringLiteral("MOTOR"), QStringLiteral("FAULT_HI"))->label, QStringLiteral("Motor fault high"));
        QCOMPARE(both.stateFor(QStringLiteral("MOTOR_FAULT"), QStringLiteral("HI"))->label, QStringLiteral("Fault level high"));
        QCOMPARE(defs.displayNameFor(QStringLiteral("RPM")), QStringLiteral("Speed"));
        QCOMPARE(defs.displayNameFor(QStringLiteral("rpm")), QStringLiteral("rpm"));
    }

    void failedLoadEmptiesTheCatalogue_data()
    {
        QTest::addColumn<QString>("relativePath");
        QTest::newRow("missing file") << QStringLiteral("absent.def");
        QTest::newRow("directory") << QStringLiteral(".");
    }

    void failedLoadEmptiesTheCatalogue()
    {
        QFETCH(QString, relativePath);
        SignalDefinitions defs = loaded("DASHBOARD_SIGNAL(A, \"a\", float)\nDASHBOARD_STATE(G, S, \"s\")\n");
        const QString path = m_dir.filePath(relativePath);
        QVERIFY(!defs.load(path));
        QCOMPARE(defs.lastError(), QStringLiteral("Could not open file: %1").arg(path));
        QVERIFY(defs.signals().isEmpty());
        QVERIFY(!defs.stateFor(QStringLiteral("G"), QStringLiteral("S")));
    }
};

QTEST_GUILESS_MAIN(tst_SignalDefinitions)
#include "tst_signaldefinitions.moc"
