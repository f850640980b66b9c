// The .shp, .shx and .dbf of one shapefile, in this order, read as a field's
// boundary and as its project and optimal lines.
#include "boundaries/boundary_files.h"
#include "boundaries/boundary_polygons.h"
#include "boundaries/shape_lines.h"
#include "fuzz_support/fuzz_support.h"

using TC::Task_data::Elements::Client::Partfield;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const dir = fuzz_support::input_files(
        data, size, {"Lines/Lines.shp", "Lines/Lines.shx", "Lines/Lines.dbf"});
    QString const shp_path = dir + "/Lines/Lines.shp";
    Partfield const field = fuzz_support::fresh_field();
    write_boundaries(field, read_shape_boundaries(shp_path));
    import_project_shapefile(shp_path, field.create_guidance_paths(true));
    import_optimal_shapefile(shp_path, field.create_guidance_paths(true));
    return 0;
}
