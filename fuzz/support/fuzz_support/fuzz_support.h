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

// Writes the input as the files at `paths` below an empty directory of the
// run's own and returns that directory. One path takes the whole input;
// several take its pieces between file_separator lines, in order, and paths
// beyond the last piece stay missing. The former run's directory is removed
// first, and each run gets a new name: Qt caches settings files by path and
// time, so a file rewritten at the same path within the same millisecond
// could be read as it was.
QString input_files(std::uint8_t const* data, std::size_t size, QStringList const& paths);

// Empties the run's store (`element_man`, with `task_data` its root) and
// gives it one field (PFD) for the importers of a field to fill.
TC::Task_data::Elements::Client::Partfield fresh_field();

} // namespace fuzz_support
