// The cleaner of raw parallel curves: the clean-ups against their literal procedures, point for
// point, on thousands of generated raw curves with loops, spikes and sharp turns. Its miters and
// sliding window are held by the parallel curves of the guidance line tests.
#include "patterns/lock_guide_curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

// The clean-ups of a raw parallel curve exactly as their procedures read: every search walks back
// over all older pieces, a loop cut starts the walk again at the first piece, and points are
// erased and inserted in place. Slow on purpose.
struct Literal {
    Path result;
    float distance = 0.0f;
    LocalPoint previous{}, current{};

    int size() const { return static_cast<int>(result.size()); }

    // The points j to i - 1 give way to the crossing, where the turn check goes on.
    void cut(int j, int i, LocalPoint crossing) {
        result.erase(result.begin() + j, result.begin() + i);
        result.insert(result.begin() + j, crossing);
        previous = crossing;
        current = result[j + 1];
    }

    bool removeLoops() {
        bool cutAny = false;
        for (int i = 1; i < size(); ++i)
            for (int j = i - 2, c = 2; j > 1; --j, ++c) {
                LocalPoint crossing;
                if (c < size() / 2 && TSegment(result[i - 1], result[i])
                                          .intersectSegment({result[j], result[j - 1]}, crossing)) {
                    cut(j, i, crossing);
                    i = 0; // the loop's increment starts the walk again at 1
                    cutAny = true;
                    break;
                }
            }
        return cutAny;
    }

    bool gentle(LocalPoint p) const {
        if (previous.x == 0.0f || current.x == 0.0f)
            return true;
        double turn =
            double(TSegment(current, p).heading()) - TSegment(previous, current).heading();
        turn += turn > 180.0 ? -360.0 : turn < -180.0 ? 360.0 : 0.0;
        return turn >= -90.0 && turn <= 90.0;
    }

    void removeSharpTurns() {
        if (size() < 4)
            return;
        previous = result[0];
        current = result[1];
        for (int i = 2; i < size(); ++i) {
            LocalPoint const p = result[i];
            if (gentle(p)) {
                previous = current;
            } else {
                i = cutBack(i);
                previous = LocalPoint{};
            }
            current = p;
        }
    }

    int cutBack(int index) {
        if (index < 2 || index + 1 >= size())
            return index;
        TSegment probe;
        probe.setByHeading(result[index],
                           TSegment(result[index + 1], result[index]).heading() - 180.0f, distance);
        for (int j = index - 1; j >= 1; --j) {
            LocalPoint crossing;
            if (TSegment(result[index + 1], probe.end())
                    .intersectSegment({result[j], result[j - 1]}, crossing)) {
                cut(j, index, crossing);
                return j + 1;
            }
        }
        return index;
    }

    void removeSpikes() {
        if (size() < 4)
            return;
        previous = result[0];
        current = result[1];
        for (int i = 2; i < size(); ++i) {
            LocalPoint const p = result[i];
            bool const sharp = !gentle(p);
            if (sharp && i + 1 >= size())
                return;
            previous = current;
            current = p;
            if (!sharp)
                continue;
            if (gentle(result[i + 1])) {
                previous = result[i - 2];
                current = result[i - 1];
            } else {
                result.erase(result.begin() + i - 1, result.begin() + i + 1);
                previous = LocalPoint{};
            }
        }
    }
};

// A raw curve as a parallel curve comes out before its clean-up: a wandering line with gentle
// bends, sharp turns, reversals (spikes) and small loops, now and then a long straight run (as
// thinning leaves of a straight drive), and now and then a repeated point, a point at the origin,
// or a coordinate that is not a number.
Path wanderingCurve(std::mt19937& random, int size) {
    float const pi = 3.14159265f;
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::normal_distribution<float> bend(0.0f, 0.15f);
    auto const sign = [&] { return unit(random) < 0.5f ? 1.0f : -1.0f; };
    Path curve;
    float x = 200.0f * unit(random) - 100.0f, y = 200.0f * unit(random) - 100.0f,
          heading = 2.0f * pi * unit(random);
    int loopSteps = 0;
    float loopTurn = 0.0f;
    while (static_cast<int>(curve.size()) < size) {
        float const choice = unit(random);
        if (loopSteps > 0) {
            heading += loopTurn;
            --loopSteps;
        } else if (choice < 0.06f) {
            loopSteps = 4 + static_cast<int>(5.0f * unit(random));
            loopTurn = sign() * 2.0f * pi / loopSteps * (0.9f + 0.2f * unit(random));
        } else {
            heading += choice < 0.12f   ? pi * (0.85f + 0.3f * unit(random))
                       : choice < 0.24f ? sign() * pi * (0.5f + 0.5f * unit(random))
                                        : bend(random);
        }
        float const step = (unit(random) < 0.02f ? 40.0f : 1.0f) * (0.5f + 4.0f * unit(random));
        x += step * std::cos(heading);
        y += step * std::sin(heading);
        float const oddity = unit(random);
        curve.push_back(oddity < 0.01f && !curve.empty() ? curve.back()
                        : oddity < 0.015f                ? LocalPoint{}
                        : oddity < 0.018f                ? LocalPoint{NAN, y}
                        : oddity < 0.02f                 ? LocalPoint{x, INFINITY}
                                                         : LocalPoint{x, y});
    }
    return curve;
}

// A step of the cleaner by number, on the library's or on the literal one: cutBack at `index`,
// removeLoops (its result), removeSharpTurns, removeSpikes.
template <typename Cleaner> int cleanUp(Cleaner& cleaner, int step, int index = 0) {
    if (step == 0)
        return cleaner.cutBack(index);
    if (step == 1)
        return cleaner.removeLoops();
    step == 2 ? cleaner.removeSharpTurns() : cleaner.removeSpikes();
    return 0;
}

} // namespace

TEST(Cleanups_equivalence, eachStepGivesTheLiteralProceduresPoints) {
    std::mt19937 random(20261123);
    std::uniform_real_distribution<float> distance(-40.0f, 40.0f);
    int cuts = 0;
    auto const bytes = [](Path const& path) {
        return std::string(reinterpret_cast<char const*>(path.data()),
                           path.size() * sizeof(LocalPoint));
    };
    for (int round = 0; round < 4000; ++round) {
        SCOPED_TRACE(round);
        Literal literal{wanderingCurve(random, std::uniform_int_distribution<int>(2, 240)(random)),
                        distance(random)};
        TLockGuideCurve fast(nullptr, literal.distance);
        for (LocalPoint const p : literal.result)
            fast.add(p.x, p.y);
        // cutBack alone at any index, on the raw curve, then the clean-ups in their order; each
        // must leave the same bits (a -0 or another not-a-number counts as a difference).
        int const index = std::uniform_int_distribution<int>(-1, literal.size())(random);
        for (int step = 0; step < 4; ++step) {
            int const expected = cleanUp(literal, step, index);
            ASSERT_EQ(cleanUp(fast, step, index), expected) << "step " << step;
            ASSERT_EQ(bytes(fast.result()), bytes(literal.result)) << "step " << step;
            cuts += step == 1 && expected;
        }
    }
    // The generator must make loops to cut, or the comparison would prove little.
    EXPECT_GT(cuts, 1000);
}
