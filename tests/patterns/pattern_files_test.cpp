// Curve patterns loaded from real .crv and settings files, appended to and searched, and the
// geometry helpers of the curves. Pivot patterns: rings by distance, the offset, circles fitted
// through points, and the settings file written and read back.
#include "../polygons/path_checks.h"
#include "patterns/curve_pattern.h"
#include "patterns/pivot_pattern.h"

#include "test_support/test_support.h"

#include <QTemporaryDir>

namespace {

GeoPoint const reference{52.5, 13.25, 41.0};
using Records = std::vector<std::pair<float, float>>;
// The record between two runs.
std::pair<float, float> const separator{TPointHistory::breakMark.x, TPointHistory::breakMark.y};

class CurvePattern : public ::testing::Test {
protected:
    // The .crv file of the points around the reference, with the settings beside it if given.
    QString write(Records const& records, QByteArray const& settings = QByteArray()) const {
        if (!settings.isNull())
            test_support::write_file(dir.filePath("Line.ini"), settings);
        test_support::write_file(path,
                                 test_support::point_file(reference.latitude, reference.longitude,
                                                          reference.height, records));
        return path;
    }
    // The points loaded around the file's own reference, every point kept.
    bool load(Records const& records) { return pattern.loadFile(write(records), reference, true); }

    QTemporaryDir dir;
    QString const path = dir.filePath("Line.crv");
    TCurvePattern pattern;
};

} // namespace

TEST_F(CurvePattern, LoadedRunsBecomeCurvesJoinedWithinTheJoinDistanceUpToTenMetres) {
    // The join distance, the gap between two runs, and whether they are joined.
    std::tuple<float, float, bool> const cases[] = {{10, 9, true}, {5, 9, false}, {20, 11, false}};
    for (auto const& [joinDistance, gap, joined] : cases) {
        pattern.setJoinDistance(joinDistance);
        Records const runs{separator, {10, 20},       {50, 20}, separator,
                           separator, {50 + gap, 20}, {90, 20}, {-3e7f, 1}};
        ASSERT_TRUE(load(runs) && pattern.curveCount() == 3) << gap;
        // A point of the run's frame comes back at its place: away from 0 the round trip
        // through degrees is far below a float's step.
        EXPECT_TRUE(samePath(pattern.curvePoints(1), {{50 + gap, 20}, {90, 20}}));
        EXPECT_TRUE(pattern.curvePoints(0).size() == 2 && pattern.lastCurvePoints().empty() &&
                    !pattern.lastCurve().joinedToPrevious() &&
                    pattern.neighbourCurve(1).joinedToNext() == joined &&
                    pattern.neighbourCurve(2).joinedToPrevious() == joined)
            << gap;
    }

    // A centre 0.0009 degrees north of the reference: at 52.5 degrees a degree of latitude is
    // M = a (1 - e2) / (1 - e2 sin^2 52.5)^1.5 * pi / 180 = 111,276.8 m (WGS-84), so the
    // reference lies 0.0009 * 111,276.8 = 100.149 m south of the centre.
    GeoPoint const centre{reference.latitude + 0.0009, reference.longitude, reference.height};
    ASSERT_TRUE(pattern.loadFile(write({{0, 0}}), centre, true));
    EXPECT_TRUE(samePath(pattern.firstCurvePoints(), {{0, 100.149f}}, 0.005f));
}

TEST_F(CurvePattern, AMissingFileFailsWithOneOpenCurveAndSettingsAreReadAnyway) {
    // A failed load leaves one open curve, closed for writing; the settings are read anyway.
    write({}, "CorrectionSource=7\n[BasePoint]\nPosition=\"{W84,N1D,E2D,3}\"\n");
    QFile::remove(path);
    EXPECT_FALSE(pattern.loadFile(path, reference, false));
    QByteArray position;
    EXPECT_TRUE(pattern.curveCount() == 1 && !pattern.writePoint({1, 2}));
    EXPECT_TRUE(pattern.basePositionValue(position) && position == "{W84,N1D,E2D,3}" &&
                pattern.correctionSourceValue() == 7);
    EXPECT_TRUE(pattern.loadFile(write({{1, 2}}, "CorrectionSource=text\n"), reference, false));
    EXPECT_TRUE(!pattern.basePositionValue(position) && pattern.correctionSourceValue() == 0);
}

TEST_F(CurvePattern, WrittenPointsAreThereAfterAReloadAndTheNearestCurveIsAFinishedOne) {
    ASSERT_TRUE(load({{10, 20}, {30, 20}}));
    for (LocalPoint const p : {LocalPoint{50, 20}, TPointHistory::breakMark, LocalPoint{70, 20}})
        EXPECT_TRUE(pattern.writePoint(p));
    ASSERT_TRUE(pattern.loadFile(path, reference, true));
    ASSERT_EQ(pattern.curveCount(), 3);
    EXPECT_TRUE(samePath(pattern.firstCurvePoints(), {{10, 20}, {30, 20}, {50, 20}}, 1e-5f));
    EXPECT_TRUE(samePath(pattern.curvePoints(1), {{70, 20}}, 1e-5f));
    EXPECT_FALSE(pattern.deleteFile());
    EXPECT_TRUE(!QFile::exists(path) && pattern.curveCount() == 1 && !pattern.writePoint({90, 20}));

    // The open curve is left out, the later curve wins a tie, and the limit is strict.
    ASSERT_TRUE(load({{10, -10}, {30, -10}, separator, {10, 10}, {30, 10}}));
    pattern.lastCurve().add({20, 1});
    pattern.lastCurve().add({20, 2});
    auto const nearest = [&](float y, float limit) { return pattern.nearestCurve({20, y}, limit); };
    EXPECT_EQ((std::vector<int>{nearest(0, -1), nearest(-1, -1), nearest(0, 10), nearest(-2, 10)}),
              (std::vector<int>{1, 0, -1, 0}));
}

TEST(CurveGeometry, WalksByStraightLineDistance) {
    Path const line{{0, 0}, {1, 0}, {2, 0}, {2, 3}, {0, 3}};
    auto const at = [&](int start, int step, float distance) {
        return TCurvePattern::indexAtDistance(line, start, step, distance);
    };
    // (2, 3) and (0, 3) lie 3.61 and 3 from (0, 0), though 5 and 7 along the line.
    EXPECT_EQ(
        (std::vector<int>{at(0, 1, 1.5f), at(0, 1, 3.7f), at(4, 1, 1.0f), at(0, -1, 1.0f),
                          at(4, -1, 2.5f), TCurvePattern::indexAtDistance({{0, 0}}, 0, 1, 1)}),
        (std::vector<int>{2, 4, 4, 0, 2, -1}));

    // From (2, 3) the walk ends 2 away; start moves back to (2, 0), 3.61 from the end. No point
    // lies 3.7 from (0, 3).
    for (auto const& [distance, first] : {std::pair{2.5f, 2}, std::pair{3.7f, 0}}) {
        int start = 3;
        EXPECT_EQ(TCurvePattern::widenToDistance(line, start, 1, distance), 4);
        EXPECT_EQ(start, first) << distance;
    }

    int index = -1;
    EXPECT_EQ(TCurvePattern::nearestPointIndex(line, {1.5f, 0}), 1);
    TSegment const piece = TCurvePattern::nearestSegment(line, {2, 1}, &index);
    EXPECT_TRUE(index == 3 && samePath({piece.start(), piece.end()}, {{2, 0}, {2, 3}}));
    EXPECT_TRUE(TCurvePattern::projectionPassesEnd({{0, 0}, {1.5f, 0}}, line, 0, 1));
    EXPECT_FALSE(TCurvePattern::projectionPassesEnd({{0, 0}, {1.5f, 0}}, line, 1, -1));

    // Angles wrap into one turn; 5.78 and 0.43 after wrapping lie more than half a turn apart,
    // so b comes up by a turn.
    float a = 0.1f, b = 6.2f;
    TCurvePattern::wrapAngles(a, b);
    EXPECT_TRUE(a == 0.1f && b == 6.2f - 6.2831855f);
    a = -0.5f;
    b = 13.0f;
    TCurvePattern::wrapAngles(a, b);
    EXPECT_TRUE(a == -0.5f + 6.2831855f && b == 13.0f - 6.2831855f - 6.2831855f + 6.2831855f);
    // Lines are undirected: bearings 0 and 2.3562 (south-east) make 3.1415927 - 2.3561945.
    EXPECT_NEAR(TCurvePattern::lineAngle({1, 1}, {{2, 2}, {1, 1}}), 0.0f, 1e-6f);
    EXPECT_NEAR(TCurvePattern::lineAngle({0, 1}, {{0, 0}, {1, -1}}), 0.7853982f, 1e-6f);
}

TEST(PivotPattern, RingsChangeHalfASpacingFromEachRingOffsetsKeepThemAndCirclesFitTriples) {
    TPivotPattern pivot;
    pivot.setOffset(2.0f); // no pattern yet: nothing to shift
    EXPECT_EQ(pivot.offsetValue(), 0.0f);
    pivot.set({0, 0}, 100.0f, 10.0f);
    std::vector<int> rings;
    for (float distance : {104.9f, 105.0f, 95.1f, 95.0f, 124.0f})
        rings.push_back(pivot.ringForDistance(distance));
    EXPECT_EQ(rings, (std::vector<int>{0, 1, 0, -1, 2}));
    pivot.setRingForDistance(124.0f);
    EXPECT_EQ(pivot.currentRingRadius(), 120.0f);
    // Radius plus offset stays: the last offset is undone first.
    for (float offset : {2.0f, 0.0f}) {
        pivot.setOffset(offset);
        EXPECT_EQ(pivot.baseRadius(), 100.0f - offset);
    }
    pivot.setSpacing(0.001f);
    EXPECT_EQ(pivot.ringForDistance(1000.0f), 0);

    // fitCircle: the mean of the circles through triples without last neighbours.
    // On the circle of radius 5 around (2, 3). Four points have the one triple (0, 1, 3):
    // d1 = 7 (8 + 2) + 2 (-2 - 3) + 2 (3 - 8) = 50, d2 = -50, and with s = 58, 68, 8 the centre
    // is (0.5 * 200 / 50, 0.5 * -300 / -50) = (2, 3), 5 from (2, -2).
    std::vector<LocalPoint> const circle{{7, 3}, {2, 8}, {-3, 3}, {2, -2}};
    std::pair<std::vector<LocalPoint>, bool> const cases[] = {
        {{circle.begin(), circle.begin() + 3}, false},
        {{{7, 3}, {7, 3}, {2, 8}, {7, 3}}, false}, // (0, 1, 3) coincide
        {{{0, 0}, {1, 1}, {2, 2}, {3, 3}}, false},
        {{{0, 0}, {0.5f, 0.5f}, {1, 0}, {0.5f, -0.5f}}, false}, // radius 0.5
        {circle, true}};
    for (auto const& [points, fitted] : cases) {
        LocalPoint center{-1, -1};
        float radius = -1.0f;
        EXPECT_EQ(TPivotPattern::fitCircle(center, radius, points.data(),
                                           static_cast<int>(points.size())),
                  fitted)
            << points.size();
        EXPECT_TRUE(!fitted || (center.x == 2.0f && center.y == 3.0f && radius == 5.0f));
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
    EXPECT_TRUE(pivot.stateValue() == 2 && pivot.ringValue() == 0 && pivot.baseRadius() == 250.5f &&
                !pivot.readyValue());
    // The tangent plane at latitude 0, longitude 0 has north along the Earth's axis and east
    // along Y: with N = a / sqrt(1 - e2 sin^2 52.5) = 6,391,616.8 m (WGS-84) the reference lies
    // at east N cos 52.5 sin 13.25 = 891,811.8 m, north N (1 - e2) sin 52.5 = 5,036,864.6 m.
    EXPECT_TRUE(samePath({pivot.centerValue()}, {{891811.8f, -5036864.6f}}, 1.0f));

    // The settings, whether they load, and the state read.
    std::tuple<QByteArray, bool, int> const cases[] = {
        {"[Reference]\nLat=52\nLon=13\n", false, 0},
        {"State=1\n[Reference]\nLat=52\nLon=13\n", false, 1},
        {"State=two\n[Reference]\nLat=52\nLon=13\n", false, 0},
        {"State=2\n[Reference]\nEast=672509\nNorth=5800000\n", false, 2},
        {"State=2\n[Reference]\nEast=672509\nNorth=5800000\nZone=32\n", true, 2},
        {"State=2\nInnerRadius=ten\n[Reference]\nLat=52\n", true, 2}};
    int file = 0;
    for (auto const& [settings, loads, state] : cases) {
        QString const other = dir.filePath(QStringLiteral("Pivot%1.ini").arg(file++));
        test_support::write_file(other, settings);
        TPivotPattern loaded;
        EXPECT_TRUE(loaded.load(other) == loads && loaded.stateValue() == state)
            << settings.constData();
    }
}
