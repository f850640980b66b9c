// AB lines, curves and pivots of a field as the tool writes them: one
// guidance group and pattern per line, found again by type and designator on
// a loaded set, with the base stations of the run and the tramline values.
#include "guidance_tree.h"

#include <QMap>

using guidance_tree::crv_file;
using guidance_tree::GuidanceTree;
using guidance_tree::Lines;
using guidance_tree::separator;
using test_support::XmlElement;

namespace {

QByteArray const station_text = "{W84,N52D30M15.25S,E13D24M10.5S,34.5}";

QByteArray ab_line(QByteArray const& keys) {
    return "State=2\n" + keys +
           "\n[APoint]\nLatitude=52.1\nLongitude=13.2\n[BPoint]\nLatitude=52.2\nLongitude=13.3\n";
}

QByteArray correction(int source, QByteArray const& text) {
    return "CorrectionSource=" + QByteArray::number(source) + "\n[BasePoint]\nPosition=\"" + text +
           "\"\n";
}

// The points of a pattern's line strings, as numbers.
std::vector<GeoPoint> points_of(XmlElement const& pattern) {
    std::vector<GeoPoint> points;
    for (XmlElement const& point : pattern.all("PNT"))
        points.push_back({point.attribute("C").toDouble(), point.attribute("D").toDouble(), 0.0});
    return points;
}

// Designator to number of points, for every saved pattern.
QMap<QString, int> point_counts(XmlElement const& set) {
    QMap<QString, int> counts;
    for (XmlElement const& pattern : set.all("GPN"))
        counts.insert(pattern.attribute("B"), pattern.all("PNT").size());
    return counts;
}

} // namespace

TEST_F(GuidanceTree, EveryLineKindWithAndWithoutABaseStation) {
    write_field("ABLines/With/With.ini", ab_line(correction(5, station_text)));
    write_field("ABLines/without/without.ini",
                "State=2\n[APoint]\nLatitude=52.1\nLongitude=abc\n[BPoint]\nLatitude=52.2\n");
    // The form in which the display's settings class writes bytes; the same
    // text, so the same station.
    write_field("Curves/With/With.ini",
                "CorrectionSource=5\n[BasePoint]\nPosition=\"@ByteArray(" + station_text + ")\"\n");
    write_field("Curves/With/With.crv", crv_file({52.5, 13.25, 0.0}, {{0, 0}, {0, 0}}));
    write_field("Curves/Other/Other.ini", correction(24, station_text));
    write_field("Curves/Other/Other.crv", crv_file({52.5, 13.25, 0.0}, {{0, 0}}));
    write_field("Pivots/With/With.ini", "InnerRadius=12.3456\n" +
                                            correction(23, station_text.toLower()) +
                                            "[Reference]\nLat=52\nLon=13\n");
    write_field("Pivots/Without/Without.ini",
                "InnerRadius=-5\n" + correction(0, station_text) + "[Reference]\nLat=52\nLon=13\n");
    run();

    EXPECT_EQ(
        patterns(),
        Lines({"GPN1 With type 1 station BSN1 correction 5 | LSG 5: 6A 52.1 13.2 7B 52.2 13.3",
               "GPN2 without type 1 station  correction 0 | LSG 5: 6A 52.1 0 7B 52.2 0",
               "GPN3 Other type 3 station  correction 24 | LSG 5: 6 52.5 13.25",
               "GPN4 With type 3 station BSN1 correction 5 | LSG 5: 6 52.5 13.25 7 52.5 13.25",
               "GPN5 With type 4 radius 12345 station BSN2 correction 23 | LSG 5: 8 52 13",
               "GPN6 Without type 4 radius 0 station  correction 0 | LSG 5: 8 52 13"}));
    EXPECT_EQ(stations(), Lines({"BSN1 52.504236111 13.402916667 34500",
                                 "BSN2 52.504236111 13.402916667 34500"}));
    // Each pattern in a group of its own, named like it.
    QList<XmlElement> const groups = saved().all("GGP");
    ASSERT_EQ(groups.size(), 6);
    for (XmlElement const& group : groups) {
        EXPECT_EQ(group.children.size(), 1);
        EXPECT_EQ(group.attribute("B"), group.children.value(0).attribute("B"));
    }
}

TEST_F(GuidanceTree, CurvesTakeTheFirstSegmentAndSkipFilesWithoutPoints) {
    GeoPoint const reference{52.5, 13.25, 0.0};
    auto curve = [this, reference](QString const& name, QByteArray const& crv) {
        write_field(QStringLiteral("Curves/%1/%1.ini").arg(name), "");
        write_field(QStringLiteral("Curves/%1/%1.crv").arg(name), crv);
    };
    curve("Start", crv_file(reference, {separator, {0, 0}, {10, 0}}));
    curve("Middle", crv_file(reference, {{0, 0}, {10, 0}, separator, {20, 0}, {30, 0}, {40, 0}}));
    curve("End", crv_file(reference, {{0, 0}, {10, 0}, {20, 0}, separator}));
    curve("Cut", crv_file(reference, {{0, 0}, {10, 0}}).chopped(3));
    curve("Empty", QByteArray());
    curve("Short", crv_file(reference, {}).left(20));
    curve("Separators", crv_file(reference, {separator, separator}));
    write_field("Curves/NoIni/NoIni.crv", crv_file(reference, {{0, 0}}));
    write_field("Curves/NoCrv/NoCrv.ini", "");
    write_field("ABLines/L/L.ini", ab_line(""));
    run();

    QMap<QString, int> const expected = {
        {"Start", 2}, {"Middle", 2}, {"End", 3}, {"Cut", 1}, {"L", 2}};
    EXPECT_EQ(point_counts(saved()), expected);
}

TEST_F(GuidanceTree, PivotsTakeTheirReferenceInEitherForm) {
    auto pivot = [this](QString const& name, QByteArray const& ini) {
        write_field(QStringLiteral("Pivots/%1/%1.ini").arg(name), ini);
    };
    pivot("Both", "[Reference]\nLat=52\nLon=13\nEast=672509.385\nNorth=15872043.896\nZone=30\n");
    pivot("Grid", "InnerRadius=250.5\n[Reference]\nEast=672509.385\nNorth=15872043.896\nZone=30\n");
    pivot("LatOnly", "[Reference]\nLat=10\n");
    pivot("Zone0", "[Reference]\nEast=672509.385\nNorth=15872043.896\nZone=0\n");
    pivot("NoZone", "[Reference]\nEast=672509.385\nNorth=15872043.896\n");
    pivot("NoReference", "[Center]\nX=1\nY=1\n");
    write_field("Pivots/NoFile/readme.txt", "x");
    pivot("South", "[Reference]\nLat=52\nLon=13\n[Center]\nY=100\n");
    // The offset is single precision: 16777217 is 16777216.
    pivot("Wide1", "[Reference]\nLat=0\nLon=0\n[Center]\nX=16777217\n");
    pivot("Wide2", "[Reference]\nLat=0\nLon=0\n[Center]\nX=16777216.0\n");
    run();

    QMap<QString, int> const expected = {{"Both", 1},  {"Grid", 1},  {"LatOnly", 1},
                                         {"South", 1}, {"Wide1", 1}, {"Wide2", 1}};
    EXPECT_EQ(point_counts(saved()), expected);

    EXPECT_EQ(points_of(pattern("Both"))[0].latitude, 52.0);
    EXPECT_EQ(points_of(pattern("Both"))[0].longitude, 13.0);
    GeoPoint const grid = points_of(pattern("Grid"))[0];
    EXPECT_NEAR(grid.latitude, 52.9702, 1e-6);
    EXPECT_NEAR(grid.longitude, -0.431, 1e-6);
    EXPECT_EQ(pattern("Grid").attribute("H"), "250500");
    EXPECT_EQ(pattern("LatOnly").all("PNT").value(0).attribute("D"), "0");
    GeoPoint const south = points_of(pattern("South"))[0];
    EXPECT_NEAR(south.latitude, 52.0 - 100.0 / 111250.0, 1e-5);
    EXPECT_EQ(south.longitude, 13.0);
    EXPECT_EQ(pattern("Wide1").all("PNT").value(0).attribute("D"),
              pattern("Wide2").all("PNT").value(0).attribute("D"));
}

TEST_F(GuidanceTree, AbLinesNeedStateTwoAndAreKnownByTypeAndExactName) {
    write_field("ABLines/b/b.ini", ab_line(""));
    write_field("ABLines/A/A.ini", ab_line(""));
    write_field("ABLines/Case/Case.ini", ab_line(""));
    write_field("ABLines/case/case.ini", ab_line(""));
    write_field("ABLines/Draft/Draft.ini", "State=1\n[APoint]\nLatitude=1\n");
    write_field("ABLines/NoState/NoState.ini", "[APoint]\nLatitude=1\n");
    write_field("ABLines/Renamed/Other.ini", ab_line(""));
    write_field("ABLines/file.ini", ab_line(""));
    // A curve of an AB line's name is a pattern of its own.
    write_field("Curves/b/b.ini", "");
    write_field("Curves/b/b.crv", crv_file({1, 1, 0}, {{0, 0}}));
    run();

    QStringList groups;
    for (XmlElement const& group : saved().all("GGP"))
        groups << group.attribute("A") + " " + group.attribute("B") + " " +
                      group.children.value(0).attribute("C");
    ASSERT_EQ(groups.size(), 5);
    // By name ignoring case; "Case" and "case" come in the order the file
    // system lists them.
    EXPECT_EQ(groups.mid(0, 2), QStringList({"GGP1 A 1", "GGP2 b 1"}));
    EXPECT_TRUE(groups[2].startsWith("GGP3 ") && groups[3].startsWith("GGP4 "));
    QStringList namesakes = {groups[2].mid(5), groups[3].mid(5)};
    namesakes.sort();
    EXPECT_EQ(namesakes, QStringList({"Case 1", "case 1"}));
    EXPECT_EQ(groups[4], "GGP5 b 3");
}

TEST_F(GuidanceTree, ASecondRunRebuildsTheSamePatternsAndLinksTheNewStations) {
    write_field("ABLines/L/L.ini", ab_line(correction(5, station_text)));
    write_field("ABLines/L/Tramline/Tramline.ini", "[Tramline]\nSpacing=24\n");
    write_field("Curves/C/C.ini", correction(5, station_text));
    write_field("Curves/C/C.crv", crv_file({52.5, 13.25, 0.0}, {{0, 0}, {0, 0}}));
    write_field("Pivots/P/P.ini",
                correction(7, "{W84,N1D0M0S,E1D0M0S,0}") + "[Reference]\nLat=52\nLon=13\n");
    run();
    Lines const first = patterns();
    QList<XmlElement> const first_groups = saved().all("GGP");

    load_saved();
    run({"-m"});
    Lines second = patterns();
    EXPECT_EQ(stations(), Lines({"BSN1 52.504236111 13.402916667 34500", "BSN2 1 1 0",
                                 "BSN3 52.504236111 13.402916667 34500", "BSN4 1 1 0"}));
    // The same groups and patterns, each with one rebuilt line string; only
    // the links moved to the stations of this run.
    ASSERT_EQ(saved().all("GGP").size(), first_groups.size());
    for (int i = 0; i < first_groups.size(); ++i)
        EXPECT_EQ(saved().all("GGP")[i].attribute("A"), first_groups[i].attribute("A"));
    ASSERT_EQ(second.size(), first.size());
    for (std::string& line : second) {
        line = QString::fromStdString(line)
                   .replace("BSN3", "BSN1")
                   .replace("BSN4", "BSN2")
                   .toStdString();
    }
    EXPECT_EQ(second, first);
    EXPECT_EQ(test_support::read_file(scratch.file("out/TASKDATA.XML")).count("P231_spacing"), 1);
}

TEST_F(GuidanceTree, LoadedPatternsAreUpdatedWhereTheyLie) {
    write(
        "taskdata/TASKDATA.XML",
        "<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR1\" B=\"Client\"/>"
        "<FRM A=\"FRM1\" B=\"Farm\" I=\"CTR1\"/><PFD A=\"PFD1\" C=\"Field\" E=\"CTR1\" F=\"FRM1\">"
        "<GGP A=\"GGP7\" B=\"Shared\">"
        "<GPN A=\"GPN3\" B=\"Line\" C=\"3\"><LSG A=\"5\"><PNT A=\"6\" C=\"1\" D=\"1\"/></LSG></GPN>"
        "<GPN A=\"GPN4\" B=\"Line\" C=\"1\" P231_spacing=\"99\" P231_smoothing=\"5\">"
        "<LSG A=\"5\"><PNT A=\"6\" C=\"1\" D=\"1\"/></LSG>"
        "<LSG A=\"5\"><PNT A=\"7\" C=\"2\" D=\"2\"/></LSG></GPN></GGP>"
        "<GGP A=\"GGP8\" B=\"Kept\"><GPN A=\"GPN5\" B=\"Kept\" C=\"1\">"
        "<LSG A=\"5\"><PNT A=\"6\" C=\"3\" D=\"3\"/></LSG></GPN></GGP>"
        "</PFD></ISO11783_TaskData>");
    write_field("ABLines/Line/Line.ini", ab_line(""));
    write_field("ABLines/Line/Tramline/Tramline.ini",
                "[Tramline]\nSpacing=3.00\nTrackWidth=abc\n[Curve]\nImplicitOffset=0.25\n");
    write_field("ABLines/Kept/Kept.ini", "State=1\n");
    run({"-m"});

    EXPECT_EQ(patterns(), Lines({"GPN3 Line type 3 station  correction  | LSG 5: 6 1 1",
                                 "GPN4 Line type 1 station  correction 0 | LSG 5: 6A 52.1 13.2 "
                                 "7B 52.2 13.3",
                                 "GPN5 Kept type 1 station  correction  | LSG 5: 6 3 3"}));
    EXPECT_EQ(saved().all("GGP").size(), 2);
    XmlElement const line = saved().all("GPN").value(1);
    QStringList tramline;
    for (auto const& attribute : line.attributes)
        if (attribute.first.startsWith("P231_") && attribute.first != "P231_correction")
            tramline << attribute.first + "=" + attribute.second;
    EXPECT_EQ(tramline, QStringList({"P231_spacing=3", "P231_smoothing=5", "P231_trackWidth=0",
                                     "P231_impOffset=0.25"}));
}
