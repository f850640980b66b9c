#pragma once
// Guidance groups (GGP) and patterns (GPN) of a field's AB lines, curves and
// pivots. A pattern is known within its Partfield by its type and designator
// alone; each new one gets a group of its own named like it. Every import
// rebuilds the pattern's one line string (LSG, type 5) from the source, so
// a run over a loaded set updates what a former run made.

#include "coordinates/points.h"
#include "taskdata/task_data.h"

#include <QString>

#include <vector>

// GPN C, GuidancePatternType, of the three kinds made here.
inline constexpr unsigned char ab_pattern_type = 1;
inline constexpr unsigned char curve_pattern_type = 3;
inline constexpr unsigned char pivot_pattern_type = 4;

// The first pattern of the field, groups in order and patterns in order,
// with this type (a pattern without a readable type counts as type 0) and
// exactly this designator; it is returned unchanged. Otherwise a new group
// (free "GGP" number, designator `name`) holding a new pattern (free "GPN"
// number, `type`, designator `name`, marked to be written).
TC::Task_data::Elements::Client::Guidance_pattern
find_or_create_pattern(TC::Task_data::Elements::Client::Partfield partfield, QString const& name,
                       unsigned char type);

// The builders find or make the pattern, drop all its line strings, make one
// new line string with the line's points (north the latitude, east the
// longitude, in degrees; heights are dropped) and link `station` (GPN L),
// valid or not. Nothing else of a found pattern changes.

// Type 1: point A (PNT type 6, designator "A"), then B (type 7, "B"). An
// invalid partfield gives an invalid pattern.
TC::Task_data::Elements::Client::Guidance_pattern
build_ab_pattern(TC::Task_data::Elements::Client::Partfield partfield, QString const& name,
                 GeoPoint a, GeoPoint b, TC::Task_data::Elements::Client::Base_station station);

// Type 3: the first point of type 6, the last of type 7, those between of
// type 9; one point is type 6 alone, and no points give an empty line string.
// An invalid partfield gives an invalid pattern.
TC::Task_data::Elements::Client::Guidance_pattern
build_curve_pattern(TC::Task_data::Elements::Client::Partfield partfield, QString const& name,
                    std::vector<GeoPoint> const& points,
                    TC::Task_data::Elements::Client::Base_station station);

// Type 4: one point of type 8 at the centre, and the radius (GPN H) in
// millimetres, truncated toward zero (a negative radius gives 0) and marked
// to be written.
TC::Task_data::Elements::Client::Guidance_pattern
build_pivot_pattern(TC::Task_data::Elements::Client::Partfield partfield, QString const& name,
                    GeoPoint centre, TC::Task_data::Elements::Client::Base_station station,
                    double radius_metres);
