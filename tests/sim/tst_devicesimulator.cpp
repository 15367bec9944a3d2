#include "DeviceSimulator.h"
#include "LineParser.h"
#include "SignalDefinitions.h"
#include "TestFiles.h"

#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

class tst_DeviceSimulator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_demo.load(QStringLiteral(OMBRIX_SOURCE_DIR "/examples/demo/dashboard_signals.def")));
        QVERIFY(m_demo.signals().size() >= 8);
    }

    void linesFollowTheGrammar();
    void statesCycleAndEventsAreOccasional();
    void sparseDefinitionsStillGiveLines_data()
    {
        QTest::addColumn<QByteArray>("definitions");
        QTest::newRow("nothing declared") << QByteArray();
        QTest::newRow("only a state") << QByteArray("DASHBOARD_STATE(MODE, RUN, \"Run\")\n");
        QTest::newRow("only an error") << QByteArray("DASHBOARD_ERROR(E1, 1, \"One\")\n");
        QTest::newRow("zero scale") << QByteArray("DASHBOARD_SIGNAL(A, \"A\", float)\nDASHBOARD_MAPPING(A, 1, 0)\n");
    }
    void sparseDefinitionsStillGiveLines();

private:
    // The next count lines, each checked to be one whole line; empty on a fault.
    static QList<ParsedLine> parsedLines(DeviceSimulator &simulator, int count)
    {
        QList<ParsedLine> lines;
        for (int i = 0; i < count; ++i) {
            const QByteArray bytes = simulator.nextLine();
            ParsedLine parsed;
            if (!bytes.endsWith('\n') || bytes.count('\n') != 1
                || !LineParser::parse(QString::fromUtf8(bytes).trimmed(), 0.0, parsed))
                return {};
            lines.append(parsed);
        }
        return lines;
    }

    SignalDefinitions m_demo;
};

// Every token is a declared signal's value (raw ADC counts where a mapping
// exists), a declared state, a declared error or a word of a message.
void tst_DeviceSimulator::linesFollowTheGrammar()
{
    DeviceSimulator simulator(m_demo, 5);
    QSet<QString> messageWords;
    for (const QByteArray &message : DeviceSimulator::messages()) {
        for (const QByteArray &word : message.split(' '))
            messageWords.insert(QString::fromUtf8(word));
    }
    const QList<ParsedLine> lines = parsedLines(simulator, 6000);
    QCOMPARE(lines.size(), 6000);
    for (const ParsedLine &line : lines) {
        QVERIFY2(!line.ownTimestamp && line.values.size() == m_demo.signals().size(), qPrintable(line.line));
        for (auto it = line.values.cbegin(); it != line.values.cend(); ++it)
            QVERIFY2(m_demo.signalFor(it.key()) && std::isfinite(it.value()), qPrintable(line.line));
        for (const SignalMapping &mapping : m_demo.mappings()) {
            const double raw = line.values.value(mapping.name);
            QVERIFY2(raw == std::floor(raw) && raw >= 0 && raw <= 4095, qPrintable(line.line));
        }
        for (const LineEvent &event : line.events) {
            const bool declared = event.kind == LineEvent::State ? bool(m_demo.stateFor(event.groupId, event.id))
                                                                 : bool(m_demo.errorFor(event.id));
            QVERIFY2(declared, qPrintable(line.line));
        }
        for (const QString &word : line.unrecognized)
            QVERIFY2(messageWords.contains(word), qPrintable(line.line));
    }
}

// Five minutes at 50 lines/s: each group cycles through its states in
// declared order; errors and messages come now and then, not on every line.
void tst_DeviceSimulator::statesCycleAndEventsAreOccasional()
{
    DeviceSimulator simulator(m_demo, 4);
    const int count = 50 * 300;
    QMap<QString, QStringList> seen; // group -> states in the order they came
    int errors = 0;
    int messages = 0;
    for (const ParsedLine &line : parsedLines(simulator, count)) {
        for (const LineEvent &event : line.events) {
            QStringList &states = seen[event.groupId];
            if (event.kind == LineEvent::Error)
                ++errors;
            else if (states.isEmpty() || states.last() != event.id)
                states.append(event.id);
        }
        messages += !line.unrecognized.isEmpty();
    }
    for (const StateGroupDef &group : m_demo.stateGroups()) {
        const QList<StateDef> declared = m_demo.statesOf(group.id);
        const QStringList &states = seen.value(group.id);
        QVERIFY2(states.size() > declared.size(), qPrintable(group.id));
        for (int i = 0; i < states.size(); ++i)
            QCOMPARE(states.at(i), declared.at(i % declared.size()).stateId);
    }
    QVERIFY(errors >= 5 && errors < count / 50);
    QVERIFY(messages >= 5 && messages < count / 50);
}

void tst_DeviceSimulator::sparseDefinitionsStillGiveLines()
{
    QFETCH(QByteArray, definitions);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("dashboard_signals.def"));
    SignalDefinitions defs;
    QVERIFY(writeFile(path, definitions) && defs.load(path));
    DeviceSimulator simulator(defs, 2);
    const QList<ParsedLine> lines = parsedLines(simulator, 500);
    QCOMPARE(lines.size(), 500);
    for (const ParsedLine &line : lines) {
        for (const double value : line.values)
            QVERIFY2(std::isfinite(value), qPrintable(line.line));
    }
}

QTEST_GUILESS_MAIN(tst_DeviceSimulator)
#include "tst_devicesimulator.moc"
