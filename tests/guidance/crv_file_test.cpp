// The .crv reader on files written byte by byte.
#include "guidance/crv_file.h"

#include "guidance_tree.h"

#include <cmath>

using guidance_tree::crv_file;
using guidance_tree::Record;
using guidance_tree::separator;
using test_support::ScratchDir;
using test_support::write_file;

namespace {

GeoPoint const reference{52.5, 13.25, 41.0};
float const not_a_number = std::nanf("");

// The segments as lists of (x, y).
std::vector<std::vector<Record>> records_of(std::vector<CrvSegment> const& segments) {
    std::vector<std::vector<Record>> result;
    for (CrvSegment const& segment : segments) {
        result.emplace_back();
        for (LocalPoint const& point : segment)
            result.back().emplace_back(point.x, point.y);
    }
    return result;
}

class CrvFile : public ::testing::Test {
protected:
    QString write(QByteArray const& content) const {
        QString const path = scratch.file("curve.crv");
        write_file(path, content);
        return path;
    }

    std::vector<std::vector<Record>> segments(QByteArray const& content) const {
        return records_of(read_crv_segments(write(content)));
    }

    ScratchDir scratch;
};

} // namespace

TEST_F(CrvFile, SeparatorsSplitSegmentsAndMakeNoEmptyOnes) {
    EXPECT_EQ(segments(crv_file(reference, {separator,
                                            {1, 2},
                                            {3, 4},
                                            separator,
                                            {not_a_number, 0},
                                            separator,
                                            {5, 6},
                                            separator})),
              (std::vector<std::vector<Record>>{{{1, 2}, {3, 4}}, {{5, 6}}}));
}

TEST_F(CrvFile, TheBoundIsExclusiveInBothCoordinates) {
    EXPECT_EQ(segments(crv_file(reference, {{-9999998.0f, 0},
                                            {5, -9999999.0f},
                                            {0, -9999998.0f},
                                            {-9999999.0f, 0},
                                            {0, not_a_number},
                                            {7, 8}})),
              (std::vector<std::vector<Record>>{{{-9999998.0f, 0}}, {{0, -9999998.0f}}, {{7, 8}}}));
}

TEST_F(CrvFile, APartRecordAtTheEndIsDropped) {
    QByteArray const whole = crv_file(reference, {{1, 2}, {3, 4}});
    EXPECT_EQ(segments(whole.left(whole.size() - 1)), (std::vector<std::vector<Record>>{{{1, 2}}}));
    EXPECT_EQ(segments(whole.left(whole.size() - 4)), (std::vector<std::vector<Record>>{{{1, 2}}}));
}

TEST_F(CrvFile, ManyPointsComeThroughWhole) {
    std::vector<Record> records;
    for (int i = 0; i < 100000; ++i)
        records.emplace_back(static_cast<float>(i), -static_cast<float>(i));
    records.push_back(separator);
    records.emplace_back(1.5f, 2.5f);
    std::vector<std::vector<Record>> const found = segments(crv_file(reference, records));
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].size(), 100000u);
    EXPECT_EQ(found[0].back(), Record(99999.0f, -99999.0f));
    EXPECT_EQ(found[1], std::vector<Record>({{1.5f, 2.5f}}));
}

TEST_F(CrvFile, TheReferenceNeedsItsTwentyFourBytes) {
    double latitude = -1.0;
    double longitude = -1.0;
    double height = -1.0;
    QByteArray const head = crv_file(reference, {});
    EXPECT_FALSE(read_crv_reference(write(head.left(23)), latitude, longitude, height));
    EXPECT_FALSE(read_crv_reference(scratch.file("missing.crv"), latitude, longitude, height));
    EXPECT_EQ(latitude, -1.0);
    EXPECT_EQ(longitude, -1.0);
    EXPECT_EQ(height, -1.0);

    ASSERT_TRUE(read_crv_reference(write(head.left(24)), latitude, longitude, height));
    EXPECT_EQ(latitude, 52.5);
    EXPECT_EQ(longitude, 13.25);
    EXPECT_EQ(height, 41.0);
}

TEST_F(CrvFile, FilesWithoutPointsGiveNoSegments) {
    QByteArray const head = crv_file(reference, {});
    for (QByteArray const& content :
         {QByteArray(), head.left(30), head, head + QByteArray(7, '\1'),
          crv_file(reference, {separator, separator, {not_a_number, not_a_number}})})
        EXPECT_TRUE(segments(content).empty()) << content.size() << " bytes";
    EXPECT_TRUE(read_crv_segments(scratch.file("missing.crv")).empty());
    EXPECT_TRUE(read_crv_segments(scratch.path()).empty()); // a directory
}
