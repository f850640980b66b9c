// The display's guidance files read directly: position texts of base
// stations, the run's table of stations, and .crv files written byte by byte.
#include "guidance/base_stations.h"
#include "guidance/crv_file.h"

#include "taskdata/element_man.h"
#include "test_support/test_support.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

using namespace TC::Task_data::Elements::Client;
using Record = std::pair<float, float>;
using Segments = std::vector<std::vector<Record>>;

namespace {

double const example_latitude = 52.0 + 30.0 / 60.0 + 15.25 / 3600.0;
double const example_longitude = 13.0 + 24.0 / 60.0 + 10.5 / 3600.0;
float const not_a_number = std::nanf("");
// The record that the display writes for a break in a curve.
Record const separator{std::numeric_limits<float>::lowest(), std::numeric_limits<float>::lowest()};

QByteArray crv_file(std::vector<Record> const& records) {
    return test_support::point_file(52.5, 13.25, 41.0, records);
}

} // namespace

TEST(PositionText, GivesDegreesAndMetres) {
    struct Case {
        char const* text;
        double latitude, longitude, height;
    } const cases[] = {
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
    for (Case const& c : cases) {
        GeoPosition const position = parse_geo_position(c.text);
        EXPECT_TRUE(position.valid) << c.text;
        GeoPoint const point = geo_position_point(position);
        EXPECT_DOUBLE_EQ(point.latitude, c.latitude) << c.text;
        EXPECT_DOUBLE_EQ(point.longitude, c.longitude) << c.text;
        EXPECT_DOUBLE_EQ(point.height, c.height) << c.text;
    }
    // Broken shapes are invalid and at 0, 0, 0.
    for (char const* text :
         {"", "{}", ",,,", "{W84,N52D30M15S,E13D24M10S}", "{WGS84,N52D30M15S,E13D24M10S,1}",
          "{ W84,N52D30M15S,E13D24M10S,1}", "{W84,X52D30M15S,E13D24M10S,1}",
          "{W84,N52D30,E13D24M10S,1}", "{W84,N52M30S,E13D24M10S,1}", "{W84,N52D30M1S,,1}",
          "{W84,N52D30M1S,E,1}", "W84;N52D30M1S;E13D24M10S;1"}) {
        GeoPosition const position = parse_geo_position(text);
        EXPECT_FALSE(position.valid) << text;
        GeoPoint const point = geo_position_point(position);
        EXPECT_TRUE(point.latitude == 0.0 && point.longitude == 0.0 && point.height == 0.0) << text;
    }
}

TEST(StationTable, StationsInRangeWithUpInMillimetresTruncatedTowardZero) {
    Element_man owner;
    owner.create();
    BaseStationTable table;
    auto up = [&](QByteArray const& height) {
        Base_station const station = find_or_create_base_station(
            1, "{W84,N1D0M0S,E1D0M0S," + height + "}", table, owner.get_client_root());
        int value = -1;
        station.up().get(value);
        return value;
    };
    // No station and no entry outside the range of sources or for a broken text.
    QByteArray const text = "{W84,N52D30M15.25S,E13D24M10.5S,34.5}";
    for (auto [source, position] : {std::pair{0, text},
                                    {24, text},
                                    {-1, text},
                                    {5, QByteArray("{W84,N52D30,E13D24M10.5S,34.5}")},
                                    {5, QByteArray()}})
        EXPECT_FALSE(
            find_or_create_base_station(source, position, table, owner.get_client_root()).valid());
    EXPECT_EQ(owner.get_client_root().base_stations().count(), 0);
    EXPECT_TRUE(table.isEmpty());

    EXPECT_EQ(up("-0.0004"), 0);
    EXPECT_EQ(up("-1.2345"), -1234);
    EXPECT_EQ(up("1e12"), INT_MAX);
    EXPECT_EQ(up("-1e12"), INT_MIN);
}

TEST(CrvFile, SegmentsOfEveryShapeOfFile) {
    test_support::ScratchDir scratch;
    QString const path = scratch.file("curve.crv");
    QByteArray const head = crv_file({});
    QByteArray const two = crv_file({{1, 2}, {3, 4}});
    std::vector<Record> many;
    for (int i = 0; i < 100000; ++i)
        many.emplace_back(static_cast<float>(i), -static_cast<float>(i));
    std::vector<Record> many_then_one = many;
    many_then_one.push_back(separator);
    many_then_one.emplace_back(1.5f, 2.5f);
    struct Case {
        char const* what;
        QByteArray content;
        Segments expected;
    };
    Case const cases[] = {
        {"separators split and make no empty segments",
         crv_file({separator, {1, 2}, {3, 4}, separator, {not_a_number, 0}, separator, {5, 6}}),
         {{{1, 2}, {3, 4}}, {{5, 6}}}},
        {"the bound is exclusive in both coordinates",
         crv_file({{-9999998.0f, 0},
                   {5, -9999999.0f},
                   {0, -9999998.0f},
                   {-9999999.0f, 0},
                   {0, not_a_number},
                   {7, 8}}),
         {{{-9999998.0f, 0}}, {{0, -9999998.0f}}, {{7, 8}}}},
        {"many points come through whole", crv_file(many_then_one), {many, {{1.5f, 2.5f}}}},
        {"a part record at the end is dropped", two.left(two.size() - 1), {{{1, 2}}}},
        {"half a record at the end is dropped", two.left(two.size() - 4), {{{1, 2}}}},
        {"empty", QByteArray(), {}},
        {"part of the head", head.left(30), {}},
        {"the head alone", head, {}},
        {"less than a record", head + QByteArray(7, '\1'), {}},
        {"no point", crv_file({separator, separator, {not_a_number, not_a_number}}), {}},
    };
    for (Case const& c : cases) {
        test_support::write_file(path, c.content);
        Segments found;
        for (CrvSegment const& segment : read_crv_segments(path)) {
            found.emplace_back();
            for (LocalPoint const& point : segment)
                found.back().emplace_back(point.x, point.y);
        }
        EXPECT_TRUE(found == c.expected) << c.what;
    }
    EXPECT_TRUE(read_crv_segments(scratch.file("missing.crv")).empty());
    EXPECT_TRUE(read_crv_segments(scratch.path()).empty()); // a directory

    // The reference needs its 24 bytes.
    double latitude = -1.0, longitude = -1.0, height = -1.0;
    test_support::write_file(path, head.left(23));
    EXPECT_FALSE(read_crv_reference(path, latitude, longitude, height));
    EXPECT_FALSE(read_crv_reference(scratch.file("missing.crv"), latitude, longitude, height));
    EXPECT_EQ(latitude, -1.0);
    EXPECT_EQ(longitude, -1.0);
    EXPECT_EQ(height, -1.0);
    test_support::write_file(path, head.left(24));
    ASSERT_TRUE(read_crv_reference(path, latitude, longitude, height));
    EXPECT_EQ(latitude, 52.5);
    EXPECT_EQ(longitude, 13.25);
    EXPECT_EQ(height, 41.0);
}
