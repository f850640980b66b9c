#include "coordinates/utm.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

double const k0 = 0.9996;
double const falseEasting = 500000.0;
double const falseNorthing = 10000000.0;
// Both literals are a few units off in the last digits of pi / 180 and pi, and stay so: the grid
// values are defined with them.
double const gridDegree = 0.017453292519943334;
double const gridPi = 3.1415926535898;

struct Ellipsoid {
    double a;
    double f;
    double e2;
    // Powers of n = f / (2 - f).
    double n;
    double n2;
    double n3;
    double n4;
    // Rectifying radius.
    double g;
};

Ellipsoid const flattening298_25{6378160.0,
                                 0.003352891869237217,
                                 0.006694541854587637,
                                 0.0016792611251049538,
                                 2.819917926288755e-06,
                                 4.735378549603283e-09,
                                 7.951937111004673e-12,
                                 6367471.848532282};
Ellipsoid const grs80{6378137.0,
                      0.003352810681182319,
                      0.006694380022900787,
                      0.0016792203946287448,
                      2.8197811337371174e-06,
                      4.735033988160732e-09,
                      7.951165642179783e-12,
                      6367449.145771047};

Ellipsoid const& ellipsoidOf(int selector) {
    return selector == 1 ? flattening298_25 : grs80;
}

// trunc(lon / 6) + 30 west of Greenwich, + 31 east of it. Longitudes that no zone number can hold
// are clamped, and not-a-number gives zone 31, so that the integer arithmetic stays defined.
int zoneOfLongitude(double lon) {
    double const sixths = std::trunc(lon / 6);
    int const base = std::isnan(sixths) ? 0 : static_cast<int>(std::clamp(sixths, -1e8, 1e8));
    return base + (lon < 0 ? 30 : 31);
}

// Adds or takes away 360 until the longitude lies within -180 to 180; fmod does that exactly in
// one step and also ends for an infinite longitude.
double wrapLongitude(double lon) {
    double const wrapped = std::fmod(lon, 360.0);
    if (wrapped > 180.0)
        return wrapped - 360.0;
    if (wrapped < -180.0)
        return wrapped + 360.0;
    return wrapped;
}

// Bounds closed below, open above.
bool within(double value, double lower, double upper) {
    return value >= lower && value < upper;
}

int reportedZone(double lat, double lon) {
    double const wrapped = wrapLongitude(lon);
    if (within(lat, 56, 64) && within(wrapped, 3, 12))
        return 32;
    if (within(lat, 72, 84)) {
        if (within(wrapped, 0, 9))
            return 31;
        if (within(wrapped, 9, 21))
            return 33;
        if (within(wrapped, 21, 33))
            return 35;
        if (within(wrapped, 33, 42))
            return 37;
    }
    return zoneOfLongitude(wrapped);
}

struct ForwardTerms {
    double aK0;
    // e^2 / (1 - e^2).
    double secondEccentricitySquared;
    Ellipsoid const& ellipsoid;
};

struct GridValues {
    double east;
    double north;
    double scale;
    double convergence;
};

GridValues forwardSeries(double lat, double lon, int zone, ForwardTerms const& terms) {
    Ellipsoid const& el = terms.ellipsoid;
    double const lambda0 = static_cast<double>((std::int64_t{zone} - 31) * 6 + 3) * gridDegree;
    double const phi = lat * gridDegree;
    double const lambda = lon * gridDegree;

    double const s = std::sin(phi);
    double const c = std::cos(phi);
    double const t = std::tan(phi);
    double const t2 = t * t;
    double const t4 = t2 * t2;
    double const t6 = t4 * t2;
    double const l = (lambda0 - lambda) * c;
    double const q = l * l;
    double const r = terms.aK0 / std::sqrt(1 - el.e2 * (s * s));
    double const h = terms.secondEccentricitySquared * (c * c);
    double const meridian =
        rectifyingLatitude(phi, el.f) * k0 * el.g - rectifyingLatitude(0, el.f) * k0 * el.g;

    GridValues grid{};
    grid.north =
        meridian + falseNorthing +
        (r * 0.5 * t * q) *
            (1 + q * ((5 - t2 + (9 + 4 * h) * h) * 0.08333333333333333 +
                      q * (61 - 58 * t2 + t4 + (270 - 330 * t2) * h) * 0.002777777777777778));
    grid.east =
        falseEasting +
        (-r * l) * (1 + q * ((1 - t2 + h) * 0.16666666666666666 +
                             q * (q * (61 - 479 * t2 + 179 * t4 - t6) * 0.0001984126984126984 +
                                  (5 - 18 * t2 + t4 + (14 - 58 * t2) * h) * 0.008333333333333333)));
    grid.convergence = std::atan(-s * std::tan(lambda - lambda0)) / gridPi * 180;
    grid.scale = 0.9996 * (1 + (1 + q * (5 - 4 * t2 + (9 - 24 * t2) * h) * 0.08333333333333333) *
                                   (q * (h + 1) * 0.5));
    return grid;
}

double gridRadiansToDegrees(double radians) {
    return (radians * 180.0) / gridPi;
}

} // namespace

double rectifyingLatitude(double latitudeRadians, double f) {
    double const n = f / (2 - f);
    double const n2 = n * n;
    double const n3 = n2 * n;
    double const n4 = n2 * n2;
    double const b2 = -3 * n / 2 + 9 * n3 / 16;
    double const b4 = 15 * n2 / 16 - 15 * n4 / 32;
    double const b6 = -35 * n3 / 48;
    double const b8 = 315 * n4 / 512;
    // The sum of b_k sin(k phi) for k = 2, 4, 6, 8, written in powers of cos^2 so that one sine
    // and one cosine do.
    double const s = std::sin(latitudeRadians);
    double const c = std::cos(latitudeRadians);
    double const c2 = c * c;
    return latitudeRadians +
           s * c *
               (2 * (b2 - 2 * b4 + 3 * b6 - 4 * b8) +
                c2 * (8 * (b4 - 4 * b6 + 10 * b8) + c2 * (32 * (b6 - 6 * b8) + 128 * b8 * c2)));
}

double rectifyingRadius(double f, double a) {
    double const n = f / (2 - f);
    double const n2 = n * n;
    double const n4 = n2 * n2;
    return (1 - n) * a * (1 - n2) * (1 + 9 * n2 / 4 + 225 * n4 / 64);
}

void latLonToUtm(double lat, double lon, int selector, double& east, double& north, double& scale,
                 double& convergence, int& zone) {
    Ellipsoid const& el = ellipsoidOf(selector);
    GridValues const grid =
        forwardSeries(lat, lon, zoneOfLongitude(lon), {el.a * k0, el.e2 / (1 - el.e2), el});
    east = grid.east;
    north = grid.north;
    scale = grid.scale;
    convergence = grid.convergence;
    zone = reportedZone(lat, lon);
}

void latLonToUtmInZone(double lat, double lon, int givenZone, double& east, double& north,
                       double& scale, double& convergence, int& zone) {
    GridValues const grid =
        forwardSeries(lat, lon, givenZone, {6375585.745200001, 0.006739496775478957, grs80});
    east = grid.east;
    north = grid.north;
    scale = grid.scale;
    convergence = grid.convergence;
    zone = givenZone;
}

void utmToLatLon(int zone, double east, double north, int selector, double& lat, double& lon) {
    Ellipsoid const& el = ellipsoidOf(selector);
    // In 64 bits, so that no zone number can overflow.
    double const lambda0 = (static_cast<double>(std::int64_t{6} * zone) - 183.0) * gridDegree;
    double const g = rectifyingRadius(el.f, el.a);
    double const eastOffset = east - falseEasting;
    double const northOffset = north - falseNorthing;

    double const sigma = ((northOffset + rectifyingLatitude(0, el.f) * k0 * g) / k0) / g;
    double const lastFootTerm = el.n4 * 2.142578125 * std::sin(8 * sigma);
    double const footLatitude = sigma + (1.5 * el.n - 0.84375 * el.n3) * std::sin(2 * sigma) +
                                (1.3125 * el.n2 - 1.71875 * el.n4) * std::sin(4 * sigma) +
                                (1.5729166666666667 * el.n3) * std::sin(6 * sigma) + lastFootTerm;

    double const s = std::sin(footLatitude);
    double const c = std::cos(footLatitude);
    double const w = std::sqrt(1 - el.e2 * (s * s));
    double const nu = el.a / w;
    double const rho = (1 - el.e2) * el.a / std::pow(w, 3.0);
    double const t = std::tan(footLatitude);
    double const t2 = t * t;
    double const t4 = t2 * t2;
    double const t6 = t4 * t2;
    double const psi = nu / rho;
    double const psi2 = psi * psi;
    double const psi3 = psi2 * psi;
    double const psi4 = psi2 * psi2;
    double const x = eastOffset / (nu * k0);
    double const x3 = x * x * x;
    double const x5 = x3 * x * x;
    double const x7 = x5 * x * x;
    double const tau = t / (rho * k0);
    double const sec = 1 / c;

    // The last foot-point term enters a second time; it stays below 1e-10 radians.
    double const latitude =
        footLatitude - tau * x * (eastOffset / 2) +
        tau * x3 * (eastOffset / 24) * (-4 * psi2 + 9 * psi * (1 - t2) + 12 * t2) -
        tau * x5 * (eastOffset / 720) *
            (8 * psi4 * (11 - 24 * t2) - 12 * psi3 * (21 - 71 * t2) +
             15 * psi2 * (15 - 98 * t2 + 15 * t4) + 180 * psi * (5 * t2 - 3 * t4) + 360 * t4) +
        tau * x7 * (eastOffset / 40320) * (1385 + 3633 * t2 + 4095 * t4 + 1575 * t6) + lastFootTerm;
    double const longitude =
        lambda0 + x * sec - (x3 / 6) * sec * (psi + 2 * t2) +
        (x5 / 120) * sec *
            (-4 * psi3 * (1 - 6 * t2) + psi2 * (9 - 68 * t2) + 72 * psi * t2 + 24 * t4) -
        (x7 / 5040) * sec * (61 + 662 * t2 + 1320 * t4 + 720 * t6);

    lat = gridRadiansToDegrees(latitude);
    lon = gridRadiansToDegrees(longitude);
}

GeoPoint utmToGeoPoint(int zone, double east, double north) {
    GeoPoint point;
    utmToLatLon(zone, east, north, 0, point.latitude, point.longitude);
    return point;
}

void geoToUtm(GeoPoint point, double& east, double& north, int& zone, double& convergence) {
    double scale = 0.0;
    latLonToUtm(point.latitude, point.longitude, 0, east, north, scale, convergence, zone);
}

void geoToUtm(GeoPoint point, double& east, double& north, int& zone) {
    double convergence = 0.0;
    geoToUtm(point, east, north, zone, convergence);
}

double greatCircleDistance(GeoPoint p, GeoPoint q) {
    double const pi = 3.141592653589793;
    double const sinHalfLat = std::sin((p.latitude - q.latitude) * pi / 180.0 * 0.5);
    double const sinHalfLon = std::sin((p.longitude - q.longitude) * pi / 180.0 * 0.5);
    double const h = sinHalfLat * sinHalfLat + std::cos(p.latitude * pi / 180.0) *
                                                   std::cos(q.latitude * pi / 180.0) *
                                                   (sinHalfLon * sinHalfLon);
    return std::asin(std::sqrt(h)) * 12745594.0;
}
