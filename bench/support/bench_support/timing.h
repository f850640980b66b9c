#pragma once
// Timings of code in the benchmark's own process: the median over a few runs, each of enough
// repetitions to rise above the clock's resolution.

#include <algorithm>
#include <chrono>
#include <functional>
#include <vector>

namespace bench_support {

// Each figure is the median of this many timings, each of enough repetitions to last 0.1 s.
inline constexpr int timings = 5;
inline constexpr double shortestTiming = 0.1;

inline double secondsOf(std::function<void()> const& run) {
    auto const start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Median seconds of one call of `run`, where `prepare` (untimed) sets up each call.
inline double medianSeconds(std::function<void()> const& prepare,
                            std::function<void()> const& run) {
    prepare();
    int repetitions = std::max(1, static_cast<int>(shortestTiming / secondsOf(run)));
    std::vector<double> seconds;
    for (int t = 0; t < timings; ++t) {
        double total = 0.0;
        for (int r = 0; r < repetitions; ++r) {
            prepare();
            total += secondsOf(run);
        }
        seconds.push_back(total / repetitions);
    }
    std::nth_element(seconds.begin(), seconds.begin() + timings / 2, seconds.end());
    return seconds[timings / 2];
}

} // namespace bench_support
