// The soak: the demo dashboard (every widget type) fed by the simulated
// device at 10,000 lines a second while recording, for ten minutes; the
// resident memory once a minute. After the first minute it must stay within
// 10 MB: plots, consoles and the live path hold bounded state, and the
// recording goes to disk. Not part of ./bench.sh's usual run: ./bench.sh soak.
#include "BenchDemo.h"
#include "LiveFeeder.h"
#include "Ombrix.h"
#include "RecordingWriter.h"
#include "SignalDefinitions.h"

#include <QApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {
constexpr double LinesPerSecond = 10000.0;
constexpr double GrowthLimitMb = 10.0;
}

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication app(argc, argv);
    const int minutes = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 10;

    QTemporaryDir root;
    const QString project = root.filePath(QStringLiteral("demo"));
    if (!BenchDemo::copyDemo(project))
        qFatal("bench_soak: cannot copy the demo project");
    SignalDefinitions defs;
    defs.load(QDir(project).filePath(QStringLiteral("dashboard_signals.def")));
    LiveFeeder feeder(defs);

    Ombrix window;
    window.setProjectDir(project);
    window.loadLayoutFrom(QDir(project).filePath(QStringLiteral("layouts/demo.json")));
    window.resize(1280, 800);
    window.show();
    if (!window.connectPort(feeder.path(), 115200))
        qFatal("bench_soak: the window cannot open %s", qPrintable(feeder.path()));
    feeder.start(LinesPerSecond);
    window.recordButton();
    if (window.mode() != Ombrix::Record)
        qFatal("bench_soak: recording did not start");

    std::printf("| minute | resident memory | lines recorded |\n|---|---|---|\n");
    double afterFirst = 0.0;
    double highest = 0.0;
    for (int minute = 1; minute <= minutes; ++minute) {
        BenchDemo::runFor(60 * 1000);
        const double mb = BenchDemo::residentMb();
        if (minute == 1)
            afterFirst = mb;
        highest = std::max(highest, mb);
        std::printf("| %d | %.1f MB | %lld |\n", minute, mb, window.recordingWriter()->linesWritten());
        std::fflush(stdout);
    }
    feeder.stop();
    window.stopButton();
    const double growth = highest - afterFirst;
    std::printf("\n| name | figure | target |\n|---|---|---|\n");
    std::printf("| Soak, %d min at %.0f lines/s while recording: growth after the first minute | %.1f MB (%.1f -> %.1f MB at most) | <= %.0f MB %s |\n",
                minutes, LinesPerSecond, growth, afterFirst, highest, GrowthLimitMb,
                growth <= GrowthLimitMb ? "(met)" : "(MISSED)");
    return 0;
}
