// Runs a fuzz target without libFuzzer over the inputs it is given: each file
// named, and each file below a directory named, once, in name order. A fault
// ends the run as it would end the fuzzer; a path that does not exist is
// passed over, so a target without findings needs no empty directory.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> inputs_below(fs::path const& path) {
    std::vector<fs::path> inputs;
    if (fs::is_regular_file(path))
        inputs.push_back(path);
    else if (fs::is_directory(path))
        for (fs::directory_entry const& entry : fs::recursive_directory_iterator(path))
            if (entry.is_regular_file())
                inputs.push_back(entry.path());
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

std::vector<std::uint8_t> read_bytes(fs::path const& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (fs::path const& input : inputs_below(argv[i])) {
            std::vector<std::uint8_t> const bytes = read_bytes(input);
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++replayed;
        }
    }
    std::printf("replayed %zu inputs\n", replayed);
    // No input at all means a corpus went missing, not that all is well.
    return replayed > 0 ? 0 : 1;
}
