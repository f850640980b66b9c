#ifndef COORDINATES_GEODETIC_H
#define COORDINATES_GEODETIC_H

#include "coordinates/algebra.h"
#include "coordinates/points.h"

#include <vector>

// Geodetic, Earth-centred and local north-east-down coordinates on the WGS-84 ellipsoid. Angles
// are radians and lengths metres, except in GeoPoint values, which hold degrees.

// Earth-centred Cartesian coordinates of a geodetic point.
void Geo2Decart(double lat, double lon, double h, double& X, double& Y, double& Z);

// Geodetic coordinates of an Earth-centred point by at most ten correction steps, stopping once a
// step moves the point by less than 1 cm; the last iterate stands without a signal. At the
// Earth's centre latitude and height come out not a number.
void Decart2Geo(double X, double Y, double Z, double& lat, double& lon, double& h);
void Decart2Geo(double const* xyz, double& lat, double& lon, double& h);

// Flat approximation around latitude 0, longitude 0 with the equatorial radius: x east, y north.
void Geo2Local(double lat, double lon, double& x, double& y);

// Normal gravity in m/s^2 at a latitude and a height above the ellipsoid.
double getLocalGravity(double lat, double h);

// One local north-east-down frame touching the ellipsoid at a centre. Until a centre is set, every
// operation that needs one returns false and leaves its outputs alone.
class CoordConv {
public:
    // Replaces any earlier centre.
    void setLocalCenterLLH(double lat, double lon, double h);
    // The centre is kept after a round trip through geodetic coordinates, so it may differ from
    // the input in the last digits.
    void setLocalCenterECEF(double X, double Y, double Z);

    bool getLocalCenterLLH(double* lat, double* lon, double* h) const;
    bool getLocalCenterECEF(double* X, double* Y, double* Z) const;

    // North and east offsets of a point from the centre; the down offset is dropped.
    bool ECEFToLocal(double X, double Y, double Z, double* north, double* east) const;
    bool LLHToLocal(double lat, double lon, double h, double* north, double* east) const;

    // The point of the tangent plane (down = 0) at a north and east offset. Away from the centre
    // the plane rises above the ellipsoid, by about 8 cm at 1 km, and the height says so.
    bool LocalToECEF(double north, double east, double* X, double* Y, double* Z) const;
    bool LocalToLLH(double north, double east, double* lat, double* lon, double* h) const;

private:
    bool hasCenter() const;

    SVec centerECEF;
    double centerLLH[3] = {0.0, 0.0, 0.0};
    // Columns: north, east and down unit vectors in Earth-centred axes.
    SMat axes = SMat::identity();
    SMat axesT = SMat::identity();
};

// The geodetic point (degrees) of a plane point around a centre (degrees), taken on the tangent
// plane at the centre's height.
GeoPoint localToGeo(LocalPoint point, GeoPoint center);
// The same for all points of a file around one centre, bit for bit, and faster.
std::vector<GeoPoint> localToGeo(std::vector<LocalPoint> const& points, GeoPoint center);

// The plane point of a geodetic point (degrees) around a centre (degrees); the radian form takes
// the point's latitude and longitude in radians and its height in metres.
LocalPoint geoToLocal(GeoPoint point, GeoPoint center);
LocalPoint geoToLocal(double lat, double lon, double h, GeoPoint center);

#endif
