// The coordinate code against PROJ, the independent reference, wherever PROJ has the same
// conversion: the tangent plane both ways, the geocentric iteration, UTM on both ellipsoids and
// the great circle. The 3x3 algebra by identities that tie its many forms to one another, and
// the caches, the whole-file form and the grid cells by their bits.
#include "coordinates/local_frame.h"
#include "coordinates/utm.h"

#include <proj.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <thread>

namespace {

double const pi = 3.141592653589793, degree = pi / 180.0;
// What Decart2Geo leaves: it stops once a step moves the point by less than 1 cm, and the error
// left after that step is some 20 um.
double const iterationTolerance = 1e-4;

// A PROJ operation; with `degrees`, geographic input in degrees, longitude first.
using Proj = std::unique_ptr<PJ, decltype(&proj_destroy)>;
Proj proj(std::string const& definition, bool degrees = true) {
    std::string const fromDegrees =
        "+proj=pipeline +step +proj=unitconvert +xy_in=deg +xy_out=rad +step ";
    Proj pj(proj_create(PJ_DEFAULT_CTX, ((degrees ? fromDegrees : "") + definition).c_str()),
            &proj_destroy);
    EXPECT_TRUE(pj) << definition;
    return pj;
}
PJ_COORD forward(Proj const& pj, double a, double b, double c = 0.0) {
    return proj_trans(pj.get(), PJ_FWD, proj_coord(a, b, c, 0.0));
}

// Both hemispheres and both sides of the antimeridian, the last one beyond the latitudes where
// fastToGeo holds to a millimetre. The poles are left out, as east has no direction there.
GeoPoint const centres[] = {
    {0.0, 0.0, 250.0},        {0.0, 90.0, 250.0},       {52.0, 9.0, 100.0}, {-45.0, -100.0, 800.0},
    {-17.8, 179.9995, 250.0}, {60.0, -179.9995, 150.0}, {78.2, 15.6, 0.0}};

template <typename T> bool sameBits(T const& a, T const& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Metres on the ground between two nearby positions; longitudes must be in the same range.
double groundDistance(GeoPoint const& a, GeoPoint const& b) {
    return std::hypot((a.latitude - b.latitude) * 111320.0,
                      (a.longitude - b.longitude) * 111320.0 * std::cos(a.latitude * degree));
}

void expectNear(SMat const& actual, SMat const& expected, double tolerance = 1e-12) {
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(actual.m[i], expected.m[i], tolerance) << "element " << i;
}
// A vector as the first column of a matrix, for the tables of identities.
SMat col(SVec const& v) {
    return SMat(v, {}, {});
}

// A matrix with no special structure, by columns.
SMat const general({2.0, -1.0, 0.5}, {0.3, 4.0, -2.0}, {-1.5, 0.25, 3.0});
SVec const w(0.7, -1.1, 2.3);

struct Grid {
    double east = 0.0, north = 0.0, scale = 0.0, convergence = 0.0;
    int zone = 0;
};

// UTM in the zone of the longitude, or in `zone` where one is given (that form is on GRS 80).
Grid utm(double lat, double lon, int selector = 0, int zone = 0) {
    Grid g;
    zone != 0 ? latLonToUtmInZone(lat, lon, zone, g.east, g.north, g.scale, g.convergence, g.zone)
              : latLonToUtm(lat, lon, selector, g.east, g.north, g.scale, g.convergence, g.zone);
    return g;
}

} // namespace

TEST(Algebra, formsAgreeRotationsAreRightHandedAndInversesRefuseOnlyExactZeroPivots) {
    SMat const other({1.0, 2.0, -3.0}, {0.5, 0.0, 1.0}, {-2.0, 1.5, 0.25});
    SDiagMatr const d{{2.0, -3.0, 0.5}};
    // A row-wise C array read into column storage is its transpose.
    double const rows[3][3] = {{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 9.0}};
    // The cross-product matrices of a and of (-0.5, 1, 3).
    SkewSymMatr const s{1.5, -2.0, 0.5}, t{-0.5, 1.0, 3.0};
    SVec const a(1.5, -2.0, 0.5);
    // Pointers read as three values, floats widened.
    float const f[3] = {1.5f, 2.0f, -0.25f};
    double const p[3] = {0.5, -1.0, 4.0};
    SVec const one(1.0, 1.0, 1.0), axis = SVec(1.0, -2.0, 2.0) / 3.0;
    OrthoMat const r = rotationFromAxisAngle(axis, 0.9);
    // Inverses and normalizations that must succeed; a rotation with drift in two elements.
    auto const after = [](bool (SMat::*step)(), SMat m, bool succeeds = true) {
        EXPECT_EQ((m.*step)(), succeeds);
        return m;
    };
    SMat drifted = rotationFromAxisAngle(SVec(1.0, 0.0, 0.0), 1.2);
    drifted.m[1] += 1e-4;
    drifted.m[5] -= 2e-4;
    std::pair<SMat, SMat> const identities[] = {
        {col((general * other) * w), col(general * (other * w))},
        {transpose(general * other), transpose(other) * transpose(general)},
        {col(outerprod(SVec(1, 2, 3), SVec(-2, 0.5, 4)) * w),
         col(innerprod(SVec(-2, 0.5, 4), w) * SVec(1, 2, 3))},
        {col((general * d).column(1)), col(-3.0 * general.column(1))},
        {col((d * general).row(1)), col(-3.0 * general.row(1))},
        {col((general - d).column(2)), col(general.column(2) - SVec(0, 0, 0.5))},
        {col(transpose(rows).row(0)), col(SVec(1.0, 4.0, 7.0))},
        {col(s * w), col(vectorProd(a, w))},
        {col(SMat(s) * w), col(vectorProd(a, w))},
        {col((s * general) * w), col(vectorProd(a, general * w))},
        {col((general * s) * w), col(general * vectorProd(a, w))},
        {col((s * t) * w), col(vectorProd(a, vectorProd(SVec(-0.5, 1.0, 3.0), w)))},
        {s + SMat(), SMat(s)},
        {SMat() - s, -1.0 * SMat(s)},
        {SMat(s + 2.0 * t), SMat(s) + SMat(t * 2.0)},
        {SMat(s - t), SMat(s) - SMat(t)},
        {col(f - one), col(SVec(0.5, 1.0, -1.25))},
        {col(one - f), col(SVec(-0.5, -1.0, 1.25))},
        {col(p - one), col(SVec(-0.5, -2.0, 3.0))},
        {col(one - p + (p + one) - (one + p)), col(SVec(0.5, 2.0, -3.0))},
        {col(square(p)), col(SVec(0.25, 1.0, 16.0))},
        {col(rotationFromVector(SVec(0.0, 0.0, pi / 2)) * SVec(1.0, 0.0, 2.0)), col(SVec(0, 1, 2))},
        {transpose(r) * r, SMat::identity()},
        {rotationFromVector(0.9 * axis), r},
        {after(&SMat::inverse, general) * general, SMat::identity()},
        {after(&SMat::normalize, r), r},
        {transpose(after(&SMat::normalize, drifted)) * after(&SMat::normalize, drifted),
         SMat::identity()}};
    for (auto const& [actual, expected] : identities) {
        SCOPED_TRACE(&actual - &identities[0].first);
        expectNear(actual, expected);
    }
    EXPECT_EQ(dist(SVec(1, 2, 3), SVec(4, 6, 15)), 13.0);
    EXPECT_TRUE(sameBits<SMat>(rotationFromVector(SVec()), SMat::identity()));

    // Body to north-east-down: heading about down, then pitch about east, then roll about north.
    SMat const bodyToLocal = rotationFromAxisAngle(SVec(0, 0, 1), 130.0 * degree) *
                             rotationFromAxisAngle(SVec(0, 1, 0), 10.0 * degree) *
                             rotationFromAxisAngle(SVec(1, 0, 0), -25.0 * degree);
    double pitch = 0.0, roll = 0.0, heading = 0.0;
    OrthoMat(transpose(bodyToLocal)).PitchRollHeading(pitch, roll, heading);
    expectNear(col(SVec(pitch, roll, heading)), col(SVec(10.0, -25.0, 130.0)));
    // Straight up, the roll is undefined.
    OrthoMat(transpose(rotationFromAxisAngle(SVec(0, 1, 0), pi / 2)))
        .PitchRollHeading(pitch, roll, heading);
    EXPECT_TRUE(std::fabs(pitch - 90.0) < 1e-12 && std::isnan(roll));

    // Zeros on the diagonal force a row swap at every step.
    SMat const permutation({0, 0, 1}, {1, 0, 0}, {0, 1, 0});
    EXPECT_TRUE(sameBits(after(&SMat::inverse, permutation), transpose(permutation)));
    // The first pivot candidates tie (-3 and 3). Taking the last of them gives the exact inverse,
    // k / 76, correctly rounded; the first would miss it in the last bit.
    SMat const tied = after(&SMat::inverse, SMat({-3, 4, -4}, {-1, -4, 2}, {3, 2, 5}));
    double const times76[9] = {-24, -28, -8, 11, -3, 10, 10, 18, 16};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(tied.m[i], times76[i] / 76.0) << i;
    // Singular: refused at once, or left half eliminated.
    SMat const equalColumns({1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}, {0.0, 1.0, 5.0});
    EXPECT_TRUE(
        sameBits(after(&SMat::inverse, SMat(), false), SMat()) &&
        !sameBits(after(&SMat::inverse, equalColumns, false), equalColumns) &&
        sameBits(after(&SMat::normalize, 3.0 * SMat::identity(), false), 3.0 * SMat::identity()));
}

TEST(Frame_proj, bothDirectionsAgreeWithProjsTangentPlane) {
    for (GeoPoint const& centre : centres) {
        SCOPED_TRACE(testing::Message() << centre.latitude << ", " << centre.longitude);
        // Every centre has at most six decimals, which std::to_string writes exactly.
        Proj const topocentric =
            proj("+proj=cart +ellps=WGS84 +step +proj=topocentric +ellps=WGS84 +lat_0=" +
                 std::to_string(centre.latitude) + " +lon_0=" + std::to_string(centre.longitude) +
                 " +h_0=" + std::to_string(centre.height));
        LocalFrame const frame(centre);
        for (int i = -10; i <= 10; ++i)
            for (int j = -10; j <= 10; ++j) {
                // A plane point goes onto PROJ's plane (up 0) and comes back within the
                // iteration's error, then rounded to single precision.
                LocalPoint const point{static_cast<float>(i * 500.3),
                                       static_cast<float>(j * 499.7)};
                GeoPoint const geo = localToGeo(point, centre);
                PJ_COORD enu = forward(topocentric, geo.longitude, geo.latitude, geo.height);
                expectNear(col(SVec(enu.enu.e, -enu.enu.n, enu.enu.u)),
                           col(SVec(point.x, point.y, 0.0)), iterationTolerance);
                EXPECT_LT(groundDistance(frame.toGeo(point), geo), 1e-6);
                EXPECT_NEAR(frame.toGeo(point).height, geo.height, 1e-6);
                LocalPoint const back = geoToLocal(geo, centre);
                EXPECT_NEAR(back.x, point.x, std::fabs(point.x) * 0x1p-23 + iterationTolerance);
                EXPECT_NEAR(back.y, point.y, std::fabs(point.y) * 0x1p-23 + iterationTolerance);

                // A geodetic point gives PROJ's east and north, rounded to single precision: half
                // a unit in the last place, 0.24 mm at 4 km; the frame keeps degree factors of its
                // own, which may round the other way.
                GeoPoint const near{centre.latitude + i * 0.004,
                                    std::remainder(centre.longitude + j * 0.004, 360.0),
                                    250.0 + i * 10.0};
                enu = forward(topocentric, near.longitude, near.latitude, near.height);
                for (auto const& [local, ulps] : {std::pair{geoToLocal(near, centre), 0x1p-24},
                                                  std::pair{frame.toLocal(near), 0x1p-23}}) {
                    EXPECT_NEAR(local.x, enu.enu.e, std::fabs(enu.enu.e) * ulps + 1e-6);
                    EXPECT_NEAR(local.y, -enu.enu.n, std::fabs(enu.enu.n) * ulps + 1e-6);
                }
            }
    }
}

TEST(Geodetic_ellipsoid,
     iterationInvertsProjsGeocentricConversionGravityIsNormalAndFramesNeedACentre) {
    // Against the point that PROJ converted: PROJ's own inverse is a closed formula that drifts
    // by 29 mm at 20000 km.
    Proj const geocentric = proj("+proj=cart +ellps=WGS84");
    for (double lat = -89.99; lat < 90.0; lat += 7.7)
        for (double lon = -180.0; lon < 180.0; lon += 33.3)
            for (double h : {-5000.0, 0.0, 300.0, 1e4, 1e5, 1e6, 2e7}) {
                SCOPED_TRACE(testing::Message() << lat << ", " << lon << ", " << h);
                PJ_COORD const xyz = forward(geocentric, lon, lat, h);
                GeoPoint back;
                Decart2Geo(xyz.v, back.latitude, back.longitude, back.height);
                EXPECT_LT(
                    groundDistance({back.latitude / degree, back.longitude / degree}, {lat, lon}),
                    iterationTolerance);
                EXPECT_NEAR(back.height, h, iterationTolerance);
            }
    // At the Earth's centre the first step divides 0 by 0; it runs on and ends without a signal.
    GeoPoint core{1.0, 1.0, 1.0};
    Decart2Geo(0.0, 0.0, 0.0, core.latitude, core.longitude, core.height);
    EXPECT_TRUE(std::isnan(core.latitude) && core.longitude == 0.0 && std::isnan(core.height));
    // WGS-84 normal gravity by the closed formula, m/s^2; the series is good to 2 um/s^2. The
    // free-air gradient is 3.086 um/s^2 per metre at 45 degrees.
    EXPECT_NEAR(getLocalGravity(0.0, 0.0), 9.7803253359, 2e-6);
    EXPECT_NEAR(getLocalGravity(45.0 * degree, 0.0), 9.806199203, 2e-6);
    EXPECT_NEAR(getLocalGravity(-90.0 * degree, 0.0), 9.8321849378, 2e-6);
    EXPECT_NEAR(getLocalGravity(45.0 * degree, 1000.0), 9.806199203 - 0.003086, 4e-6);

    // A frame without a centre refuses and writes nothing; an earth-centred centre goes through
    // the geodetic coordinates.
    CoordConv frame;
    double a = 7.0, b = 7.0, c = 7.0;
    EXPECT_FALSE(frame.getLocalCenterLLH(&a, &b, &c) || frame.getLocalCenterECEF(&a, &b, &c) ||
                 frame.ECEFToLocal(6378137.0, 0.0, 0.0, &a, &b) ||
                 frame.LocalToLLH(1.0, 1.0, &a, &b, &c));
    EXPECT_TRUE(a == 7.0 && b == 7.0 && c == 7.0);

    Geo2Decart(-33.9 * degree, 18.4 * degree, 300.0, a, b, c);
    frame.setLocalCenterECEF(a, b, c);
    ASSERT_TRUE(frame.getLocalCenterLLH(&a, &b, &c));
    expectNear(col(SVec(a / degree, b / degree, c)), col(SVec(-33.9, 18.4, 300.0)), 1e-4);
}

TEST(Frame_cache, alternatingCentresAndWholeFilesGiveTheBitsOfSinglePointsInAFreshFrame) {
    // Each centre differs from the one before in one value; -0.0 and 0.0 differ only in bits.
    GeoPoint const sequence[] = {{52.0, 9.0, 100.0}, {52.0, 9.0, 160.0}, {52.0, 9.5, 160.0},
                                 {52.5, 9.5, 160.0}, {52.0, 9.0, 100.0}, {-0.0, 0.0, 0.0},
                                 {0.0, 0.0, 0.0}};
    LocalPoint const local{1234.5f, -987.25f};
    GeoPoint const geo{52.01, 9.02, 130.0};
    for (GeoPoint const& centre : sequence) {
        // A new thread has converted nothing before, so it builds its frame afresh.
        std::pair<GeoPoint, LocalPoint> fresh,
            here{localToGeo(local, centre), geoToLocal(geo, centre)};
        std::thread([&] { fresh = {localToGeo(local, centre), geoToLocal(geo, centre)}; }).join();
        EXPECT_TRUE(sameBits(here, fresh));
    }

    std::vector<LocalPoint> points;
    for (int i = 0; i < 1001; ++i) // not a multiple of the points done together
        points.push_back({static_cast<float>(i * 9.7 - 4000.0), static_cast<float>(i * -3.3)});
    // The last centre lies at the Earth's centre, where no frame can be set.
    for (GeoPoint const& centre : {centres[4], GeoPoint{0.0, 0.0, -6378137.0}}) {
        std::vector<GeoPoint> const converted = localToGeo(points, centre);
        ASSERT_EQ(converted.size(), points.size());
        for (std::size_t i = 0; i < points.size(); ++i)
            EXPECT_TRUE(sameBits(converted[i], localToGeo(points[i], centre))) << i;
    }
    EXPECT_TRUE(localToGeo(std::vector<LocalPoint>(), centres[4]).empty());
}

TEST(FastToGeo_accuracy, withinAMillimetreOrSoOfTheExactConversionWhateverCameBefore) {
    // A projective map of a 100 m cell cannot follow the curvature of the parallels: the error is
    // largest mid-cell and grows with latitude, 0.75 mm at 52 degrees and 1 mm at 60.
    for (GeoPoint const& centre : centres) {
        if (centre.latitude > 60.0)
            continue;
        SCOPED_TRACE(centre.latitude);
        LocalFrame frame(centre);
        double worst = 0.0;
        for (float y = -2500.0f; y <= 2500.0f; y += 23.7f)
            for (float x = -2500.0f; x <= 2500.0f; x += 23.7f) {
                GeoPoint const fast = frame.fastToGeo({x, y});
                EXPECT_EQ(fast.height, 0.0);
                worst = std::max(worst, groundDistance(fast, frame.toGeo({x, y})));
            }
        EXPECT_LT(worst, 1.2e-3);
    }
    // The map of a cell does not depend on the cell visited before: one in the same row, column
    // or cell, or at mirrored indices.
    LocalPoint const point{1234.5f, -567.25f};
    GeoPoint const fresh = LocalFrame(centres[2]).fastToGeo(point);
    for (LocalPoint const other : {LocalPoint{5000.0f, -567.25f}, LocalPoint{1234.5f, 3000.0f},
                                   LocalPoint{1299.0f, -501.0f}, LocalPoint{-1234.5f, 567.25f}}) {
        LocalFrame frame(centres[2]);
        frame.fastToGeo(other);
        EXPECT_TRUE(sameBits(frame.fastToGeo(point), fresh)) << other.x << " " << other.y;
    }
}

TEST(GridCell_index, cellsByFloorInRowOrderWithTruncatingArithmetic) {
    // Beyond the index range the cell is clamped, short of the value that marks no cell.
    std::vector<GridCell> cells;
    for (LocalPoint p :
         {LocalPoint{100, 50}, {99.99f, -0.01f}, {-100, -100.5f}, {1e30f, -1e30f}, {NAN, NAN}})
        cells.emplace_back(p);
    EXPECT_EQ(cells, (std::vector<GridCell>{
                         {1, 0}, {0, -1}, {-1, -2}, {2147483520, -2147483520}, {0, 0}}));

    cells = {{3, 1}, {-2, 1}, {7, 0}, {0, -4}};
    std::sort(cells.begin(), cells.end());
    EXPECT_EQ(cells, (std::vector<GridCell>{{0, -4}, {7, 0}, {-2, 1}, {3, 1}})); // row by row
    EXPECT_TRUE(GridCell(1, 1) > GridCell(0, 1) && GridCell(1, 1) <= GridCell(1, 1) &&
                GridCell(1, 1) >= GridCell(1, 1) && GridCell(1, 2) != GridCell(2, 1));
    GridCell cell(-3, 7);
    EXPECT_EQ(-(cell + GridCell(1, 1) - GridCell(0, 3)), GridCell(2, -5));
    EXPECT_EQ(cell / 2.0f, GridCell(-1, 3)); // toward zero
    EXPECT_EQ(cell *= 1.5f, GridCell(-4, 10));
    EXPECT_EQ(((cell /= -4.0f) += GridCell(1, 1)) -= GridCell(0, 2), GridCell(2, -3));
    EXPECT_TRUE(GridCell::lowerEdge(-2) == -200.0f && GridCell::upperEdge(-2) == -100.0f);
}

TEST(Utm_proj, seriesAgreeWithProjNearTheCentralMeridian) {
    // The two ellipsoids by selector, as PROJ names them; PROJ's UTM with the false northing of
    // the southern hemisphere, which ours has everywhere.
    for (auto const& [selector, ellipsoid] : {std::pair{0, "GRS80"}, std::pair{1, "aust_SA"}})
        for (int zone : {1, 31, 32, 60}) {
            std::string const definition =
                "+proj=utm +zone=" + std::to_string(zone) + " +south +ellps=" + ellipsoid;
            Proj const grid = proj(definition), factorsOf = proj(definition, false);
            for (double lat = -80.0; lat <= 84.0; lat += 4.0)
                for (double offset = -2.9; offset <= 2.9; offset += 0.725) {
                    double const lon = 6.0 * zone - 183.0 + offset;
                    SCOPED_TRACE(testing::Message() << ellipsoid << " " << lat << ", " << lon);
                    PJ_COORD const expected = forward(grid, lon, lat);
                    Grid const g = selector == 0 ? utm(lat, lon, 0, zone) : utm(lat, lon, 1);
                    EXPECT_NEAR(g.east, expected.xy.x, 1e-4);
                    EXPECT_NEAR(g.north, expected.xy.y, 1e-4);
                    PJ_FACTORS const factors =
                        proj_factors(factorsOf.get(), proj_coord(lon * degree, lat * degree, 0, 0));
                    EXPECT_NEAR(g.scale, factors.meridional_scale, 1e-8);
                    // Of opposite sign; the first-order formula is off by up to 2e-5 degrees at
                    // 3 degrees from the central meridian.
                    EXPECT_NEAR(g.convergence, -factors.meridian_convergence / degree, 3e-5);

                    // The foot-point latitude's last term enters twice: up to 1.7e-11 radians,
                    // 0.11 mm, which is all that separates the inverse from PROJ here.
                    GeoPoint back;
                    utmToLatLon(zone, expected.xy.x, expected.xy.y, selector, back.latitude,
                                back.longitude);
                    EXPECT_LT(groundDistance(back, {lat, lon}), 2e-4);
                }
        }
}

TEST(Utm_zone, reportedZoneAtTheEdgesAndAgainstTheProjectionZone) {
    // Truncation toward zero and the wrap beyond 180 degrees, then the exceptions, each bound
    // closed below and open above.
    std::tuple<double, double, int> const cases[] = {
        {10, 0, 31},        {10, -0.1, 30}, {10, -6, 29},   {10, 180, 61}, {10, 181, 1},
        {10, -181, 60},     {0, 9, 32},     {56, 3, 32},    {64, 5, 31},   {63.99, 11.99, 32},
        {60, 12, 33},       {56, 2.99, 31}, {72, 0, 31},    {72, 9, 33},   {75, 21, 35},
        {83.99, 41.99, 37}, {72, 42, 38},   {71.99, 9, 32}, {84, 10, 32}};
    for (auto const& [lat, lon, zone] : cases)
        EXPECT_EQ(utm(lat, lon).zone, zone) << lat << ", " << lon;

    // Norway's exception reports zone 32 for coordinates of zone 31, which lie more than ten
    // million metres north: read back with the zone it reports, the point moves by six degrees,
    // and comes back at height 0.
    Grid g, projected = utm(60.0, 5.0, 0, 31);
    geoToUtm({60.0, 5.0, 123.0}, g.east, g.north, g.zone);
    EXPECT_TRUE(g.zone == 32 && projected.zone == 31 && g.north > 15000000.0);
    expectNear(col(SVec(g.east, g.north, 0)), col(SVec(projected.east, projected.north, 0)), 1e-6);
    GeoPoint const back = utmToGeoPoint(g.zone, g.east, g.north);
    EXPECT_TRUE(std::fabs(back.longitude - 11.0) < 0.1 && back.height == 0.0);
    // Beyond 180 degrees the reported zone wraps, the projection doesn't.
    EXPECT_NEAR(utm(10.0, 181.0).east, utm(10.0, 181.0, 0, 61).east, 1e-6);
    EXPECT_LT(utm(10.0, 181.0).east, 500000.0);
}

TEST(GreatCircle_proj, matchesProjOnTheSameSphere) {
    Proj const sphere = proj("+proj=longlat +R=6372797", false);
    GeoPoint const pairs[][2] = {{{52.0, 9.0, 0.0}, {-33.9, 151.2, 2000.0}},
                                 {{0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}},
                                 {{89.0, 0.0, 0.0}, {89.0, 180.0, 0.0}},
                                 {{10.0, 179.9, 0.0}, {10.0, -179.9, -50.0}},
                                 {{48.1, 11.5, 0.0}, {48.1001, 11.5001, 0.0}}};
    auto const radians = [](GeoPoint p) {
        return proj_coord(p.longitude * degree, p.latitude * degree, 0, 0);
    };
    for (auto const& [p, q] : pairs)
        EXPECT_NEAR(greatCircleDistance(p, q), proj_lp_dist(sphere.get(), radians(p), radians(q)),
                    1e-5);
}
