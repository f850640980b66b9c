#pragma once
// The whole run, from the command line to the save. Does not return: the
// process ends with status 0, or 1 after a usage or "E: " line.

[[noreturn]] void run(int argc, char** argv);
