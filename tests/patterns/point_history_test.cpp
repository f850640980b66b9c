// The recent-points buffer: repeats, breaks, its capacity and the shift to an origin.
#include "patterns/point_history.h"

#include <gtest/gtest.h>

TEST(PointHistory, DropsRepeatsAndKeepsOneOfTwoBreaks) {
    TPointHistory history;
    LocalPoint out[TPointHistory::capacity];
    EXPECT_TRUE(history.addPoint({1, 2}));
    EXPECT_TRUE(history.addPoint({1.000001f, 2}));
    EXPECT_TRUE(history.addBreak());
    EXPECT_TRUE(history.addBreak());
    EXPECT_TRUE(history.addPoint({1, 2}));
    ASSERT_EQ(history.copyPoints(out), 3);
    EXPECT_EQ(out[1].x, TPointHistory::breakMark.x);
    EXPECT_EQ(out[2].y, 2.0f);
}

TEST(PointHistory, HoldsSixtyThreePointsUnlessDisabled) {
    TPointHistory history;
    for (int i = 0; i < TPointHistory::capacity; ++i)
        ASSERT_TRUE(history.addPoint({static_cast<float>(i), 0}));
    EXPECT_FALSE(history.addPoint({100, 0}));
    history.setEnabled(false);
    EXPECT_TRUE(history.addPoint({100, 0}));
    history.setEnabled(true);
    LocalPoint out[TPointHistory::capacity];
    ASSERT_EQ(history.copyPoints(out), 63);
    EXPECT_EQ(out[62].x, 62.0f);
    history.clear();
    EXPECT_TRUE(history.addPoint({100, 0}));
}

TEST(PointHistory, CopyShiftsTheStoredPointsAgainEachTime) {
    TPointHistory history;
    LocalPoint out[TPointHistory::capacity];
    history.addPoint({5, 7});
    history.setOrigin({1, 1});
    history.copyPoints(out);
    ASSERT_EQ(history.copyPoints(out), 1);
    EXPECT_EQ(out[0].x, 3.0f);
    EXPECT_EQ(out[0].y, 5.0f);
}
