#pragma once
// Guidance lines from shapefiles: every directory <name> below a field's
// ProjectLines or OptimalLines holds <name>.shp and becomes a new guidance
// group (GGP) named <name>, with patterns (GPN) of type 3 (curve) built from
// the file's PolyLine shapes (type code 3 only; other shapes, Z and M
// variants among them, are skipped). Coordinates are taken as degrees,
// x east and y north. Every run adds its groups anew.

#include "boundaries/esri_shape_file.h"
#include "taskdata/task_data.h"

#include <QDir>
#include <QString>

// One group for each directory of the field's ProjectLines, in name order
// ignoring case, filled by import_project_shapefile; nothing when there is
// no such directory.
void read_project_lines(QDir const& field_directory,
                        TC::Task_data::Elements::Client::Partfield partfield);
// The same for OptimalLines, filled by import_optimal_shapefile.
void read_optimal_lines(QDir const& field_directory,
                        TC::Task_data::Elements::Client::Partfield partfield);

// One pattern for the whole file, made before any shape is read (so also
// for a file without lines), with no propagation and no extensions (GPN E 4,
// F 4) and all lines of the file end to end in its one line string. A file
// that can't be opened gives the warning `W: could not open "<path>"` and
// leaves the group without patterns.
void import_project_shapefile(QString const& path,
                              TC::Task_data::Elements::Client::GuidanceGroup group);
// One pattern for each line shape, propagated and extended both ways (GPN E
// 1, F 1); a file without lines gives none. The same warning as above.
void import_optimal_shapefile(QString const& path,
                              TC::Task_data::Elements::Client::GuidanceGroup group);

// Appends every part of `shape` to the pattern's first line string (made of
// type 5, guidance pattern, when there is none yet and a part has points),
// marked binary. A part's points are of type 6 (reference A) first, 7
// (reference B) last and 9 (guidance point) between; one point alone is 6.
// Vertices whose position isn't a finite number are left out.
void add_shape_to_pattern(EsriPolygonShape const& shape,
                          TC::Task_data::Elements::Client::Guidance_pattern pattern);
