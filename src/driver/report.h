#pragma once
// The tool's three ways to speak: progress lines ("P: 37%") on standard
// output, a fatal error ("E: ...") on standard error, and the usage line.
// Warnings ("W: ...") go through qWarning() where they arise.

#include <QString>

struct ProgressState {
    bool enabled = false; // -p
    int current = 0;      // items done
    int total = 0;        // items to do
};

extern ProgressState progress_state;
extern char const* program_name;
extern bool merge_existing;  // -m: reuse clients, farms and fields found by name
extern bool ignore_existing; // -s: start from a fresh template

// "P: <100 * current / total>%", a line end and an empty line; flushed.
void print_progress();
// One more item done (never beyond the total); prints when enabled.
void step_progress();
// "E: <message>" on standard error, then exit status 1.
[[noreturn]] void fatal_error(QString const& message);
// "usage: <program> [-p] [-m] [-O OUTPUT] DATADIR" on standard error, then
// exit status 1.
[[noreturn]] void usage();
