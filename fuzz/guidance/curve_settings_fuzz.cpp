// A curve's settings file, its .crv file and its Tramline.ini, in this order,
// imported into a field.
#include "fuzz_support/fuzz_support.h"
#include "guidance/curves.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const field_dir = fuzz_support::input_files(
        data, size,
        {"Curves/Line/Line.ini", "Curves/Line/Line.crv", "Curves/Line/Tramline/Tramline.ini"});
    BaseStationTable base_stations;
    import_curves(QDir(field_dir), fuzz_support::fresh_field(), base_stations);
    return 0;
}
