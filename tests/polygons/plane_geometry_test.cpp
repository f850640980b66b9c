// Plane geometry with the answers its rules fix exactly: degenerate directions, half-open edges,
// the distance of nothing, strict tolerances and the short-path difference of the two
// simplifications.
#include "path_checks.h"
#include "polygons/lines.h"
#include "polygons/path_measures.h"
#include "polygons/path_simplify.h"
#include "polygons/point_compare.h"

#include <cmath>
#include <limits>

namespace {

float const notANumber = std::numeric_limits<float>::quiet_NaN();

// Counter-clockwise with y up, 4 by 4, and a hole in it.
Path const square{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
Path const clockwiseSquare{{0, 4}, {4, 4}, {4, 0}, {0, 0}};
Path const hole{{1, 1}, {1, 2}, {2, 2}, {2, 1}};

} // namespace

TEST(PlaneGeometry, DirectionsCrossingsAndNearestPoints) {
    // Coincident points have the upward direction; 3/5 and 4/5 are single divisions, so the
    // nearest floats.
    EXPECT_TRUE(samePath({directionOf({1, 1}, {1, 1}), unitRightNormal({1, 1}, {1, 1}),
                          directionOf({0, 0}, {3, 4}), rightNormal({0, 0}, {3, 4}),
                          unitRightNormal({0, 0}, {3, 4})},
                         {{0, 1}, {0, 1}, {0.6f, 0.8f}, {4, -3}, {0.8f, -0.6f}}));
    // u = (1, 0), v = b - c = (0, -1): atan2f(-1, 0), a left turn being negative.
    EXPECT_EQ(angleAt({0, 0}, {1, 0}, {1, 1}), -1.57079637f);

    // Parallel lines and a line of two equal points leave `out` alone.
    LocalPoint out{7, 7};
    EXPECT_FALSE(intersectLines(out, {0, 0}, {1, 0}, {0, 1}, {2, 1}));
    EXPECT_FALSE(intersectLines(out, {0, 0}, {0, 0}, {0, 1}, {2, 3}));
    LocalPoint crossing{7, 7};
    // da = (2, 2), db = (2, -2): denominator -8, t = -4 / -8.
    ASSERT_TRUE(intersectLines(crossing, {0, 0}, {2, 2}, {0, 2}, {2, 0}));
    EXPECT_TRUE(samePath({out, crossing, projectOnLine({1, 5}, {0, 0}, {4, 0}),
                          projectOnLine({1, 5}, {2, 3}, {2, 3})},
                         {{7, 7}, {1, 1}, {1, 0}, {2, 3}}));
    // Closest points are clamped to the segment; one not longer than 1e-5 has no direction and
    // gives its start.
    EXPECT_TRUE(samePath(
        {closestOnSegment({2, 3}, {0, 0}, {4, 0}), closestOnSegment({-3, 1}, {0, 0}, {4, 0}),
         closestOnSegment({7, 1}, {0, 0}, {4, 0}), closestOnSegment({5, 5}, {0, 0}, {1e-5f, 0}),
         closestOnSegment({5, 5}, {1, 1}, {1, 1})},
        {{2, 0}, {0, 0}, {4, 0}, {0, 0}, {1, 1}}));

    // Points differ only beyond the tolerance, and not at all with a coordinate not a number.
    float const beyond = std::nextafter(pointTolerance, 1.0f);
    EXPECT_TRUE(pointsEqual({0, 0}, {pointTolerance, -pointTolerance}));
    EXPECT_FALSE(pointsDiffer({0, 0}, {pointTolerance, 0}));
    EXPECT_TRUE(pointsDiffer({0, 0}, {0, beyond}));
    EXPECT_FALSE(pointsDiffer({notANumber, 0}, {0, 0}));
    // Ordered by y first, by x only where the y are exactly equal.
    EXPECT_TRUE(pointGreater({0, 2}, {5, 1}) && pointLess({1, 1}, {2, 1}));
    EXPECT_TRUE(pointNotLess({1, 1}, {1, 1}) && pointNotGreater({1, 1}, {1, 1}));
    EXPECT_FALSE(pointGreater({1, 1}, {1, 1}) || pointLess({1, 1}, {1, 1}));
}

TEST(PlaneGeometry, MeasuresOfPathsAndRings) {
    // Only rings have the closing segment; one point is a ring but no open path.
    EXPECT_EQ(distanceToPath({1, 2}, square, false), 2.0);
    EXPECT_EQ(distanceToPath({1, 2}, square, true), 1.0);
    EXPECT_EQ(distanceToPath({1, 2}, {}, true), noDistance);
    EXPECT_EQ(distanceToPath({0, 0}, {{3, 4}}, false), noDistance);
    EXPECT_EQ(distanceToPath({0, 0}, {{3, 4}}, true), 5.0);
    // A segment without a number does not hide the others.
    EXPECT_EQ(distanceToPath({3, 2}, {{notANumber, 0}, {0, 0}, {0, 4}}, false), 3.0);

    EXPECT_EQ(signedArea(square), 16.0f);
    EXPECT_EQ(signedArea(clockwiseSquare), -16.0f);
    EXPECT_EQ(signedArea({}), 0.0f);
    EXPECT_EQ(totalSignedArea({square, hole}), 15.0f);
    EXPECT_EQ(totalSignedArea({}), 0.0f);
    EXPECT_TRUE(samePath({centroid(square), centroid({}), centroid({{0, 0}, {1, 1}, {2, 2}})},
                         {{2, 2}, {notANumber, notANumber}, {notANumber, notANumber}}));

    // Rings hold their left and lower edges, whichever way they run.
    struct Case {
        LocalPoint p;
        bool inside;
    } const cases[] = {{{2, 2}, true},  {{0, 2}, true},  {{2, 0}, true},
                       {{4, 2}, false}, {{2, 4}, false}, {{5, 2}, false}};
    for (Case const& c : cases) {
        EXPECT_EQ(pointInRing(c.p, square), c.inside) << c.p.x << " " << c.p.y;
        EXPECT_EQ(pointInRing(c.p, clockwiseSquare), c.inside) << c.p.x << " " << c.p.y;
    }
    EXPECT_FALSE(pointInRing({0, 0}, {}));
    EXPECT_FALSE(pointInRings({1.5f, 1.5f}, {square, hole}));
    EXPECT_TRUE(pointInRings({3, 3}, {square, hole}));
    // Two outer rings over one another are not an even-odd pair.
    EXPECT_TRUE(pointInRings({3, 3}, {square, {{1, 1}, {5, 1}, {5, 5}, {1, 5}}}));
    EXPECT_FALSE(pointInRings({3, 3}, {}));

    // Convexity follows the turning side; a straight corner and no corner pass both.
    Path const notched{{0, 0}, {4, 0}, {4, 4}, {2, 2}, {0, 4}};
    EXPECT_TRUE(isConvexLeft(square) && !isConvexRight(square));
    EXPECT_TRUE(isConvexRight(clockwiseSquare) && !isConvexLeft(clockwiseSquare));
    EXPECT_TRUE(isConvexLeft({{0, 0}, {2, 0}, {4, 0}, {4, 4}, {0, 4}}));
    EXPECT_FALSE(isConvexLeft(notched) || isConvexRight(notched));
    EXPECT_TRUE(isConvexLeft({}) && isConvexRight({}));
}

TEST(PlaneGeometry, ResamplingAndSimplification) {
    // t = 1/3 and 2/3 in float times 10.5 round to 3.5 and 7 exactly.
    EXPECT_TRUE(
        samePath(resamplePath({{0, 0}, {10.5f, 0}}, 5), {{0, 0}, {3.5f, 0}, {7, 0}, {10.5f, 0}}));
    EXPECT_TRUE(samePath(resamplePath({{1, 1}, {1, 1}, {2, 1}}, 5), {{1, 1}, {1, 1}, {2, 1}}));
    // A quotient that is no finite number leaves the segment whole.
    EXPECT_TRUE(samePath(resamplePath({{0, 0}, {10, 0}}, 0), {{0, 0}, {10, 0}}));
    EXPECT_TRUE(samePath(resamplePath({{0, 0}, {notANumber, 0}}, 1), {{0, 0}, {notANumber, 0}}));
    EXPECT_TRUE(resamplePath({}, 1).empty());

    // Only points strictly beyond the tolerance stay.
    Path const bump{{0, 0}, {1, 1}, {2, 0}};
    EXPECT_TRUE(samePath(simplifyPath(bump, false, 1.0f), {{0, 0}, {2, 0}}));
    EXPECT_TRUE(samePath(simplifyPath(bump, false, std::nextafter(1.0f, 0.0f)), bump));
    // Two points at distance 1 from the chord: the earlier wins, and the later then lies
    // 2 / sqrt(10) from its new chord.
    Path const plateau{{0, 0}, {1, 1}, {3, 1}, {4, 0}};
    EXPECT_EQ(simplifyPathIndices(plateau, false, 0.7f), (std::vector<int>{0, 1, 3}));
    // A ring is split at its point farthest from point 0; collinear points go.
    Path const ring{{0, 0}, {2, 0}, {4, 0}, {4, 4}, {0, 4}};
    EXPECT_EQ(simplifyPathIndices(ring, true, 0.5f), (std::vector<int>{0, 2, 3, 4}));
    EXPECT_EQ(simplifyPathIndices(ring, true, 100.0f), (std::vector<int>{0}));
    // Short paths: a copy from one, nothing from the other.
    EXPECT_TRUE(samePath(simplifyPath({{0, 0}, {1, 1}}, false, 0.1f), {{0, 0}, {1, 1}}));
    EXPECT_TRUE(simplifyPathIndices({{0, 0}, {1, 1}}, false, 0.1f).empty());
}
