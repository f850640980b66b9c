#include "guidance/base_stations.h"

#include "taskdata/element_man.h"
#include "taskdata/proprietary.h"
#include "taskdata/whole_numbers.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <cstdint>

using namespace TC::Task_data::Elements::Client;

namespace {

// The only datum the display writes.
QByteArray const wgs84_datum = QByteArrayLiteral("W84");

// The correction sources that work with a fixed base station.
int const first_station_source = 1;
int const last_station_source = 23;

// The text before the first `separator` of `rest`, which then loses it and
// the separator; false, leaving `rest` alone, when there is none.
bool take_until(QByteArray& rest, char separator, QByteArray& part) {
    int const at = rest.indexOf(separator);
    if (at < 0)
        return false;
    part = rest.left(at);
    rest.remove(0, at + 1);
    return true;
}

} // namespace

GeoAngle parse_geo_angle(QByteArray const& field) {
    GeoAngle angle;
    QByteArray rest = field.toUpper();
    if (rest.isEmpty())
        return angle;
    angle.hemisphere = rest.at(0);
    if (angle.hemisphere != 'E' && angle.hemisphere != 'N' && angle.hemisphere != 'S' &&
        angle.hemisphere != 'W')
        return angle;
    rest.remove(0, 1);
    if (!take_until(rest, 'D', angle.degrees) || !take_until(rest, 'M', angle.minutes))
        return angle;
    // Without the closing "S" the seconds stay empty, whatever follows "M".
    take_until(rest, 'S', angle.seconds);
    angle.valid = true;
    return angle;
}

GeoPosition parse_geo_position(QByteArray const& text) {
    GeoPosition position;
    QByteArray bare = text;
    bare.replace('{', QByteArray()).replace('}', QByteArray());
    QList<QByteArray> const fields = bare.split(',');
    if (fields.size() < 4 || fields.at(0).toUpper() != wgs84_datum)
        return position;
    position.latitude = parse_geo_angle(fields.at(1));
    position.longitude = parse_geo_angle(fields.at(2));
    position.altitude = fields.at(3);
    position.valid = position.latitude.valid && position.longitude.valid;
    return position;
}

double geo_angle_degrees(GeoAngle const& angle) {
    if (!angle.valid)
        return 0.0;
    double const degrees = angle.degrees.toInt(nullptr, 10);
    double const minutes = angle.minutes.toInt(nullptr, 10) / 60.0;
    double const seconds = angle.seconds.toDouble() / 3600.0;
    double const value = seconds + (minutes + degrees);
    return angle.hemisphere == 'S' || angle.hemisphere == 'W' ? -value : value;
}

GeoPoint geo_position_point(GeoPosition const& position) {
    if (!position.valid)
        return {};
    return {geo_angle_degrees(position.latitude), geo_angle_degrees(position.longitude),
            position.altitude.toDouble()};
}

Base_station find_or_create_base_station(int correction_source, QByteArray const& position_text,
                                         BaseStationTable& base_stations, Task_data root) {
    if (correction_source < first_station_source || correction_source > last_station_source)
        return Base_station();
    GeoPosition const parsed = parse_geo_position(position_text);
    if (!parsed.valid)
        return Base_station();

    BaseStationEntry& entry = base_stations[position_text];
    if (entry.position.latitude == unresolved_position)
        entry.position = geo_position_point(parsed);
    if (!entry.station.valid()) {
        Base_station station = root.create_base_stations(true);
        station.id().set(station.get_element_man().get_free_uid(QStringLiteral("BSN"), false),
                         true);
        station.north().set(entry.position.latitude, true);
        station.east().set(entry.position.longitude, true);
        station.up().set(TC::Task_data::truncate_to<std::int32_t>(entry.position.height * 1000.0),
                         true);
        entry.station = station;
    }
    return entry.station;
}

void set_correction(Guidance_pattern pattern, int correction_source) {
    set_proprietary(pattern, QStringLiteral("correction"), QVariant(correction_source));
}
