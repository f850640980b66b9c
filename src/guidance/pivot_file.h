#pragma once
// A pivot's settings file, which the importer and the pivot pattern read
// alike: its keys, and the reference point that the centre is given from.

#include <QSettings>
#include <QString>

namespace pivot_keys {

// 2 where the file holds a pattern.
inline QString const state = QStringLiteral("State");
inline QString const reference_latitude = QStringLiteral("Reference/Lat");
inline QString const reference_longitude = QStringLiteral("Reference/Lon");
inline QString const reference_east = QStringLiteral("Reference/East");
inline QString const reference_north = QStringLiteral("Reference/North");
inline QString const reference_zone = QStringLiteral("Reference/Zone");
// The centre in metres east and south of the reference.
inline QString const centre_x = QStringLiteral("Center/X");
inline QString const centre_y = QStringLiteral("Center/Y");
inline QString const inner_radius = QStringLiteral("InnerRadius");

} // namespace pivot_keys

// The reference of a pivot's settings, in degrees: "Reference/Lat" and
// "Reference/Lon" (0.0 when missing) when "Reference/Lat" is there;
// otherwise, when "Reference/East" is there, the point of "Reference/East"
// and "Reference/North" (metres) in the UTM zone "Reference/Zone". False,
// leaving both numbers alone, when neither form is there or the zone is 0 or
// missing.
bool read_pivot_reference(QSettings const& settings, double& latitude, double& longitude);
// The same for the settings file at `path`; false when it is missing.
bool read_pivot_reference(QString const& path, double& latitude, double& longitude);
