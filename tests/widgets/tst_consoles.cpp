#include "ConfigFormHarness.h"
#include "ErrorConsoleWidget.h"
#include "FrameClock.h"
#include "MessagesConsoleWidget.h"

#include <QCheckBox>
#include <QJsonObject>
#include <QScrollBar>
#include <QSpinBox>
#include <QTest>
#include <QTextEdit>

class tst_Consoles : public QObject
{
    Q_OBJECT

    // The lines "[i.000] line i" for i in from..to, as append() below adds them.
    static QStringList numbered(int from, int to)
    {
        QStringList lines;
        for (int i = from; i <= to; ++i)
            lines.append(QStringLiteral("[%1.000] line %1").arg(i));
        return lines;
    }

    static void append(MessagesConsoleWidget &console, int from, int to)
    {
        for (int i = from; i <= to; ++i)
            console.appendMessage(i, QStringLiteral("line %1").arg(i));
    }

private Q_SLOTS:
    void linesAreFormatted()
    {
        QCOMPARE(ErrorConsoleWidget::formatLine(2.5, "E_TEMP", "Overheat"), QStringLiteral("[2.500] E_TEMP : Overheat"));
        QCOMPARE(ErrorConsoleWidget::formatLine(0.0, "E42", QString()), QStringLiteral("[0.000] E42"));
        QCOMPARE(MessagesConsoleWidget::formatLine(1234.56789, "boot ok"), QStringLiteral("[1234.568] boot ok"));
    }

    void oldestLinesLeaveFirstAtMaxLines()
    {
        // Small and large batches take both ways of updating the view:
        // appending with a cut at the top, and rewriting. The 51st line removes the first.
        MessagesConsoleWidget console;
        console.setMaxLines(50);
        int next = 1;
        for (int batch : {50, 1, 7, 30, 2, 60, 1, 24, 25, 26, 3, 500, 49, 1}) {
            append(console, next, next + batch - 1);
            next += batch;
            QCOMPARE(console.text(), numbered(std::max(1, next - 50), next - 1).join(QLatin1Char('\n')));
        }
        console.appendMessage(next, QStringLiteral("two\nparts")); // stays one line
        QCOMPARE(console.lines().last(), QStringLiteral("[%1.000] two parts").arg(next));
        QCOMPARE(console.textView()->document()->blockCount(), 50);
    }

    void viewUpdatesByItselfAfterABurst()
    {
        ErrorConsoleWidget console;
        for (int i = 0; i < 10000; ++i)
            console.appendError(i, QStringLiteral("E1"), QStringLiteral("Overheat"));
        QTRY_COMPARE(console.textView()->document()->blockCount(), 500);
        QVERIFY(console.textView()->toPlainText().startsWith(QLatin1String("[9500.000] E1 : Overheat\n")));
    }

    void eventsBetweenFramesAppearTogetherInOrder()
    {
        MessagesConsoleWidget console;
        append(console, 1, 3);
        QCOMPARE(console.textView()->toPlainText(), QString()); // not before the frame
        FrameClock::instance().finishFrame();
        QCOMPARE(console.textView()->toPlainText(), numbered(1, 3).join(QLatin1Char('\n')));
    }

    void scrollFollowsTheNewestLineOnlyWithAutoScroll()
    {
        MessagesConsoleWidget console;
        console.resize(300, 150);
        console.show();
        QVERIFY(QTest::qWaitForWindowExposed(&console));
        QScrollBar *bar = console.textView()->verticalScrollBar();
        for (int batch : {200, 1, 300}) {
            append(console, 1, batch);
            console.flush();
            QVERIFY(bar->maximum() > 100);
            QCOMPARE(bar->value(), bar->maximum());
        }
        console.setAutoScroll(false);
        const int position = bar->maximum() / 3;
        bar->setValue(position);
        for (int batch : {1, 5, 200}) {
            append(console, 1, batch);
            console.flush();
            QCOMPARE(bar->value(), position);
        }
        console.setAutoScroll(true);
        QCOMPARE(bar->value(), bar->maximum());
    }

    void clearDropsPendingLines()
    {
        ErrorConsoleWidget console;
        console.appendError(1.0, QStringLiteral("E1"), QStringLiteral("shown"));
        console.flush();
        console.appendError(2.0, QStringLiteral("E2"), QStringLiteral("pending"));
        console.clear();
        FrameClock::instance().finishFrame(); // the pending frame must not bring lines back
        QCOMPARE(console.textView()->toPlainText(), QString());
        console.appendError(3.0, QStringLiteral("E3"), QStringLiteral("after"));
        QCOMPARE(console.text(), QStringLiteral("[3.000] E3 : after"));
    }

    void configRoundTripLimitsAndForm()
    {
        MessagesConsoleWidget console;
        QVERIFY(!console.usesSignals());
        console.loadConfig(QJsonObject{{"autoScroll", false}});
        append(console, 1, 120);
        console.loadConfig(QJsonObject{{"maxLines", 80}});
        QCOMPARE(console.lines(), numbered(41, 120));
        QCOMPARE(console.saveConfig(), (QJsonObject{{"maxLines", 80}, {"autoScroll", false}}));
        console.loadConfig(QJsonObject{{"maxLines", 1e12}});
        QCOMPARE(console.maxLines(), 100000);

        ConfigFormHarness form(console);
        auto *lines = form.editor<QSpinBox>(0);
        auto *scroll = form.editor<QCheckBox>(1);
        QCOMPARE(lines->minimum(), 50);
        QCOMPARE(scroll->text(), QStringLiteral("Auto-scroll"));
        lines->setValue(1000);
        scroll->setChecked(true);
        console.applyConfigForm();
        QCOMPARE(console.maxLines(), 1000);
        QVERIFY(console.autoScroll());
    }
};

QTEST_MAIN(tst_Consoles)
#include "tst_consoles.moc"
