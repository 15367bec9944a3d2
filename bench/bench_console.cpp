// Console burst: the thousands of lines a seek re-announces, or a chatty
// device, must not freeze the window. Measures 10,000 appends to a console
// that keeps 500 lines, including the view update they cause.
#include "ErrorConsoleWidget.h"
#include "MessagesConsoleWidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTextEdit>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int Appends = 10000;
constexpr int Rounds = 15;
constexpr double TargetMs = 50.0;

template<typename Append>
double burstMs(ConsoleWidget &console, Append append)
{
    std::vector<double> times;
    for (int round = 0; round < Rounds; ++round) {
        console.clear();
        QApplication::processEvents();
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < Appends; ++i)
            append(i);
        console.flush();
        console.textView()->viewport()->repaint();
        QApplication::processEvents();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// A steady chatty device: the view is updated at most once per display frame,
// so what counts is one coalesced update of a full console with the lines of
// one frame (60 lines = a 3.6 kHz device at 60 frames per second), repaint
// included.
double steadyUpdateMs(ErrorConsoleWidget &console, const QString &id, const QString &text)
{
    constexpr int LinesPerUpdate = 60;
    console.clear();
    for (int i = 0; i < ConsoleWidget::DefaultMaxLines; ++i)
        console.appendError(i, id, text);
    console.flush();
    std::vector<double> times;
    for (int round = 0; round < 50; ++round) {
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < LinesPerUpdate; ++i)
            console.appendError(round + i * 0.001, id, text);
        console.flush();
        console.textView()->viewport()->repaint();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void printRow(const char *name, double ms)
{
    std::printf("| %s | %.2f ms (median of %d) | < %.0f ms %s |\n", name, ms, Rounds, TargetMs,
                ms < TargetMs ? "(met)" : "(MISSED)");
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    ErrorConsoleWidget errors;
    errors.resize(400, 300);
    errors.show();
    const QString id = QStringLiteral("ERR_OVERTEMP");
    const QString text = QStringLiteral("Coolant temperature above limit");
    printRow("Error console: 10,000 appends, 500 kept, view updated",
             burstMs(errors, [&](int i) { errors.appendError(i * 0.01, id, text); }));

    const double update = steadyUpdateMs(errors, id, text);
    std::printf("| Error console, full: one view update with 60 new lines (one frame of a 3.6 kHz device) | %.2f ms | < 16 ms %s |\n",
                update, update < 16.0 ? "(met)" : "(MISSED)");

    MessagesConsoleWidget messages;
    messages.resize(400, 300);
    messages.setAutoScroll(false);
    messages.show();
    const QString message = QStringLiteral("boot sequence step completed, waiting for sensor");
    printRow("Messages console (auto-scroll off): 10,000 appends, 500 kept",
             burstMs(messages, [&](int i) { messages.appendMessage(i * 0.01, message); }));
    return 0;
}
