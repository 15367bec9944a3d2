#include "DefinitionLinter.h"

#include <QtTest>

#include <algorithm>

namespace {

QString listed(const QList<DefinitionLinter::Finding> &findings)
{
    QStringList lines;
    for (const DefinitionLinter::Finding &finding : findings)
        lines.append(QStringLiteral("%1: %2%3")
                         .arg(finding.line)
                         .arg(finding.warning ? QStringLiteral("warning: ") : QString(), finding.message));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

class tst_DefinitionLinter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reportsWhatLoadingPassesOver_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("warning");

        const QString signalA = QStringLiteral("DASHBOARD_SIGNAL(A, \"a\", float)\n");
        // Lines that declare nothing, and what they nearly were.
        QTest::newRow("exponent") << signalA + "DASHBOARD_MAPPING(A, 1e3, 2)" << 2
                                  << "DASHBOARD_MAPPING: the offset must be a plain decimal number (1e3 is not)" << false;
        QTest::newRow("leading point") << signalA + "DASHBOARD_MAPPING(A, 0, .5)" << 2
                                       << "the scale must be a plain decimal number (.5 is not)" << false;
        QTest::newRow("empty label") << "DASHBOARD_SIGNAL(A, \"\", float)" << 1 << "DASHBOARD_SIGNAL: the label is empty"
                                     << false;
        QTest::newRow("unquoted label") << "DASHBOARD_STATE_GROUP(M, Mode)" << 1 << "must be written in double quotes"
                                        << false;
        QTest::newRow("bad name") << "DASHBOARD_SIGNAL(A-1, \"a\", float)" << 1
                                  << "the name must be one word of letters, digits and underscores (A-1 is not)" << false;
        QTest::newRow("fractional code") << "DASHBOARD_ERROR(E, 1.5, \"e\")" << 1
                                         << "the code must be a whole number (1.5 is not)" << false;
        QTest::newRow("no closing parenthesis") << "DASHBOARD_SIGNAL(A, \"a\", float" << 1
                                                << "DASHBOARD_SIGNAL: the closing parenthesis is missing" << false;
        QTest::newRow("open quote") << "DASHBOARD_SIGNAL(A, \"a, float)" << 1 << "a double quote is not closed" << false;
        QTest::newRow("argument count") << "DASHBOARD_ERROR(E, \"e\")" << 1
                                        << "DASHBOARD_ERROR takes 3 arguments (name, code, \"text\"), not 2" << false;
        QTest::newRow("unknown word") << "DASHBOARD_SIGNALS(A, \"a\", float)" << 1
                                      << "DASHBOARD_SIGNALS is not a declaration" << false;
        QTest::newRow("wrong case") << "Dashboard_Signal(A, \"a\", float)" << 1
                                    << "declares nothing: the word is written DASHBOARD_SIGNAL" << false;
        QTest::newRow("not at the start") << "x DASHBOARD_SIGNAL(A, \"a\", float)" << 1
                                          << "a declaration must begin its line" << false;
        QTest::newRow("anything else") << "\n#define A 1" << 2 << "declares nothing" << false;
        QTest::newRow("after a leading comment") << "/* x */ DASHBOARD_SIGNAL(A, \"a\", float)" << 1
                                                 << "the declaration after */ is skipped" << false;
        QTest::newRow("inside a block comment") << "/* old:\n" + signalA + "*/" << 2
                                                << "counts although it lies inside a /* */ comment" << false;
        // Declarations that count, but not as perhaps meant.
        QTest::newRow("code too large") << "DASHBOARD_ERROR(E, 99999999999, \"e\")" << 1
                                        << "the code 99999999999 is too large and reads as 0" << false;
        QTest::newRow("signal twice") << signalA + signalA << 2
                                      << "signal A is declared again (first on line 1): look-ups use the first" << false;
        QTest::newRow("mapping twice") << signalA + "DASHBOARD_MAPPING(A, 0, 1)\nDASHBOARD_MAPPING(A, 5, 1)" << 3
                                       << "mapped again (first on line 2): values are mapped with the first" << false;
        QTest::newRow("mapping of an undeclared signal") << "DASHBOARD_MAPPING(B, 0, 1)" << 1
                                                         << "B is mapped but never declared with DASHBOARD_SIGNAL"
                                                         << false;
        QTest::newRow("group twice") << "DASHBOARD_STATE_GROUP(M, \"m\")\nDASHBOARD_STATE_GROUP(M, \"n\")" << 2
                                     << "state group M is declared again (first on line 1): look-ups use this later"
                                     << false;
        QTest::newRow("group after its state") << "DASHBOARD_STATE(M, R, \"r\")\nDASHBOARD_STATE_GROUP(M, \"m\")" << 2
                                               << "comes after its state on line 1" << false;
        QTest::newRow("undeclared group") << "DASHBOARD_STATE(M, R, \"r\")" << 1
                                          << "state group M is not declared before its state" << true;
        QTest::newRow("state twice")
            << "DASHBOARD_STATE_GROUP(M, \"m\")\nDASHBOARD_STATE(M, R, \"r\")\nDASHBOARD_STATE(M, R, \"s\")" << 3
            << "state R of group M is declared again (first on line 2)" << false;
        QTest::newRow("error name twice") << "DASHBOARD_ERROR(E, 1, \"e\")\nDASHBOARD_ERROR(E, 2, \"f\")" << 2
                                          << "error E is declared again (first on line 1): look-ups by name" << false;
        QTest::newRow("error code twice") << "DASHBOARD_ERROR(E, 1, \"e\")\nDASHBOARD_ERROR(F, 1, \"f\")" << 2
                                          << "error code 1 is used again (first by E on line 1)" << false;
    }

    void reportsWhatLoadingPassesOver()
    {
        QFETCH(QString, text);
        QFETCH(int, line);
        QFETCH(QString, message);
        QFETCH(bool, warning);
        const QList<DefinitionLinter::Finding> findings = DefinitionLinter::checkText(text);
        const bool found = std::any_of(findings.cbegin(), findings.cend(), [&](const DefinitionLinter::Finding &f) {
            return f.line == line && f.warning == warning && f.message.contains(message);
        });
        QVERIFY2(found, qPrintable(listed(findings)));
    }

    void findingsAreSortedByLine()
    {
        // The undeclared signal is only known at the end of the file.
        const QList<DefinitionLinter::Finding> findings =
            DefinitionLinter::checkText(QStringLiteral("DASHBOARD_MAPPING(B, 0, 1)\n#define X\nDASHBOARD_MAPPING(B, 0, 2)"));
        QList<int> lines;
        for (const DefinitionLinter::Finding &finding : findings)
            lines.append(finding.line);
        QCOMPARE(lines, QList<int>({1, 2, 3, 3}));
    }

    void cleanFilesHaveNoFindings_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("comments, blanks, trailing text, CR LF")
            << "/* Bench\n * rig 2\n */\n\n// signals\r\nDASHBOARD_SIGNAL(A, \"a (b), c\", float); // x\r\n"
               "DASHBOARD_MAPPING(A, -1., 0.5)\n  DASHBOARD_STATE_GROUP(M, \"m\") /* y */\n"
               "DASHBOARD_STATE(M, R, \"r\")\nDASHBOARD_ERROR(E, -3, \"e\")\n";
        QFile demo(QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo/dashboard_signals.def"));
        QVERIFY(demo.open(QIODevice::ReadOnly | QIODevice::Text));
        QTest::newRow("demo project") << QString::fromUtf8(demo.readAll());
    }

    void cleanFilesHaveNoFindings()
    {
        QFETCH(QString, text);
        const QList<DefinitionLinter::Finding> findings = DefinitionLinter::checkText(text);
        QVERIFY2(findings.isEmpty(), qPrintable(listed(findings)));
    }
};

QTEST_GUILESS_MAIN(tst_DefinitionLinter)
#include "tst_definitionlinter.moc"
