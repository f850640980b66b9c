// The whole tool on heavy display trees: scales 0.25, 0.5 and 1 of the
// generated tree, each migrated onto an empty set and then with -m onto the
// set that first run saved. Each run is the real binary in a child process,
// started after a sync. The runs go in rounds over all scales, and the median
// of the rounds is kept. Prints per run the wall time with the tool's user
// and system time, output points per second, peak RSS and its bytes per
// output point, and the growth exponent of the time between scales (1.0 is
// linear). All trees and sets stay on disk until the end: about 10 GB.
//
//   run_bench [--runs N] [--scales 0.25,0.5,1] [--seed N]

#include "display_tree.h"

#include "bench_support/machine.h"
#include "bench_support/tool_runs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
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

// One scale of the tree and its runs.
struct Measured {
    double scale = 0.0;
    QString data;   // the generated tree
    QString first;  // the set of the run onto an empty set, until moved
    QString second; // the set of the -m run
    display_tree::Counts counts;
    double generating = 0.0;     // seconds
    long long points = 0;        // written by the first run
    long long merged_points = 0; // by the -m run, which adds its line groups again
    std::vector<ToolRun> fresh_runs;
    std::vector<ToolRun> merged_runs;
    ToolRun fresh;
    ToolRun merged;
};

Measured generate(QString const& scratch, double scale, std::uint32_t seed) {
    QString const base = QStringLiteral("%1/scale-%2").arg(scratch).arg(scale);
    Measured result;
    result.scale = scale;
    result.data = base + QStringLiteral("/data");
    result.first = base + QStringLiteral("/first");
    result.second = base + QStringLiteral("/second");
    auto const start = std::chrono::steady_clock::now();
    result.counts = display_tree::generate(result.data, seed, scale);
    result.generating =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

QString own_set(Measured const& measured) {
    return measured.data + QStringLiteral("/taskdata");
}

// One run onto an empty set, then one with -m onto the set it saved, moved to
// where the tool looks for a set of the display's own. The set is moved, not
// copied: a copy would be fresh in the page cache, and take memory of the
// machine just before the run, which a display's set saved days before is
// not and does not.
void run_pair(Measured& measured) {
    QDir(own_set(measured)).removeRecursively();
    QDir(measured.first).removeRecursively();
    measured.fresh_runs.push_back(run_tool({QStringLiteral("-O"), measured.first, measured.data}));
    if (!QDir().rename(measured.first, own_set(measured)))
        fail(QStringLiteral("cannot move %1 to %2").arg(measured.first, own_set(measured)));
    QDir(measured.second).removeRecursively();
    measured.merged_runs.push_back(
        run_tool({QStringLiteral("-m"), QStringLiteral("-O"), measured.second, measured.data}));
}

void report(char const* what, long long points, ToolRun const& run) {
    double const rss_bytes = run.peak_rss_kib * 1024.0;
    std::printf("  %-27s %6.2f s (user %5.2f s, system %5.2f s)  %5.2f M points/s  peak RSS "
                "%7.1f MB  %5.1f bytes/point\n",
                what, run.seconds, run.user_seconds, run.system_seconds, points / run.seconds / 1e6,
                rss_bytes / 1e6, rss_bytes / points);
}

void report(Measured const& measured) {
    std::printf("scale %.2f: %d clients, %d fields, %d products, %d mixtures; %lld source "
                "points, %.0f MB of source files (written in %.1f s); %lld points written, "
                "TASKDATA.XML %.0f MB (%lld points after the -m run)\n",
                measured.scale, measured.counts.clients, measured.counts.fields,
                measured.counts.products, measured.counts.mixtures,
                static_cast<long long>(measured.counts.source_points), measured.counts.bytes / 1e6,
                measured.generating, measured.points,
                QFileInfo(own_set(measured) + QStringLiteral("/TASKDATA.XML")).size() / 1e6,
                measured.merged_points);
    report("onto an empty set", measured.points, measured.fresh);
    report("with -m onto the saved set", measured.merged_points, measured.merged);
    auto cpu = [](ToolRun const& run) { return run.user_seconds + run.system_seconds; };
    std::printf("  -m run over first run: %.2f (processor time %.2f, user time alone %.2f)\n",
                measured.merged.seconds / measured.fresh.seconds,
                cpu(measured.merged) / cpu(measured.fresh),
                measured.merged.user_seconds / measured.fresh.user_seconds);
}

// t ~ n^k between two sizes: k = log(t2 / t1) / log(n2 / n1).
double growth_exponent(double n1, double t1, double n2, double t2) {
    return std::log(t2 / t1) / std::log(n2 / n1);
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    bench_support::TreeBenchOptions const options =
        bench_support::tree_bench_options(app.arguments().mid(1), {0.25, 0.5, 1.0});
    int const runs = options.runs;
    std::uint32_t const seed = options.seed;
    QList<double> const scales = options.scales;

    std::printf("%s; the tool runs on one thread; median of %d rounds, each a run of every "
                "scale\n",
                bench_support::machine_line().c_str(), runs);
    QTemporaryDir scratch;
    if (!scratch.isValid())
        fail(QStringLiteral("cannot create a temporary directory"));
    std::vector<Measured> measured;
    for (double scale : scales)
        measured.push_back(generate(scratch.path(), scale, seed));
    // Rounds over all scales rather than all runs of one scale after
    // another: a slow spell of a shared machine then touches every scale
    // alike instead of bending the growth between two of them.
    for (int round = 0; round < runs; ++round)
        for (Measured& scale : measured)
            run_pair(scale);
    for (Measured& scale : measured) {
        scale.fresh = median(scale.fresh_runs);
        scale.merged = median(scale.merged_runs);
        scale.points = count_points(own_set(scale));
        scale.merged_points = count_points(scale.second);
        report(scale);
    }

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
