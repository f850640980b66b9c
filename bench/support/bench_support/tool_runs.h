#pragma once
// Runs of the tool itself, as a user starts it: a child process, timed from
// start to exit, with its peak resident set; and counts of elements in what
// it wrote.

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

extern char** environ;

namespace bench_support {

struct ToolRun {
    bool succeeded = false; // started, and ended with status 0
    double seconds = 0.0;
    double user_seconds = 0.0;   // processor time in the tool's own code
    double system_seconds = 0.0; // and in the kernel on its behalf
    long peak_rss_kib = 0;
};

inline ToolRun run_tool(QString const& program, QStringList const& arguments) {
    std::vector<QByteArray> storage{program.toLocal8Bit()};
    for (QString const& argument : arguments)
        storage.push_back(argument.toLocal8Bit());
    std::vector<char*> argv;
    for (QByteArray& argument : storage)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    ToolRun run;
    auto const start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0)
        return run;
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid)
        return run;
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    auto seconds = [](timeval const& time) { return time.tv_sec + time.tv_usec / 1e6; };
    run.user_seconds = seconds(usage.ru_utime);
    run.system_seconds = seconds(usage.ru_stime);
    run.peak_rss_kib = usage.ru_maxrss;
    run.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return run;
}

// The options of the benchmarks on generated trees: --runs N, --seed N and --scales a,b,c.
struct TreeBenchOptions {
    int runs = 3;
    std::uint32_t seed = 1;
    QList<double> scales;
};

inline TreeBenchOptions tree_bench_options(QStringList const& args, QList<double> scales) {
    TreeBenchOptions options;
    options.scales = scales;
    for (int i = 0; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--runs"))
            options.runs = std::max(1, args[i + 1].toInt());
        else if (args[i] == QLatin1String("--seed"))
            options.seed = args[i + 1].toUInt();
        else if (args[i] == QLatin1String("--scales")) {
            options.scales.clear();
            for (QString const& scale : args[i + 1].split(QLatin1Char(',')))
                options.scales << scale.toDouble();
        }
    }
    return options;
}

// How often `text` stands in the file at `path`, read in blocks; -1 when the
// file can't be read.
inline long long count_in_file(QString const& path, QByteArray const& text) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    long long count = 0;
    QByteArray carry;
    while (!file.atEnd()) {
        QByteArray const block = carry + file.read(1 << 22);
        for (int at = block.indexOf(text); at >= 0; at = block.indexOf(text, at + text.size()))
            ++count;
        carry = block.right(text.size() - 1);
    }
    return count;
}

} // namespace bench_support
