// Any bytes as a field's flagpoints.ini, imported into the field.
#include "clients/field_contents.h"
#include "fuzz_support/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const field_dir = fuzz_support::input_files(data, size, {"flagpoints.ini"});
    import_flag_points(QDir(field_dir), fuzz_support::fresh_field());
    return 0;
}
