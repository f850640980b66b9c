#ifndef COORDINATES_LOCAL_FRAME_H
#define COORDINATES_LOCAL_FRAME_H

#include "coordinates/geodetic.h"
#include "coordinates/points.h"

#include <QTransform>

#include <cstdint>

// A square of 100 m side in the LocalPoint plane, by its column x (east) and row y (south).
struct GridCell {
    std::int32_t x = 0;
    std::int32_t y = 0;

    GridCell() = default;
    GridCell(std::int32_t column, std::int32_t row) : x(column), y(row) {}
    // The cell holding a point: floor(coordinate / 100) in single precision. Coordinates beyond
    // the index range are clamped to +-2147483520 and not-a-number gives 0.
    explicit GridCell(LocalPoint point);

    // Edges of an index in metres, single precision: index * 100 and (index + 1) * 100.
    static float lowerEdge(std::int32_t index);
    static float upperEdge(std::int32_t index);
};

inline bool operator==(GridCell a, GridCell b) {
    return a.x == b.x && a.y == b.y;
}
inline bool operator!=(GridCell a, GridCell b) {
    return !(a == b);
}
// Row by row: y decides, x only within a row.
inline bool operator<(GridCell a, GridCell b) {
    return a.y != b.y ? a.y < b.y : a.x < b.x;
}
inline bool operator>(GridCell a, GridCell b) {
    return b < a;
}
inline bool operator<=(GridCell a, GridCell b) {
    return !(b < a);
}
inline bool operator>=(GridCell a, GridCell b) {
    return !(a < b);
}

inline GridCell operator+(GridCell a, GridCell b) {
    return {a.x + b.x, a.y + b.y};
}
inline GridCell operator-(GridCell a, GridCell b) {
    return {a.x - b.x, a.y - b.y};
}
inline GridCell operator-(GridCell a) {
    return {-a.x, -a.y};
}
inline GridCell& operator+=(GridCell& a, GridCell b) {
    return a = a + b;
}
inline GridCell& operator-=(GridCell& a, GridCell b) {
    return a = a - b;
}
// Each index through single precision, the result truncated toward zero and clamped as above.
GridCell operator*(GridCell cell, float factor);
GridCell operator/(GridCell cell, float divisor);
inline GridCell& operator*=(GridCell& cell, float factor) {
    return cell = cell * factor;
}
inline GridCell& operator/=(GridCell& cell, float divisor) {
    return cell = cell / divisor;
}

// A local frame for many conversions around one centre, with a cached mapping of one 100 m cell
// for fastToGeo.
class LocalFrame {
public:
    // Centre in degrees.
    explicit LocalFrame(GeoPoint center);

    // Degrees in, single-precision metres out.
    LocalPoint toLocal(GeoPoint point) const;
    // Latitude and longitude in radians, height in metres.
    LocalPoint toLocal(double lat, double lon, double h) const;
    // Degrees, with the height of the tangent plane above the ellipsoid.
    GeoPoint toGeo(LocalPoint point) const;
    // Degrees, height 0: the projective map of the corners of the point's 100 m cell, built
    // whenever the point lies in another cell than the previous one, so it is quick for points
    // that come in order. It is off toGeo by up to about 1 mm at 60 degrees of latitude, more
    // toward the poles (7 cm at 89.5 degrees); a cell across the antimeridian is no exception.
    GeoPoint fastToGeo(LocalPoint point);

private:
    GeoPoint geoAt(double north, double east) const;

    CoordConv frame;
    // No real cell has these indices, so the first fastToGeo builds the map.
    GridCell cachedCell{INT32_MIN, INT32_MIN};
    QTransform cellToGeo;
};

#endif
