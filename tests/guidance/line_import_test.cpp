// AB lines, curves and pivots of a field as the tool writes them: one
// guidance group and pattern per line, found again by type and designator on
// a loaded set, with the base stations of the run and the tramline values.
#include "../taskdata/xml_summary.h"
#include "guidance_tree.h"

#include <QMap>

#include <algorithm>
#include <cmath>

using namespace test_support;

namespace {

using guidance_tree::separator;

QByteArray const station_text = "{W84,N52D30M15.25S,E13D24M10.5S,34.5}";

QByteArray crv_file(std::vector<guidance_tree::Record> const& records) {
    return guidance_tree::crv_file({52.5, 13.25, 0.0}, records);
}

QByteArray ab_line(QByteArray const& keys) {
    return "State=2\n" + keys +
           "\n[APoint]\nLatitude=52.1\nLongitude=13.2\n[BPoint]\nLatitude=52.2\nLongitude=13.3\n";
}

QByteArray correction(int source, QByteArray const& text) {
    return "CorrectionSource=" + QByteArray::number(source) + "\n[BasePoint]\nPosition=\"" + text +
           "\"\n";
}

// Every pattern below `element` as one line: its group's ID and name, its
// ID, designator, type, radius, base station link and correction, then per
// line string its type and points (type, designator, north, east).
QStringList patterns(XmlElement const& element) {
    QStringList lines;
    for (XmlElement const& group : element.all("GGP"))
        for (XmlElement const& pattern : group.children) {
            QString line =
                summary({group}, {"A", "B"}).join("") + ": " +
                summary({pattern}, {"A", "B", "C", "H", "L", "P231_correction"}).join("");
            for (XmlElement const& linestring : pattern.all("LSG"))
                line += " | " + linestring.attribute("A") + ": " +
                        summary(linestring.all("PNT"), {"A", "B", "C", "D"}).join(", ");
            lines << line;
        }
    return lines;
}

// Designator to number of points, for every pattern below `element`.
QMap<QString, int> point_counts(XmlElement const& element) {
    QMap<QString, int> counts;
    for (XmlElement const& pattern : element.all("GPN"))
        counts.insert(pattern.attribute("B"), pattern.all("PNT").size());
    return counts;
}

class GuidanceTree : public DisplayTree {
protected:
    void put(QString const& field_name, QString const& relative, QByteArray const& content) const {
        write_file(field(relative, field_name), content);
    }

    // The tool on the tree; its runs warn of nothing.
    void run(QStringList const& options = {}) const {
        EXPECT_EQ(DisplayTree::run(options).err, QByteArray());
    }

    XmlElement saved_field(QString const& name) const { return saved("PFD", "C", name).value(0); }

    // An attribute of the first point of the saved pattern of that designator.
    QString point(QString const& name, QString const& attribute) const {
        return saved("GPN", "B", name).value(0).all("PNT").value(0).attribute(attribute);
    }

    // Every saved base station as "north east up".
    QStringList stations() const { return summary(saved().all("BSN"), {"C", "D", "E"}); }
};

} // namespace

// Fields of one tree, each for one behaviour, in one run.
TEST_F(GuidanceTree, EveryLineKindOfEveryFieldInOneRun) {
    auto curve = [this](QString const& name, QByteArray const& crv,
                        QString const& field_name = "Curves", QByteArray const& ini = "") {
        put(field_name, QString("Curves/%1/%1.ini").arg(name), ini);
        put(field_name, QString("Curves/%1/%1.crv").arg(name), crv);
    };
    // Basics: each kind with and without a base station.
    put("Basics", "ABLines/With/With.ini", ab_line(correction(5, station_text)));
    put("Basics", "ABLines/With/Tramline/Tramline.ini", "[Tramline]\nSpacing=24\n");
    put("Basics", "ABLines/without/without.ini",
        "State=2\n[APoint]\nLatitude=52.1\nLongitude=abc\n[BPoint]\nLatitude=52.2\n");
    // The form in which the display's settings class writes bytes; the same
    // text, so the same station.
    curve("With", crv_file({{0, 0}, {0, 0}}), "Basics",
          "CorrectionSource=5\n[BasePoint]\nPosition=\"@ByteArray(" + station_text + ")\"\n");
    curve("Other", crv_file({{0, 0}}), "Basics", correction(24, station_text));
    put("Basics", "Pivots/With/With.ini",
        "InnerRadius=12.3456\n" + correction(23, station_text.toLower()) +
            "[Reference]\nLat=52\nLon=13\n");
    put("Basics", "Pivots/Without/Without.ini",
        "InnerRadius=-5\n" + correction(0, station_text) + "[Reference]\nLat=52\nLon=13\n");

    // Curves take their first segment and files without points are skipped.
    curve("Start", crv_file({separator, {0, 0}, {10, 0}}));
    curve("Middle", crv_file({{0, 0}, {10, 0}, separator, {20, 0}, {30, 0}, {40, 0}}));
    curve("End", crv_file({{0, 0}, {10, 0}, {20, 0}, separator}));
    curve("Cut", crv_file({{0, 0}, {10, 0}}).chopped(3));
    curve("Empty", QByteArray());
    curve("Short", crv_file({}).left(20));
    curve("Separators", crv_file({separator, separator}));
    // Coordinates beyond 9999998 m and NaN break a curve as separators do.
    float const nan = std::nanf("");
    curve("Bound", crv_file({{-9999999.0f, 0}, {-9999998.0f, 0}, {1, 1}, {0, nan}, {7, 8}}));
    curve("NaN", crv_file({{nan, 0}, {nan, nan}, {5, -9999999.0f}}));
    put("Curves", "Curves/NoIni/NoIni.crv", crv_file({{0, 0}}));
    put("Curves", "Curves/NoCrv/NoCrv.ini", "");
    put("Curves", "ABLines/L/L.ini", ab_line(""));

    // AB lines need state 2; they are known by type and exact name.
    for (char const* name : {"b", "A", "Case", "case"})
        put("Names", QString("ABLines/%1/%1.ini").arg(name), ab_line(""));
    put("Names", "ABLines/Draft/Draft.ini", "State=1\n[APoint]\nLatitude=1\n");
    put("Names", "ABLines/NoState/NoState.ini", "[APoint]\nLatitude=1\n");
    put("Names", "ABLines/Renamed/Other.ini", ab_line(""));
    put("Names", "ABLines/file.ini", ab_line(""));
    // A curve of an AB line's name is a pattern of its own.
    curve("b", crv_file({{0, 0}}), "Names");

    // Pivots take their reference in either form.
    auto pivot = [this](QString const& name, QByteArray const& ini) {
        put("Pivots", QString("Pivots/%1/%1.ini").arg(name), ini);
    };
    pivot("Both", "[Reference]\nLat=52\nLon=13\nEast=672509.385\nNorth=15872043.896\nZone=30\n");
    pivot("Grid", "InnerRadius=250.5\n[Reference]\nEast=672509.385\nNorth=15872043.896\nZone=30\n");
    pivot("LatOnly", "[Reference]\nLat=10\n");
    pivot("Zone0", "[Reference]\nEast=672509.385\nNorth=15872043.896\nZone=0\n");
    pivot("NoZone", "[Reference]\nEast=672509.385\nNorth=15872043.896\n");
    pivot("NoReference", "[Center]\nX=1\nY=1\n");
    put("Pivots", "Pivots/NoFile/readme.txt", "x");
    pivot("South", "[Reference]\nLat=52\nLon=13\n[Center]\nY=100\n");
    // The offset is single precision: 16777217 is 16777216.
    pivot("Wide1", "[Reference]\nLat=0\nLon=0\n[Center]\nX=16777217\n");
    pivot("Wide2", "[Reference]\nLat=0\nLon=0\n[Center]\nX=16777216.0\n");
    run();
    expect_valid_set();

    EXPECT_EQ(patterns(saved_field("Basics")),
              QStringList({"GGP1 With: GPN1 With 1 - BSN1 5 | 5: 6 A 52.1 13.2, 7 B 52.2 13.3",
                           "GGP2 without: GPN2 without 1 - - 0 | 5: 6 A 52.1 0, 7 B 52.2 0",
                           "GGP3 Other: GPN3 Other 3 - - 24 | 5: 6 - 52.5 13.25",
                           "GGP4 With: GPN4 With 3 - BSN1 5 | 5: 6 - 52.5 13.25, 7 - 52.5 13.25",
                           "GGP5 With: GPN5 With 4 12345 BSN2 23 | 5: 8 - 52 13",
                           "GGP6 Without: GPN6 Without 4 0 - 0 | 5: 8 - 52 13"}));
    QString const station = "52.504236111 13.402916667 34500";
    EXPECT_EQ(stations(), QStringList({station, station}));

    QMap<QString, int> const curves = {{"Start", 2}, {"Middle", 2}, {"End", 3},
                                       {"Cut", 1},   {"Bound", 2},  {"L", 2}};
    EXPECT_EQ(point_counts(saved_field("Curves")), curves);

    // By name ignoring case; "Case" and "case" come in the order the file
    // system lists them.
    QStringList names = summary(saved_field("Names").all("GPN"), {"B", "C"});
    if (names.size() == 5)
        std::sort(names.begin() + 2, names.begin() + 4);
    EXPECT_EQ(names, QStringList({"A 1", "b 1", "Case 1", "case 1", "b 3"}));

    QMap<QString, int> const pivots = {{"Both", 1},  {"Grid", 1},  {"LatOnly", 1},
                                       {"South", 1}, {"Wide1", 1}, {"Wide2", 1}};
    EXPECT_EQ(point_counts(saved_field("Pivots")), pivots);
    EXPECT_EQ(QStringList({point("Both", "C"), point("Both", "D"), point("LatOnly", "D"),
                           point("South", "D"), point("Wide1", "D")}),
              QStringList({"52", "13", "0", "13", point("Wide2", "D")}));
    EXPECT_NEAR(point("Grid", "C").toDouble(), 52.9702, 1e-6);
    EXPECT_NEAR(point("Grid", "D").toDouble(), -0.431, 1e-6);
    EXPECT_EQ(summary(saved("GPN", "B", "Grid"), {"H"}), QStringList({"250500"}));
    EXPECT_NEAR(point("South", "C").toDouble(), 52.0 - 100.0 / 111250.0, 1e-5);

    // A second run on the first one's set rebuilds the same groups and
    // patterns, each with one new line string; only the links moved to the
    // stations of this run.
    QStringList const first = patterns(saved());
    load_saved();
    run({"-m"});
    EXPECT_EQ(stations(), QStringList({station, station, station, station}));
    EXPECT_EQ(patterns(saved()).replaceInStrings("BSN3", "BSN1").replaceInStrings("BSN4", "BSN2"),
              first);
    EXPECT_EQ(read_file(scratch.file("out/TASKDATA.XML")).count("P231_spacing"), 1);
}

TEST_F(GuidanceTree, LoadedPatternsAreUpdatedWhereTheyLie) {
    load(
        "<CTR A=\"CTR1\" B=\"Client\"/><FRM A=\"FRM1\" B=\"Farm\" I=\"CTR1\"/>"
        "<PFD A=\"PFD1\" C=\"Field\" E=\"CTR1\" F=\"FRM1\"><GGP A=\"GGP7\" B=\"Shared\">"
        "<GPN A=\"GPN3\" B=\"Line\" C=\"3\"><LSG A=\"5\"><PNT A=\"6\" C=\"1\" D=\"1\"/></LSG></GPN>"
        "<GPN A=\"GPN4\" B=\"Line\" C=\"1\" P231_spacing=\"99\" P231_smoothing=\"5\">"
        "<LSG A=\"5\"><PNT A=\"6\" C=\"1\" D=\"1\"/></LSG>"
        "<LSG A=\"5\"><PNT A=\"7\" C=\"2\" D=\"2\"/></LSG></GPN></GGP>"
        "<GGP A=\"GGP8\" B=\"Kept\"><GPN A=\"GPN5\" B=\"Kept\" C=\"1\">"
        "<LSG A=\"5\"><PNT A=\"6\" C=\"3\" D=\"3\"/></LSG></GPN></GGP></PFD>");
    put("Field", "ABLines/Line/Line.ini", ab_line(""));
    put("Field", "ABLines/Line/Tramline/Tramline.ini",
        "[Tramline]\nSpacing=3.00\nTrackWidth=abc\n[Curve]\nImplicitOffset=0.25\n");
    put("Field", "ABLines/Kept/Kept.ini", "State=1\n");
    run({"-m"});

    EXPECT_EQ(patterns(saved()),
              QStringList({"GGP7 Shared: GPN3 Line 3 - - - | 5: 6 - 1 1",
                           "GGP7 Shared: GPN4 Line 1 - - 0 | 5: 6 A 52.1 13.2, 7 B 52.2 13.3",
                           "GGP8 Kept: GPN5 Kept 1 - - - | 5: 6 - 3 3"}));
    EXPECT_EQ(summary({saved().all("GPN").value(1)},
                      {"P231_spacing", "P231_smoothing", "P231_trackWidth", "P231_impOffset"}),
              QStringList({"3 5 0 0.25"}));
}
