// Project and optimal lines as the tool writes them: one group per directory,
// one pattern per file or per line, the points of each part, and what files
// that can't be used leave behind.
#include "field_tree.h"

#include <QDir>

using namespace shape_writer;
using namespace test_support;

namespace {

// A group, each of its patterns and, per pattern, its line string with the
// types of its points.
Lines group_lines(QList<XmlElement> const& groups) {
    Lines lines;
    for (XmlElement const& group : groups) {
        lines.push_back(summary(group, {"B"}));
        for (XmlElement const& pattern : group.all(QStringLiteral("GPN"))) {
            std::string line = "  " + summary(pattern, {"B", "C", "E", "F"});
            for (XmlElement const& linestring : pattern.all(QStringLiteral("LSG"))) {
                line += " | " + summary(linestring, {"A"});
                for (XmlElement const& point : linestring.all(QStringLiteral("PNT")))
                    line += ' ' + point.attribute(QStringLiteral("A")).toStdString();
            }
            lines.push_back(line);
        }
    }
    return lines;
}

// Three lines: one of three points, one of two parts (two points, one
// point), one of four points.
std::vector<Shape> three_lines() {
    return {{{{9.0, 52.0}, {9.001, 52.001}, {9.002, 52.0}}},
            {{{9.1, 52.1}, {9.101, 52.1}}, {{9.2, 52.2}}},
            {{{9.3, 52.3}, {9.301, 52.3}, {9.302, 52.3}, {9.303, 52.3}}}};
}

using ShapeLines = FieldTree;

} // namespace

TEST_F(ShapeLines, ProjectLinesMakeOnePatternOptimalLinesOnePerLine) {
    write_shapes(field("ProjectLines/Set/Set"), SHPT_ARC, three_lines());
    write_shapes(field("OptimalLines/Set/Set"), SHPT_ARC, three_lines());
    ToolRun const result = run();
    EXPECT_TRUE(result.err.isEmpty()) << result.err.constData();

    QList<XmlElement> const groups = saved("GGP");
    EXPECT_EQ(group_lines(groups),
              Lines({"GGP B=Set", "  GPN B- C=3 E=4 F=4 | LSG A=5 6 9 7 6 7 6 6 9 9 7", "GGP B=Set",
                     "  GPN B- C=3 E=1 F=1 | LSG A=5 6 9 7", "  GPN B- C=3 E=1 F=1 | LSG A=5 6 7 6",
                     "  GPN B- C=3 E=1 F=1 | LSG A=5 6 9 9 7"}));
    // Degrees as they stand: x east, y north.
    XmlElement const first = groups[1].all(QStringLiteral("PNT"))[1];
    EXPECT_EQ(first.attribute(QStringLiteral("C")), QStringLiteral("52.001"));
    EXPECT_EQ(first.attribute(QStringLiteral("D")), QStringLiteral("9.001"));
    // Every group and pattern has an ID of its own.
    QStringList ids;
    for (XmlElement const& group : groups) {
        ids << group.attribute(QStringLiteral("A"));
        for (XmlElement const& pattern : group.all(QStringLiteral("GPN")))
            ids << pattern.attribute(QStringLiteral("A"));
    }
    EXPECT_EQ(ids.removeDuplicates(), 0);
    expect_valid_set();
}

TEST_F(ShapeLines, OnlyPolyLinesCountAndUnreadableFilesLeaveAnEmptyGroup) {
    make_dirs(field("ProjectLines/Empty"));
    write_shapes(field("ProjectLines/named/other"), SHPT_ARC, three_lines());
    write_shapes(field("ProjectLines/Points/Points"), SHPT_POINT, {{{{9.0, 52.0}}}});
    write_shapes(field("OptimalLines/Points/Points"), SHPT_POINT, {{{{9.0, 52.0}}}});
    write_shapes(field("OptimalLines/Polygons/Polygons"), SHPT_POLYGON,
                 {{rectangle(9.0, 52.0, 0.001, 0.001)}});
    write_shapes(field("OptimalLines/z/z"), SHPT_ARCZ, three_lines());
    write_shapes(field("OptimalLines/broken/broken"), SHPT_ARC, three_lines());
    write_file(field("OptimalLines/broken/broken.shp"), QByteArray(300, '\x01'));
    ToolRun const result = run();

    // The names in the order of listing, ignoring case.
    EXPECT_EQ(group_lines(saved("GGP")),
              Lines({"GGP B=Empty", "GGP B=named", "GGP B=Points", "  GPN B- C=3 E=4 F=4",
                     "GGP B=broken", "GGP B=Points", "GGP B=Polygons", "GGP B=z"}));
    QString const lines = QDir(field(QString())).absolutePath();
    for (QString const& path : {QStringLiteral("ProjectLines/Empty/Empty.shp"),
                                QStringLiteral("ProjectLines/named/named.shp"),
                                QStringLiteral("OptimalLines/broken/broken.shp")})
        EXPECT_TRUE(result.err.contains(
            QStringLiteral("W: could not open \"%1/%2\"\n").arg(lines, path).toUtf8()))
            << result.err.constData();
    EXPECT_EQ(result.err.count("W: "), 3);
    expect_valid_set();
}
