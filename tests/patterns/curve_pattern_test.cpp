// Curve patterns loaded from real .crv and settings files, appended to and searched, and the
// geometry helpers of the curves.
#include "patterns/curve_pattern.h"

#include "test_support/test_support.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

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
    struct Case {
        float joinDistance;
        float gap;
        bool joined;
    } const cases[] = {{10.0f, 9.0f, true}, {5.0f, 9.0f, false}, {20.0f, 11.0f, false}};
    for (Case const& c : cases) {
        pattern.setJoinDistance(c.joinDistance);
        Records const runs{separator, {10, 20},         {50, 20}, separator,
                           separator, {50 + c.gap, 20}, {90, 20}, {-3e7f, 1}};
        ASSERT_TRUE(load(runs));
        ASSERT_EQ(pattern.curveCount(), 3) << c.gap;
        EXPECT_EQ(pattern.curvePoints(0).size(), 2u);
        // A point of the run's frame comes back at its place: away from 0 the round trip
        // through degrees is far below a float's step.
        EXPECT_EQ(pattern.curvePoints(1).front().x, 50 + c.gap);
        EXPECT_EQ(pattern.curvePoints(1).front().y, 20.0f);
        EXPECT_TRUE(pattern.lastCurvePoints().empty());
        EXPECT_FALSE(pattern.lastCurve().joinedToPrevious());
        EXPECT_EQ(pattern.neighbourCurve(1).joinedToNext(), c.joined) << c.gap;
        EXPECT_EQ(pattern.neighbourCurve(2).joinedToPrevious(), c.joined) << c.gap;
    }

    // A centre 0.0009 degrees north of the reference: at 52.5 degrees a degree of latitude is
    // M = a (1 - e2) / (1 - e2 sin^2 52.5)^1.5 * pi / 180 = 111,276.8 m (WGS-84), so the
    // reference lies 0.0009 * 111,276.8 = 100.149 m south of the centre.
    GeoPoint const centre{reference.latitude + 0.0009, reference.longitude, reference.height};
    ASSERT_TRUE(pattern.loadFile(write({{0, 0}}), centre, true));
    EXPECT_NEAR(pattern.firstCurvePoints()[0].x, 0.0f, 0.01f);
    EXPECT_NEAR(pattern.firstCurvePoints()[0].y, 100.149f, 0.005f);
}

TEST_F(CurvePattern, FilesWithoutPointsFailWithOneOpenCurveAndSettingsAreReadAnyway) {
    // No head, half a head, no record, half a record, and only records that are no points.
    QByteArray const head = test_support::point_file(0, 0, 0, {});
    QByteArray const odd =
        test_support::point_file(0, 0, 0, {separator, {std::nanf(""), 1}, {5, -9999999.0f}});
    for (QByteArray const& content : {QByteArray(), head.left(23), head, head + "1234567", odd}) {
        test_support::write_file(path, content);
        EXPECT_FALSE(pattern.loadFile(path, reference, false)) << content.size();
        EXPECT_EQ(pattern.curveCount(), 1);
        EXPECT_FALSE(pattern.writePoint({1, 2})) << "closed after a failed load";
    }

    write({}, "CorrectionSource=7\n[BasePoint]\nPosition=\"{W84,N1D,E2D,3}\"\n");
    QFile::remove(path);
    EXPECT_FALSE(pattern.loadFile(path, reference, false));
    QByteArray position;
    EXPECT_TRUE(pattern.basePositionValue(position));
    EXPECT_EQ(position, "{W84,N1D,E2D,3}");
    EXPECT_EQ(pattern.correctionSourceValue(), 7);
    EXPECT_TRUE(pattern.loadFile(write({{1, 2}}, "CorrectionSource=text\n"), reference, false));
    EXPECT_FALSE(pattern.basePositionValue(position));
    EXPECT_EQ(pattern.correctionSourceValue(), 0);
}

TEST_F(CurvePattern, WrittenPointsAreThereAfterAReloadAndTheNearestCurveIsAFinishedOne) {
    ASSERT_TRUE(load({{10, 20}, {30, 20}}));
    EXPECT_TRUE(pattern.writePoint({50, 20}));
    EXPECT_TRUE(pattern.writePoint(TPointHistory::breakMark));
    EXPECT_TRUE(pattern.writePoint({70, 20}));
    ASSERT_TRUE(pattern.loadFile(path, reference, true));
    ASSERT_EQ(pattern.curveCount(), 3);
    EXPECT_EQ(pattern.firstCurvePoints().size(), 3u);
    EXPECT_EQ(pattern.firstCurvePoints().back().x, 50.0f);
    EXPECT_EQ(pattern.curvePoints(1).size(), 1u);
    EXPECT_FALSE(pattern.deleteFile());
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(pattern.curveCount(), 1);
    EXPECT_FALSE(pattern.writePoint({90, 20}));

    // The open curve is left out, the later curve wins a tie, and the limit is strict.
    Records const twoLines{{10, -10}, {30, -10}, separator, {10, 10}, {30, 10}};
    ASSERT_TRUE(load(twoLines));
    pattern.lastCurve().add({20, 1});
    pattern.lastCurve().add({20, 2});
    EXPECT_EQ(pattern.nearestCurve({20, 0}, -1.0f), 1);
    EXPECT_EQ(pattern.nearestCurve({20, -1}, -1.0f), 0);
    EXPECT_EQ(pattern.nearestCurve({20, 0}, 10.0f), -1);
    EXPECT_EQ(pattern.nearestCurve({20, -2}, 10.0f), 0);
}

TEST(CurveGeometry, WalksByStraightLineDistance) {
    Path const line{{0, 0}, {1, 0}, {2, 0}, {2, 3}, {0, 3}};
    EXPECT_EQ(TCurvePattern::indexAtDistance(line, 0, 1, 1.5f), 2);
    // (2, 3) and (0, 3) lie 3.61 and 3 from (0, 0), though 5 and 7 along the line.
    EXPECT_EQ(TCurvePattern::indexAtDistance(line, 0, 1, 3.7f), 4);
    EXPECT_EQ(TCurvePattern::indexAtDistance(line, 4, 1, 1.0f), 4);
    EXPECT_EQ(TCurvePattern::indexAtDistance(line, 0, -1, 1.0f), 0);
    EXPECT_EQ(TCurvePattern::indexAtDistance(line, 4, -1, 2.5f), 2);
    EXPECT_EQ(TCurvePattern::indexAtDistance({{0, 0}}, 0, 1, 1.0f), -1);

    // From (2, 3) the walk ends 2 away; start moves back to (2, 0), 3.61 from the end.
    int start = 3;
    EXPECT_EQ(TCurvePattern::widenToDistance(line, start, 1, 2.5f), 4);
    EXPECT_EQ(start, 2);
    start = 3;
    EXPECT_EQ(TCurvePattern::widenToDistance(line, start, 1, 3.7f), 4);
    EXPECT_EQ(start, 0) << "no point lies 3.7 from (0, 3)";

    int index = -1;
    EXPECT_EQ(TCurvePattern::nearestPointIndex(line, {1.5f, 0}), 1);
    TSegment const piece = TCurvePattern::nearestSegment(line, {2, 1}, &index);
    EXPECT_EQ(index, 3);
    EXPECT_TRUE(piece.start().y == 0.0f && piece.end().y == 3.0f);
    EXPECT_TRUE(TCurvePattern::projectionPassesEnd({{0, 0}, {1.5f, 0}}, line, 0, 1));
    EXPECT_FALSE(TCurvePattern::projectionPassesEnd({{0, 0}, {1.5f, 0}}, line, 1, -1));

    // Angles wrap into one turn; 5.78 and 0.43 after wrapping lie more than half a turn apart,
    // so b comes up by a turn.
    float a = 0.1f;
    float b = 6.2f;
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
