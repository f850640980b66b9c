// Any bytes as a field's .bdy file, read with the field's boundaries and
// written into the field as the run does.
#include "boundaries/boundary_files.h"
#include "boundaries/boundary_polygons.h"
#include "fuzz_support/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const field_dir = fuzz_support::input_files(data, size, {"Boundaries/Field.bdy"});
    write_boundaries(fuzz_support::fresh_field(), read_boundaries(field_dir));
    return 0;
}
