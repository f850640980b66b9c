#include "driver/report.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

ProgressState progress_state;
char const* program_name = "";
bool merge_existing = false;
bool ignore_existing = false;

void print_progress() {
    std::printf("P: %d%%\n", 100 * progress_state.current / progress_state.total);
    std::fflush(stdout);
    std::printf("\n");
    std::fflush(stdout);
}

void step_progress() {
    progress_state.current = std::min(progress_state.current + 1, progress_state.total);
    if (progress_state.enabled)
        print_progress();
}

void fatal_error(QString const& message) {
    std::fprintf(stderr, "E: %s\n", message.toUtf8().constData());
    std::exit(1);
}

void usage() {
    std::fprintf(stderr, "usage: %s [-p] [-m] [-O OUTPUT] DATADIR\n", program_name);
    std::exit(1);
}
