#include "coordinates/local_frame.h"

#include <QPointF>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace {

double const degreesToRadians = 0.017453292519943295;
double const radiansToDegrees = 57.29577951308232;

// Toward zero, clamped to +-2147483520 (the largest float below 2^31) so that the conversion
// stays defined and LocalFrame's start cell, INT32_MIN, out of reach. Not-a-number gives 0.
std::int32_t truncatedIndex(float value) {
    if (std::isnan(value))
        return 0;
    return static_cast<std::int32_t>(std::clamp(value, -2147483520.0f, 2147483520.0f));
}

// The longitude, moved by 360 degrees if needed to lie within 180 degrees of a reference. A cell
// that straddles the antimeridian has corners near +180 and -180; interpolating between them
// would sweep the globe, so they are kept on one side and the result is brought back.
double nearLongitude(double longitude, double reference) {
    if (longitude - reference > 180.0)
        return longitude - 360.0;
    if (longitude - reference < -180.0)
        return longitude + 360.0;
    return longitude;
}

} // namespace

GridCell::GridCell(LocalPoint point)
    : x(truncatedIndex(std::floor(point.x / 100.0f))),
      y(truncatedIndex(std::floor(point.y / 100.0f))) {}

float GridCell::lowerEdge(std::int32_t index) {
    return static_cast<float>(static_cast<double>(index) * 100.0);
}

float GridCell::upperEdge(std::int32_t index) {
    return static_cast<float>((static_cast<double>(index) + 1.0) * 100.0);
}

GridCell operator*(GridCell cell, float factor) {
    return {truncatedIndex(static_cast<float>(cell.x) * factor),
            truncatedIndex(static_cast<float>(cell.y) * factor)};
}

GridCell operator/(GridCell cell, float divisor) {
    return {truncatedIndex(static_cast<float>(cell.x) / divisor),
            truncatedIndex(static_cast<float>(cell.y) / divisor)};
}

LocalFrame::LocalFrame(GeoPoint center) {
    frame.setLocalCenterLLH(center.latitude * degreesToRadians, center.longitude * degreesToRadians,
                            center.height);
}

LocalPoint LocalFrame::toLocal(GeoPoint point) const {
    return toLocal(point.latitude * degreesToRadians, point.longitude * degreesToRadians,
                   point.height);
}

LocalPoint LocalFrame::toLocal(double lat, double lon, double h) const {
    double north = 0.0;
    double east = 0.0;
    frame.LLHToLocal(lat, lon, h, &north, &east);
    return localPointFromNorthEast(north, east);
}

GeoPoint LocalFrame::toGeo(LocalPoint point) const {
    return geoAt(-static_cast<double>(point.y), static_cast<double>(point.x));
}

GeoPoint LocalFrame::fastToGeo(LocalPoint point) {
    GridCell const cell(point);
    if (cell != cachedCell) {
        cachedCell = cell;
        double const x0 = 100.0 * cell.x;
        double const x1 = 100.0 * (static_cast<double>(cell.x) + 1.0);
        double const y0 = 100.0 * cell.y;
        double const y1 = 100.0 * (static_cast<double>(cell.y) + 1.0);
        QPolygonF const plane(
            QVector<QPointF>{QPointF(x0, y0), QPointF(x1, y0), QPointF(x1, y1), QPointF(x0, y1)});
        QPolygonF geo;
        for (QPointF const& corner : plane) {
            GeoPoint const g = geoAt(-corner.y(), corner.x());
            double const firstLongitude = geo.isEmpty() ? g.longitude : geo.first().x();
            geo << QPointF(nearLongitude(g.longitude, firstLongitude), g.latitude);
        }
        // The corners of a cell on a smooth map never form a degenerate quad.
        QTransform::quadToQuad(plane, geo, cellToGeo);
    }
    QPointF const mapped = cellToGeo.map(QPointF(point.x, point.y));
    return {mapped.y(), nearLongitude(mapped.x(), 0.0), 0.0};
}

GeoPoint LocalFrame::geoAt(double north, double east) const {
    double lat = 0.0;
    double lon = 0.0;
    double h = 0.0;
    frame.LocalToLLH(north, east, &lat, &lon, &h);
    return {lat * radiansToDegrees, lon * radiansToDegrees, h};
}
