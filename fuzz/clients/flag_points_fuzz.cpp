// Any bytes as a field's flagpoints.ini, imported into the field.
#include "clients/field_contents.h"
#include "fuzz_support/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const field_dir = fuzz_support::fresh_dir();
    fuzz_support::write_files(field_dir, {QStringLiteral("flagpoints.ini")},
                              {fuzz_support::whole_file(data, size)});
    import_flag_points(QDir(field_dir), fuzz_support::fresh_field());
    return 0;
}
