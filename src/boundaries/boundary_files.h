#pragma once
// A field's boundary files: the one shapefile and the .bdy files below
// Boundaries, and the shapefiles below Zones, read into boundary rings.

#include "coordinates/points.h"

#include <QFileInfo>
#include <QList>
#include <QString>

#include <vector>

// One boundary ring on its way to the task data.
struct BoundaryRecord {
    QString category;      // the "Type" column; becomes the line string's P231_category
    QString name;          // the "Name" column; designator of the polygon and its line string
    bool headland = false; // the "Headland" column; kept, not written
    int treatment = 0;     // the "Treatment" column, 1 below Zones; decides the ring's kind
    std::vector<GeoPoint> points; // degrees, as stored, not closed
};

using BoundaryList = std::vector<BoundaryRecord>;

// All rings of the field in `field_directory` (an absolute path), in this
// order: the rows of the first shapefile that the walk of Boundaries finds
// (a second one is never read), every .bdy file below Boundaries, then every
// shapefile below Zones with its treatment forced to 1. A file qualifies by
// its complete suffix, exactly and case-sensitively: "a.shp" does, "a.v2.shp"
// and "a.SHP" don't. Missing directories and unreadable files add nothing;
// nothing is reported.
BoundaryList read_boundaries(QString const& field_directory);

// Depth first: a directory's entries (files and sub-directories, not hidden
// ones) in name order ignoring case, a sub-directory's files at its place;
// anything else that exists is itself the one entry; a missing entry adds
// nothing. A directory already entered through a link isn't entered again,
// so link loops end and no file comes twice.
void collect_files(QFileInfo const& entry, QList<QFileInfo>& files);

// One record for every polygon ring of more than 2 points, in file order,
// with the texts, headland and treatment of its row in the table beside it
// (same base name, ".dbf"). Without a table or a row, or where a column is
// missing or of another kind: empty texts, headland true, treatment 0.
// "Type" and "Name" are character columns, UTF-8; "Headland" an integer
// (true above 0) or logical column; "Treatment" an integer or number column,
// truncated toward zero. Coordinates are taken as longitude (x) and latitude
// (y); vertices that aren't finite numbers are left out. Nothing when the
// shapefile can't be opened.
BoundaryList read_shape_boundaries(QString const& shp_path);

// A .bdy file: the centre (three little-endian doubles: latitude, longitude,
// height) and from offset 64 vertices of two little-endian floats, metres
// east and south of the centre, up to the end of the file; a half vertex at
// the end, and a vertex whose position isn't a finite number, are left out.
// A file that can't be read, is shorter than 64 bytes or larger than
// max_point_file_size (with a warning) gives a record without points.
// Texts empty, headland false, treatment 0.
BoundaryRecord read_bdy_file(QString const& bdy_path);
