// The .crv reader on files written byte by byte.
#include "guidance/crv_file.h"

#include "guidance_tree.h"

#include <cmath>

using guidance_tree::crv_file;
using guidance_tree::Record;
using guidance_tree::separator;
using Segments = std::vector<std::vector<Record>>;

namespace {

GeoPoint const reference{52.5, 13.25, 41.0};
float const not_a_number = std::nanf("");

class CrvFile : public ::testing::Test {
protected:
    QString write(QByteArray const& content) const {
        test_support::write_file(scratch.file("curve.crv"), content);
        return scratch.file("curve.crv");
    }

    // The segments read from `content`, as lists of (x, y).
    Segments segments(QByteArray const& content) const {
        Segments result;
        for (CrvSegment const& segment : read_crv_segments(write(content))) {
            result.emplace_back();
            for (LocalPoint const& point : segment)
                result.back().emplace_back(point.x, point.y);
        }
        return result;
    }

    test_support::ScratchDir scratch;
};

} // namespace

TEST_F(CrvFile, SegmentsOfEveryShapeOfFile) {
    QByteArray const head = crv_file(reference, {});
    QByteArray const two = crv_file(reference, {{1, 2}, {3, 4}});
    struct Case {
        char const* what;
        QByteArray content;
        Segments expected;
    };
    Case const cases[] = {
        {"separators split and make no empty segments",
         crv_file(reference,
                  {separator, {1, 2}, {3, 4}, separator, {not_a_number, 0}, separator, {5, 6}}),
         {{{1, 2}, {3, 4}}, {{5, 6}}}},
        {"the bound is exclusive in both coordinates",
         crv_file(reference, {{-9999998.0f, 0},
                              {5, -9999999.0f},
                              {0, -9999998.0f},
                              {-9999999.0f, 0},
                              {0, not_a_number},
                              {7, 8}}),
         {{{-9999998.0f, 0}}, {{0, -9999998.0f}}, {{7, 8}}}},
        {"a part record at the end is dropped", two.left(two.size() - 1), {{{1, 2}}}},
        {"half a record at the end is dropped", two.left(two.size() - 4), {{{1, 2}}}},
        {"empty", QByteArray(), {}},
        {"part of the head", head.left(30), {}},
        {"the head alone", head, {}},
        {"less than a record", head + QByteArray(7, '\1'), {}},
        {"no point", crv_file(reference, {separator, separator, {not_a_number, not_a_number}}), {}},
    };
    for (Case const& c : cases)
        EXPECT_EQ(segments(c.content), c.expected) << c.what;
    EXPECT_TRUE(read_crv_segments(scratch.file("missing.crv")).empty());
    EXPECT_TRUE(read_crv_segments(scratch.path()).empty()); // a directory
}

TEST_F(CrvFile, ManyPointsComeThroughWhole) {
    std::vector<Record> records;
    for (int i = 0; i < 100000; ++i)
        records.emplace_back(static_cast<float>(i), -static_cast<float>(i));
    records.push_back(separator);
    records.emplace_back(1.5f, 2.5f);
    Segments const found = segments(crv_file(reference, records));
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
