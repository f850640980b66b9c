// Position texts of base stations and the run's table of stations.
#include "guidance/base_stations.h"

#include "taskdata/element_man.h"

#include <gtest/gtest.h>

#include <climits>
#include <tuple>

using namespace TC::Task_data::Elements::Client;

TEST(PositionText, GivesDegreesAndMetres) {
    double const example_latitude = 52.0 + 30.0 / 60.0 + 15.25 / 3600.0;
    double const example_longitude = 13.0 + 24.0 / 60.0 + 10.5 / 3600.0;
    // Text, latitude, longitude, height. Broken shapes are invalid and at 0, 0, 0; every
    // valid text here is off the equator.
    std::vector<std::tuple<char const*, double, double, double>> cases = {
        {"{W84,N52D30M15.25S,E13D24M10.5S,34.5}", example_latitude, example_longitude, 34.5},
        {"{w84,n52d30m15.25s,e13d24m10.5s,34.5}", example_latitude, example_longitude, 34.5},
        // Braces anywhere, fields after the fourth ignored.
        {"W84,{N52D30M15.25S},E13D24M10.5S,34.5,x}", example_latitude, example_longitude, 34.5},
        // South and west are negative; the hemisphere letters are not
        // checked against their field.
        {"{W84,S1D30M0S,W1D30M0S,0}", -1.5, -1.5, 0.0},
        {"{W84,E10D0M0S,N20D0M0S,0}", 10.0, 20.0, 0.0},
        // Parts that are no numbers of their kind count as zero: without the
        // closing "S" the seconds are empty; whole degrees and minutes only.
        {"{W84,N52D30M15.25,E0D0M0S,1}", 52.5, 0.0, 1.0},
        {"{W84,N12.5D30M0S,E0D0M0S,1}", 0.5, 0.0, 1.0},
        {"{W84,N1D2.5M0S,E0D0M0S,1}", 1.0, 0.0, 1.0},
        {"{W84,N52D30M0S,E13D0M0S,}", 52.5, 13.0, 0.0},
        {"{W84,N52D30M0S,E13D0M0S,high}", 52.5, 13.0, 0.0},
    };
    for (char const* text :
         {"", "{}", ",,,", "{W84,N52D30M15S,E13D24M10S}", "{WGS84,N52D30M15S,E13D24M10S,1}",
          "{ W84,N52D30M15S,E13D24M10S,1}", "{W84,X52D30M15S,E13D24M10S,1}",
          "{W84,N52D30,E13D24M10S,1}", "{W84,N52M30S,E13D24M10S,1}", "{W84,N52D30M1S,,1}",
          "{W84,N52D30M1S,E,1}", "W84;N52D30M1S;E13D24M10S;1"})
        cases.push_back({text, 0.0, 0.0, 0.0});
    for (auto const& [text, latitude, longitude, height] : cases) {
        GeoPosition const position = parse_geo_position(text);
        GeoPoint const point = geo_position_point(position);
        EXPECT_TRUE(position.valid == (latitude != 0.0) && point.height == height) << text;
        EXPECT_DOUBLE_EQ(point.latitude, latitude) << text;
        EXPECT_DOUBLE_EQ(point.longitude, longitude) << text;
    }
}

TEST(StationTable, StationsInRangeWithUpInMillimetresTruncatedTowardZero) {
    Element_man owner;
    owner.create();
    BaseStationTable table;
    auto station = [&](int source, QByteArray const& text) {
        return find_or_create_base_station(source, text, table, owner.get_client_root());
    };
    auto up = [&](QByteArray const& height) {
        int value = -1;
        station(1, "{W84,N1D0M0S,E1D0M0S," + height + "}").up().get(value);
        return value;
    };
    // No station and no entry outside the range of sources or for a broken text.
    for (int source : {0, 24, -1})
        EXPECT_FALSE(station(source, "{W84,N52D30M15.25S,E13D24M10.5S,34.5}").valid());
    for (QByteArray const& text : {QByteArray("{W84,N52D30,E13D24M10.5S,34.5}"), QByteArray()})
        EXPECT_FALSE(station(5, text).valid());
    EXPECT_EQ(owner.get_client_root().base_stations().count(), 0);
    EXPECT_TRUE(table.isEmpty());

    EXPECT_EQ(std::vector<int>({up("-0.0004"), up("-1.2345"), up("1e12"), up("-1e12")}),
              std::vector<int>({0, -1234, INT_MAX, INT_MIN}));
}
