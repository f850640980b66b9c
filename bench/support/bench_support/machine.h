#pragma once
// What every benchmark prints first, so that its figures can be compared:
// the processor, its hardware threads, the compiler and the kind of build.

#include <fstream>
#include <string>
#include <thread>

namespace bench_support {

inline std::string cpu_model() {
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string line;
    while (std::getline(cpuinfo, line))
        if (line.rfind("model name", 0) == 0)
            return line.substr(line.find(':') + 2);
    return "unknown processor";
}

// "machine: <model>, <n> hardware threads; compiler <version>, <kind> build"
inline std::string machine_line() {
#ifdef NDEBUG
    char const* build = "optimised";
#else
    char const* build = "debug";
#endif
    return "machine: " + cpu_model() + ", " + std::to_string(std::thread::hardware_concurrency()) +
           " hardware threads; compiler " + __VERSION__ + ", " + build + " build";
}

} // namespace bench_support
