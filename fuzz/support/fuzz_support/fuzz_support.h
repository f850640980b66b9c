#pragma once
// What every fuzz target shares: the turning of one input into the files a
// reader takes, a fresh directory for them in each run, and the run's store
// emptied as a run without a loaded set starts it.

#include "taskdata/task_data.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace fuzz_support {

// The line that stands between the files of an input that makes several.
// No file the display writes holds it.
inline constexpr char file_separator[] = "\n--next-file--\n";

// Takes values off the front of an input, each as its bytes lie in memory.
struct ByteReader {
    std::uint8_t const* data;
    std::size_t size;

    bool has(std::size_t bytes) const { return size >= bytes; }
    template <typename T> T take() {
        T value;
        std::memcpy(&value, data, sizeof value);
        data += sizeof value;
        size -= sizeof value;
        return value;
    }
};

// The whole input as one file.
QByteArray whole_file(std::uint8_t const* data, std::size_t size);

// The files of an input in order, cut at every file_separator; an input
// without one is one file.
std::vector<QByteArray> split_files(std::uint8_t const* data, std::size_t size);

// An empty directory of its own for one run, below the process's scratch
// directory (made under /tmp on first use and removed at exit). The former
// run's directory is removed first. Each run gets a new name: Qt caches
// settings files by path and time, so a file rewritten at the same path
// within the same millisecond could be read as it was.
QString fresh_dir();

// Writes `files[i]` at `dir`/`paths[i]`, making the directories on the way.
// Names beyond the files given are not written, so an input with fewer files
// leaves those missing.
void write_files(QString const& dir, QStringList const& paths,
                 std::vector<QByteArray> const& files);

// Empties the run's store (`element_man`, with `task_data` its root) and
// gives it one field (PFD) for the importers of a field to fill.
TC::Task_data::Elements::Client::Partfield fresh_field();

} // namespace fuzz_support
