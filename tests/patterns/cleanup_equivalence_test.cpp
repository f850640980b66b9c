// The library's clean-ups against their literal procedures, point for point, on thousands of
// generated raw curves with loops, spikes and sharp turns.

#include "literal_cleanups.h"
#include "patterns/lock_guide_curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

float const pi = 3.14159265f;

// A raw curve as a parallel curve comes out before its clean-up: a wandering line with gentle
// bends, sharp turns, reversals (spikes) and small loops, and now and then a repeated point, a
// point at the origin, or a coordinate that is not a number.
Path wanderingCurve(std::mt19937& random, int size) {
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::normal_distribution<float> bend(0.0f, 0.15f);
    Path curve;
    float x = 200.0f * unit(random) - 100.0f;
    float y = 200.0f * unit(random) - 100.0f;
    float heading = 2.0f * pi * unit(random);
    int loopSteps = 0;
    float loopTurn = 0.0f;
    while (static_cast<int>(curve.size()) < size) {
        float const choice = unit(random);
        if (loopSteps > 0) {
            heading += loopTurn;
            --loopSteps;
        } else if (choice < 0.06f) {
            loopSteps = 4 + static_cast<int>(5.0f * unit(random));
            loopTurn = (unit(random) < 0.5f ? 1.0f : -1.0f) * 2.0f * pi /
                       static_cast<float>(loopSteps) * (0.9f + 0.2f * unit(random));
        } else if (choice < 0.12f) {
            heading += pi * (0.85f + 0.3f * unit(random));
        } else if (choice < 0.24f) {
            heading += (unit(random) < 0.5f ? 1.0f : -1.0f) * pi * (0.5f + 0.5f * unit(random));
        } else {
            heading += bend(random);
        }
        // Now and then a long straight run, as thinning leaves of a straight drive.
        float const step = (unit(random) < 0.02f ? 40.0f : 1.0f) * (0.5f + 4.0f * unit(random));
        x += step * std::cos(heading);
        y += step * std::sin(heading);
        float const oddity = unit(random);
        if (oddity < 0.01f && !curve.empty())
            curve.push_back(curve.back());
        else if (oddity < 0.015f)
            curve.push_back({0.0f, 0.0f});
        else if (oddity < 0.018f)
            curve.push_back({std::numeric_limits<float>::quiet_NaN(), y});
        else if (oddity < 0.02f)
            curve.push_back({x, std::numeric_limits<float>::infinity()});
        else
            curve.push_back({x, y});
    }
    return curve;
}

::testing::AssertionResult sameBits(Path const& actual, Path const& expected) {
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure()
               << actual.size() << " points where " << expected.size() << " were expected";
    for (std::size_t i = 0; i < actual.size(); ++i)
        if (std::memcmp(&actual[i], &expected[i], sizeof(LocalPoint)) != 0)
            return ::testing::AssertionFailure()
                   << "point " << i << " is (" << actual[i].x << ", " << actual[i].y << ") where ("
                   << expected[i].x << ", " << expected[i].y << ") was expected";
    return ::testing::AssertionSuccess();
}

TLockGuideCurve cleanerOf(Path const& curve, float distance) {
    TLockGuideCurve cleaner(nullptr, distance);
    for (LocalPoint const p : curve)
        cleaner.add(p.x, p.y);
    return cleaner;
}

} // namespace

TEST(Cleanups_equivalence, eachStepGivesTheLiteralProceduresPoints) {
    std::mt19937 random(20261123);
    std::uniform_real_distribution<float> distance(-40.0f, 40.0f);
    std::uniform_int_distribution<int> size(2, 240);
    int cuts = 0;
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        Path const curve = wanderingCurve(random, size(random));
        LiteralCleanups literal{curve, distance(random), {}, {}};
        TLockGuideCurve fast = cleanerOf(curve, literal.distance);

        bool const literalCut = literal.removeLoops();
        ASSERT_EQ(fast.removeLoops(), literalCut);
        ASSERT_TRUE(sameBits(fast.result(), literal.result)) << "after removeLoops";
        cuts += literalCut;
        literal.removeSharpTurns();
        fast.removeSharpTurns();
        ASSERT_TRUE(sameBits(fast.result(), literal.result)) << "after removeSharpTurns";
        literal.removeSpikes();
        fast.removeSpikes();
        ASSERT_TRUE(sameBits(fast.result(), literal.result)) << "after removeSpikes";
    }
    // The generator must make loops to cut, or the comparison would prove little.
    EXPECT_GT(cuts, 1000);
}

TEST(Cleanups_equivalence, cutBackAloneGivesTheLiteralProceduresPoints) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> distance(-40.0f, 40.0f);
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        Path const curve = wanderingCurve(random, 3 + round % 120);
        LiteralCleanups literal{curve, distance(random), {}, {}};
        TLockGuideCurve fast = cleanerOf(curve, literal.distance);
        int const index =
            std::uniform_int_distribution<int>(0, static_cast<int>(curve.size()))(random);
        ASSERT_EQ(fast.cutBack(index), literal.cutBack(index));
        ASSERT_TRUE(sameBits(fast.result(), literal.result));
        // An index before the curve names no corner: nothing happens.
        EXPECT_EQ(fast.cutBack(-1), -1);
        ASSERT_TRUE(sameBits(fast.result(), literal.result));
    }
}
