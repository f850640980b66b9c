#ifndef COORDINATES_POINTS_H
#define COORDINATES_POINTS_H

// A geodetic position: degrees of latitude and longitude, metres of height, unless a function
// says radians.
struct GeoPoint {
    double latitude = 0.0;
    double longitude = 0.0;
    double height = 0.0;
};

// A point in a plane around a centre that the data names: x metres east, y metres south
// (y = -north), in single precision.
struct LocalPoint {
    float x = 0.0f;
    float y = 0.0f;
};

// The plane point of a north and east offset in metres, each rounded to single precision.
inline LocalPoint localPointFromNorthEast(double north, double east) {
    return {static_cast<float>(east), -static_cast<float>(north)};
}

#endif
