// The whole tool on heavy display trees: scales 0.25, 0.5 and 1 of the
// generated tree, each migrated onto an empty set and then with -m onto the
// set that first run saved. Each run is the real binary in a child process,
// started after a sync; the median of several runs is kept. Prints per run the wall time, output
// points per second, peak RSS and its bytes per output point, and the growth
// exponent of the time between scales (1.0 is linear).
//
//   run_bench [--runs N] [--scales 0.25,0.5,1] [--seed N]

#include "display_tree.h"

#include "bench_support/machine.h"
#include "bench_support/tool_runs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <unistd.h>

namespace {

using bench_support::ToolRun;

[[noreturn]] void fail(QString const& message) {
    std::fprintf(stderr, "%s\n", qPrintable(message));
    std::exit(1);
}

ToolRun run_tool(QStringList const& args) {
    // The write-back of the sets written before would otherwise land in
    // this run's time: a scale-1 set is 1.5 GB.
    ::sync();
    ToolRun const run = bench_support::run_tool(QStringLiteral(TDM_TOOL), args);
    if (!run.succeeded)
        fail(QStringLiteral("the tool failed on: %1").arg(args.join(QLatin1Char(' '))));
    return run;
}

// Points in a written set: every PNT element of TASKDATA.XML.
long long count_points(QString const& set_dir) {
    long long const count =
        bench_support::count_in_file(set_dir + QStringLiteral("/TASKDATA.XML"), "<PNT");
    if (count < 0)
        fail(QStringLiteral("no TASKDATA.XML in %1").arg(set_dir));
    return count;
}

ToolRun median(std::vector<ToolRun> runs) {
    std::sort(runs.begin(), runs.end(),
              [](ToolRun const& a, ToolRun const& b) { return a.seconds < b.seconds; });
    ToolRun result = runs[runs.size() / 2];
    std::vector<long> rss;
    for (ToolRun const& run : runs)
        rss.push_back(run.peak_rss_kib);
    std::sort(rss.begin(), rss.end());
    result.peak_rss_kib = rss[rss.size() / 2];
    return result;
}

void copy_set(QString const& from, QString const& to) {
    QDir().mkpath(to);
    for (QString const& name : QDir(from).entryList(QDir::Files)) {
        QFile::remove(to + QLatin1Char('/') + name);
        if (!QFile::copy(from + QLatin1Char('/') + name, to + QLatin1Char('/') + name))
            fail(QStringLiteral("cannot copy %1 into %2").arg(name, to));
    }
}

struct Measured {
    double scale = 0.0;
    long long points = 0;        // written by the first run
    long long merged_points = 0; // by the -m run, which adds its line groups again
    ToolRun fresh;
    ToolRun merged;
};

void report(char const* what, long long points, ToolRun const& run) {
    double const rss_bytes = run.peak_rss_kib * 1024.0;
    std::printf("  %-30s %7.2f s  %6.2f M points/s  peak RSS %7.1f MB  %6.1f bytes/point\n", what,
                run.seconds, points / run.seconds / 1e6, rss_bytes / 1e6, rss_bytes / points);
}

Measured measure(QString const& scratch, double scale, std::uint32_t seed, int runs) {
    QString const tag = QStringLiteral("scale-%1").arg(scale);
    QString const data = QStringLiteral("%1/%2/data").arg(scratch, tag);
    QString const first = QStringLiteral("%1/%2/first").arg(scratch, tag);
    QString const second = QStringLiteral("%1/%2/second").arg(scratch, tag);

    auto const start = std::chrono::steady_clock::now();
    display_tree::Counts const counts = display_tree::generate(data, seed, scale);
    double const generating =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    Measured result;
    result.scale = scale;
    std::vector<ToolRun> fresh;
    for (int i = 0; i < runs; ++i) {
        QDir(first).removeRecursively();
        fresh.push_back(run_tool({QStringLiteral("-O"), first, data}));
    }
    result.fresh = median(fresh);
    result.points = count_points(first);

    // The second run starts from the first run's set, where the tool looks
    // for a set of the display's own.
    copy_set(first, data + QStringLiteral("/taskdata"));
    std::vector<ToolRun> merged;
    for (int i = 0; i < runs; ++i) {
        QDir(second).removeRecursively();
        merged.push_back(run_tool({QStringLiteral("-m"), QStringLiteral("-O"), second, data}));
    }
    result.merged = median(merged);
    result.merged_points = count_points(second);

    std::printf("scale %.2f: %d clients, %d fields, %d products, %d mixtures; %lld source "
                "points, %.0f MB of source files (written in %.1f s); %lld points written, "
                "TASKDATA.XML %.0f MB (%lld points after the -m run)\n",
                scale, counts.clients, counts.fields, counts.products, counts.mixtures,
                static_cast<long long>(counts.source_points), counts.bytes / 1e6, generating,
                result.points, QFileInfo(first + QStringLiteral("/TASKDATA.XML")).size() / 1e6,
                result.merged_points);
    report("onto an empty set", result.points, result.fresh);
    report("with -m onto the saved set", result.merged_points, result.merged);
    std::printf("  -m run over first run: %.2f\n", result.merged.seconds / result.fresh.seconds);
    std::fflush(stdout);
    QDir(QStringLiteral("%1/%2").arg(scratch, tag)).removeRecursively();
    return result;
}

// t ~ n^k between two sizes: k = log(t2 / t1) / log(n2 / n1).
double growth_exponent(double n1, double t1, double n2, double t2) {
    return std::log(t2 / t1) / std::log(n2 / n1);
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QStringList const args = app.arguments().mid(1);
    int runs = 3;
    std::uint32_t seed = 1;
    QList<double> scales{0.25, 0.5, 1.0};
    for (int i = 0; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--runs"))
            runs = std::max(1, args[i + 1].toInt());
        else if (args[i] == QLatin1String("--seed"))
            seed = args[i + 1].toUInt();
        else if (args[i] == QLatin1String("--scales")) {
            scales.clear();
            for (QString const& scale : args[i + 1].split(QLatin1Char(',')))
                scales << scale.toDouble();
        }
    }

    std::printf("%s; the tool runs on one thread; median of %d runs\n",
                bench_support::machine_line().c_str(), runs);
    QTemporaryDir scratch;
    if (!scratch.isValid())
        fail(QStringLiteral("cannot create a temporary directory"));
    std::vector<Measured> measured;
    for (double scale : scales)
        measured.push_back(measure(scratch.path(), scale, seed, runs));

    for (std::size_t i = 1; i < measured.size(); ++i) {
        Measured const& a = measured[i - 1];
        Measured const& b = measured[i];
        std::printf(
            "growth exponent from scale %.2f to %.2f: %.2f onto an empty set, %.2f with "
            "-m\n",
            a.scale, b.scale, growth_exponent(a.points, a.fresh.seconds, b.points, b.fresh.seconds),
            growth_exponent(a.merged_points, a.merged.seconds, b.merged_points, b.merged.seconds));
    }
    return 0;
}
