// Recorded guidance lines: thinning as they grow, the chord as a bound, and parallel curves by
// both procedures, checked by their geometry where the arithmetic is not fixed.
#include "../polygons/path_checks.h"
#include "patterns/guidance_curve.h"

#include <cmath>
#include <limits>

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

} // namespace

TEST(GuidanceCurve, PointsAreThinnedAsTheLineGrowsUnderAChord) {
    TGuidanceCurve line;
    EXPECT_TRUE(line.add({0, 0}) && line.add({10, 0}));
    EXPECT_FALSE(line.add({11.5f, 0.5f})); // 1.58 from the last point: refused
    EXPECT_FALSE(line.add({13, 0.05f}));   // 0.05 off the last piece: replaces the last point
    EXPECT_TRUE(line.add({20, 5}));
    EXPECT_TRUE(samePath(line.points(), {{0, 0}, {13, 0.05f}, {20, 5}}));
    // keepAll keeps everything and leaves the last piece where it was, so that the next point
    // 0.05 off the line (0, 0)-(10, 0) replaces the kept one.
    TGuidanceCurve all = lineOf({{0, 0}, {10, 0}}, false);
    EXPECT_TRUE(all.add({10.5f, 5}, true) && all.add({10.6f, 5}, true));
    EXPECT_FALSE(all.add({20, 0.05f}));
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
    EXPECT_EQ(bent.chord().end().x, 20.0f);
    EXPECT_NEAR(bent.maxDeviation(), 4.0f, 1e-6f); // (12, 4) from y = 0
    // A straight line has no deviation: with margin 0 even a point on it is not near.
    TGuidanceCurve straight = lineOf({{0, 0}, {20, 0}, {40, 0}}, false);
    EXPECT_EQ(straight.count(), 2);
    EXPECT_TRUE(!straight.nearChord({10, 1}, 0.0f) && straight.nearChord({10, 1}, 1.5f));
}

TEST(GuidanceCurve, NearestPiecesAndDistances) {
    TGuidanceCurve line = lineOf({{0, 0}, {10, 0}, {10, 10}}, true);
    TSegment segment;
    EXPECT_EQ(line.nearestSegment({12, 5}, segment), 2);
    EXPECT_EQ(segment.start().x, 10.0f);
    // (11, -1) is sqrt(2) from both pieces: the first wins.
    EXPECT_EQ(line.nearestSegment({11, -1}, segment), 1);
    float distance = 0;
    EXPECT_TRUE(line.squaredDistance({12, 5}, distance) && distance == 4.0f);
    EXPECT_EQ(line.nearestSegment({std::numeric_limits<float>::quiet_NaN(), 0}, segment), -1);
    TGuidanceCurve single = lineOf({{1, 1}}, true);
    EXPECT_EQ(single.nearestSegment({0, 0}, segment), -1);
    EXPECT_FALSE(single.squaredDistance({0, 0}, distance));

    // Ranges are held to the source.
    TGuidanceCurve appended;
    for (auto const& [first, last] : {std::pair{-3, 2}, std::pair{2, 100}, std::pair{3, 1}})
        appended.appendRange(line.points(), first, last);
    EXPECT_TRUE(samePath(appended.points(), line.points()));
}

TEST(GuidanceCurve, OffsetsOfShortLinesZeroAndRepeatedDistances) {
    Path const straight{{0, 0}, {10, 0}, {20, 0}};
    TGuidanceCurve zero = lineOf(straight, true);
    zero.offsetByEvents(false, 0.0f);
    EXPECT_TRUE(samePath(zero.offsetPoints(), straight));
    // Forced, the computation runs: the joint of two collinear pieces gives no point.
    zero = lineOf(straight, true);
    zero.offsetByEvents(true, 0.0f);
    EXPECT_TRUE(samePath(zero.offsetPoints(), {{0, 0}, {20, 0}}));

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
    struct Case {
        TGuidanceCurve line;
        std::vector<float> distances;
        float tolerancePerMetre;
    } const cases[] = {
        // Left and right bends of 60 m radius between straights. Joints on the outer side of a
        // bend lie a little farther out, by 1 / cos of half the turn between two pieces.
        {recorded({{40, 0}, {90, 60}, {30, 0}, {120, -60}, {50, 0}, {60, 90}}),
         {3.0f, -3.0f, 12.0f, -12.0f, 36.0f, -36.0f},
         0.002f},
        // A left bend of 5 m radius through 144 degrees: inner offsets beyond 5 m would loop.
        {recorded({{80, 400}, {12.57f, 5}, {80, 400}}), {-6.0f, -12.0f}, 0.0f}};
    for (Case const& c : cases) {
        ASSERT_GT(c.line.count(), 20);
        for (float distance : c.distances) {
            for (bool byEvents : {true, false}) {
                SCOPED_TRACE(testing::Message() << distance << (byEvents ? " by events" : ""));
                TGuidanceCurve curve = c.line;
                byEvents ? curve.offsetByEvents(false, distance) : curve.offsetByVertices(distance);
                // A positive distance lies on the right of the direction of travel, and the
                // curve does not cross itself.
                Path const& offset = curve.offsetPoints();
                expectBeside(offset, c.line.points(), -distance,
                             c.tolerancePerMetre * std::fabs(distance) + 1e-4f);
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
}
