#include "coordinates/geodetic.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

double const semiMajorAxis = 6378137.0;
double const eccentricitySquared = 0.0066943799901413;
double const oneMinusEccentricitySquared = 0.9933056200098587;

double primeVerticalRadius(double sinLat) {
    return semiMajorAxis / std::sqrt(1 - eccentricitySquared * (sinLat * sinLat));
}

double degreesToRadians(double degrees) {
    return (degrees * 3.141592653589793) / 180.0;
}
double radiansToDegrees(double radians) {
    return (radians * 180.0) / 3.141592653589793;
}

bool sameBits(GeoPoint const& a, GeoPoint const& b) {
    static_assert(sizeof(GeoPoint) == 3 * sizeof(double), "GeoPoint must have no padding");
    return std::memcmp(&a, &b, sizeof(GeoPoint)) == 0;
}

// Importers convert whole files around one centre. The frame depends on nothing but the centre,
// so keeping the last one spares its trigonometry per point and gives the same bits as building
// it afresh. One per thread keeps the conversions free of shared state.
CoordConv const& frameAt(GeoPoint const& center) {
    struct CachedFrame {
        bool valid = false;
        GeoPoint center;
        CoordConv frame;
    };
    thread_local CachedFrame cached;
    if (!cached.valid || !sameBits(cached.center, center)) {
        cached.frame = CoordConv();
        cached.frame.setLocalCenterLLH(degreesToRadians(center.latitude),
                                       degreesToRadians(center.longitude), center.height);
        cached.center = center;
        cached.valid = true;
    }
    return cached.frame;
}

// Decart2Geo's iteration for one Earth-centred point.
struct GeodeticIterate {
    double p;
    double z;
    double latitude;
    double height;
};

GeodeticIterate startIterate(double X, double Y, double Z) {
    double const p = std::sqrt(X * X + Y * Y);
    return {p, Z, std::atan2(Z, p), std::sqrt(X * X + Y * Y + Z * Z) - semiMajorAxis};
}

// One correction step, given the sine and cosine of the current latitude. True once the step
// moved the point by less than 1 cm.
bool correct(GeodeticIterate& it, double s, double c) {
    double const n = primeVerticalRadius(s);
    double const dp = it.p - c * (n + it.height);
    double const dz = it.z - (it.height + n * oneMinusEccentricitySquared) * s;
    double const dh = c * dp + s * dz;
    double const dlat = (c * dz - s * dp) / (n + it.height);
    it.latitude = it.latitude + dlat;
    it.height = it.height + dh;
    return (dlat * semiMajorAxis) * (dlat * semiMajorAxis) + dh * dh < 0.0001;
}

} // namespace

void Geo2Decart(double lat, double lon, double h, double& X, double& Y, double& Z) {
    double const sinLat = std::sin(lat);
    double const cosLat = std::cos(lat);
    double const n = primeVerticalRadius(sinLat);
    X = std::cos(lon) * ((n + h) * cosLat);
    Y = std::sin(lon) * ((n + h) * cosLat);
    Z = (h + n * oneMinusEccentricitySquared) * sinLat;
}

void Decart2Geo(double X, double Y, double Z, double& lat, double& lon, double& h) {
    GeodeticIterate it = startIterate(X, Y, Z);
    for (int step = 0; step < 10; ++step) {
        if (correct(it, std::sin(it.latitude), std::cos(it.latitude)))
            break;
    }
    lon = std::atan2(Y, X);
    lat = it.latitude;
    h = it.height;
}

void Decart2Geo(double const* xyz, double& lat, double& lon, double& h) {
    Decart2Geo(xyz[0], xyz[1], xyz[2], lat, lon, h);
}

void Geo2Local(double lat, double lon, double& x, double& y) {
    x = lon * semiMajorAxis * std::cos(lat);
    y = lat * semiMajorAxis;
}

double getLocalGravity(double lat, double h) {
    double const sinLat = std::sin(lat);
    double const sin2Lat = std::sin(2 * lat);
    return 9.780327 * (1 + 0.0053024 * (sinLat * sinLat) - 0.0000058 * (sin2Lat * sin2Lat)) -
           0.0000030877 * h;
}

void CoordConv::setLocalCenterLLH(double lat, double lon, double h) {
    centerLLH[0] = lat;
    centerLLH[1] = lon;
    centerLLH[2] = h;
    Geo2Decart(lat, lon, h, centerECEF[0], centerECEF[1], centerECEF[2]);

    double const sinLat = std::sin(lat);
    double const cosLat = std::cos(lat);
    double const sinLon = std::sin(lon);
    double const cosLon = std::cos(lon);
    SVec const north(-sinLat * cosLon, -sinLat * sinLon, cosLat);
    SVec const east(-sinLon, cosLon, 0.0);
    SVec const down(-cosLat * cosLon, -cosLat * sinLon, -sinLat);
    axes = SMat(north, east, down);
    axesT = transpose(axes);
}

void CoordConv::setLocalCenterECEF(double X, double Y, double Z) {
    double lat = 0.0;
    double lon = 0.0;
    double h = 0.0;
    Decart2Geo(X, Y, Z, lat, lon, h);
    setLocalCenterLLH(lat, lon, h);
}

// No real centre lies within 1 km of the Earth's centre, so this only tells whether one was set.
bool CoordConv::hasCenter() const {
    return norm(centerECEF) >= 1000.0;
}

bool CoordConv::getLocalCenterLLH(double* lat, double* lon, double* h) const {
    if (!hasCenter())
        return false;
    *lat = centerLLH[0];
    *lon = centerLLH[1];
    *h = centerLLH[2];
    return true;
}

bool CoordConv::getLocalCenterECEF(double* X, double* Y, double* Z) const {
    if (!hasCenter())
        return false;
    *X = centerECEF[0];
    *Y = centerECEF[1];
    *Z = centerECEF[2];
    return true;
}

bool CoordConv::ECEFToLocal(double X, double Y, double Z, double* north, double* east) const {
    if (!hasCenter())
        return false;
    SVec const offset = SVec(X, Y, Z) - centerECEF;
    *north = innerprod(offset, axesT.row(0));
    *east = innerprod(offset, axesT.row(1));
    return true;
}

bool CoordConv::LLHToLocal(double lat, double lon, double h, double* north, double* east) const {
    double X = 0.0;
    double Y = 0.0;
    double Z = 0.0;
    Geo2Decart(lat, lon, h, X, Y, Z);
    return ECEFToLocal(X, Y, Z, north, east);
}

bool CoordConv::LocalToECEF(double north, double east, double* X, double* Y, double* Z) const {
    if (!hasCenter())
        return false;
    double const down = 0.0;
    SVec const point =
        centerECEF + north * axes.column(0) + east * axes.column(1) + down * axes.column(2);
    *X = point[0];
    *Y = point[1];
    *Z = point[2];
    return true;
}

bool CoordConv::LocalToLLH(double north, double east, double* lat, double* lon, double* h) const {
    double X = 0.0;
    double Y = 0.0;
    double Z = 0.0;
    if (!LocalToECEF(north, east, &X, &Y, &Z))
        return false;
    Decart2Geo(X, Y, Z, *lat, *lon, *h);
    return true;
}

GeoPoint localToGeo(LocalPoint point, GeoPoint center) {
    double lat = 0.0;
    double lon = 0.0;
    double h = 0.0;
    frameAt(center).LocalToLLH(-static_cast<double>(point.y), static_cast<double>(point.x), &lat,
                               &lon, &h);
    return {radiansToDegrees(lat), radiansToDegrees(lon), h};
}

LocalPoint geoToLocal(GeoPoint point, GeoPoint center) {
    return geoToLocal(degreesToRadians(point.latitude), degreesToRadians(point.longitude),
                      point.height, center);
}

LocalPoint geoToLocal(double lat, double lon, double h, GeoPoint center) {
    double north = 0.0;
    double east = 0.0;
    frameAt(center).LLHToLocal(lat, lon, h, &north, &east);
    return localPointFromNorthEast(north, east);
}

std::vector<GeoPoint> localToGeo(std::vector<LocalPoint> const& points, GeoPoint center) {
    // One point's iteration is a chain of dependent steps that keeps the processor waiting;
    // several points in lockstep let their steps overlap. Each point goes through the same
    // operations as alone, so the results are the same bits.
    constexpr std::size_t lanes = 4;
    CoordConv const& frame = frameAt(center);
    std::vector<GeoPoint> result(points.size());
    // A centre at the Earth's centre makes no frame: point by point, every result stays zero.
    double centreECEF[3] = {};
    if (!frame.getLocalCenterECEF(&centreECEF[0], &centreECEF[1], &centreECEF[2]))
        return result;
    for (std::size_t first = 0; first < points.size(); first += lanes) {
        std::size_t const count = std::min(lanes, points.size() - first);
        GeodeticIterate it[lanes];
        double longitude[lanes];
        bool active[lanes];
        for (std::size_t k = 0; k < count; ++k) {
            LocalPoint const point = points[first + k];
            double X = 0.0;
            double Y = 0.0;
            double Z = 0.0;
            frame.LocalToECEF(-static_cast<double>(point.y), static_cast<double>(point.x), &X, &Y,
                              &Z);
            it[k] = startIterate(X, Y, Z);
            longitude[k] = std::atan2(Y, X);
            active[k] = true;
        }
        for (int step = 0; step < 10; ++step) {
            double s[lanes];
            double c[lanes];
            for (std::size_t k = 0; k < count; ++k) {
                s[k] = std::sin(it[k].latitude);
                c[k] = std::cos(it[k].latitude);
            }
            bool anyActive = false;
            for (std::size_t k = 0; k < count; ++k) {
                if (active[k])
                    active[k] = !correct(it[k], s[k], c[k]);
                anyActive = anyActive || active[k];
            }
            if (!anyActive)
                break;
        }
        for (std::size_t k = 0; k < count; ++k) {
            result[first + k] = {radiansToDegrees(it[k].latitude), radiansToDegrees(longitude[k]),
                                 it[k].height};
        }
    }
    return result;
}
