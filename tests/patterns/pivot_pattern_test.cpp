// Pivot patterns: rings by distance, the offset, circles fitted through points, and the settings
// file written and read back.
#include "patterns/pivot_pattern.h"

#include "test_support/test_support.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

TEST(PivotPattern, RingsChangeHalfASpacingFromEachRingAndTheOffsetKeepsTheirPlace) {
    TPivotPattern pivot;
    pivot.setOffset(2.0f); // no pattern yet: nothing to shift
    EXPECT_EQ(pivot.offsetValue(), 0.0f);
    pivot.set({0, 0}, 100.0f, 10.0f);
    struct Case {
        float distance;
        int ring;
    } const cases[] = {{104.9f, 0}, {105.0f, 1}, {95.1f, 0}, {95.0f, -1}, {124.0f, 2}};
    for (Case const& c : cases)
        EXPECT_EQ(pivot.ringForDistance(c.distance), c.ring) << c.distance;
    pivot.setRingForDistance(124.0f);
    EXPECT_EQ(pivot.currentRingRadius(), 120.0f);
    // Radius plus offset stays: the last offset is undone first.
    pivot.setOffset(2.0f);
    EXPECT_EQ(pivot.baseRadius(), 98.0f);
    pivot.setOffset(0.0f);
    EXPECT_EQ(pivot.baseRadius(), 100.0f);
    pivot.setSpacing(0.001f);
    EXPECT_EQ(pivot.ringForDistance(1000.0f), 0);
}

TEST(PivotPattern, FitCircleMeansTheCirclesOfTriplesWithoutLastNeighbours) {
    // On the circle of radius 5 around (2, 3). Four points have the one triple (0, 1, 3):
    // d1 = 7 (8 + 2) + 2 (-2 - 3) + 2 (3 - 8) = 50, d2 = -50, and with s = 58, 68, 8 the centre
    // is (0.5 * 200 / 50, 0.5 * -300 / -50) = (2, 3), 5 from (2, -2).
    std::vector<LocalPoint> const circle{{7, 3}, {2, 8}, {-3, 3}, {2, -2}};
    struct Case {
        std::vector<LocalPoint> points;
        bool fitted;
    } const cases[] = {{{circle.begin(), circle.begin() + 3}, false},
                       {{{7, 3}, {7, 3}, {2, 8}, {7, 3}}, false}, // (0, 1, 3) coincide
                       {{{0, 0}, {1, 1}, {2, 2}, {3, 3}}, false},
                       {{{0, 0}, {0.5f, 0.5f}, {1, 0}, {0.5f, -0.5f}}, false}, // radius 0.5
                       {circle, true}};
    for (Case const& c : cases) {
        LocalPoint center{-1, -1};
        float radius = -1.0f;
        EXPECT_EQ(TPivotPattern::fitCircle(center, radius, c.points.data(),
                                           static_cast<int>(c.points.size())),
                  c.fitted)
            << c.points.size();
        EXPECT_TRUE(!c.fitted || (center.x == 2.0f && center.y == 3.0f && radius == 5.0f));
    }
    // 2 pi / acos(1 - 0.1 / r): 6.2832 / 0.14154 = 44.39 for 10 m, / 0.044725 = 140.48 for 100 m.
    EXPECT_EQ(TPivotPattern::vertexCount(10.0f), 44);
    EXPECT_EQ(TPivotPattern::vertexCount(100.0f), 140);
    EXPECT_EQ(TPivotPattern::vertexCount(0.0f), 0);
}

TEST(PivotPattern, SavedFileLoadsBackAroundLatitudeAndLongitudeZeroAndNeedsStateTwo) {
    QTemporaryDir dir;
    QString const path = dir.filePath("Pivot.ini");
    ASSERT_TRUE(TPivotPattern::save(path, 52.5, 13.25, 250.5));
    TPivotPattern pivot;
    ASSERT_TRUE(pivot.load(path));
    EXPECT_EQ(pivot.stateValue(), 2);
    EXPECT_EQ(pivot.ringValue(), 0);
    EXPECT_EQ(pivot.baseRadius(), 250.5f);
    EXPECT_FALSE(pivot.readyValue());
    // The tangent plane at latitude 0, longitude 0 has north along the Earth's axis and east
    // along Y: with N = a / sqrt(1 - e2 sin^2 52.5) = 6,391,616.8 m (WGS-84) the reference lies
    // at east N cos 52.5 sin 13.25 = 891,811.8 m, north N (1 - e2) sin 52.5 = 5,036,864.6 m.
    EXPECT_NEAR(pivot.centerValue().x, 891811.8f, 1.0f);
    EXPECT_NEAR(pivot.centerValue().y, -5036864.6f, 1.0f);

    struct Case {
        QByteArray settings;
        bool loaded;
        int state;
    } const cases[] = {{"[Reference]\nLat=52\nLon=13\n", false, 0},
                       {"State=1\n[Reference]\nLat=52\nLon=13\n", false, 1},
                       {"State=two\n[Reference]\nLat=52\nLon=13\n", false, 0},
                       {"State=2\n[Reference]\nEast=672509\nNorth=5800000\n", false, 2},
                       {"State=2\n[Reference]\nEast=672509\nNorth=5800000\nZone=32\n", true, 2},
                       {"State=2\nInnerRadius=ten\n[Reference]\nLat=52\n", true, 2}};
    int file = 0;
    for (Case const& c : cases) {
        QString const other = dir.filePath(QStringLiteral("Pivot%1.ini").arg(file++));
        test_support::write_file(other, c.settings);
        TPivotPattern loaded;
        EXPECT_EQ(loaded.load(other), c.loaded) << c.settings.constData();
        EXPECT_EQ(loaded.stateValue(), c.state) << c.settings.constData();
    }
}
