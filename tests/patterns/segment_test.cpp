// Segments: headings through their two reciprocals, positions along the line, the half-open
// crossings, and the two sign conventions of the track operations.
#include "../polygons/path_checks.h"
#include "patterns/segment.h"

#include <limits>
#include <tuple>
#include <vector>

namespace {

// Heads north from the origin: the right side has positive x.
TSegment const north(0, 0, 0, 100);

} // namespace

TEST(Segment, HeadingsAreClockwiseFromNorthThroughTwoReciprocals) {
    struct Case {
        float dx, dy, heading;
    };
    // a = atan2f(dx, dy), then 1 / ((1 / a) * 0.017453292f) in float, plus 360 below 0; the
    // figures are that chain carried out by hand in single precision, for directions whose
    // atan2f every C library rounds correctly.
    Case const cases[] = {
        {1, 0, 90.00000762939453f},  {0, 1, 0.0f},    {-1, 0, 270.0f}, {0, -1, 180.00001525878906f},
        {1, 1, 45.000003814697266f}, {-1, -1, 225.0f}};
    for (Case const& c : cases)
        EXPECT_EQ(TSegment(1, 2, 1 + c.dx, 2 + c.dy).heading(), c.heading) << c.dx << " " << c.dy;

    for (float heading : {0.0f, 1.0f, 89.5f, 90.0f, 179.0f, 180.0f, 269.0f, 300.0f, 359.5f}) {
        TSegment segment;
        segment.setByHeading({5, -7}, heading, 25.0f);
        EXPECT_NEAR(segment.heading(), heading, 1e-3f);
        EXPECT_NEAR(segment.length(), 25.0f, 1e-5f);
    }
}

TEST(Segment, PointsAgainstTheLineAndZeroLengthSegments) {
    // A zero-length segment has fixed answers.
    TSegment const point({3, 4});
    EXPECT_TRUE(samePath(
        {point.direction(), point.normal(), point.footPoint({9, 9}), point.closestPoint({9, 9})},
        {{0, 1}, {0, 1}, {3, 4}, {3, 4}}));
    LocalPoint out{1, 1};
    EXPECT_FALSE(point.intersectLine(north, out));
    EXPECT_FALSE(north.intersectSegment(point, out));
    EXPECT_TRUE(samePath({out}, {{1, 1}}));

    EXPECT_TRUE(samePath({north.normal()}, {{1, 0}}));
    EXPECT_EQ((std::vector<float>{north.signedLineDistance({3, 50}, {0, 1}),
                                  north.signedLineDistance({-3, 50}, {0, 1}),
                                  north.signedLineDistance({-3, 50}, {0, -1})}),
              (std::vector<float>{3, -3, 3}));

    // The x axis decides first: x says before start although y says behind end.
    TSegment const diagonal(0, 0, 10, 10);
    EXPECT_EQ((std::vector<int>{diagonal.positionOf({-1, 20}), diagonal.positionOf({0, 0}),
                                diagonal.positionOf({10, 10}),
                                TSegment(10, 0, 10, 5).positionOf({10, 6})}),
              (std::vector<int>{-1, 0, 0, 1}));

    TSegment const east(0, 0, 10, 0);
    EXPECT_TRUE(samePath({east.closestPoint({15, 3}), east.closestOnRay({15, 3}, true),
                          east.closestOnRay({15, 3}, false), east.closestOnRay({-5, 3}, false),
                          east.closestOnRay({-5, 3}, true)},
                         {{10, 0}, {15, 0}, {10, 0}, {-5, 0}, {0, 0}}));
    EXPECT_EQ(east.rayDistanceSquared({15, 3}, true), 9.0f);

    float x = 99;
    EXPECT_TRUE(!east.xAtY(0, x) && !TSegment(0, 0, 10, 20).xAtY(21, x) && x == 99.0f);
    EXPECT_TRUE(TSegment(0, 0, 10, 20).xAtY(10, x) && x == 5.0f);
}

TEST(Segment, CrossingsAreHalfOpen) {
    struct Case {
        TSegment self, other;
        bool crosses;
    };
    // Each crossing lies at (5, 0); t and s come out as 0.5, 0 or 1 exactly.
    Case const cases[] = {
        {{0, 0, 10, 0}, {5, -5, 5, 5}, true},
        {{0, 0, 10, 0}, {5, -5, 5, 0}, false}, // the other's end on this one
        {{0, 0, 10, 0}, {5, 0, 5, 5}, true},   // the other's start on this one
        {{0, 0, 5, 0}, {5, -5, 5, 5}, false},  // this one's end on the other
        {{5, 0, 10, 0}, {5, -5, 5, 5}, true},  // this one's start on the other
        {{0, 0, 10, 0}, {0, 1, 10, 1}, false}, // parallel
        {{0, 0, 10, 0}, {6, -5, 6, std::numeric_limits<float>::infinity()}, false}};
    for (Case const& c : cases) {
        LocalPoint out{-1, -1};
        EXPECT_EQ(c.self.intersectSegment(c.other, out), c.crosses)
            << c.self.start().x << " " << c.other.start().y << " " << c.other.end().y;
        EXPECT_TRUE(!c.crosses || samePath({out}, {{5, 0}}));
    }

    // Parallel lines leave `out` alone; a crossing outside this segment is written anyway.
    LocalPoint out{-1, -1};
    EXPECT_TRUE(!TSegment(0, 0, 10, 0).intersectLine({0, 1, 10, 1}, out) && out.x == -1.0f);
    EXPECT_FALSE(TSegment(0, 0, 10, 0).intersectLineOnThis({20, -5, 20, 5}, out));
    EXPECT_TRUE(samePath({out}, {{20, 0}}));
    EXPECT_TRUE(TSegment(0, 0, 10, 0).intersectLine({20, -5, 20, 5}, out));
}

TEST(Segment, TracksWithBothSignConventions) {
    struct Case {
        LocalPoint p, direction;
        float spacing, width;
        int sign;
        float offset;
        int index;
        float indexOffset; // from trackIndex
        int indexIndex;
    };
    Case const cases[] = {
        // 14 and 16 from the line with spacing 10: tracks 1 and 2, 4 off either way.
        {{14, 50}, {0, 1}, 10, 1, 1, 4, 1, 4, -1},
        {{16, 50}, {0, 1}, 10, 1, 1, -4, 2, -4, -2},
        {{-14, 50}, {0, 1}, 10, 1, 1, -4, -1, 4, 1},
        // Half a spacing counts toward the farther track.
        {{5, 50}, {0, 1}, 10, 1, 1, -5, 1, -5, -1},
        // Driving against the line: the point first moves 2 * width along the normal (+x).
        {{14, 50}, {0, -1}, 10, 1, -1, 4, 2, -4, -1},
        // No tracks without a positive spacing.
        {{14, 50}, {0, 1}, 0, 1, 1, 0, 0, 0, 0},
        {{14, 50}, {0, -1}, std::numeric_limits<float>::quiet_NaN(), 1, 1, 0, 0, 0, 0}};
    for (Case const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.p.x << " " << c.direction.y << " " << c.spacing);
        float offset = 99;
        int index = 99;
        int sign = north.trackOffset(c.p, c.direction, c.spacing, c.width, offset, index);
        EXPECT_EQ(std::tuple(sign, offset, index), std::tuple(c.sign, c.offset, c.index));
        sign = north.trackIndex(c.p, c.direction, c.spacing, offset, index);
        EXPECT_EQ(
            std::tuple(sign, offset, index),
            std::tuple(c.spacing > 0 && c.direction.y < 0 ? -1 : 1, c.indexOffset, c.indexIndex));
    }
}
