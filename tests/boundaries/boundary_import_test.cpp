// A field's boundaries as the tool writes them: which files below Boundaries
// and Zones are read and in which order, what their rows become, the area,
// the replacement of an earlier run's rings, and damaged input.
#include "field_tree.h"

#include <QFile>
#include <QUuid>

#include <cmath>

using namespace shape_writer;
using namespace test_support;

namespace {

// One saved polygon and its line string: designator, the line string's type,
// enabled flag, category and number of points.
std::string polygon_line(XmlElement const& polygon) {
    QList<XmlElement> const linestrings = polygon.all(QStringLiteral("LSG"));
    std::string line = summary(polygon, {"A", "B", "D"});
    for (XmlElement const& linestring : linestrings)
        line += " | " + summary(linestring, {"A", "B", "P231_enabled", "P231_category"}) +
                " points=" + std::to_string(linestring.all(QStringLiteral("PNT")).size());
    return line;
}

Lines polygon_lines(QList<XmlElement> const& polygons) {
    Lines lines;
    for (XmlElement const& polygon : polygons)
        lines.push_back(polygon_line(polygon));
    return lines;
}

unsigned long area_of(XmlElement const& polygon) {
    return polygon.attribute(QStringLiteral("C")).toULong();
}

// A boundary shapefile whose rows are only named.
void write_named_rings(QString const& base, QStringList const& names, double x) {
    std::vector<Shape> shapes;
    std::vector<std::vector<QVariant>> rows;
    for (QString const& name : names) {
        shapes.push_back({rectangle(x, 52.0, 0.001, 0.001)});
        rows.push_back({QVariant(), name, QVariant(), QVariant()});
        x += 0.01;
    }
    write_shapes(base, SHPT_POLYGON, shapes);
    write_table(base + QStringLiteral(".dbf"), boundary_columns(), rows);
}

// A ring of `count` vertices 10 m apart, in metres east and south.
std::vector<std::pair<float, float>> vertices(int count) {
    std::vector<std::pair<float, float>> result;
    for (int i = 0; i < count; ++i)
        result.push_back({10.0f * static_cast<float>(i), static_cast<float>(i % 2) * 10.0f});
    return result;
}

void write_bdy(QString const& path, std::vector<std::pair<float, float>> const& ring) {
    write_file(path, point_file(52.0, 9.0, 100.0, ring));
}

using BoundaryImport = FieldTree;

} // namespace

TEST_F(BoundaryImport, OneShapefileThenEveryBdyInWalkOrderByExactSuffix) {
    // Only the first shapefile counts, and the walk ignores case: A before b.
    write_named_rings(field("Boundaries/b/second"), {"second"}, 9.0);
    write_named_rings(field("Boundaries/A/first"), {"first-1", "first-2"}, 9.1);
    // Would come first, but their suffixes are "v2.shp" and "SHP".
    write_named_rings(field("Boundaries/0.v2"), {"versioned"}, 9.2);
    write_named_rings(field("Boundaries/0/FIELD.SHP"), {"upper"}, 9.3);
    QFile::rename(field("Boundaries/0/FIELD.SHP.shp"), field("Boundaries/0/FIELD.SHP"));
    write_bdy(field("Boundaries/z.bdy"), vertices(5));
    write_bdy(field("Boundaries/M/y.bdy"), vertices(4));
    write_bdy(field("Boundaries/a.bdy"), vertices(3));
    write_bdy(field("Boundaries/x.BDY"), vertices(6));
    write_bdy(field("Boundaries/x.v2.bdy"), vertices(7));
    run();

    // Every ring is closed: the first point comes again at the end.
    EXPECT_EQ(polygon_lines(saved("PLN")),
              Lines({"PLN A=1 B=first-1 D=9 | LSG A=1 B=first-1 P231_enabled=1 P231_category= "
                     "points=5",
                     "PLN A=1 B=first-2 D=9 | LSG A=1 B=first-2 P231_enabled=1 P231_category= "
                     "points=5",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=4",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=5",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=6"}));
    expect_valid_set();
}

TEST_F(BoundaryImport, RowsGiveNamesCategoriesAndKindsZonesAreInterior) {
    std::vector<Shape> rings;
    for (int i = 0; i < 6; ++i)
        rings.push_back({rectangle(9.0 + 0.01 * i, 52.0, 0.001, 0.001)});
    write_shapes(field("Boundaries/field"), SHPT_POLYGON, rings);
    write_table(field("Boundaries/field.dbf"), boundary_columns(),
                {{QStringLiteral("Outer"), QStringLiteral("r0"), 1, 0},
                 {QStringLiteral("Wet"), QStringLiteral("r1"), 0, 1},
                 {QStringLiteral("Off"), QStringLiteral("r2"), 1, 2},
                 {QVariant(), QStringLiteral("Grünland"), -1, 3},
                 {QStringLiteral("X"), QStringLiteral("r7"), 0, 7}});
    // The sixth ring has no row.

    write_shapes(field("Zones/wet"), SHPT_POLYGON, {{rectangle(9.5, 52.0, 0.001, 0.001)}});
    write_table(field("Zones/wet.dbf"), boundary_columns(),
                {{QStringLiteral("Pond"), QStringLiteral("z3"), 1, 3}});
    write_shapes(field("Zones/sub/more"), SHPT_POLYGON,
                 {{rectangle(9.6, 52.0, 0.001, 0.001)}, {rectangle(9.7, 52.0, 0.001, 0.001)}});
    write_table(field("Zones/sub/more.dbf"), boundary_columns(),
                {{QString(), QStringLiteral("z2"), 0, 2}, {QString(), QStringLiteral("z0"), 0, 0}});
    write_named_rings(field("Zones/skip.v2"), {"skipped"}, 9.8);
    run();

    EXPECT_EQ(
        polygon_lines(saved("PLN")),
        Lines({"PLN A=1 B=r0 D=9 | LSG A=1 B=r0 P231_enabled=1 P231_category=Outer points=5",
               "PLN A=1 B=r1 D=9 | LSG A=2 B=r1 P231_enabled=1 P231_category=Wet points=5",
               // A disabled ring keeps the type it was made with.
               "PLN A=1 B=r2 D=9 | LSG A=1 B=r2 P231_enabled=0 P231_category=Off points=5",
               "PLN A=1 B=Grünland D=9 | LSG A=1 B=Grünland P231_enabled=1 P231_category= points=5",
               "PLN A=1 B=r7 D=9 | LSG A=1 B=r7 P231_enabled=1 P231_category=X points=5",
               "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=5",
               // Zones in walk order: sub/more before wet.
               "PLN A=1 B=z2 D=9 | LSG A=2 B=z2 P231_enabled=1 P231_category= points=5",
               "PLN A=1 B=z0 D=9 | LSG A=2 B=z0 P231_enabled=1 P231_category= points=5",
               "PLN A=1 B=z3 D=9 | LSG A=2 B=z3 P231_enabled=1 P231_category=Pond points=5"}));
    expect_valid_set();
}

TEST_F(BoundaryImport, ColumnsOfOtherKindsKeepTheirDefaults) {
    write_shapes(field("Boundaries/k"), SHPT_POLYGON,
                 {{rectangle(9.0, 52.0, 0.001, 0.001)}, {rectangle(9.1, 52.0, 0.001, 0.001)}});
    // Type as a number: no category. Treatment with decimals: toward zero,
    // so 2.9 is 2 (disabled) and -2.9 is -2 (exterior).
    write_table(
        field("Boundaries/k.dbf"),
        {{"Type", FTInteger, 4, 0}, {"Name", FTString, 10, 0}, {"Treatment", FTDouble, 8, 1}},
        {{5, QStringLiteral("a"), 2.9}, {5, QStringLiteral("b"), -2.9}});
    run();
    EXPECT_EQ(polygon_lines(saved("PLN")),
              Lines({"PLN A=1 B=a D=9 | LSG A=1 B=a P231_enabled=0 P231_category= points=5",
                     "PLN A=1 B=b D=9 | LSG A=1 B=b P231_enabled=1 P231_category= points=5"}));
}

TEST_F(BoundaryImport, AreaInWholeSquareMetresEitherWayRound) {
    // 100 m by 200 m in the local plane of the .bdy, both ways round.
    std::vector<std::pair<float, float>> rectangle_metres = {
        {0, 0}, {100, 0}, {100, 200}, {0, 200}};
    write_bdy(field("Boundaries/1.bdy"), rectangle_metres);
    std::reverse(rectangle_metres.begin(), rectangle_metres.end());
    write_bdy(field("Boundaries/2.bdy"), rectangle_metres);
    write_bdy(field("Boundaries/3.bdy"), {{0, 0}, {50, 50}, {100, 100}}); // on one line
    write_bdy(field("Boundaries/4.bdy"), {{0, 0}, {50, 50}});             // two points
    // 0.002 by 0.001 degrees at 52 degrees north, both ways round.
    write_shapes(
        field("Boundaries/deg"), SHPT_POLYGON,
        {{rectangle(9.0, 52.0, 0.002, 0.001)}, {rectangle(9.0, 52.0, 0.002, 0.001, true)}});
    run();

    QList<XmlElement> const polygons = saved("PLN");
    ASSERT_EQ(polygons.size(), 6);
    // The degree rectangle, from the ellipsoid's radii of curvature.
    double const a = 6378137.0;
    double const e2 = 0.0066943799901413165;
    double const radian = 0.017453292519943295;
    double const latitude = 52.0005 * radian;
    double const w = 1.0 - e2 * std::sin(latitude) * std::sin(latitude);
    double const expected = (a * (1.0 - e2) / std::pow(w, 1.5) * 0.001 * radian) *
                            (a / std::sqrt(w) * std::cos(latitude) * 0.002 * radian);
    EXPECT_NEAR(static_cast<double>(area_of(polygons[0])), expected, expected * 1e-4);
    EXPECT_EQ(area_of(polygons[1]), area_of(polygons[0]));

    EXPECT_GE(area_of(polygons[2]), 19999u);
    EXPECT_LE(area_of(polygons[2]), 20000u);
    EXPECT_EQ(area_of(polygons[3]), area_of(polygons[2]));
    EXPECT_EQ(area_of(polygons[4]), 0u);
    EXPECT_EQ(area_of(polygons[5]), 0u);
    EXPECT_EQ(polygons[5].all(QStringLiteral("PNT")).size(), 3); // kept, and closed
}

TEST_F(BoundaryImport, AFormerRunsRingsAreReplacedOthersStay) {
    // A loaded field with polygons of an earlier run and of someone else;
    // a line string's ID names its identity in the link list, "-" none.
    auto polygon = [](char const* type, char const* name, QList<char const*> const& ids) {
        QByteArray text = QByteArray("<PLN A=\"") + type + "\" B=\"" + name + "\">";
        for (char const* id : ids)
            text += QByteArray("<LSG A=\"1\"") +
                    (qstrcmp(id, "-") ? QByteArray(" F=\"") + id + '"' : "") +
                    "><PNT A=\"2\" C=\"52\" D=\"9\"/></LSG>";
        return text + "</PLN>";
    };
    write("taskdata/TASKDATA.XML",
          "<ISO11783_TaskData VersionMajor=\"4\" VersionMinor=\"3\" DataTransferOrigin=\"1\">"
          "<CTR A=\"CTR1\" B=\"Client\"/><FRM A=\"FRM1\" B=\"Farm\" I=\"CTR1\"/>"
          "<PFD A=\"PFD1\" C=\"Field\" E=\"CTR1\" F=\"FRM1\">" +
              polygon("1", "old", {"LSG1"}) + polygon("1", "kept-null", {"LSG2", "-"}) +
              polygon("1", "empty", {}) + polygon("2", "other type", {"LSG4"}) +
              polygon("1", "kept-twin", {"LSG5"}) + polygon("1", "twin", {"LSG6"}) +
              "</PFD></ISO11783_TaskData>");
    QString const uuid4 = QStringLiteral("{44444444-4444-4444-8444-444444444444}");
    QByteArray links;
    for (auto const& [id, uuid] : {std::pair{"LSG1", "{11111111-1111-4111-8111-111111111111}"},
                                   {"LSG2", "{22222222-2222-4222-8222-222222222222}"},
                                   {"LSG4", "{44444444-4444-4444-8444-444444444444}"},
                                   {"LSG5", "{55555555-5555-4555-8555-555555555555}"},
                                   {"LSG6", "{55555555-5555-4555-8555-555555555555}"}})
        links += QByteArray("<LNK A=\"") + id + "\" B=\"" + uuid + "\"/>";
    write("taskdata/LINKLIST.XML",
          "<ISO11783LinkList VersionMajor=\"4\" VersionMinor=\"3\" DataTransferOrigin=\"1\" "
          "ManagementSoftwareManufacturer=\"x\" ManagementSoftwareVersion=\"1\">"
          "<LGP A=\"LGP1\" B=\"1\">" +
              links + "</LGP></ISO11783LinkList>");
    write_named_rings(field("Boundaries/b"), {"new-1", "new-2"}, 9.0);
    run({"-m"});

    Lines expected = {
        "PLN A=1 B=kept-null D- | LSG A=1 B- P231_enabled- P231_category- points=1",
        "PLN A=2 B=other type D- | LSG A=1 B- P231_enabled- P231_category- points=1",
        // Of two line strings with one identity only the later goes.
        "PLN A=1 B=kept-twin D- | LSG A=1 B- P231_enabled- P231_category- points=1",
        "PLN A=1 B=new-1 D=9 | LSG A=1 B=new-1 P231_enabled=1 P231_category= points=5",
        "PLN A=1 B=new-2 D=9 | LSG A=1 B=new-2 P231_enabled=1 P231_category= points=5"};
    EXPECT_EQ(polygon_lines(saved("PLN")), expected);
    expect_valid_set();

    // A second run on the first one's set replaces its rings, with new
    // identities; the twin's identity is now alone, so its ring goes too.
    auto link_uuids = [this] {
        QStringList found;
        for (XmlElement const& link :
             read_xml(scratch.file("out/LINKLIST.XML")).all(QStringLiteral("LNK")))
            found << QUuid(link.attribute(QStringLiteral("B"))).toString();
        return found;
    };
    QStringList const first = link_uuids();
    EXPECT_EQ(first.size(), 4);
    load_saved();
    run({"-m"});
    expected.erase(expected.begin() + 2);
    EXPECT_EQ(polygon_lines(saved("PLN")), expected);
    QStringList const second = link_uuids();
    ASSERT_EQ(second.size(), 3);
    EXPECT_EQ(second[0], uuid4);
    EXPECT_FALSE(first.contains(second[1]));
    EXPECT_FALSE(first.contains(second[2]));
}

TEST_F(BoundaryImport, DamagedFilesLoseOnlyThemselves) {
    QByteArray const whole = point_file(52.0, 9.0, 0.0, vertices(3));
    write_file(field("Boundaries/1-short.bdy"), whole.left(10));
    write_file(field("Boundaries/2-centre-only.bdy"), whole.left(40));
    write_file(field("Boundaries/3-no-vertices.bdy"), whole.left(64));
    write_file(field("Boundaries/4-half.bdy"), whole.left(whole.size() - 4)); // 2.5 vertices
    QByteArray not_numbers = point_file(52.0, 9.0, 0.0, vertices(3));
    not_numbers.append(QByteArray(8, '\xff')); // a NaN vertex
    write_file(field("Boundaries/5-nan.bdy"), not_numbers);
    // A ring of two points goes; the table ends within its third row.
    write_shapes(field("Boundaries/shapes"), SHPT_POLYGON,
                 {{{{9.0, 52.0}, {9.001, 52.0}}},
                  {rectangle(9.0, 52.0, 0.001, 0.001)},
                  {rectangle(9.1, 52.0, 0.001, 0.001)}});
    write_table(field("Boundaries/shapes.dbf"), boundary_columns(),
                {{QStringLiteral("a"), QStringLiteral("row0"), 0, 1},
                 {QStringLiteral("b"), QStringLiteral("row1"), 0, 1},
                 {QStringLiteral("c"), QStringLiteral("row2"), 0, 1}});
    QByteArray const table = read_file(field("Boundaries/shapes.dbf"));
    write_file(field("Boundaries/shapes.dbf"), table.left(table.size() - 1 - 30)); // in row 2
    // A link back up: the walk must end.
    make_dirs(field("Boundaries/loop"));
    ASSERT_TRUE(QFile::link(field("Boundaries"), field("Boundaries/loop/back")));
    // Zones: garbage, a shapefile without its index, and one good ring.
    write_file(field("Zones/a.shp"), QByteArray(500, '\x42'));
    write_shapes(field("Zones/b"), SHPT_POLYGON, {{rectangle(9.2, 52.0, 0.001, 0.001)}});
    QFile::remove(field("Zones/b.shx"));
    write_shapes(field("Zones/c"), SHPT_POLYGON, {{rectangle(9.3, 52.0, 0.001, 0.001)}});
    // The rest of the field still arrives.
    write_file(field("flagpoints.ini"), "0\n1\n52.1\n9.1\n4\nStone\n");
    run();

    EXPECT_EQ(polygon_lines(saved("PLN")),
              Lines({"PLN A=1 B=row1 D=9 | LSG A=2 B=row1 P231_enabled=1 P231_category=b points=5",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=5",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=0",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=0",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=0",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=3",
                     "PLN A=1 B= D=9 | LSG A=1 B= P231_enabled=1 P231_category= points=4",
                     "PLN A=1 B= D=9 | LSG A=2 B= P231_enabled=1 P231_category= points=5"}));
    EXPECT_EQ(saved("PNT").size(), 1);
}
