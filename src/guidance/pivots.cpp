#include "guidance/pivots.h"

#include "coordinates/geodetic.h"
#include "coordinates/utm.h"
#include "driver/data_tree.h"
#include "guidance/guidance_patterns.h"

using namespace TC::Task_data::Elements::Client;

namespace {

QString const reference_latitude_key = QStringLiteral("Reference/Lat");
QString const reference_longitude_key = QStringLiteral("Reference/Lon");
QString const reference_east_key = QStringLiteral("Reference/East");
QString const reference_north_key = QStringLiteral("Reference/North");
QString const reference_zone_key = QStringLiteral("Reference/Zone");
QString const centre_x_key = QStringLiteral("Center/X");
QString const centre_y_key = QStringLiteral("Center/Y");
QString const inner_radius_key = QStringLiteral("InnerRadius");

} // namespace

bool read_pivot_reference(QSettings const& settings, double& latitude, double& longitude) {
    if (settings.contains(reference_latitude_key)) {
        latitude = settings.value(reference_latitude_key).toDouble();
        longitude = settings.value(reference_longitude_key).toDouble();
        return true;
    }
    if (!settings.contains(reference_east_key))
        return false;
    double const east = settings.value(reference_east_key).toDouble();
    double const north = settings.value(reference_north_key).toDouble();
    int const zone = settings.value(reference_zone_key, 0).toInt();
    if (zone == 0)
        return false;
    GeoPoint const reference = utmToGeoPoint(zone, east, north);
    latitude = reference.latitude;
    longitude = reference.longitude;
    return true;
}

bool read_pivot_reference(QString const& path, double& latitude, double& longitude) {
    QSettings const settings(path, QSettings::IniFormat);
    return read_pivot_reference(settings, latitude, longitude);
}

void import_pivots(QDir const& field_dir, Partfield partfield, BaseStationTable& base_stations) {
    for (QDir const& pivot_dir : list_dirs(field_dir.absoluteFilePath(data_tree::pivots))) {
        QString const path = settings_path(pivot_dir);
        // A missing file has no keys, and so no reference.
        GeoPoint reference;
        if (!read_pivot_reference(path, reference.latitude, reference.longitude))
            continue;
        QSettings const settings(path, QSettings::IniFormat);
        LocalPoint const offset{static_cast<float>(settings.value(centre_x_key).toDouble()),
                                static_cast<float>(settings.value(centre_y_key).toDouble())};
        GeoPoint const centre = localToGeo(offset, reference);
        double const inner_radius = settings.value(inner_radius_key).toDouble();
        LineCorrection const correction = read_line_correction(settings);
        Base_station const station = find_or_create_base_station(
            correction.source, correction.position_text, base_stations, partfield.get_root());
        Guidance_pattern const pattern =
            build_pivot_pattern(partfield, item_name(pivot_dir), centre, station, inner_radius);
        set_correction(pattern, correction.source);
    }
}
