#include "guidance/ab_lines.h"

#include "driver/data_tree.h"
#include "guidance/guidance_patterns.h"
#include "guidance/tramlines.h"

#include <QFileInfo>
#include <QSettings>
#include <QString>

using namespace TC::Task_data::Elements::Client;

namespace {

QString const state_key = QStringLiteral("State");
QString const a_latitude_key = QStringLiteral("APoint/Latitude");
QString const a_longitude_key = QStringLiteral("APoint/Longitude");
QString const b_latitude_key = QStringLiteral("BPoint/Latitude");
QString const b_longitude_key = QStringLiteral("BPoint/Longitude");

// The state of a line that the display saved complete.
int const saved_state = 2;

GeoPoint read_point(QSettings const& settings, QString const& latitude_key,
                    QString const& longitude_key) {
    return {settings.value(latitude_key).toDouble(), settings.value(longitude_key).toDouble(), 0.0};
}

} // namespace

void import_ab_lines(QDir const& field_dir, Partfield partfield, BaseStationTable& base_stations) {
    for (QDir const& line_dir : list_dirs(field_dir.absoluteFilePath(data_tree::ab_lines))) {
        QString const path = settings_path(line_dir);
        if (!QFileInfo::exists(path))
            continue;
        QSettings const settings(path, QSettings::IniFormat);
        if (settings.value(state_key, 0).toInt() != saved_state)
            continue;
        GeoPoint const a = read_point(settings, a_latitude_key, a_longitude_key);
        GeoPoint const b = read_point(settings, b_latitude_key, b_longitude_key);
        LineCorrection const correction = read_line_correction(settings);
        Base_station const station = find_or_create_base_station(
            correction.source, correction.position_text, base_stations, partfield.get_root());
        Guidance_pattern const pattern =
            build_ab_pattern(partfield, item_name(line_dir), a, b, station);
        set_correction(pattern, correction.source);
        import_tramlines(pattern, line_dir);
    }
}
