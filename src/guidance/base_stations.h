#pragma once
// Base stations (BSN) of guidance lines and their correction source. A line's
// settings name the correction source ("CorrectionSource") and, for sources
// that work with a fixed station, the station's position as a text
// ("BasePoint/Position"), such as {W84,N52D30M15.25S,E13D24M10.5S,34.5}. The
// run keeps one Base_station per distinct text, shared by all lines of all
// fields that name it; the AB line, curve and pivot importers fill the table,
// the field walk only hands it down.

#include "coordinates/points.h"
#include "guidance/line_correction.h"
#include "taskdata/task_data.h"

#include <QByteArray>
#include <QHash>

#include <limits>

// One angle of a position text, as its parts stand in the text (upper case).
struct GeoAngle {
    char hemisphere = '\0'; // 'N', 'E', 'S' or 'W'
    QByteArray degrees;     // before "D"
    QByteArray minutes;     // between "D" and "M"
    QByteArray seconds;     // between "M" and "S"; empty without "S"
    bool valid = false;
};

// A whole position text: its second, third and fourth field.
struct GeoPosition {
    GeoAngle latitude;
    GeoAngle longitude;
    QByteArray altitude; // untouched
    bool valid = false;  // both angles are valid
};

// The position of a table entry whose text has not been worked out yet.
inline constexpr double unresolved_position = std::numeric_limits<double>::max();

struct BaseStationEntry {
    // Degrees and metres, worked out from the text.
    GeoPoint position{unresolved_position, unresolved_position, unresolved_position};
    TC::Task_data::Elements::Client::Base_station station; // invalid until made
};

// Keyed by the position text byte for byte: texts that differ in case or
// spacing are different stations. Starts empty in every run, so stations of a
// loaded set are never reused.
using BaseStationTable = QHash<QByteArray, BaseStationEntry>;

// Parses "{W84,<latitude>,<longitude>,<altitude>}". Braces anywhere are
// dropped, fields are split at commas and fields after the fourth ignored;
// the datum "W84" and the angles are taken in any letter case. Invalid with
// fewer than four fields, another datum or an invalid angle. Which hemisphere
// letter stands in which field is not checked.
GeoPosition parse_geo_position(QByteArray const& text);

// Parses "<hemisphere><degrees>D<minutes>M<seconds>S" in any letter case; the
// final "S" is optional, and without it the seconds are empty. Invalid when
// the first letter is not N, E, S or W, or "D" or "M" is missing.
GeoAngle parse_geo_angle(QByteArray const& field);

// Decimal degrees: whole degrees + whole minutes / 60 + seconds / 3600,
// negative for S and W; 0.0 for an invalid angle. Parts that are not numbers
// of their kind count as 0, so "12.5" as degrees gives 0.
double geo_angle_degrees(GeoAngle const& angle);

// Latitude and longitude in degrees, the altitude in metres (0 when it is no
// number); (0, 0, 0) for an invalid position.
GeoPoint geo_position_point(GeoPosition const& position);

// The run's station for a line: invalid unless `correction_source` is 1 to
// 23 and `position_text` parses; the table is then left alone. Otherwise the
// table's station for that exact text, made on first use under `root` with a
// free "BSN" number, north and east in degrees and up in millimetres
// (truncated toward zero). Later lines with the same text get the same
// station and change nothing of it.
TC::Task_data::Elements::Client::Base_station
find_or_create_base_station(int correction_source, QByteArray const& position_text,
                            BaseStationTable& base_stations,
                            TC::Task_data::Elements::Client::Task_data root);

// "P231_correction" on the pattern: the correction source in decimal, for any
// value, 0 and those outside 1 to 23 included.
void set_correction(TC::Task_data::Elements::Client::Guidance_pattern pattern,
                    int correction_source);
