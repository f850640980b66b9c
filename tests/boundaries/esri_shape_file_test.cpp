// The shapefile and dBASE reader: the public sample files against the GeoJSON
// beside each, files written by shapelib's own writer, and damaged files.
#include "boundaries/esri_shape_file.h"

#include "field_tree.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>

#include <sys/stat.h>

using namespace test_support;

namespace {

// A shape's vertices by part, as the reader gives them.
std::vector<Part> parts_of(EsriShape const* shape) {
    std::vector<Part> parts;
    if (auto const* points = dynamic_cast<EsriPointShape const*>(shape))
        for (unsigned i = 0; i < points->GetNumberOfPoints(); ++i)
            parts.push_back({{points->GetPoints()[i].x, points->GetPoints()[i].y}});
    auto const* lines = dynamic_cast<EsriPolygonShape const*>(shape);
    for (unsigned part = 0; lines && part < lines->GetNumberOfParts(); ++part) {
        EsriPoint const* vertices = nullptr;
        unsigned count = 0;
        parts.emplace_back();
        if (lines->getPartPoints(part, vertices, count))
            for (unsigned i = 0; i < count; ++i)
                parts.back().push_back({vertices[i].x, vertices[i].y});
    }
    return parts;
}

// The parts of GeoJSON coordinates in shapefile terms: every innermost list
// of positions (a line, a ring) is a part, and a point a part of one vertex.
void add_parts(QJsonArray const& coordinates, std::vector<Part>& parts) {
    if (coordinates[0].isDouble())
        return parts.push_back({{coordinates[0].toDouble(), coordinates[1].toDouble()}});
    if (coordinates[0][0].isDouble())
        parts.emplace_back();
    for (QJsonValue const& inner : coordinates)
        if (inner[0].isDouble())
            parts.back().push_back({inner[0].toDouble(), inner[1].toDouble()});
        else
            add_parts(inner.toArray(), parts);
}

} // namespace

TEST(SharedShapefiles, ReadAsTheirGeoJsonSays) {
    REQUIRE_SHARED_DIR();
    QString const dir = shared_dir() + "/shapefiles/";
    for (QString const name : {"empty", "null", "points", "polygons", "polylines"}) {
        SCOPED_TRACE(name.toStdString());
        QJsonArray const features =
            QJsonDocument::fromJson(read_file(dir + name + ".json"))["features"].toArray();
        EsriShapeFile file;
        EsriDbfFile table;
        ASSERT_TRUE(file.Open(dir + name + ".shp", true) && table.Open(dir + name + ".dbf", true));
        ASSERT_EQ(file.GetNumberOfRecords(), static_cast<unsigned>(features.size()));
        ASSERT_EQ(table.GetNumberOfRecords(), file.GetNumberOfRecords());

        std::vector<unsigned> ring_records; // every ring of a polygon, outer or hole
        for (unsigned i = 0; i < file.GetNumberOfRecords(); ++i) {
            SCOPED_TRACE(i);
            QJsonValue const geometry = features[static_cast<int>(i)]["geometry"];
            EsriRecord const* record = file.GetRecord(i);
            ASSERT_EQ(record->GetNumberOfShapes(), geometry.isNull() ? 0u : 1u);
            if (geometry.isNull())
                continue;
            std::vector<Part> parts;
            add_parts(geometry["coordinates"].toArray(), parts);
            EXPECT_EQ(parts_of(record->GetShape(0)), parts);
            if (record->GetShape(0)->shapeType() == SHPT_POLYGON)
                ring_records.insert(ring_records.end(), parts.size(), i);
            // The only column, FID, is 11 digits wide: a number field.
            EXPECT_EQ(dynamic_cast<EsriDbfNumberField const&>(*table.GetRecord(i)->GetField(0))
                          .GetValue(),
                      i);
        }
        ASSERT_EQ(file.GetPolygons().size(), ring_records.size());
        for (size_t ring = 0; ring < ring_records.size(); ++ring)
            EXPECT_EQ(file.GetPolygonRecord(static_cast<int>(ring)), ring_records[ring]);
        EXPECT_GE(file.GetPolygonRecord(static_cast<int>(ring_records.size())),
                  file.GetNumberOfRecords()); // beyond the rings: no row
    }
}

// Shapes and a table of every column kind, cut at every byte of each file:
// FIFOs, missing files and truncations are read safely.
TEST(EsriFiles, ColumnKindsAndEveryTruncation) {
    ScratchDir scratch;
    auto base = [&scratch](QString const& name) { return scratch.file(name); };
    write_shapes(base("f"), SHPT_POLYGON,
                 {{rectangle(0, 0, 1, 1)}, {rectangle(2, 2, 1, 1), rectangle(5, 5, 1, 1)}});
    write_table(base("f.dbf"),
                {{"Text", FTString, 10, 0},
                 {"Small", FTInteger, 9, 0},
                 {"Wide", FTInteger, 11, 0},
                 {"Decimal", FTDouble, 12, 3},
                 {"Day", FTDate, 8, 0},
                 {"Flag", FTLogical, 1, 0}},
                {{"  North ", -42, 7, -2.5, "20240131", true},
                 {QVariant(), QVariant(), QVariant(), QVariant(), QVariant(), false}});
    // Opening a FIFO would wait for a writer for ever.
    ASSERT_EQ(mkfifo(QFile::encodeName(base("pipe.shp")).constData(), 0600), 0);
    ASSERT_EQ(mkfifo(QFile::encodeName(base("pipe.dbf")).constData(), 0600), 0);
    EXPECT_FALSE(EsriShapeFile().Open(base("pipe.shp"), true));
    EXPECT_FALSE(EsriDbfFile().Open(base("pipe.dbf"), true));
    EXPECT_FALSE(EsriDbfFile().Open(base("none.dbf"), true));
    // Each cut makes shapelib complain in the debug log; a thousand times over.
    QLoggingCategory::setFilterRules("*.debug=false");
    for (QString const suffix : {".shp", ".shx", ".dbf"}) {
        QByteArray const whole = read_file(base("f") + suffix);
        for (int size = 0; size < whole.size(); ++size) {
            SCOPED_TRACE(suffix.toStdString() + " cut to " + std::to_string(size));
            for (QString const copied : {".shp", ".shx", ".dbf"})
                write_file(base("cut") + copied, read_file(base("f") + copied));
            write_file(base("cut") + suffix, whole.left(size));
            EsriShapeFile file;
            if (file.Open(base("cut.shp"), true)) {
                EXPECT_LE(file.GetNumberOfRecords(), 2u);
                for (EsriPolygonReference const& ring : file.GetPolygons())
                    EXPECT_EQ(ring.GetNumberOfPoints(), 5u);
            }
            // A row is there whole or not at all: the second ends in its flag.
            EsriDbfFile cut;
            EXPECT_TRUE(!cut.Open(base("cut.dbf"), true) || cut.GetNumberOfRecords() < 2 ||
                        (cut.GetNumberOfRecords() == 2 && cut.GetRecord(1)->GetField(5)));
        }
    }
    QLoggingCategory::setFilterRules(QString());
}
