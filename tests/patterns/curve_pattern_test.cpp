// Curve patterns loaded from real .crv and settings files, appended to and searched.
#include "patterns/curve_pattern.h"

#include "../guidance/guidance_tree.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

using guidance_tree::crv_file;
using guidance_tree::Record;
using guidance_tree::separator;

namespace {

GeoPoint const reference{52.5, 13.25, 41.0};

class CurvePattern : public ::testing::Test {
protected:
    QString write(QByteArray const& content, QByteArray const& settings = QByteArray()) const {
        if (!settings.isNull())
            test_support::write_file(dir.filePath("Line.ini"), settings);
        test_support::write_file(path, content);
        return path;
    }

    // The records loaded around the file's own reference, every point kept.
    bool load(std::vector<Record> const& records) {
        return pattern.loadFile(write(crv_file(reference, records)), reference, true);
    }

    QTemporaryDir dir;
    QString const path = dir.filePath("Line.crv");
    TCurvePattern pattern;
};

TEST_F(CurvePattern, LoadedRunsBecomeCurvesJoinedWithinTheJoinDistanceUpToTenMetres) {
    struct Case {
        float joinDistance;
        float gap;
        bool joined;
    } const cases[] = {{10.0f, 9.0f, true}, {5.0f, 9.0f, false}, {20.0f, 11.0f, false}};
    for (Case const& c : cases) {
        pattern.setJoinDistance(c.joinDistance);
        ASSERT_TRUE(load({separator,
                          {10, 20},
                          {50, 20},
                          separator,
                          separator,
                          {50 + c.gap, 20},
                          {90, 20},
                          {-3e7f, 1}}));
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
}

TEST_F(CurvePattern, PointsGoFromTheFilesReferenceToTheGivenCentre) {
    // A centre 0.0009 degrees north of the reference: at 52.5 degrees a degree of latitude is
    // M = a (1 - e2) / (1 - e2 sin^2 52.5)^1.5 * pi / 180 = 111,276.8 m (WGS-84), so the
    // reference lies 0.0009 * 111,276.8 = 100.149 m south of the centre.
    GeoPoint const centre{reference.latitude + 0.0009, reference.longitude, reference.height};
    ASSERT_TRUE(pattern.loadFile(write(crv_file(reference, {{0, 0}})), centre, true));
    EXPECT_NEAR(pattern.firstCurvePoints()[0].x, 0.0f, 0.01f);
    EXPECT_NEAR(pattern.firstCurvePoints()[0].y, 100.149f, 0.005f);
}

TEST_F(CurvePattern, FilesWithoutPointsFailWithOneOpenCurve) {
    QByteArray const head = crv_file(reference, {});
    QByteArray const one = crv_file(reference, {{1, 2}});
    for (QByteArray const& content :
         {QByteArray(), head.left(23), head, one.left(one.size() - 1),
          crv_file(reference, {separator, {std::nanf(""), 1}, {5, -9999999.0f}})}) {
        EXPECT_FALSE(pattern.loadFile(write(content), reference, false)) << content.size();
        EXPECT_EQ(pattern.curveCount(), 1);
        EXPECT_FALSE(pattern.writePoint({1, 2})) << "closed after a failed load";
    }
}

TEST_F(CurvePattern, SettingsAreReadEvenWithoutTheCurveFile) {
    write(QByteArray(), "CorrectionSource=7\n[BasePoint]\nPosition=\"{W84,N1D,E2D,3}\"\n");
    QFile::remove(path);
    EXPECT_FALSE(pattern.loadFile(path, reference, false));
    QByteArray position;
    EXPECT_TRUE(pattern.basePositionValue(position));
    EXPECT_EQ(position, "{W84,N1D,E2D,3}");
    EXPECT_EQ(pattern.correctionSourceValue(), 7);

    write(crv_file(reference, {{1, 2}}), "CorrectionSource=text\n");
    EXPECT_TRUE(pattern.loadFile(path, reference, false));
    EXPECT_FALSE(pattern.basePositionValue(position));
    EXPECT_EQ(pattern.correctionSourceValue(), 0);
}

TEST_F(CurvePattern, WrittenPointsAreThereAfterAReload) {
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
}

TEST_F(CurvePattern, NearestCurveLeavesOutTheOpenOneAndTheLaterWinsATie) {
    ASSERT_TRUE(load({{10, -10}, {30, -10}, separator, {10, 10}, {30, 10}}));
    pattern.lastCurve().add({20, 1});
    pattern.lastCurve().add({20, 2});
    EXPECT_EQ(pattern.nearestCurve({20, 0}, -1.0f), 1);
    EXPECT_EQ(pattern.nearestCurve({20, -1}, -1.0f), 0);
    EXPECT_EQ(pattern.nearestCurve({20, 0}, 10.0f), -1) << "the limit is strict";
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
    EXPECT_EQ(piece.start().y, 0.0f);
    EXPECT_EQ(piece.end().y, 3.0f);
    EXPECT_TRUE(TCurvePattern::projectionPassesEnd({{0, 0}, {1.5f, 0}}, line, 0, 1));
    EXPECT_FALSE(TCurvePattern::projectionPassesEnd({{0, 0}, {1.5f, 0}}, line, 1, -1));
}

TEST(CurveGeometry, AnglesWrapIntoOneTurnAndLinesAreUndirected) {
    float a = 0.1f;
    float b = 6.2f;
    TCurvePattern::wrapAngles(a, b);
    EXPECT_EQ(a, 0.1f);
    EXPECT_EQ(b, 6.2f - 6.2831855f);
    // 5.78 and 0.43 after wrapping lie more than half a turn apart: b comes up by a turn.
    a = -0.5f;
    b = 13.0f;
    TCurvePattern::wrapAngles(a, b);
    EXPECT_EQ(a, -0.5f + 6.2831855f);
    EXPECT_EQ(b, 13.0f - 6.2831855f - 6.2831855f + 6.2831855f);

    EXPECT_NEAR(TCurvePattern::lineAngle({1, 1}, {{2, 2}, {1, 1}}), 0.0f, 1e-6f);
    // Bearings 0 and 2.3562 (south-east): 3.1415927 - 2.3561945.
    EXPECT_NEAR(TCurvePattern::lineAngle({0, 1}, {{0, 0}, {1, -1}}), 0.7853982f, 1e-6f);
}

} // namespace
