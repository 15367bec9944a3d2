// Layouts at scale: a 10,000-item layout of every widget type (the demo's
// items, repeated over a large surface) loaded into a shown window, and a
// layout of absurd sizes and positions. The figures say how long it takes
// until the window shows the loaded dashboard (the first paint polishes
// every new widget), how much memory the dashboard adds, and what a new
// widget costs on a full dashboard.
#include "BenchDemo.h"
#include "Dashboard.h"
#include "DashboardView.h"
#include "DashboardItem.h"
#include "Ombrix.h"
#include "UserPrompts.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGraphicsView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int ManyItems = 10000;
constexpr int Rounds = 3;
constexpr double LoadTargetMs = 2000.0;
constexpr double AddTargetMs = 50.0;
constexpr double AbsurdTargetMb = 150.0;

// Failures are printed, never asked about: nobody is there to click.
class PrintedPrompts : public UserPrompts
{
public:
    void warning(QWidget *, const QString &title, const QString &text, const QString &details) override
    {
        std::fprintf(stderr, "bench_layout: %s: %s %s\n", qPrintable(title), qPrintable(text), qPrintable(details));
    }
    void information(QWidget *, const QString &, const QString &text) override
    {
        std::fprintf(stderr, "bench_layout: %s\n", qPrintable(text));
    }
};

QJsonArray demoRecords(const QString &project)
{
    QFile file(QDir(project).filePath(QStringLiteral("layouts/demo.json")));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("bench_layout: no demo layout");
    return QJsonDocument::fromJson(file.readAll()).object().value(QLatin1String("items")).toArray();
}

bool writeLayout(const QString &path, const QJsonArray &items)
{
    QFile file(path);
    QJsonObject root;
    root.insert(QLatin1String("items"), items);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(root).toJson()) > 0;
}

// The demo's records one after the other on a 100-column grid of 200-unit
// cells, each on top of the ones before.
QJsonArray manyRecords(const QJsonArray &demo, int count)
{
    QJsonArray items;
    for (int i = 0; i < count; ++i) {
        QJsonObject record = demo.at(i % demo.size()).toObject();
        record.insert(QLatin1String("x"), (i % 100) * 200);
        record.insert(QLatin1String("y"), (i / 100) * 200);
        record.insert(QLatin1String("z"), i);
        items.append(record);
    }
    return items;
}

// Every record of the demo at 1e9 x 1e9 on the visible corner, and again
// as far out as a number goes.
QJsonArray absurdRecords(const QJsonArray &demo)
{
    QJsonArray items;
    for (const QJsonValue &value : demo) {
        QJsonObject record = value.toObject();
        record.insert(QLatin1String("width"), 1e9);
        record.insert(QLatin1String("height"), 1e9);
        record.insert(QLatin1String("x"), 0);
        record.insert(QLatin1String("y"), 0);
        items.append(record);
        record.insert(QLatin1String("x"), 1e300);
        record.insert(QLatin1String("y"), -1e300);
        items.append(record);
    }
    return items;
}

void settle()
{
    for (int i = 0; i < 3; ++i)
        QApplication::processEvents();
}

struct Figures
{
    double loadMs = 0.0; // until the window has painted the dashboard
    double loadCpuMs = 0.0;
    double paintMs = 0.0; // of which the first paint
    double addedMb = 0.0;
    double addWidgetMs = 0.0;
};

Figures loadInto(const QString &project, const QString &layout)
{
    Ombrix window;
    window.setPrompts(std::make_unique<PrintedPrompts>());
    window.setProjectDir(project);
    window.resize(1280, 800);
    window.show();
    settle();

    Figures figures;
    const double before = BenchDemo::residentMb();
    const double cpuBefore = BenchDemo::processCpuSeconds();
    QElapsedTimer timer;
    timer.start();
    if (!window.loadLayoutFrom(layout))
        qFatal("bench_layout: cannot load %s", qPrintable(layout));
    QElapsedTimer paint;
    paint.start();
    settle();
    window.view()->viewport()->repaint();
    figures.paintMs = paint.nsecsElapsed() / 1e6;
    figures.loadMs = timer.nsecsElapsed() / 1e6;
    figures.loadCpuMs = (BenchDemo::processCpuSeconds() - cpuBefore) * 1e3;
    figures.addedMb = BenchDemo::residentMb() - before;

    timer.restart();
    window.dashboard()->addWidget(QStringLiteral("DigitalDisplay"));
    figures.addWidgetMs = timer.nsecsElapsed() / 1e6;
    return figures;
}

int typeCount(const QJsonArray &records)
{
    QSet<QString> types;
    for (const QJsonValue &record : records)
        types.insert(record[QLatin1String("type")].toString());
    return int(types.size());
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

const char *verdict(bool met)
{
    return met ? "(met)" : "(MISSED)";
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication app(argc, argv);

    QTemporaryDir root;
    const QString project = root.filePath(QStringLiteral("demo"));
    if (!BenchDemo::copyDemo(project))
        qFatal("bench_layout: cannot copy the demo project");
    const QJsonArray demo = demoRecords(project);
    const QString many = QDir(project).filePath(QStringLiteral("layouts/many.json"));
    const QString absurd = QDir(project).filePath(QStringLiteral("layouts/absurd.json"));
    // "bench_layout COUNT" loads that many items once, for a profiler.
    const int count = argc > 1 ? QByteArray(argv[1]).toInt() : ManyItems;
    if (!writeLayout(many, manyRecords(demo, count)) || !writeLayout(absurd, absurdRecords(demo)))
        qFatal("bench_layout: cannot write the layouts");
    if (argc > 1) {
        const Figures f = loadInto(project, many);
        std::printf("%d items: %.0f ms until painted (CPU %.0f ms, paint %.0f ms), %.0f MB, add %.1f ms\n", count,
                    f.loadMs, f.loadCpuMs, f.paintMs, f.addedMb, f.addWidgetMs);
        return 0;
    }

    // The absurd layout first, while nothing else has touched the memory.
    const Figures huge = loadInto(project, absurd);
    std::printf("| Layout of %d items at 1e9 x 1e9 (half of them 1e300 out): memory added, shown and painted | %.0f MB | < %.0f MB %s |\n",
                int(demo.size()) * 2, huge.addedMb, AbsurdTargetMb, verdict(huge.addedMb < AbsurdTargetMb));

    std::vector<Figures> rounds;
    for (int round = 0; round < Rounds; ++round)
        rounds.push_back(loadInto(project, many));
    std::vector<double> load, loadCpuTimes, paint, add;
    for (const Figures &f : rounds) {
        load.push_back(f.loadMs);
        loadCpuTimes.push_back(f.loadCpuMs);
        paint.push_back(f.paintMs);
        add.push_back(f.addWidgetMs);
    }
    const double loadMs = median(load);
    const double loadCpu = median(loadCpuTimes);
    const double paintMs = median(paint);
    const double addMs = median(add);
    std::printf("| Load a %d-item layout (all %d widget types) into a shown window, until painted | %.0f ms, CPU %.0f ms (medians of %d) | < %.0f ms %s |\n",
                ManyItems, typeCount(demo), loadMs, loadCpu, Rounds, LoadTargetMs, verdict(loadMs < LoadTargetMs));
    std::printf("| of which the first paint (polishing every new widget) | %.0f ms (median of %d) | - |\n", paintMs,
                Rounds);
    std::printf("| Memory the %d items add (first load) | %.0f MB | - |\n", ManyItems, rounds.front().addedMb);
    std::printf("| Add a widget to the full dashboard (free place search) | %.1f ms (median of %d) | < %.0f ms %s |\n",
                addMs, Rounds, AddTargetMs, verdict(addMs < AddTargetMs));
    return 0;
}
