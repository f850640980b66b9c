// The recent-points buffer: repeats, breaks, its capacity and the shift to an origin.
#include "patterns/point_history.h"

#include <gtest/gtest.h>

TEST(PointHistory, DropsRepeatsKeepsOneOfTwoBreaksAndHoldsSixtyThreePoints) {
    TPointHistory history;
    LocalPoint out[TPointHistory::capacity];
    // 1e-6 off the last point is a repeat, which still succeeds.
    EXPECT_TRUE(history.addPoint({1, 2}) && history.addPoint({1.000001f, 2}));
    EXPECT_TRUE(history.addBreak() && history.addBreak() && history.addPoint({1, 2}));
    ASSERT_EQ(history.copyPoints(out), 3);
    EXPECT_EQ(out[1].x, TPointHistory::breakMark.x);
    EXPECT_EQ(out[2].y, 2.0f);

    // Each copy shifts the stored points once more.
    history.setOrigin({1, 1});
    history.copyPoints(out);
    ASSERT_EQ(history.copyPoints(out), 3);
    EXPECT_EQ(out[2].x, -1.0f);
    EXPECT_EQ(out[2].y, 0.0f);

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
