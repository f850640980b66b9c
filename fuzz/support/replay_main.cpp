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

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        std::vector<fs::path> inputs;
        if (fs::is_regular_file(argv[i]))
            inputs.push_back(argv[i]);
        else if (fs::is_directory(argv[i]))
            for (fs::directory_entry const& entry : fs::recursive_directory_iterator(argv[i]))
                if (entry.is_regular_file())
                    inputs.push_back(entry.path());
        std::sort(inputs.begin(), inputs.end());
        for (fs::path const& input : inputs) {
            std::ifstream in(input, std::ios::binary);
            std::vector<std::uint8_t> const bytes{std::istreambuf_iterator<char>(in),
                                                  std::istreambuf_iterator<char>()};
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++replayed;
        }
    }
    std::printf("replayed %zu inputs\n", replayed);
    // No input at all means a corpus went missing, not that all is well.
    return replayed > 0 ? 0 : 1;
}
