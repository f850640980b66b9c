#pragma once
// A field's boundary rings as polygons (PLN) of its Partfield, each with one
// line string (LSG), replacing the rings that an earlier run wrote.

#include "boundaries/boundary_files.h"
#include "taskdata/task_data.h"

// Makes `records` the field's boundaries. Every record becomes a new polygon
// of type 1 (partfield boundary) with colour 9, its area and the record's
// name, holding one line string with a fresh identity, the record's name,
// its category as P231_category and its points. The treatment decides the
// line string's kind: 1 an interior ring (type 2), 2 a disabled ring
// (P231_enabled 0, type left alone), anything else an exterior ring (type 1).
// Then the line strings with an identity in the polygons of type 1 that were
// there before are removed, each polygon with its last line string, and so
// are the type-1 polygons that had no line string at all. Polygons of other
// types, and line strings without an identity, stay. Always true.
bool write_boundaries(TC::Task_data::Elements::Client::Partfield partfield,
                      BoundaryList const& records);

// Appends `points` to the line string as a closed ring (the first point
// again at the end unless it is there already); nothing for no points.
void add_boundary_points(TC::Task_data::Elements::Client::Linestring linestring,
                         std::vector<GeoPoint> const& points);

// The ring's area in square metres, |shoelace sum| / 2 over the points in a
// local plane around the first one, summed in single precision; 0 for fewer
// than 3 points. Either direction gives the same area.
double boundary_area(BoundaryRecord const& record);
