// The cleaner of raw parallel curves on hand-made curves whose cuts can be worked out on paper;
// the equivalence test covers the same procedures on thousands of random curves.
#include "patterns/lock_guide_curve.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

void expectPath(Path const& actual, Path const& expected, float tolerance = 0.0f) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i].x, expected[i].x, tolerance) << i;
        EXPECT_NEAR(actual[i].y, expected[i].y, tolerance) << i;
    }
}

TLockGuideCurve curveOf(Path const& points, float distance) {
    TLockGuideCurve curve(nullptr, distance);
    for (LocalPoint const p : points)
        curve.add(p.x, p.y);
    return curve;
}

// The step results over a whole source line, with the points of the successful ones.
std::vector<bool> stepThrough(Path const& source, Path& points) {
    TLockGuideCurve curve(&source, 1.0f);
    std::vector<bool> results;
    for (int i = 0; i < static_cast<int>(source.size()); ++i) {
        LocalPoint point;
        TSegment segment;
        results.push_back(curve.step(i, point, segment));
        if (results.back())
            points.push_back(point);
    }
    return results;
}

} // namespace

TEST(LockGuideCurve, MitersLieOnTheBisectorUnlessTheCornerTurnsBack) {
    TLockGuideCurve const curve(nullptr, 1.0f);
    LocalPoint out{-1, -1};
    // A right angle at (10, 10): sqrt(2) out along the bisector, away from both legs.
    ASSERT_TRUE(curve.miter(out, {10, 11}, {10, 10}, {11, 10}));
    EXPECT_NEAR(out.x, 9.0f, 1e-5f);
    EXPECT_NEAR(out.y, 9.0f, 1e-5f);
    // Legs whose unit directions lie 0.04 apart: no miter, and `out` stays.
    out = {-1, -1};
    EXPECT_FALSE(curve.miter(out, {10, 11}, {10, 10}, {10.04f, 11}));
    EXPECT_EQ(out.x, -1.0f);
}

TEST(LockGuideCurve, StepsGiveTheMiterOfTheCornerBeforeOnceTheWindowIsFull) {
    // Straight east, then a left turn north at (30, 10).
    Path const source{{10, 10}, {20, 10}, {30, 10}, {30, 20}, {30, 30}};
    Path points;
    EXPECT_EQ(stepThrough(source, points), (std::vector<bool>{false, false, false, true, true}));
    ASSERT_EQ(points.size(), 2u);
    EXPECT_NEAR(points[0].x, 20.0f, 1e-5f); // 1 to the right of (20, 10)
    EXPECT_NEAR(points[0].y, 9.0f, 1e-5f);
    EXPECT_NEAR(points[1].x, 31.0f, 1e-5f); // the outer miter of the turn
    EXPECT_NEAR(points[1].y, 9.0f, 1e-5f);

    // A source point at the origin stops the window for its call only.
    Path const withOrigin{{10, 10}, {20, 10}, {0, 0}, {30, 10}, {30, 20}, {30, 30}};
    Path sameWay;
    EXPECT_EQ(stepThrough(withOrigin, sameWay),
              (std::vector<bool>{false, false, false, false, true, true}));
    expectPath(sameWay, points);
}

TEST(LockGuideCurve, LoopsAreCutAtTheirCrossingUnlessTheySpanHalfTheCurve) {
    // The piece (5, 5)-(5, -5) crosses (10, 0)-(0, 0) at (5, 0), 3 pieces back in 12 points.
    TLockGuideCurve loop = curveOf({{-20, 0},
                                    {-10, 0},
                                    {0, 0},
                                    {10, 0},
                                    {12, 5},
                                    {5, 5},
                                    {5, -5},
                                    {15, -5},
                                    {25, -5},
                                    {35, -5},
                                    {45, -5},
                                    {55, -5}},
                                   5.0f);
    EXPECT_TRUE(loop.removeLoops());
    expectPath(loop.result(), {{-20, 0},
                               {-10, 0},
                               {0, 0},
                               {5, 0},
                               {5, -5},
                               {15, -5},
                               {25, -5},
                               {35, -5},
                               {45, -5},
                               {55, -5}});

    // The crossing at (15, 0) lies 4 pieces back: not below 7 / 2, so the loop stays.
    Path const wide{{0, 0}, {10, 0}, {20, 0}, {30, 0}, {30, 10}, {15, 10}, {15, -10}};
    TLockGuideCurve kept = curveOf(wide, 5.0f);
    EXPECT_FALSE(kept.removeLoops());
    expectPath(kept.result(), wide);
    // With six points more it is below 13 / 2.
    Path longer = wide;
    for (float y : {-20.0f, -30.0f, -40.0f, -50.0f, -60.0f, -70.0f})
        longer.push_back({15, y});
    TLockGuideCurve cut = curveOf(longer, 5.0f);
    EXPECT_TRUE(cut.removeLoops());
    expectPath(cut.result(), {{0, 0},
                              {10, 0},
                              {15, 0},
                              {15, -10},
                              {15, -20},
                              {15, -30},
                              {15, -40},
                              {15, -50},
                              {15, -60},
                              {15, -70}});
}

TEST(LockGuideCurve, SharpTurnsAreCutBackToWhereTheProbeCrossesAnOlderPiece) {
    // East along y = 1, then back north-west at (31, 1) and down south-west: the probe from
    // (24, 6) runs 20 on toward the south-west and crosses y = 1 at x = 19.
    TLockGuideCurve curve =
        curveOf({{1, 1}, {11, 1}, {21, 1}, {31, 1}, {29, 11}, {24, 6}, {14, -4}, {9, -9}}, 20.0f);
    curve.removeSharpTurns();
    expectPath(curve.result(), {{1, 1}, {11, 1}, {19, 1}, {29, 11}, {24, 6}, {14, -4}, {9, -9}},
               1e-4f);
}

TEST(LockGuideCurve, SpikesOfTwoSharpTurnsGoAndSingleBendsStay) {
    Path const spike{{10, 10}, {20, 10}, {30, 10}, {20, 11}, {40, 10}, {50, 10}};
    Path const singleBend{{10, 10}, {20, 10}, {30, 10}, {25, 20}, {20, 30}};
    // Turns of exactly 90 degrees, headings 0 -> 270 -> 0, are gentle at both corners ...
    Path const rightAngles{{10, 0}, {10, 10}, {-2, 10}, {-2, 20}, {-2, 30}};
    // ... and of 90.5 degrees sharp: the leg west runs at 269.5 degrees.
    LocalPoint const west{-1.99954307f, 9.89528179f}; // (10, 10) + 12 * (sin, cos) of 269.5
    Path const sharper{{10, 0}, {10, 10}, west, {west.x, 20}, {west.x, 30}};

    struct Case {
        Path const& raw;
        Path expected;
    };
    Case const cases[] = {
        {spike, {{10, 10}, {20, 10}, {40, 10}, {50, 10}}},
        {singleBend, singleBend},
        {rightAngles, rightAngles},
        {sharper, {{10, 0}, {west.x, 20}, {west.x, 30}}},
    };
    for (Case const& c : cases) {
        TLockGuideCurve curve = curveOf(c.raw, 5.0f);
        curve.removeSpikes();
        expectPath(curve.result(), c.expected);
    }
}
