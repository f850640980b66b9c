// A field's boundaries and lines as the tool writes them: which files below
// Boundaries and Zones are read and in which order, what their rows become,
// the area, the replacement of an earlier run's rings, damaged input, and the
// guidance groups of project and optimal lines.
#include "../taskdata/xml_summary.h"
#include "field_tree.h"

#include <QDir>

#include <cmath>

using namespace test_support;

namespace {

// A saved polygon as "'designator' type/line type colour enabled 'category'
// points", "-" for what is not there, and the line string's designator
// where it differs.
QStringList rings(QList<XmlElement> const& polygons) {
    QStringList lines;
    for (XmlElement const& polygon : polygons) {
        XmlElement const line = polygon.all("LSG").value(0);
        auto value = [&line](char const* name) { return summary({line}, {name})[0]; };
        QString text = "'" + polygon.attribute("B") + "' " + polygon.attribute("A") + '/' +
                       value("A") + ' ' + summary({polygon}, {"D"})[0] + ' ' +
                       value("P231_enabled") + " '" + value("P231_category") + "' " +
                       QString::number(line.all("PNT").size());
        if (line.attribute("B") != polygon.attribute("B"))
            text += " line " + value("B");
        lines << text;
    }
    return lines;
}

// A group as "ID name", then each of its patterns as "ID B C E F" with its
// line string's type and the types of its points.
QStringList groups(QList<XmlElement> const& saved) {
    QStringList lines;
    for (XmlElement const& group : saved) {
        lines << summary({group}, {"A", "B"});
        for (XmlElement const& pattern : group.all("GPN")) {
            lines << "  " + summary({pattern}, {"A", "B", "C", "E", "F"})[0];
            for (XmlElement const& linestring : pattern.all("LSG"))
                lines.back() += " | " + linestring.attribute("A") + ": " +
                                summary(linestring.all("PNT"), {"A"}).join(' ');
        }
    }
    return lines;
}

// Three lines: one of three points, one of two parts (two points, one
// point), one of four points.
std::vector<Shape> const three_lines = {
    {{{9.0, 52.0}, {9.001, 52.001}, {9.002, 52.0}}},
    {{{9.1, 52.1}, {9.101, 52.1}}, {{9.2, 52.2}}},
    {{{9.3, 52.3}, {9.301, 52.3}, {9.302, 52.3}, {9.303, 52.3}}}};

class BoundaryImport : public DisplayTree {
protected:
    using DisplayTree::saved;
    // The saved elements of that tag in the saved field of that name.
    QList<XmlElement> saved(QString const& tag, QString const& name) const {
        return saved("PFD", "C", name).value(0).all(tag);
    }
};

} // namespace

// Fields of one tree, each for one behaviour, in one run.
TEST_F(BoundaryImport, FilesRowsAreasAndLinesOfFields) {
    // Order: only the first shapefile counts, and the walk ignores case: A
    // before b. "0.v2" and "FIELD.SHP" would come first, but their suffixes
    // are "v2.shp" and "SHP"; so are those of the last two .bdy files.
    auto in_order = [this](QString const& path) { return field(path, "Order"); };
    write_rings(in_order("Boundaries/b/second"), 9.0, {{{}, "second"}});
    write_rings(in_order("Boundaries/A/first"), 9.1, {{{}, "first-1"}, {{}, "first-2"}});
    write_rings(in_order("Boundaries/0.v2"), 9.2, {{{}, "versioned"}});
    write_rings(in_order("Boundaries/0/FIELD.SHP"), 9.3, {{{}, "upper"}});
    QFile::rename(in_order("Boundaries/0/FIELD.SHP.shp"), in_order("Boundaries/0/FIELD.SHP"));
    // Rings of 3 to 7 vertices 10 m apart (in metres east and south), each
    // known by its size.
    std::vector<std::pair<float, float>> ring = {{0, 0}, {10, 10}};
    for (char const* name : {"a.bdy", "M/y.bdy", "z.bdy", "x.BDY", "x.v2.bdy"}) {
        ring.push_back({10.0f * ring.size(), ring.size() % 2 * 10.0f});
        write_file(in_order(QString("Boundaries/") + name), point_file(52.0, 9.0, 100.0, ring));
    }

    // Rows: names, categories and kinds; zones are interior.
    auto in_rows = [this](QString const& path) { return field(path, "Rows"); };
    write_rings(in_rows("Boundaries/field"), 9.0,
                {{"Outer", "r0", 1, 0},
                 {"Wet", "r1", 0, 1},
                 {"Off", "r2", 1, 2},
                 {{}, "Grünland", -1, 3},
                 {"X", "r7", 0, 7}},
                6); // the sixth ring has no row
    write_rings(in_rows("Zones/wet"), 9.5, {{"Pond", "z3", 1, 3}});
    write_rings(in_rows("Zones/sub/more"), 9.6, {{"", "z2", 0, 2}, {"", "z0", 0, 0}});
    write_rings(in_rows("Zones/skip.v2"), 9.8, {{{}, "skipped"}});
    // Columns of other kinds keep the defaults: Type as a number gives no
    // category; Treatment with decimals goes toward zero, so 2.9 is 2
    // (disabled) and -2.9 is -2 (exterior). Rings with heights are rings,
    // and a null shape takes its row along.
    write_shapes(field("Boundaries/k", "Kinds"), SHPT_POLYGONZ,
                 {{}, {rectangle(9.0, 52.0, 0.001, 0.001)}, {rectangle(9.1, 52.0, 0.001, 0.001)}});
    write_table(
        field("Boundaries/k.dbf", "Kinds"),
        {{"Type", FTInteger, 4, 0}, {"Name", FTString, 10, 0}, {"Treatment", FTDouble, 8, 1}},
        {{5, "null", 0}, {5, "a", 2.9}, {5, "b", -2.9}});

    // Area: 100 m by 200 m in the local plane of a .bdy and 0.002 by 0.001
    // degrees at 52 degrees north, both ways round; on one line; two points.
    std::vector<std::pair<float, float>> metres = {{0, 0}, {100, 0}, {100, 200}, {0, 200}};
    write_file(field("Boundaries/1.bdy", "Area"), point_file(52.0, 9.0, 100.0, metres));
    std::reverse(metres.begin(), metres.end());
    write_file(field("Boundaries/2.bdy", "Area"), point_file(52.0, 9.0, 100.0, metres));
    write_file(field("Boundaries/3.bdy", "Area"),
               point_file(52.0, 9.0, 100.0, {{0, 0}, {50, 50}, {100, 100}}));
    write_file(field("Boundaries/4.bdy", "Area"), point_file(52.0, 9.0, 100.0, {{0, 0}, {50, 50}}));
    write_shapes(
        field("Boundaries/deg", "Area"), SHPT_POLYGON,
        {{rectangle(9.0, 52.0, 0.002, 0.001)}, {rectangle(9.0, 52.0, 0.002, 0.001, true)}});

    // Lines: one pattern per project line file, one per optimal line; only
    // polylines count, and unreadable files leave an empty group.
    auto in_lines = [this](QString const& path) { return field(path, "Lines"); };
    for (char const* path : {"ProjectLines/Set/Set", "OptimalLines/Set/Set",
                             "ProjectLines/named/other", "OptimalLines/broken/broken"})
        write_shapes(in_lines(path), SHPT_ARC, three_lines);
    make_dirs(in_lines("ProjectLines/Empty"));
    write_shapes(in_lines("ProjectLines/Points/Points"), SHPT_POINT, {{{{9.0, 52.0}}}});
    write_shapes(in_lines("OptimalLines/Points/Points"), SHPT_POINT, {{{{9.0, 52.0}}}});
    write_shapes(in_lines("OptimalLines/Polygons/Polygons"), SHPT_POLYGON,
                 {{rectangle(9.0, 52.0, 0.001, 0.001)}});
    write_shapes(in_lines("OptimalLines/z/z"), SHPT_ARCZ, three_lines);
    write_shapes(in_lines("OptimalLines/m/m"), SHPT_ARCM, three_lines);
    write_file(in_lines("OptimalLines/broken/broken.shp"), QByteArray(300, '\x01'));
    ToolRun const result = run();
    expect_valid_set();

    // shapelib's own complaints come too.
    QString const lines = QDir(in_lines("")).absolutePath();
    for (char const* path : {"ProjectLines/Empty/Empty.shp", "ProjectLines/named/named.shp",
                             "OptimalLines/broken/broken.shp"})
        EXPECT_TRUE(
            result.err.contains(QString("W: could not open \"%1/%2\"\n").arg(lines, path).toUtf8()))
            << result.err.constData();
    EXPECT_EQ(result.err.count("W: "), 3);

    // Every ring is closed: the first point comes again at the end.
    EXPECT_EQ(rings(saved("PLN", "Order")),
              QStringList({"'first-1' 1/1 9 1 '' 5", "'first-2' 1/1 9 1 '' 5", "'' 1/1 9 1 '' 4",
                           "'' 1/1 9 1 '' 5", "'' 1/1 9 1 '' 6"}));
    // A disabled ring (r2) keeps the type it was made with; zones come in walk
    // order, sub/more before wet.
    EXPECT_EQ(rings(saved("PLN", "Rows")),
              QStringList({"'r0' 1/1 9 1 'Outer' 5", "'r1' 1/2 9 1 'Wet' 5", "'r2' 1/1 9 0 'Off' 5",
                           "'Grünland' 1/1 9 1 '' 5", "'r7' 1/1 9 1 'X' 5", "'' 1/1 9 1 '' 5",
                           "'z2' 1/2 9 1 '' 5", "'z0' 1/2 9 1 '' 5", "'z3' 1/2 9 1 'Pond' 5"}));
    EXPECT_EQ(rings(saved("PLN", "Kinds")), QStringList({"'a' 1/1 9 0 '' 5", "'b' 1/1 9 1 '' 5"}));

    // Areas in whole square metres, either way round; the ring of two points
    // is kept, and closed.
    QStringList const areas = summary(saved("PLN", "Area"), {"C"});
    // The degree rectangle, from the ellipsoid's radii of curvature.
    double const a = 6378137.0, e2 = 0.0066943799901413165, radian = 0.017453292519943295;
    double const latitude = 52.0005 * radian;
    double const w = 1.0 - e2 * std::sin(latitude) * std::sin(latitude);
    double const expected = (a * (1.0 - e2) / std::pow(w, 1.5) * 0.001 * radian) *
                            (a / std::sqrt(w) * std::cos(latitude) * 0.002 * radian);
    EXPECT_NEAR(areas.value(0).toDouble(), expected, expected * 1e-4);
    EXPECT_NEAR(areas.value(2).toDouble(), 19999.5, 0.5);
    EXPECT_EQ(areas, QStringList({areas.value(0), areas.value(0), areas.value(2), areas.value(2),
                                  "0", "0"}));
    EXPECT_EQ(saved("PLN", "Area").value(5).all("PNT").size(), 3);

    // Groups by name in the order of listing, ignoring case; degrees as they
    // stand: x east, y north.
    QList<XmlElement> const saved_groups = saved("GGP", "Lines");
    EXPECT_EQ(groups(saved_groups),
              QStringList({"GGP1 Empty", "GGP2 named", "GGP3 Points", "  GPN1 - 3 4 4", "GGP4 Set",
                           "  GPN2 - 3 4 4 | 5: 6 9 7 6 7 6 6 9 9 7", "GGP5 broken", "GGP6 m",
                           "GGP7 Points", "GGP8 Polygons", "GGP9 Set", "  GPN3 - 3 1 1 | 5: 6 9 7",
                           "  GPN4 - 3 1 1 | 5: 6 7 6", "  GPN5 - 3 1 1 | 5: 6 9 9 7", "GGP10 z"}));
    EXPECT_EQ(summary({saved_groups.value(8).all("PNT").value(1)}, {"C", "D"}),
              QStringList({"52.001 9.001"}));
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
    load("<CTR A=\"CTR1\" B=\"Client\"/><FRM A=\"FRM1\" B=\"Farm\" I=\"CTR1\"/>"
         "<PFD A=\"PFD1\" C=\"Field\" E=\"CTR1\" F=\"FRM1\">" +
         polygon("1", "old", {"LSG1"}) + polygon("1", "kept-null", {"LSG2", "-"}) +
         polygon("1", "empty", {}) + polygon("2", "other type", {"LSG4"}) +
         polygon("1", "kept-twin", {"LSG5"}) + polygon("1", "twin", {"LSG6"}) + "</PFD>");
    // The identity of LSGn is {nnnnnnnn-nnnn-4nnn-8nnn-nnnnnnnnnnnn}, but
    // LSG6 has that of LSG5.
    auto uuid = [](char n) {
        return QByteArray("{########-####-4###-8###-############}").replace('#', QByteArray(1, n));
    };
    QByteArray links;
    for (char const* id : {"LSG1", "LSG2", "LSG4", "LSG5", "LSG6"})
        links += QByteArray("<LNK A=\"") + id + "\" B=\"" + uuid(qMin(id[3], '5')) + "\"/>";
    write("taskdata/LINKLIST.XML",
          "<ISO11783LinkList VersionMajor=\"4\" VersionMinor=\"3\" DataTransferOrigin=\"1\" "
          "ManagementSoftwareManufacturer=\"x\" ManagementSoftwareVersion=\"1\">"
          "<LGP A=\"LGP1\" B=\"1\">" +
              links + "</LGP></ISO11783LinkList>");
    write_rings(field("Boundaries/b"), 9.0, {{{}, "new-1"}, {{}, "new-2"}});
    run({"-m"});

    QStringList expected = {"'kept-null' 1/1 - - '-' 1 line -", "'other type' 2/1 - - '-' 1 line -",
                            // Of two line strings with one identity only the later goes.
                            "'kept-twin' 1/1 - - '-' 1 line -", "'new-1' 1/1 9 1 '' 5",
                            "'new-2' 1/1 9 1 '' 5"};
    EXPECT_EQ(rings(saved("PLN", "Field")), expected);
    expect_valid_set();

    // A second run on the first one's set replaces its rings, with new
    // identities; the twin's identity is now alone, so its ring goes too.
    QList<QUuid> const first = identities().values();
    EXPECT_EQ(first.size(), 4);
    load_saved();
    run({"-m"});
    expected.removeAt(2);
    EXPECT_EQ(rings(saved("PLN", "Field")), expected);
    QStringList const second =
        summary(read_xml(scratch.file("out/LINKLIST.XML")).all("LNK"), {"B"});
    ASSERT_EQ(second.size(), 3);
    EXPECT_EQ(QUuid(second[0]), QUuid(uuid('4')));
    EXPECT_FALSE(first.contains(QUuid(second[1])) || first.contains(QUuid(second[2])));
}

TEST_F(BoundaryImport, DamagedFilesLoseOnlyThemselves) {
    QByteArray const whole = point_file(52.0, 9.0, 0.0, {{0, 0}, {10, 10}, {20, 0}});
    write_file(field("Boundaries/1-short.bdy"), whole.left(10));
    write_file(field("Boundaries/2-centre-only.bdy"), whole.left(40));
    write_file(field("Boundaries/3-no-vertices.bdy"), whole.left(64));
    write_file(field("Boundaries/4-half.bdy"), whole.left(whole.size() - 4)); // 2.5 vertices
    write_file(field("Boundaries/5-nan.bdy"), whole + QByteArray(8, '\xff')); // a NaN vertex
    // A ring of two points goes; the table ends within its third row.
    write_shapes(field("Boundaries/shapes"), SHPT_POLYGON,
                 {{{{9.0, 52.0}, {9.001, 52.0}}},
                  {rectangle(9.0, 52.0, 0.001, 0.001)},
                  {rectangle(9.1, 52.0, 0.001, 0.001)}});
    QString const dbf = field("Boundaries/shapes.dbf");
    write_table(dbf, boundary_columns(),
                {{"a", "row0", 0, 1}, {"b", "row1", 0, 1}, {"c", "row2", 0, 1}});
    // The end-of-file mark and 30 bytes of the last row cut off.
    write_file(dbf, read_file(dbf).chopped(31));
    // Zones: garbage, a shapefile without its index, and one good ring.
    write_file(field("Zones/a.shp"), QByteArray(500, '\x42'));
    write_shapes(field("Zones/b"), SHPT_POLYGON, {{rectangle(9.2, 52.0, 0.001, 0.001)}});
    QFile::remove(field("Zones/b.shx"));
    write_shapes(field("Zones/c"), SHPT_POLYGON, {{rectangle(9.3, 52.0, 0.001, 0.001)}});
    // The rest of the field still arrives.
    write_file(field("flagpoints.ini"), "0\n1\n52.1\n9.1\n4\nStone\n");
    run();

    EXPECT_EQ(rings(saved("PLN", "Field")),
              QStringList({"'row1' 1/2 9 1 'b' 5", "'' 1/1 9 1 '' 5", "'' 1/1 9 1 '' 0",
                           "'' 1/1 9 1 '' 0", "'' 1/1 9 1 '' 0", "'' 1/1 9 1 '' 3",
                           "'' 1/1 9 1 '' 4", "'' 1/2 9 1 '' 5"}));
    EXPECT_EQ(DisplayTree::saved("PNT", "B", "Stone").size(), 1);
}
