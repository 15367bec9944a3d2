#include "ErrorConsoleWidget.h"
#include "MessagesConsoleWidget.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QScrollBar>
#include <QSpinBox>
#include <QTest>
#include <QTextEdit>

#include <memory>

class tst_Consoles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void linesAreFormatted_data();
    void linesAreFormatted();
    void oldestLinesLeaveFirst();
    void viewMatchesTheKeptLinesAcrossBatches();
    void viewUpdatesByItselfAfterABurst();
    void autoScrollKeepsTheNewestLineInView();
    void withoutAutoScrollTheViewStaysPut();
    void clearEmptiesTheConsole();
    void configRoundTripAndLimits();
    void configFormEditsBothSettings();

private:
    static QStringList numbered(int from, int to);
};

void tst_Consoles::cleanup()
{
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

QStringList tst_Consoles::numbered(int from, int to)
{
    QStringList lines;
    for (int i = from; i <= to; ++i)
        lines.append(QStringLiteral("[%1.000] line %1").arg(i));
    return lines;
}

void tst_Consoles::linesAreFormatted_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("expected");
    QTest::newRow("error") << ErrorConsoleWidget::formatLine(2.5, QStringLiteral("E_TEMP"), QStringLiteral("Overheat"))
                           << "[2.500] E_TEMP : Overheat";
    QTest::newRow("error without description")
        << ErrorConsoleWidget::formatLine(0.0, QStringLiteral("E42"), QString()) << "[0.000] E42";
    QTest::newRow("message") << MessagesConsoleWidget::formatLine(1234.56789, QStringLiteral("boot ok"))
                             << "[1234.568] boot ok";
    QTest::newRow("negative time") << MessagesConsoleWidget::formatLine(-0.25, QStringLiteral("x")) << "[-0.250] x";
}

void tst_Consoles::linesAreFormatted()
{
    QFETCH(QString, line);
    QFETCH(QString, expected);
    QCOMPARE(line, expected);
}

void tst_Consoles::oldestLinesLeaveFirst()
{
    MessagesConsoleWidget console;
    console.setMaxLines(50);
    for (int i = 1; i <= 50; ++i)
        console.appendMessage(i, QStringLiteral("line %1").arg(i));
    QCOMPARE(console.lineCount(), 50);
    QCOMPARE(console.lines().first(), QStringLiteral("[1.000] line 1"));

    console.appendMessage(51, QStringLiteral("line 51"));
    QCOMPARE(console.lines(), numbered(2, 51));
    QCOMPARE(console.textView()->document()->blockCount(), 50);

    // A line with a line break inside stays one line.
    console.appendMessage(52, QStringLiteral("two\nparts"));
    QCOMPARE(console.lines().last(), QStringLiteral("[52.000] two parts"));
    QCOMPARE(console.textView()->document()->blockCount(), 50);
}

void tst_Consoles::viewMatchesTheKeptLinesAcrossBatches()
{
    // Batches small and large exercise both ways of updating the view:
    // appending with a cut at the top, and rewriting.
    MessagesConsoleWidget console;
    console.setMaxLines(50);
    int next = 1;
    for (int batch : {1, 7, 30, 2, 60, 1, 24, 25, 26, 3, 500, 49, 1}) {
        for (int i = 0; i < batch; ++i, ++next)
            console.appendMessage(next, QStringLiteral("line %1").arg(next));
        const QStringList expected = numbered(std::max(1, next - 50), next - 1);
        QCOMPARE(console.text(), expected.join(QLatin1Char('\n')));
        QCOMPARE(console.lines(), expected);
    }
}

void tst_Consoles::viewUpdatesByItselfAfterABurst()
{
    ErrorConsoleWidget console;
    for (int i = 0; i < 10000; ++i)
        console.appendError(i, QStringLiteral("E1"), QStringLiteral("Overheat"));
    QTRY_COMPARE(console.textView()->document()->blockCount(), ConsoleWidget::DefaultMaxLines);
    QVERIFY(console.textView()->toPlainText().startsWith(QLatin1String("[9500.000] E1 : Overheat\n")));
    QVERIFY(console.textView()->toPlainText().endsWith(QLatin1String("[9999.000] E1 : Overheat")));
}

void tst_Consoles::autoScrollKeepsTheNewestLineInView()
{
    ErrorConsoleWidget console;
    console.resize(300, 150);
    console.show();
    QVERIFY(QTest::qWaitForWindowExposed(&console));
    QScrollBar *bar = console.textView()->verticalScrollBar();
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 200; ++i)
            console.appendError(i, QStringLiteral("E%1").arg(i), QString());
        console.flush();
        QVERIFY(bar->maximum() > 0);
        QCOMPARE(bar->value(), bar->maximum());
    }
}

void tst_Consoles::withoutAutoScrollTheViewStaysPut()
{
    MessagesConsoleWidget console;
    console.setMaxLines(300);
    console.setAutoScroll(false);
    console.resize(300, 150);
    console.show();
    QVERIFY(QTest::qWaitForWindowExposed(&console));
    for (int i = 0; i < 300; ++i)
        console.appendMessage(i, QStringLiteral("filling"));
    console.flush();
    QScrollBar *bar = console.textView()->verticalScrollBar();
    QVERIFY(bar->maximum() > 100);
    const int position = bar->maximum() / 3;
    bar->setValue(position);

    for (int batch : {1, 5, 200}) {
        for (int i = 0; i < batch; ++i)
            console.appendMessage(i, QStringLiteral("more"));
        console.flush();
        QCOMPARE(bar->value(), position);
    }

    console.setAutoScroll(true);
    QCOMPARE(bar->value(), bar->maximum());
}

void tst_Consoles::clearEmptiesTheConsole()
{
    ErrorConsoleWidget console;
    console.appendError(1.0, QStringLiteral("E1"), QStringLiteral("first"));
    console.flush();
    console.appendError(2.0, QStringLiteral("E2"), QStringLiteral("pending"));
    console.clear();
    QCOMPARE(console.lineCount(), 0);
    QCOMPARE(console.text(), QString());
    QTest::qWait(2 * ConsoleWidget::RefreshIntervalMs); // a pending update must not bring lines back
    QCOMPARE(console.textView()->toPlainText(), QString());

    console.appendError(3.0, QStringLiteral("E3"), QStringLiteral("after"));
    QCOMPARE(console.text(), QStringLiteral("[3.000] E3 : after"));
}

void tst_Consoles::configRoundTripAndLimits()
{
    MessagesConsoleWidget console;
    QCOMPARE(console.maxLines(), 500);
    QVERIFY(console.autoScroll());
    QVERIFY(!console.usesSignals());

    console.loadConfig(QJsonObject{{QStringLiteral("autoScroll"), false}});
    QCOMPARE(console.maxLines(), 500);
    QVERIFY(!console.autoScroll());

    for (int i = 1; i <= 120; ++i)
        console.appendMessage(i, QStringLiteral("line %1").arg(i));
    console.loadConfig(QJsonObject{{QStringLiteral("maxLines"), 80}});
    QCOMPARE(console.lines(), numbered(41, 120));

    MessagesConsoleWidget restored;
    restored.loadConfig(console.saveConfig());
    QCOMPARE(restored.maxLines(), 80);
    QVERIFY(!restored.autoScroll());

    restored.loadConfig(QJsonObject{{QStringLiteral("maxLines"), 1e12}});
    QCOMPARE(restored.maxLines(), ConsoleWidget::MaxLinesLimit);
    restored.loadConfig(QJsonObject{{QStringLiteral("maxLines"), -5}});
    QCOMPARE(restored.maxLines(), 1);
    restored.loadConfig(QJsonObject{{QStringLiteral("maxLines"), QStringLiteral("many")}});
    QCOMPARE(restored.maxLines(), 1);
}

void tst_Consoles::configFormEditsBothSettings()
{
    ErrorConsoleWidget console;
    auto dialog = std::make_unique<QWidget>();
    auto *form = new QFormLayout(dialog.get());
    console.buildConfigForm(form, dialog.get());
    QCOMPARE(form->rowCount(), 2);
    auto *lines = qobject_cast<QSpinBox *>(form->itemAt(0, QFormLayout::FieldRole)->widget());
    auto *scroll = qobject_cast<QCheckBox *>(form->itemAt(1, QFormLayout::SpanningRole)->widget());
    QVERIFY(lines && scroll);
    QCOMPARE(lines->minimum(), 50);
    QCOMPARE(lines->maximum(), 100000);
    QCOMPARE(lines->value(), 500);
    QCOMPARE(scroll->text(), QStringLiteral("Auto-scroll"));
    QVERIFY(scroll->isChecked());

    lines->setValue(1000);
    scroll->setChecked(false);
    console.applyConfigForm();
    QCOMPARE(console.maxLines(), 1000);
    QVERIFY(!console.autoScroll());

    dialog.reset();
    console.applyConfigForm();
    QCOMPARE(console.maxLines(), 1000);
}

QTEST_MAIN(tst_Consoles)
#include "tst_consoles.moc"
