#include "guidance/pivot_file.h"

#include "coordinates/utm.h"

bool read_pivot_reference(QSettings const& settings, double& latitude, double& longitude) {
    if (settings.contains(pivot_keys::reference_latitude)) {
        latitude = settings.value(pivot_keys::reference_latitude).toDouble();
        longitude = settings.value(pivot_keys::reference_longitude).toDouble();
        return true;
    }
    if (!settings.contains(pivot_keys::reference_east))
        return false;
    double const east = settings.value(pivot_keys::reference_east).toDouble();
    double const north = settings.value(pivot_keys::reference_north).toDouble();
    int const zone = settings.value(pivot_keys::reference_zone, 0).toInt();
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
