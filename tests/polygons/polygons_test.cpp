// Plane geometry with the answers its rules fix exactly: degenerate directions, half-open edges,
// the distance of nothing, strict tolerances and the short-path difference of the two
// simplifications. Offsets and boolean operations on ClipperLib's grid: areas against closed
// forms, the raw inner corners and their removal, ring ownership, and the lines of parallelPath
// measured against their source.
#include "path_checks.h"
#include "polygons/path_clip.h"
#include "polygons/path_measures.h"
#include "polygons/path_offset.h"
#include "polygons/path_simplify.h"
#include "polygons/point_compare.h"

#include <algorithm>

namespace {

// Counter-clockwise with y up, 4 by 4, and a hole in it.
Path const square{{0, 0}, {4, 0}, {4, 4}, {0, 4}}, clockwiseSquare{{0, 4}, {4, 4}, {4, 0}, {0, 0}};
Path const hole{{1, 1}, {1, 2}, {2, 2}, {2, 1}};

bool contains(Path const& path, LocalPoint point) {
    return std::any_of(path.begin(), path.end(),
                       [&](LocalPoint p) { return p.x == point.x && p.y == point.y; });
}

// Largest error of a line's distance from its source in arc steps of 0.5: the 0.02
// simplification, the sagitta of an arc step of 0.5 at a distance of 2 (2 (1 - cos(0.125)),
// 0.016) and the grid.
float const lineTolerance = 0.02f + 0.016f + 2e-4f;

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
    LocalPoint out{7, 7}, crossing{7, 7};
    EXPECT_FALSE(intersectLines(out, {0, 0}, {1, 0}, {0, 1}, {2, 1}) ||
                 intersectLines(out, {0, 0}, {0, 0}, {0, 1}, {2, 3}));
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
    EXPECT_TRUE(pointsEqual({0, 0}, {pointTolerance, -pointTolerance}) &&
                !pointsDiffer({0, 0}, {pointTolerance, 0}) && pointsDiffer({0, 0}, {0, beyond}) &&
                !pointsDiffer({notANumber, 0}, {0, 0}));
    // Ordered by y first, by x only where the y are exactly equal.
    EXPECT_TRUE(pointGreater({0, 2}, {5, 1}) && pointLess({1, 1}, {2, 1}) &&
                pointNotLess({1, 1}, {1, 1}) && pointNotGreater({1, 1}, {1, 1}) &&
                !pointGreater({1, 1}, {1, 1}) && !pointLess({1, 1}, {1, 1}));
}

TEST(PlaneGeometry, MeasuresOfPathsAndRings) {
    // Only rings have the closing segment; one point is a ring but no open path.
    // A segment without a number does not hide the others.
    EXPECT_EQ((std::vector<double>{
                  distanceToPath({1, 2}, square, false), distanceToPath({1, 2}, square, true),
                  distanceToPath({1, 2}, {}, true), distanceToPath({0, 0}, {{3, 4}}, false),
                  distanceToPath({0, 0}, {{3, 4}}, true),
                  distanceToPath({3, 2}, {{notANumber, 0}, {0, 0}, {0, 4}}, false)}),
              (std::vector<double>{2, 1, noDistance, noDistance, 5, 3}));

    EXPECT_EQ((std::vector<float>{signedArea(square), signedArea(clockwiseSquare), signedArea({}),
                                  totalSignedArea({square, hole}), totalSignedArea({})}),
              (std::vector<float>{16, -16, 0, 15, 0}));
    EXPECT_TRUE(samePath({centroid(square), centroid({}), centroid({{0, 0}, {1, 1}, {2, 2}})},
                         {{2, 2}, {notANumber, notANumber}, {notANumber, notANumber}}));

    // Rings hold their left and lower edges, whichever way they run.
    std::vector<bool> inside;
    for (Path const& ring : {square, clockwiseSquare})
        for (LocalPoint p : {LocalPoint{2, 2}, {0, 2}, {2, 0}, {4, 2}, {2, 4}, {5, 2}})
            inside.push_back(pointInRing(p, ring));
    EXPECT_EQ(inside, (std::vector<bool>{1, 1, 1, 0, 0, 0, 1, 1, 1, 0, 0, 0}));
    // Two outer rings over one another are not an even-odd pair.
    EXPECT_TRUE(!pointInRing({0, 0}, {}) && !pointInRings({1.5f, 1.5f}, {square, hole}) &&
                pointInRings({3, 3}, {square, hole}) && !pointInRings({3, 3}, {}) &&
                pointInRings({3, 3}, {square, {{1, 1}, {5, 1}, {5, 5}, {1, 5}}}));

    // Convexity follows the turning side; a straight corner and no corner pass both.
    Path const notched{{0, 0}, {4, 0}, {4, 4}, {2, 2}, {0, 4}};
    EXPECT_TRUE(isConvexLeft(square) && !isConvexRight(square) && isConvexRight(clockwiseSquare) &&
                !isConvexLeft(clockwiseSquare) && !isConvexLeft(notched) &&
                !isConvexRight(notched) && isConvexLeft({}) && isConvexRight({}) &&
                isConvexLeft({{0, 0}, {2, 0}, {4, 0}, {4, 4}, {0, 4}}));
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

    // Only points strictly beyond the tolerance stay. Of the plateau's two points at distance 1
    // from the chord the earlier wins, and the later then lies 2 / sqrt(10) from its new chord.
    Path const bump{{0, 0}, {1, 1}, {2, 0}}, plateau{{0, 0}, {1, 1}, {3, 1}, {4, 0}};
    EXPECT_TRUE(samePath(simplifyPath(bump, false, 1.0f), {{0, 0}, {2, 0}}));
    EXPECT_TRUE(samePath(simplifyPath(bump, false, std::nextafter(1.0f, 0.0f)), bump));
    EXPECT_EQ(simplifyPathIndices(plateau, false, 0.7f), (std::vector<int>{0, 1, 3}));
    // A ring is split at its point farthest from point 0; collinear points go.
    Path const ring{{0, 0}, {2, 0}, {4, 0}, {4, 4}, {0, 4}};
    EXPECT_EQ(simplifyPathIndices(ring, true, 0.5f), (std::vector<int>{0, 2, 3, 4}));
    EXPECT_EQ(simplifyPathIndices(ring, true, 100.0f), (std::vector<int>{0}));
    // Short paths: a copy from one, nothing from the other.
    EXPECT_TRUE(samePath(simplifyPath({{0, 0}, {1, 1}}, false, 0.1f), {{0, 0}, {1, 1}}));
    EXPECT_TRUE(simplifyPathIndices({{0, 0}, {1, 1}}, false, 0.1f).empty());
}

TEST(OffsetRing, RoundOuterCornersRawInnerCornersAndBoundedJoins) {
    // Outward by 1 in arc steps of 0.1: each corner is a fan of trunc(pi/2 / 0.1) + 1 = 16
    // triangles of angle pi/32, so the area is 16 + 4 * 4 + 32 sin(pi/32). Inward by 1 the corners
    // meet at the square from 1 to 3. The points truncated onto the 0.1 mm grid can lose or gain
    // 1e-4 per unit of the perimeter.
    PathList const grown = offsetAndUnite(square, -1.0f, 0.1f),
                   shrunk = offsetAndUnite(square, 1.0f, 0.1f);
    ASSERT_TRUE(grown.size() == 1 && shrunk.size() == 1);
    EXPECT_NEAR(signedArea(grown[0]), 32.0 + 32.0 * std::sin(M_PI / 32.0), (16 + 2 * M_PI) * 1e-4);
    EXPECT_NEAR(signedArea(shrunk[0]), 4.0, 8 * 1e-4);

    // Inward, each corner gives the two moved points and the unmoved corner, indexed after what
    // was there; the union removes the corners.
    std::vector<int> source{7};
    Path const raw = offsetRing(square, &source, 1.0f, 0.1f);
    ASSERT_EQ(raw.size(), 12u);
    EXPECT_EQ(source, (std::vector<int>{7, 0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3}));
    for (LocalPoint corner : square)
        EXPECT_TRUE(contains(raw, corner) && !contains(shrunk[0], corner));

    // Four outer corners of a quarter turn; a join of no steps leaves the two moved points, and
    // an arc step of 1 gives trunc(pi / 2) = 1 point per join.
    std::tuple<float, float, std::size_t> const cases[] = {
        {-1e6f, 1e-30f, 4 * (2 + mostJoinPoints)},
        {-1.0f, 0.0f, 4 * (2 + mostJoinPoints)},
        {-1.0f, -0.1f, 8},
        {-1.0f, notANumber, 8},
        {-1.0f, 1.0f, 12}};
    for (auto const& [distance, arcStep, size] : cases)
        EXPECT_EQ(offsetRing(square, nullptr, distance, arcStep).size(), size)
            << distance << " " << arcStep;
    EXPECT_TRUE(offsetRing({}, nullptr, 1.0f, 0.1f).empty());
}

TEST(ClipPaths, UnionCleansAFigureEightAndOwnsHolesAndIslandsBadPointsAndSpikesFail) {
    // The crossing at (1, 1) splits it into a counter-clockwise lobe of area 1 on the left and a
    // clockwise one on the right, which the positive fill drops.
    PathList const eight = clipPaths({{{0, 0}, {2, 2}, {2, 0}, {0, 2}}}, true, {},
                                     ClipperLib::ctUnion, nullptr, false);
    ASSERT_EQ(eight.size(), 1u);
    EXPECT_EQ(signedArea(eight[0]), 1.0f);

    // An island of 4 in a hole of 36 in a ring of 100, and a ring of 9 apart.
    Path const outer{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, hole{{2, 2}, {2, 8}, {8, 8}, {8, 2}};
    Path const island{{4, 4}, {6, 4}, {6, 6}, {4, 6}}, apart{{20, 0}, {23, 0}, {23, 3}, {20, 3}};
    std::vector<int> groups{9, 9, 9, 9, 9, 9};
    PathList const rings =
        clipPaths({apart, island, outer, hole}, true, {}, ClipperLib::ctUnion, &groups, false);
    ASSERT_TRUE(rings.size() == 4 && groups.size() == 4);
    // Each ring after the ring that holds it, and in that ring's group.
    auto const at = [&](float area) {
        return std::find_if(rings.begin(), rings.end(),
                            [&](Path const& ring) { return signedArea(ring) == area; }) -
               rings.begin();
    };
    EXPECT_TRUE(at(100) < at(-36) && at(-36) < at(4));
    EXPECT_EQ((std::vector<int>{groups[at(-36)], groups[at(4)]}),
              (std::vector<int>{groups[at(100)], groups[at(100)]}));
    EXPECT_NE(groups[at(100)], groups[at(9)]);

    // Points off the grid fail the operation.
    for (float bad : {notANumber, 1e15f}) {
        std::vector<int> untouched{5};
        EXPECT_TRUE(
            clipPair(outer, {{0, 0}, {bad, 1}, {1, 1}}, ClipperLib::ctIntersection, &untouched)
                .empty());
        EXPECT_EQ(untouched, std::vector<int>{5});
    }

    // ClipperLib follows the horizontal spike from (2, 0) back to (0.1, 0) through a null
    // iterator when strictly simple, and leaves the horizontal edge after the spike to (0.7, 5.6)
    // among the crossing edges, with a slope of -1e40.
    Path const horizontalSpike{{0, 0}, {2, 2}, {0.1f, 0}, {2, 0}, {0.1f, 0}, {0, 2}};
    Path const clip{{0, 0}, {2, 0}, {0, 2}, {-0.1f, -0.8f}};
    EXPECT_TRUE(
        clipPaths({horizontalSpike}, false, {}, ClipperLib::ctUnion, nullptr, true).empty());
    // Without the spike the path is clipped.
    for (bool spike : {true, false}) {
        Path const path = spike ? Path{{0, 0}, {0.7f, 5.6f}, {0, 0}, {-25.4f, 0}, {20, 3}}
                                : Path{{0, 0}, {-25.4f, 0}, {20, 3}};
        EXPECT_EQ(
            clipPaths({path}, false, {clip}, ClipperLib::ctIntersection, nullptr, false).empty(),
            spike);
    }
}

TEST(ParallelPath, LinesLieAtTheDistanceOnTheSideOfTheSignRunBackwardsAndHookWithoutOffset) {
    Path const straight{{0, 0}, {50, 0}};
    // East, a left U-turn narrower than twice the distance, then a right bend.
    Path const bent{{0, 0}, {20, 0}, {20, 3}, {5, 3}, {5, 20}};
    for (float distance : {2.0f, -2.0f})
        for (Path const& source : {straight, bent}) {
            SCOPED_TRACE(distance);
            PathList const lines = parallelPath(source, 0.0f, distance, 0.5f);
            ASSERT_EQ(lines.size(), 1u);
            expectBeside(lines[0], source, distance, lineTolerance);
            EXPECT_LT(distanceToPath(lines[0].front(), {source.back()}, true),
                      distanceToPath(lines[0].front(), {source.front()}, true));
        }

    // In from the south-west, once round a circle of radius 10 counter-clockwise, out to the
    // south-east: the band of width 4 round the path leaves a hole inside the circle, bounded by
    // the left side only.
    Path loop{{-20, -20}};
    for (int degrees = -90; degrees <= 270; degrees += 10)
        loop.push_back({static_cast<float>(10 * std::cos(degrees * M_PI / 180.0)),
                        static_cast<float>(10 * std::sin(degrees * M_PI / 180.0))});
    loop.push_back({20, -20});
    auto const isClosed = [](Path const& line) {
        return line.size() > 2 && line.front().x == line.back().x &&
               line.front().y == line.back().y;
    };
    PathList const left = parallelPath(loop, 0.0f, 2.0f, 0.5f);
    auto const closed = std::find_if(left.begin(), left.end(), isClosed);
    ASSERT_NE(closed, left.end());
    expectBeside(*closed, loop, 2.0f, lineTolerance);
    PathList const right = parallelPath(loop, 0.0f, -2.0f, 0.5f);
    EXPECT_TRUE(std::none_of(right.begin(), right.end(), isClosed));
    EXPECT_EQ(
        std::count_if(right.begin(), right.end(), [](Path const& line) { return line.empty(); }),
        1);

    // Without an offset the path comes back hooked; the guards give nothing.
    // The hooks end 0.1 beyond the ends and 1e-4 to the right of the way out of the path, which
    // leaves both points of the path within 0.02 of the chord between them. Resampled into
    // pieces of at most 5 as the rule has it: t b + (1 - t) a, t = i / 3.
    LocalPoint const a{0.0f - 0.1f, 1e-4f}, b{10.0f + 0.1f, -1e-4f};
    Path hooked{a};
    for (float t : {1.0f / 3.0f, 2.0f / 3.0f, 1.0f})
        hooked.push_back({t * b.x + (1.0f - t) * a.x, t * b.y + (1.0f - t) * a.y});
    // An extension of 2 shortens the last segment of 10 to 2 beyond the last but one point. The
    // float 0.1 is a little above the double 0.1 against which the extension is compared, and
    // moves the ends; the float below it does not.
    // The distance, the extension and the line.
    std::tuple<float, float, Path> const cases[] = {
        {0.0f, 0.0f, hooked},
        {5e-5f, 0.0f, hooked},
        {0.0f, std::nextafter(0.1f, 0.0f), hooked},
        {0.0f, 0.1f, {{-0.1f - 0.1f, 1e-4f}, {0.1f + 0.1f, -1e-4f}}},
        {0.0f, 2.0f, {{-2.0f - 0.1f, 1e-4f}, {2.0f + 0.1f, -1e-4f}}}};
    for (auto const& [distance, extension, expected] : cases) {
        PathList const lines = parallelPath({{0, 0}, {10, 0}}, extension, distance, 1.0f);
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_TRUE(samePath(lines[0], expected)) << distance << " " << extension;
    }

    EXPECT_TRUE(parallelPath({{0, 0}}, 0.0f, 1.0f, 1.0f).empty() &&
                parallelPath({{0, 0}, {10, 0}}, -1.0f, 1.0f, 1.0f).empty() &&
                parallelPath({{0, 0}, {10, 0}}, 0.0f, 1.0f, 0.05f).empty());
    EXPECT_THROW(parallelPath({{0, 0}, {10, 0}}, 0.0f, notANumber, 1.0f),
                 ClipperLib::clipperException);
}
