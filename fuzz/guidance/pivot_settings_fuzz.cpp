// Any bytes as a pivot's settings file, imported into a field.
#include "fuzz_support/fuzz_support.h"
#include "guidance/pivots.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const field_dir = fuzz_support::input_files(data, size, {"Pivots/Line/Line.ini"});
    BaseStationTable base_stations;
    import_pivots(QDir(field_dir), fuzz_support::fresh_field(), base_stations);
    return 0;
}
