// Any bytes as a field's .bdy file, read with the field's boundaries and
// written into the field as the run does.
#include "boundaries/boundary_files.h"
#include "boundaries/boundary_polygons.h"
#include "fuzz_support/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const field_dir = fuzz_support::fresh_dir();
    fuzz_support::write_files(field_dir, {QStringLiteral("Boundaries/Field.bdy")},
                              {fuzz_support::whole_file(data, size)});
    write_boundaries(fuzz_support::fresh_field(), read_boundaries(field_dir));
    return 0;
}
