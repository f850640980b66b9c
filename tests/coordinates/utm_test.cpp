// UTM by the series against PROJ on both ellipsoids, the false northing of ten million metres in
// both hemispheres, the zone reported against the zone projected in, and the great circle.
#include "coordinates/utm.h"

#include "proj_oracle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

namespace {

double const degree = 3.141592653589793 / 180.0;

// PROJ's UTM with the false northing of the southern hemisphere, which ours has everywhere.
std::string utmDefinition(int zone, char const* ellipsoid) {
    return "+proj=utm +zone=" + std::to_string(zone) + " +south +ellps=" + ellipsoid;
}

struct Grid {
    double east = 0.0;
    double north = 0.0;
    double scale = 0.0;
    double convergence = 0.0;
    int zone = 0;
};

// In the zone of the longitude, or in `zone` where one is given (that form is on GRS 80 only).
Grid forward(double lat, double lon, int selector = 0, int zone = 0) {
    Grid g;
    if (zone != 0)
        latLonToUtmInZone(lat, lon, zone, g.east, g.north, g.scale, g.convergence, g.zone);
    else
        latLonToUtm(lat, lon, selector, g.east, g.north, g.scale, g.convergence, g.zone);
    return g;
}

} // namespace

TEST(Utm_proj, seriesAgreeWithProjNearTheCentralMeridian) {
    // The two ellipsoids by selector, as PROJ names them.
    for (auto const& [selector, ellipsoid] : {std::pair{0, "GRS80"}, std::pair{1, "aust_SA"}}) {
        for (int zone : {1, 31, 32, 60}) {
            std::string const definition = utmDefinition(zone, ellipsoid);
            ProjOracle const utm(definition);
            std::unique_ptr<PJ, decltype(&proj_destroy)> const projection(
                proj_create(PJ_DEFAULT_CTX, definition.c_str()), &proj_destroy);
            ASSERT_TRUE(utm.valid() && projection);
            for (double lat = -80.0; lat <= 84.0; lat += 4.0) {
                for (double offset = -2.9; offset <= 2.9; offset += 0.725) {
                    double const lon = 6.0 * zone - 183.0 + offset;
                    SCOPED_TRACE(testing::Message() << ellipsoid << " " << lat << ", " << lon);
                    PJ_COORD const expected = utm.forward(lon, lat);
                    Grid const g =
                        selector == 0 ? forward(lat, lon, 0, zone) : forward(lat, lon, 1);
                    EXPECT_NEAR(g.east, expected.xy.x, 1e-4);
                    EXPECT_NEAR(g.north, expected.xy.y, 1e-4);
                    PJ_FACTORS const factors = proj_factors(
                        projection.get(), proj_coord(lon * degree, lat * degree, 0, 0));
                    EXPECT_NEAR(g.scale, factors.meridional_scale, 1e-8);
                    // Of opposite sign; the first-order formula is off by up to 2e-5 degrees at
                    // 3 degrees from the central meridian.
                    EXPECT_NEAR(g.convergence, -factors.meridian_convergence / degree, 3e-5);

                    // The foot-point latitude's last term enters twice: up to 1.7e-11 radians,
                    // 0.11 mm, which is all that separates the inverse from PROJ here.
                    double backLat = 0.0;
                    double backLon = 0.0;
                    utmToLatLon(zone, expected.xy.x, expected.xy.y, selector, backLat, backLon);
                    EXPECT_NEAR((backLat - lat) * 111320.0, 0.0, 2e-4);
                    EXPECT_NEAR((backLon - lon) * 111320.0 * std::cos(lat * degree), 0.0, 2e-4);
                }
            }
        }
    }
    // On the central meridian the series reduces to the foot-point latitude plus its last term
    // once more, n^4 * 2.142578125 * sin(8 sigma): 1.7e-11 radians (0.11 mm) where that sine
    // peaks. What else separates it from PROJ there is below 5e-13 radians (3 um).
    double const n4 = 7.951165642179783e-12;
    ProjOracle const utm(utmDefinition(32, "GRS80"));
    for (double lat : {11.25, 33.75, -11.25, 56.25, 22.5}) {
        PJ_COORD const grid = utm.forward(9.0, lat);
        GeoPoint const back = utmToGeoPoint(32, grid.xy.x, grid.xy.y);
        EXPECT_NEAR((back.latitude - lat) * degree, n4 * 2.142578125 * std::sin(8 * lat * degree),
                    5e-13)
            << lat;
    }
}

TEST(Utm_falseNorthing, equatorIsTenMillionInBothHemispheres) {
    Grid const equator = forward(0.0, 9.0);
    EXPECT_EQ(equator.east, 500000.0);
    EXPECT_EQ(equator.north, 10000000.0);
    EXPECT_DOUBLE_EQ(equator.scale, 0.9996);
    EXPECT_EQ(equator.convergence, 0.0);
    double lat = 1.0;
    double lon = 0.0;
    utmToLatLon(32, 500000.0, 10000000.0, 0, lat, lon);
    EXPECT_NEAR(lat, 0.0, 1e-12);
    // The degree factor and the pi of the inverse don't cancel exactly: 2e-15 degrees off.
    EXPECT_EQ(lon, 8.9999999999999982);

    // A northern point lies more than ten million metres north of the grid's origin.
    double east = 0.0;
    double north = 0.0;
    int zone = 0;
    geoToUtm({50.0, 9.0, 123.0}, east, north, zone);
    EXPECT_GT(north, 15000000.0);
    EXPECT_EQ(zone, 32);
    GeoPoint const back = utmToGeoPoint(zone, east, north);
    EXPECT_NEAR(back.latitude, 50.0, 1e-9);
    EXPECT_NEAR(back.longitude, 9.0, 1e-9);
    EXPECT_EQ(back.height, 0.0);
    // A northing as usual in the north lands in the south.
    EXPECT_NEAR(utmToGeoPoint(32, 500000.0, 5500000.0).latitude, -40.6509, 1e-4);
}

TEST(Utm_zone, reportedZoneAtTheEdgesAndAgainstTheProjectionZone) {
    struct Case {
        double lat, lon;
        int zone;
    } const cases[] = {// Truncation toward zero, and the wrap beyond 180 degrees.
                       {10, 0, 31},
                       {10, -0.1, 30},
                       {10, -6, 29},
                       {10, 180, 61},
                       {10, 181, 1},
                       {10, -181, 60},
                       // The exceptions, each bound closed below and open above.
                       {56, 3, 32},
                       {63.99, 11.99, 32},
                       {64, 5, 31},
                       {60, 12, 33},
                       {56, 2.99, 31},
                       {72, 0, 31},
                       {72, 9, 33},
                       {75, 21, 35},
                       {83.99, 41.99, 37},
                       {72, 42, 38},
                       {71.99, 9, 32},
                       {84, 10, 32},
                       {0, 9, 32}};
    for (Case const& c : cases)
        EXPECT_EQ(forward(c.lat, c.lon).zone, c.zone) << c.lat << ", " << c.lon;

    // Norway's exception reports zone 32 for coordinates of zone 31: read back with the zone it
    // reports, the point moves by six degrees.
    Grid const norway = forward(60.0, 5.0);
    Grid const projected = forward(60.0, 5.0, 0, 31);
    EXPECT_EQ(projected.zone, 31);
    EXPECT_NEAR(norway.east, projected.east, 1e-6);
    EXPECT_NEAR(norway.north, projected.north, 1e-6);
    EXPECT_NEAR(utmToGeoPoint(norway.zone, norway.east, norway.north).longitude, 11.0, 0.1);
    // Beyond 180 degrees the reported zone wraps, the projection doesn't.
    EXPECT_NEAR(forward(10.0, 181.0).east, forward(10.0, 181.0, 0, 61).east, 1e-6);
    EXPECT_LT(forward(10.0, 181.0).east, 500000.0);
}

TEST(GreatCircle_proj, matchesProjOnTheSameSphere) {
    std::unique_ptr<PJ, decltype(&proj_destroy)> const sphere(
        proj_create(PJ_DEFAULT_CTX, "+proj=longlat +R=6372797"), &proj_destroy);
    ASSERT_TRUE(sphere);
    GeoPoint const pairs[][2] = {{{52.0, 9.0, 0.0}, {-33.9, 151.2, 2000.0}},
                                 {{0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}},
                                 {{89.0, 0.0, 0.0}, {89.0, 180.0, 0.0}},
                                 {{10.0, 179.9, 0.0}, {10.0, -179.9, -50.0}},
                                 {{48.1, 11.5, 0.0}, {48.1001, 11.5001, 0.0}}};
    for (auto const& pair : pairs) {
        PJ_COORD const a = proj_coord(pair[0].longitude * degree, pair[0].latitude * degree, 0, 0);
        PJ_COORD const b = proj_coord(pair[1].longitude * degree, pair[1].latitude * degree, 0, 0);
        EXPECT_NEAR(greatCircleDistance(pair[0], pair[1]), proj_lp_dist(sphere.get(), a, b), 1e-5);
    }
}
