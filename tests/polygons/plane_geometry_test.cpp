// Plane geometry with the answers its rules fix exactly: degenerate directions, half-open edges,
// the distance of nothing, strict tolerances and the short-path difference of the two
// simplifications.
#include "polygons/lines.h"
#include "polygons/path_measures.h"
#include "polygons/path_simplify.h"
#include "polygons/point_compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

float const notANumber = std::numeric_limits<float>::quiet_NaN();

// Compares bit for bit where the arithmetic is fixed, not-a-number included.
void expectPoint(LocalPoint actual, LocalPoint expected) {
    if (std::isnan(expected.x))
        EXPECT_TRUE(std::isnan(actual.x));
    else
        EXPECT_EQ(actual.x, expected.x);
    if (std::isnan(expected.y))
        EXPECT_TRUE(std::isnan(actual.y));
    else
        EXPECT_EQ(actual.y, expected.y);
}

void expectPath(Path const& actual, Path const& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        SCOPED_TRACE(i);
        expectPoint(actual[i], expected[i]);
    }
}

// Counter-clockwise with y up, 4 by 4.
Path const square{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
Path const clockwiseSquare{{0, 4}, {4, 4}, {4, 0}, {0, 0}};

} // namespace

TEST(PlaneGeometry, DirectionsOfCoincidentPointsAreUpward) {
    expectPoint(directionOf({1, 1}, {1, 1}), {0, 1});
    expectPoint(unitRightNormal({1, 1}, {1, 1}), {0, 1});
    // 3/5 and 4/5 are single divisions, so the nearest floats.
    expectPoint(directionOf({0, 0}, {3, 4}), {0.6f, 0.8f});
    expectPoint(rightNormal({0, 0}, {3, 4}), {4, -3});
    expectPoint(unitRightNormal({0, 0}, {3, 4}), {0.8f, -0.6f});
    // u = (1, 0), v = b - c = (0, -1): atan2f(-1, 0), a left turn being negative.
    EXPECT_EQ(angleAt({0, 0}, {1, 0}, {1, 1}), -1.57079637f);
}

TEST(PlaneGeometry, PointsDifferOnlyBeyondTheTolerance) {
    float const beyond = std::nextafter(pointTolerance, 1.0f);
    EXPECT_TRUE(pointsEqual({0, 0}, {pointTolerance, -pointTolerance}));
    EXPECT_FALSE(pointsDiffer({0, 0}, {pointTolerance, 0}));
    EXPECT_TRUE(pointsDiffer({0, 0}, {0, beyond}));
    EXPECT_FALSE(pointsDiffer({notANumber, 0}, {0, 0}));
    // y first, x only where the y are exactly equal.
    EXPECT_TRUE(pointGreater({0, 2}, {5, 1}));
    EXPECT_TRUE(pointLess({1, 1}, {2, 1}));
    EXPECT_TRUE(pointNotLess({1, 1}, {1, 1}) && pointNotGreater({1, 1}, {1, 1}));
    EXPECT_FALSE(pointGreater({1, 1}, {1, 1}) || pointLess({1, 1}, {1, 1}));
}

TEST(PlaneGeometry, LinesMeetUnlessParallel) {
    LocalPoint out{7, 7};
    EXPECT_FALSE(intersectLines(out, {0, 0}, {1, 0}, {0, 1}, {2, 1}));
    EXPECT_FALSE(intersectLines(out, {0, 0}, {0, 0}, {0, 1}, {2, 3}));
    expectPoint(out, {7, 7});
    // da = (2, 2), db = (2, -2): denominator -8, t = -4 / -8.
    ASSERT_TRUE(intersectLines(out, {0, 0}, {2, 2}, {0, 2}, {2, 0}));
    expectPoint(out, {1, 1});

    expectPoint(projectOnLine({1, 5}, {0, 0}, {4, 0}), {1, 0});
    expectPoint(projectOnLine({1, 5}, {2, 3}, {2, 3}), {2, 3});
}

TEST(PlaneGeometry, ClosestPointsAreClampedToTheSegment) {
    struct Case {
        LocalPoint p, a, b, expected;
    };
    Case const cases[] = {
        {{2, 3}, {0, 0}, {4, 0}, {2, 0}},
        {{-3, 1}, {0, 0}, {4, 0}, {0, 0}},
        {{7, 1}, {0, 0}, {4, 0}, {4, 0}},
        // Not longer than 1e-5: no direction, the start.
        {{5, 5}, {0, 0}, {1e-5f, 0}, {0, 0}},
        {{5, 5}, {1, 1}, {1, 1}, {1, 1}},
    };
    for (Case const& c : cases)
        expectPoint(closestOnSegment(c.p, c.a, c.b), c.expected);
}

TEST(PlaneGeometry, DistanceToPathMeasuresTheClosingSegmentOfRingsOnly) {
    EXPECT_EQ(distanceToPath({1, 2}, square, false), 2.0);
    EXPECT_EQ(distanceToPath({1, 2}, square, true), 1.0);
    EXPECT_EQ(distanceToPath({1, 2}, {}, true), noDistance);
    EXPECT_EQ(distanceToPath({0, 0}, {{3, 4}}, false), noDistance);
    EXPECT_EQ(distanceToPath({0, 0}, {{3, 4}}, true), 5.0);
    // A segment without a number does not hide the others.
    EXPECT_EQ(distanceToPath({3, 2}, {{notANumber, 0}, {0, 0}, {0, 4}}, false), 3.0);
}

TEST(PlaneGeometry, AreasAndCentroidsOfRings) {
    EXPECT_EQ(signedArea(square), 16.0f);
    EXPECT_EQ(signedArea(clockwiseSquare), -16.0f);
    EXPECT_EQ(signedArea({}), 0.0f);
    Path const hole{{1, 1}, {1, 2}, {2, 2}, {2, 1}};
    EXPECT_EQ(totalSignedArea({square, hole}), 15.0f);
    EXPECT_EQ(totalSignedArea({}), 0.0f);

    expectPoint(centroid(square), {2, 2});
    expectPoint(centroid({}), {notANumber, notANumber});
    expectPoint(centroid({{0, 0}, {1, 1}, {2, 2}}), {notANumber, notANumber});
}

TEST(PlaneGeometry, RingsHoldTheirLeftAndLowerEdges) {
    struct Case {
        LocalPoint p;
        bool inside;
    };
    Case const cases[] = {
        {{2, 2}, true},  {{0, 2}, true},  {{2, 0}, true},
        {{4, 2}, false}, {{2, 4}, false}, {{5, 2}, false},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(pointInRing(c.p, square), c.inside) << c.p.x << " " << c.p.y;
        EXPECT_EQ(pointInRing(c.p, clockwiseSquare), c.inside) << c.p.x << " " << c.p.y;
    }
    EXPECT_FALSE(pointInRing({0, 0}, {}));

    Path const hole{{1, 1}, {1, 2}, {2, 2}, {2, 1}};
    Path const overlapping{{1, 1}, {5, 1}, {5, 5}, {1, 5}};
    EXPECT_FALSE(pointInRings({1.5f, 1.5f}, {square, hole}));
    EXPECT_TRUE(pointInRings({3, 3}, {square, hole}));
    // Two outer rings over one another are not an even-odd pair.
    EXPECT_TRUE(pointInRings({3, 3}, {square, overlapping}));
    EXPECT_FALSE(pointInRings({3, 3}, {}));
}

TEST(PlaneGeometry, ConvexityFollowsTheTurningSide) {
    Path const withStraightCorner{{0, 0}, {2, 0}, {4, 0}, {4, 4}, {0, 4}};
    Path const notched{{0, 0}, {4, 0}, {4, 4}, {2, 2}, {0, 4}};
    EXPECT_TRUE(isConvexLeft(square) && !isConvexRight(square));
    EXPECT_TRUE(isConvexRight(clockwiseSquare) && !isConvexLeft(clockwiseSquare));
    EXPECT_TRUE(isConvexLeft(withStraightCorner));
    EXPECT_FALSE(isConvexLeft(notched) || isConvexRight(notched));
    EXPECT_TRUE(isConvexLeft({}) && isConvexRight({}));
}

TEST(PlaneGeometry, ResamplingCutsSegmentsIntoEqualPieces) {
    // t = 1/3 and 2/3 in float times 10.5 round to 3.5 and 7 exactly.
    expectPath(resamplePath({{0, 0}, {10.5f, 0}}, 5), {{0, 0}, {3.5f, 0}, {7, 0}, {10.5f, 0}});
    expectPath(resamplePath({{1, 1}, {1, 1}, {2, 1}}, 5), {{1, 1}, {1, 1}, {2, 1}});
    // A quotient that is no finite number leaves the segment whole.
    expectPath(resamplePath({{0, 0}, {10, 0}}, 0), {{0, 0}, {10, 0}});
    expectPath(resamplePath({{0, 0}, {notANumber, 0}}, 1), {{0, 0}, {notANumber, 0}});
    EXPECT_TRUE(resamplePath({}, 1).empty());
}

TEST(PlaneGeometry, SimplificationKeepsOnlyPointsStrictlyBeyondTheTolerance) {
    Path const bump{{0, 0}, {1, 1}, {2, 0}};
    expectPath(simplifyPath(bump, false, 1.0f), {{0, 0}, {2, 0}});
    expectPath(simplifyPath(bump, false, std::nextafter(1.0f, 0.0f)), bump);

    // Two points at distance 1 from the chord: the earlier wins, and the later then lies
    // 2 / sqrt(10) from its new chord.
    Path const plateau{{0, 0}, {1, 1}, {3, 1}, {4, 0}};
    EXPECT_EQ(simplifyPathIndices(plateau, false, 0.7f), (std::vector<int>{0, 1, 3}));

    // A ring is split at its point farthest from point 0; collinear points go.
    Path const ring{{0, 0}, {2, 0}, {4, 0}, {4, 4}, {0, 4}};
    EXPECT_EQ(simplifyPathIndices(ring, true, 0.5f), (std::vector<int>{0, 2, 3, 4}));
    EXPECT_EQ(simplifyPathIndices(ring, true, 100.0f), (std::vector<int>{0}));

    // Short paths: a copy from one, nothing from the other.
    Path const pair{{0, 0}, {1, 1}};
    expectPath(simplifyPath(pair, false, 0.1f), pair);
    EXPECT_TRUE(simplifyPathIndices(pair, false, 0.1f).empty());
}
