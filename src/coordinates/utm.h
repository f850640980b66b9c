#ifndef COORDINATES_UTM_H
#define COORDINATES_UTM_H

#include "coordinates/points.h"

// Universal Transverse Mercator grid coordinates by the Redfearn series, angles in degrees unless
// named radians. The false northing is 10000000 m in both hemispheres: the equator has that
// northing, a northern point more. Zone z has its central meridian at 6z - 183 degrees. The
// selector 1 takes the ellipsoid a = 6378160 m, f = 1/298.25; any other value GRS 80. Nothing is
// range-checked: zone 0 has its central meridian at -183 degrees.

// The rectifying latitude (radians) of a latitude on an ellipsoid of flattening f.
double rectifyingLatitude(double latitudeRadians, double f);

// The rectifying radius in metres of an ellipsoid of flattening f and semi-major axis a.
double rectifyingRadius(double f, double a);

// Grid coordinates (metres), point scale and grid convergence (degrees, negative east of the
// central meridian in the northern hemisphere). East and north are those of the zone of the
// longitude as given; the reported zone is that of the longitude brought into -180 to 180, with
// the Norwegian and Svalbard exceptions, so it may name another zone than the coordinates.
void latLonToUtm(double lat, double lon, int selector, double& east, double& north, double& scale,
                 double& convergence, int& zone);

// As latLonToUtm, on GRS 80, but in the given zone, which is also the one reported.
void latLonToUtmInZone(double lat, double lon, int givenZone, double& east, double& north,
                       double& scale, double& convergence, int& zone);

// The geodetic position of grid coordinates (metres) in a zone.
void utmToLatLon(int zone, double east, double north, int selector, double& lat, double& lon);

// utmToLatLon on GRS 80, height 0.
GeoPoint utmToGeoPoint(int zone, double east, double north);

// latLonToUtm on GRS 80; the height is ignored.
void geoToUtm(GeoPoint point, double& east, double& north, int& zone, double& convergence);
void geoToUtm(GeoPoint point, double& east, double& north, int& zone);

// Haversine distance in metres on a sphere of radius 6372797 m; heights are ignored.
double greatCircleDistance(GeoPoint p, GeoPoint q);

#endif
