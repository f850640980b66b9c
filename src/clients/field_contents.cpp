#include "clients/field_contents.h"

#include "boundaries/boundary_files.h"
#include "boundaries/boundary_polygons.h"
#include "boundaries/shape_lines.h"
#include "clients/flag_points.h"
#include "driver/data_tree.h"
#include "guidance/ab_lines.h"
#include "guidance/curves.h"
#include "guidance/pivots.h"

using TC::Task_data::Elements::Client::Partfield;

void import_field_boundaries(QDir const& field_dir, Partfield partfield) {
    write_boundaries(partfield, read_boundaries(field_dir.absolutePath()));
}

void import_flag_points(QDir const& field_dir, Partfield partfield) {
    FlagPointList flags;
    flags.read(field_dir.absolutePath() + data_tree::flag_points_file, GeoPoint());
    write_flag_points(flags, partfield);
}

void import_field_lines(QDir const& field_dir, Partfield partfield,
                        BaseStationTable& base_stations) {
    import_ab_lines(field_dir, partfield, base_stations);
    import_curves(field_dir, partfield, base_stations);
    import_pivots(field_dir, partfield, base_stations);
    read_project_lines(field_dir, partfield);
    read_optimal_lines(field_dir, partfield);
}
