#include "guidance/pivots.h"

#include "coordinates/geodetic.h"
#include "driver/data_tree.h"
#include "guidance/guidance_patterns.h"
#include "guidance/pivot_file.h"

using namespace TC::Task_data::Elements::Client;

void import_pivots(QDir const& field_dir, Partfield partfield, BaseStationTable& base_stations) {
    for (QDir const& pivot_dir : list_dirs(field_dir.absoluteFilePath(data_tree::pivots))) {
        QString const path = settings_path(pivot_dir);
        // A missing file has no keys, and so no reference.
        GeoPoint reference;
        if (!read_pivot_reference(path, reference.latitude, reference.longitude))
            continue;
        QSettings const settings(path, QSettings::IniFormat);
        LocalPoint const offset{
            static_cast<float>(settings.value(pivot_keys::centre_x).toDouble()),
            static_cast<float>(settings.value(pivot_keys::centre_y).toDouble())};
        GeoPoint const centre = localToGeo(offset, reference);
        double const inner_radius = settings.value(pivot_keys::inner_radius).toDouble();
        LineCorrection const correction = read_line_correction(settings);
        Base_station const station = find_or_create_base_station(
            correction.source, correction.position_text, base_stations, partfield.get_root());
        Guidance_pattern const pattern =
            build_pivot_pattern(partfield, item_name(pivot_dir), centre, station, inner_radius);
        set_correction(pattern, correction.source);
    }
}
