// Recorded guidance lines: thinning as they grow, the chord as a bound, and parallel curves by
// both procedures, checked by their geometry where the arithmetic is not fixed. Their segments:
// headings through their two reciprocals, positions along the line, the half-open crossings, and
// the two sign conventions of the track operations. The recent-points buffer: repeats, breaks,
// its capacity and the shift to an origin.
#include "../polygons/path_checks.h"
#include "patterns/guidance_curve.h"
#include "patterns/point_history.h"

namespace {

TGuidanceCurve lineOf(Path const& points, bool keepAll) {
    TGuidanceCurve line;
    for (LocalPoint const p : points)
        line.add(p, keepAll);
    return line;
}

// A line recorded as a driver drives it: from the origin heading east-south-east, through arcs
// (length, radius; a positive radius turning left, 0 straight), a point every metre (every half
// metre in bends tighter than 20 m) through add().
TGuidanceCurve recorded(std::initializer_list<std::pair<float, float>> arcs) {
    TGuidanceCurve line;
    LocalPoint p{0.0f, 0.0f};
    float angle = -0.15f; // counter-clockwise from +x, with y up
    line.add(p);
    for (auto const& [length, radius] : arcs) {
        float const step = radius != 0.0f && std::fabs(radius) < 20.0f ? 0.5f : 1.0f;
        for (float s = 0.0f; s < length; s += step) {
            angle += radius != 0.0f ? step / radius : 0.0f;
            p = {p.x + step * std::cos(angle), p.y + step * std::sin(angle)};
            line.add(p);
        }
    }
    return line;
}

// Heads north from the origin: the right side has positive x; and east.
TSegment const north(0, 0, 0, 100), east(0, 0, 10, 0);

} // namespace

TEST(GuidanceCurve, PointsAreThinnedAsTheLineGrowsUnderAChordAndFoundByTheirPieces) {
    // (11.5, 0.5) lies 1.58 from the last point: refused; (13, 0.05) lies 0.05 off the last
    // piece: it replaces the last point.
    TGuidanceCurve line;
    EXPECT_EQ((std::vector<bool>{line.add({0, 0}), line.add({10, 0}), line.add({11.5f, 0.5f}),
                                 line.add({13, 0.05f}), line.add({20, 5})}),
              (std::vector<bool>{true, true, false, false, true}));
    EXPECT_TRUE(samePath(line.points(), {{0, 0}, {13, 0.05f}, {20, 5}}));
    // keepAll keeps everything and leaves the last piece where it was, so that the next point
    // 0.05 off the line (0, 0)-(10, 0) replaces the kept one.
    TGuidanceCurve all = lineOf({{0, 0}, {10, 0}}, false);
    EXPECT_TRUE(all.add({10.5f, 5}, true) && all.add({10.6f, 5}, true) && !all.add({20, 0.05f}));
    EXPECT_TRUE(samePath(all.points(), {{0, 0}, {10, 0}, {10.5f, 5}, {20, 0.05f}}));

    // The chord waits for a point more than 10 away.
    TGuidanceCurve bent = lineOf({{0, 0}, {5, 0}, {8, 3}}, false);
    EXPECT_TRUE(bent.chord().end().x == 5.0f && bent.maxDeviation() == 0.0f);
    bent.add({12, 4});
    EXPECT_EQ(bent.chord().end().x, 12.0f);
    // (5, 0) lies 20 / sqrt(160) from the line through (0, 0) and (12, 4).
    EXPECT_NEAR(bent.maxDeviation(), 1.5811388f, 1e-6f);
    bent.add({20, 0});
    EXPECT_NEAR(bent.maxDeviation(), 80.0f / std::sqrt(160.0f), 1e-5f);
    bent.finish();
    // (12, 4) from y = 0.
    EXPECT_TRUE(bent.chord().end().x == 20.0f && std::fabs(bent.maxDeviation() - 4.0f) < 1e-6f);
    // A straight line has no deviation: with margin 0 even a point on it is not near.
    TGuidanceCurve straight = lineOf({{0, 0}, {20, 0}, {40, 0}}, false);
    EXPECT_TRUE(straight.count() == 2 && !straight.nearChord({10, 1}, 0.0f) &&
                straight.nearChord({10, 1}, 1.5f));

    // The first of two equally near pieces wins: (11, -1) is sqrt(2) from both. Without a number,
    // or with fewer than two points, there is no piece.
    TGuidanceCurve const corner = lineOf({{0, 0}, {10, 0}, {10, 10}}, true);
    TSegment piece;
    float squared = 0;
    EXPECT_EQ((std::vector<int>{corner.nearestSegment({12, 5}, piece),
                                corner.nearestSegment({11, -1}, piece),
                                corner.nearestSegment({NAN, 0}, piece),
                                lineOf({{1, 1}}, true).nearestSegment({0, 0}, piece)}),
              (std::vector<int>{2, 1, -1, -1}));
    EXPECT_TRUE(corner.squaredDistance({12, 5}, squared) && squared == 4.0f &&
                !lineOf({{1, 1}}, true).squaredDistance({0, 0}, squared));
    // Ranges are held to the source.
    TGuidanceCurve appended;
    for (auto const& [first, last] : {std::pair{-3, 2}, {2, 100}, {3, 1}})
        appended.appendRange(corner.points(), first, last);
    EXPECT_TRUE(samePath(appended.points(), corner.points()));
}

TEST(GuidanceCurve, OffsetsOfShortLinesZeroAndRepeatedDistances) {
    Path const straight{{0, 0}, {10, 0}, {20, 0}};
    // Forced, the computation runs: the joint of two collinear pieces gives no point.
    for (bool force : {false, true}) {
        TGuidanceCurve zero = lineOf(straight, true);
        zero.offsetByEvents(force, 0.0f);
        EXPECT_TRUE(samePath(zero.offsetPoints(), force ? Path{{0, 0}, {20, 0}} : straight));
    }

    // Two points: the piece shifted along its right normal, (0, -1) for a piece heading east.
    for (bool byEvents : {true, false}) {
        TGuidanceCurve pair = lineOf({{0, 0}, {10, 0}}, true);
        for (int run = 0; run < 2; ++run) {
            // The same distance again does nothing, even though the line has changed.
            byEvents ? pair.offsetByEvents(false, 3.0f) : pair.offsetByVertices(3.0f);
            EXPECT_TRUE(samePath(pair.offsetPoints(), {{0, -3}, {10, -3}}));
            pair.add({20, 10});
        }
        pair.clear();
        EXPECT_EQ(pair.offsetDistance(), std::numeric_limits<float>::max());
        pair.offsetByEvents(false, 3.0f);
        EXPECT_TRUE(pair.offsetPoints().empty());
    }
}

TEST(GuidanceCurve, ParallelCurvesKeepTheirDistanceAndSideAndLoseTheirLoops) {
    // The line, the distances of its parallel curves, and the tolerance per metre of distance.
    std::tuple<TGuidanceCurve, std::vector<float>, float> const cases[] = {
        // Left and right bends of 60 m radius between straights. Joints on the outer side of a
        // bend lie a little farther out, by 1 / cos of half the turn between two pieces.
        {recorded({{40, 0}, {90, 60}, {30, 0}, {120, -60}, {50, 0}, {60, 90}}),
         {3.0f, -3.0f, 12.0f, -12.0f, 36.0f, -36.0f},
         0.002f},
        // A left bend of 5 m radius through 144 degrees: inner offsets beyond 5 m would loop.
        {recorded({{80, 400}, {12.57f, 5}, {80, 400}}), {-6.0f, -12.0f}, 0.0f}};
    for (auto const& [line, distances, tolerancePerMetre] : cases) {
        ASSERT_GT(line.count(), 20);
        for (float distance : distances)
            for (bool byEvents : {true, false}) {
                SCOPED_TRACE(testing::Message() << distance << (byEvents ? " by events" : ""));
                TGuidanceCurve curve = line;
                byEvents ? curve.offsetByEvents(false, distance) : curve.offsetByVertices(distance);
                // A positive distance lies on the right of the direction of travel, and the
                // curve does not cross itself.
                Path const& offset = curve.offsetPoints();
                expectBeside(offset, line.points(), -distance,
                             tolerancePerMetre * std::fabs(distance) + 1e-4f);
                for (std::size_t i = 1; i < offset.size(); ++i)
                    for (std::size_t j = i + 2; j < offset.size(); ++j) {
                        LocalPoint out;
                        EXPECT_FALSE(TSegment(offset[i - 1], offset[i])
                                         .intersectSegment({offset[j - 1], offset[j]}, out))
                            << i << " " << j;
                    }
            }
    }
}

TEST(Segment, HeadingsAreClockwiseFromNorthThroughTwoReciprocals) {
    // a = atan2f(dx, dy), then 1 / ((1 / a) * 0.017453292f) in float, plus 360 below 0; the
    // figures are that chain carried out by hand in single precision, for directions whose
    // atan2f every C library rounds correctly.
    std::tuple<float, float, float> const cases[] = {
        {1, 0, 90.00000762939453f},  {0, 1, 0.0f},    {-1, 0, 270.0f}, {0, -1, 180.00001525878906f},
        {1, 1, 45.000003814697266f}, {-1, -1, 225.0f}};
    for (auto const& [dx, dy, heading] : cases)
        EXPECT_EQ(TSegment(1, 2, 1 + dx, 2 + dy).heading(), heading) << dx << " " << dy;

    for (float heading : {0.0f, 1.0f, 89.5f, 90.0f, 179.0f, 180.0f, 269.0f, 300.0f, 359.5f}) {
        TSegment segment;
        segment.setByHeading({5, -7}, heading, 25.0f);
        EXPECT_NEAR(segment.heading(), heading, 1e-3f);
        EXPECT_NEAR(segment.length(), 25.0f, 1e-5f);
    }
}

TEST(Segment, PointsAgainstTheLineZeroLengthSegmentsAndHalfOpenCrossings) {
    // A zero-length segment has fixed answers.
    TSegment const point({3, 4});
    EXPECT_TRUE(samePath(
        {point.direction(), point.normal(), point.footPoint({9, 9}), point.closestPoint({9, 9})},
        {{0, 1}, {0, 1}, {3, 4}, {3, 4}}));
    LocalPoint out{1, 1};
    EXPECT_TRUE(!point.intersectLine(north, out) && !north.intersectSegment(point, out) &&
                samePath({out}, {{1, 1}}));

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

    EXPECT_TRUE(samePath({east.closestPoint({15, 3}), east.closestOnRay({15, 3}, true),
                          east.closestOnRay({15, 3}, false), east.closestOnRay({-5, 3}, false),
                          east.closestOnRay({-5, 3}, true)},
                         {{10, 0}, {15, 0}, {10, 0}, {-5, 0}, {0, 0}}));
    EXPECT_EQ(east.rayDistanceSquared({15, 3}, true), 9.0f);

    float x = 99;
    EXPECT_TRUE(!east.xAtY(0, x) && !TSegment(0, 0, 10, 20).xAtY(21, x) && x == 99.0f);
    EXPECT_TRUE(TSegment(0, 0, 10, 20).xAtY(10, x) && x == 5.0f);

    // Each crossing lies at (5, 0); t and s come out as 0.5, 0 or 1 exactly. After the plain
    // crossing: the other's end on this one, the other's start on this one, this one's end on the
    // other, this one's start on the other; then parallel segments and an infinite end.
    std::tuple<TSegment, TSegment, bool> const cases[] = {
        {{0, 0, 10, 0}, {5, -5, 5, 5}, true},        {{0, 0, 10, 0}, {5, -5, 5, 0}, false},
        {{0, 0, 10, 0}, {5, 0, 5, 5}, true},         {{0, 0, 5, 0}, {5, -5, 5, 5}, false},
        {{5, 0, 10, 0}, {5, -5, 5, 5}, true},        {{0, 0, 10, 0}, {0, 1, 10, 1}, false},
        {{0, 0, 10, 0}, {6, -5, 6, INFINITY}, false}};
    for (auto const& [self, other, crosses] : cases) {
        out = {-1, -1};
        EXPECT_EQ(self.intersectSegment(other, out), crosses)
            << self.start().x << " " << other.start().y << " " << other.end().y;
        EXPECT_TRUE(!crosses || samePath({out}, {{5, 0}}));
    }

    // Parallel lines leave `out` alone; a crossing outside this segment is written anyway.
    out = {-1, -1};
    EXPECT_TRUE(!east.intersectLine({0, 1, 10, 1}, out) && out.x == -1.0f);
    EXPECT_TRUE(!east.intersectLineOnThis({20, -5, 20, 5}, out) && samePath({out}, {{20, 0}}) &&
                east.intersectLine({20, -5, 20, 5}, out));
}

TEST(Segment, TracksWithBothSignConventions) {
    // 14 and 16 from the line with spacing 10: tracks 1 and 2, 4 off either way; half a spacing
    // counts toward the farther track. Driving against the line, the point first moves 2 * width
    // along the normal (+x). No tracks without a positive spacing.
    // The point, the direction of travel, spacing and width; trackOffset's sign, offset and
    // index, then trackIndex's offset and index.
    std::tuple<LocalPoint, LocalPoint, float, float, int, float, int, float, int> const cases[] = {
        {{14, 50}, {0, 1}, 10, 1, 1, 4, 1, 4, -1},    {{16, 50}, {0, 1}, 10, 1, 1, -4, 2, -4, -2},
        {{-14, 50}, {0, 1}, 10, 1, 1, -4, -1, 4, 1},  {{5, 50}, {0, 1}, 10, 1, 1, -5, 1, -5, -1},
        {{14, 50}, {0, -1}, 10, 1, -1, 4, 2, -4, -1}, {{14, 50}, {0, 1}, 0, 1, 1, 0, 0, 0, 0},
        {{14, 50}, {0, -1}, NAN, 1, 1, 0, 0, 0, 0}};
    for (auto const& [p, direction, spacing, width, sign, offset, index, indexOffset, indexIndex] :
         cases) {
        SCOPED_TRACE(testing::Message() << p.x << " " << direction.y << " " << spacing);
        float gotOffset = 99;
        int gotIndex = 99;
        int got = north.trackOffset(p, direction, spacing, width, gotOffset, gotIndex);
        EXPECT_EQ(std::tuple(got, gotOffset, gotIndex), std::tuple(sign, offset, index));
        got = north.trackIndex(p, direction, spacing, gotOffset, gotIndex);
        EXPECT_EQ(std::tuple(got, gotOffset, gotIndex),
                  std::tuple(spacing > 0 && direction.y < 0 ? -1 : 1, indexOffset, indexIndex));
    }
}

TEST(PointHistory, DropsRepeatsKeepsOneOfTwoBreaksAndHoldsSixtyThreePoints) {
    TPointHistory history;
    LocalPoint out[TPointHistory::capacity];
    // 1e-6 off the last point is a repeat, which still succeeds.
    EXPECT_TRUE(history.addPoint({1, 2}) && history.addPoint({1.000001f, 2}));
    EXPECT_TRUE(history.addBreak() && history.addBreak() && history.addPoint({1, 2}));
    ASSERT_EQ(history.copyPoints(out), 3);
    EXPECT_TRUE(samePath({out, out + 3}, {{1, 2}, TPointHistory::breakMark, {1, 2}}));

    // Each copy shifts the stored points once more.
    history.setOrigin({1, 1});
    history.copyPoints(out);
    ASSERT_EQ(history.copyPoints(out), 3);
    EXPECT_TRUE(samePath({out + 2, out + 3}, {{-1, 0}}));

    history.clear();
    for (int i = 0; i < TPointHistory::capacity; ++i)
        ASSERT_TRUE(history.addPoint({static_cast<float>(i), 0}));
    EXPECT_FALSE(history.addPoint({100, 0}));
    // Disabled, every point succeeds and none is stored.
    history.setEnabled(false);
    EXPECT_TRUE(history.addPoint({100, 0}));
    history.setEnabled(true);
    ASSERT_EQ(history.copyPoints(out), 63);
    EXPECT_EQ(out[62].x, 61.0f); // shifted by the origin (1, 1)
    history.clear();
    EXPECT_TRUE(history.addPoint({100, 0}));
}
