// Any bytes as a .crv file: its reference and its segments.
#include "fuzz_support/fuzz_support.h"
#include "guidance/crv_file.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const dir = fuzz_support::input_files(data, size, {"Curve.crv"});
    QString const path = dir + "/Curve.crv";
    double latitude = 0.0;
    double longitude = 0.0;
    double height = 0.0;
    read_crv_reference(path, latitude, longitude, height);
    read_crv_segments(path);
    return 0;
}
