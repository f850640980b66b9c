#include "guidance/curves.h"

#include "coordinates/geodetic.h"
#include "driver/data_tree.h"
#include "guidance/crv_file.h"
#include "guidance/guidance_patterns.h"
#include "guidance/tramlines.h"

#include <QFileInfo>
#include <QSettings>
#include <QString>

#include <vector>

using namespace TC::Task_data::Elements::Client;

void import_curves(QDir const& field_dir, Partfield partfield, BaseStationTable& base_stations) {
    for (QDir const& curve_dir : list_dirs(field_dir.absoluteFilePath(data_tree::curves))) {
        QString const path = settings_path(curve_dir);
        QString const points_path =
            child_path(curve_dir.path(), curve_dir.dirName() + data_tree::crv_suffix);
        GeoPoint reference;
        if (!QFileInfo::exists(path) || !QFileInfo::exists(points_path) ||
            !read_crv_reference(points_path, reference.latitude, reference.longitude,
                                reference.height))
            continue;
        std::vector<CrvSegment> const segments = read_crv_segments(points_path);
        if (segments.empty())
            continue;
        std::vector<GeoPoint> const points = localToGeo(segments.front(), reference);

        QSettings const settings(path, QSettings::IniFormat);
        LineCorrection const correction = read_line_correction(settings);
        Base_station const station = find_or_create_base_station(
            correction.source, correction.position_text, base_stations, partfield.get_root());
        Guidance_pattern const pattern =
            build_curve_pattern(partfield, item_name(curve_dir), points, station);
        set_correction(pattern, correction.source);
        import_tramlines(pattern, curve_dir);
    }
}
