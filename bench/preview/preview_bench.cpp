// taskdata-preview on the sets of heavy display trees: the generated tree at
// scales 0.25 and 1 (500 and 2,000 fields), migrated by the tool onto an
// empty set, then drawn. Each preview is the real binary in a child process;
// the median of the runs is kept. Prints per scale the set's size and
// points, the preview's wall, user and system time with its peak RSS, and
// the size of the page.
//
//   preview_bench [--runs N] [--scales 0.25,1] [--seed N]

#include "display_tree.h"

#include "bench_support/machine.h"
#include "bench_support/tool_runs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
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

ToolRun run(char const* program, QStringList const& arguments) {
    ::sync();
    ToolRun const result = bench_support::run_tool(QString::fromUtf8(program), arguments);
    if (!result.succeeded)
        fail(QStringLiteral("%1 failed on: %2").arg(program, arguments.join(QLatin1Char(' '))));
    return result;
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    bench_support::TreeBenchOptions const options =
        bench_support::tree_bench_options(app.arguments().mid(1), {0.25, 1.0});
    int const runs = options.runs;
    std::uint32_t const seed = options.seed;
    QList<double> const scales = options.scales;

    std::printf("%s; median of %d runs of taskdata-preview\n",
                bench_support::machine_line().c_str(), runs);
    QTemporaryDir scratch;
    if (!scratch.isValid())
        fail(QStringLiteral("cannot create a temporary directory"));
    for (double scale : scales) {
        QString const base = QStringLiteral("%1/scale-%2").arg(scratch.path()).arg(scale);
        QString const set = base + QStringLiteral("/set");
        QString const page = base + QStringLiteral("/preview.html");
        display_tree::Counts const counts =
            display_tree::generate(base + QStringLiteral("/data"), seed, scale);
        run(TDM_TOOL, {QStringLiteral("-O"), set, base + QStringLiteral("/data")});
        long long const points =
            bench_support::count_in_file(set + QStringLiteral("/TASKDATA.XML"), "<PNT");

        std::vector<ToolRun> previews;
        for (int r = 0; r < runs; ++r)
            previews.push_back(run(TDM_PREVIEW, {set, QStringLiteral("-o"), page}));
        std::sort(previews.begin(), previews.end(),
                  [](ToolRun const& a, ToolRun const& b) { return a.seconds < b.seconds; });
        ToolRun const median = previews[previews.size() / 2];
        std::printf("scale %.2f: %d fields, TASKDATA.XML %.0f MB with %lld points\n"
                    "  preview %.2f s (user %.2f s, system %.2f s), %.2f M points/s, peak RSS "
                    "%.0f MB; page %.1f MB (%.1f kB per field)\n",
                    scale, counts.fields,
                    QFileInfo(set + QStringLiteral("/TASKDATA.XML")).size() / 1e6, points,
                    median.seconds, median.user_seconds, median.system_seconds,
                    points / median.seconds / 1e6, median.peak_rss_kib * 1024.0 / 1e6,
                    QFileInfo(page).size() / 1e6, QFileInfo(page).size() / 1e3 / counts.fields);
        QDir(base).removeRecursively();
    }
    return 0;
}
