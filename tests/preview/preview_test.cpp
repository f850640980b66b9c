// taskdata-preview run on sets the tests write or migrate: the page read back
// as XML, and rendered by Chromium where it is installed.

#include "test_support/test_support.h"

#include <QImage>
#include <QLineF>
#include <QMap>
#include <QStandardPaths>

using namespace test_support;

namespace {

using Polyline = std::vector<QPointF>;

// At latitude 0, longitude 0 the field's plane is the equator's tangent plane:
// 0.001 degrees are a * (pi / 180000) = 111.3195 m east and a * (1 - e^2) *
// (pi / 180000) = 110.5743 m north (a = 6378137 m, e^2 = 0.00669437999).
double const east = 111.3195;  // x of 0.001 degrees of longitude
double const north = 110.5743; // -y of 0.001 degrees of latitude

// Points at (latitude, longitude) in thousandths of a degree, of the types
// given in turn.
QByteArray points(std::vector<int> const& types, Polyline const& where) {
    QString xml;
    for (std::size_t i = 0; i < where.size(); ++i)
        xml += QString::asprintf("<PNT A=\"%d\" C=\"%.7f\" D=\"%.7f\"/>", types[i % types.size()],
                                 where[i].x() / 1000, where[i].y() / 1000);
    return xml.toUtf8();
}

// Where the page draws them, in metres east and south.
Polyline plane(Polyline const& where) {
    Polyline drawn;
    for (QPointF const& p : where)
        drawn.push_back({p.y() * east, -p.x() * north});
    return drawn;
}

Polyline const outer = {{1, -1}, {1, 1}, {-1, 1}, {-1, -1}};
Polyline const inner = {{0.2, -0.2}, {0.2, 0.2}, {-0.2, 0.2}};
Polyline const pond = {{0.5, 0.5}, {0.7, 0.5}, {0.5, 0.7}};
Polyline const rock = {{-0.5, -0.5}, {-0.7, -0.5}, {-0.5, -0.7}};
Polyline const project = {{-0.8, -0.8}, {-0.8, 0.8}, {0.8, -0.8}, {0.8, 0.8}};

// One field around latitude 0, longitude 0 with an element of each kind, and
// two that cannot be drawn: a ring of two points and a pattern without any;
// and a bare field of another client.
QByteArray const set =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><ISO11783_TaskData VersionMajor=\"4\" "
    "VersionMinor=\"3\" ManagementSoftwareManufacturer=\"Tester\" "
    "ManagementSoftwareVersion=\"2.5\" "
    "DataTransferOrigin=\"1\"><CTR A=\"CTR1\" B=\"Client\"/><FRM A=\"FRM1\" B=\"Farm\" I=\"CTR1\"/>"
    "<PFD A=\"PFD1\" C=\"Field\" E=\"CTR1\" F=\"FRM1\"><PLN A=\"1\" B=\"Outer\" C=\"48000\">"
    "<LSG A=\"1\">" +
    points({2}, outer) + "</LSG><LSG A=\"2\">" + points({2}, inner) +
    "</LSG></PLN><PLN A=\"1\" B=\"Pond\"><LSG A=\"2\">" + points({2}, pond) +
    "</LSG></PLN><PLN A=\"6\" B=\"Rock\"><LSG A=\"1\">" + points({2}, rock) +
    "</LSG></PLN><PLN A=\"1\" B=\"Stub\"><LSG A=\"1\">" + points({2}, {{0, 0}, {0.1, 0}}) +
    "</LSG></PLN><PNT A=\"1\" B=\"Stone\" C=\"0.0005\" D=\"-0.0005\"/><GGP A=\"GGP1\" B=\"Lines\">"
    "<GPN A=\"GPN1\" B=\"AB 1\" C=\"1\"><LSG A=\"5\">" +
    points({6, 7}, {{-0.5, -0.5}, {-0.5, 0.5}}) +
    "</LSG></GPN><GPN A=\"GPN2\" B=\"Pivot\" C=\"4\" H=\"50000\"><LSG A=\"5\">" +
    points({8}, {{0, 0}}) +
    "</LSG></GPN><GPN A=\"GPN3\" B=\"Empty\" C=\"3\"/></GGP><GGP A=\"GGP2\" B=\"Project\">"
    "<GPN A=\"GPN4\" C=\"3\"><LSG A=\"5\">" +
    points({6, 7}, project) +
    "</LSG></GPN></GGP></PFD><CTR A=\"CTR2\" B=\"Other\"/><FRM A=\"FRM2\" B=\"Far\" "
    "I=\"CTR2\"/><PFD A=\"PFD2\" C=\"Bare\" F=\"FRM2\"/></ISO11783_TaskData>";

ToolRun preview(QStringList const& arguments, QString const& working_dir) {
    return run_program(command_of(TDM_PREVIEW) + arguments, working_dir);
}

// The polylines of SVG path data "Mx y x y ...Z Mx y ...".
std::vector<Polyline> polylines(QString data) {
    std::vector<Polyline> result;
    for (QString const& part : data.remove('Z').split('M', Qt::SkipEmptyParts)) {
        QStringList const numbers = part.split(' ', Qt::SkipEmptyParts);
        result.emplace_back();
        for (int i = 0; i + 1 < numbers.size(); i += 2)
            result.back().push_back({numbers[i].toDouble(), numbers[i + 1].toDouble()});
    }
    return result;
}

void expect_lines(std::vector<Polyline> const& expected, std::vector<Polyline> const& actual) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t l = 0; l < expected.size(); ++l) {
        ASSERT_EQ(actual[l].size(), expected[l].size()) << "line " << l;
        for (std::size_t p = 0; p < expected[l].size(); ++p)
            // Coordinates are written to a tenth of a pixel, here a few
            // centimetres.
            EXPECT_LE(QLineF(actual[l][p], expected[l][p]).length(), 0.02)
                << "line " << l << " point " << p;
    }
}

struct PreviewPage : ::testing::Test {
    PreviewPage() { write_file(scratch.file("set/TASKDATA.XML"), set); }
    ScratchDir scratch;
};

TEST_F(PreviewPage, DrawsEachElementInThePlaneOfItsField) {
    ASSERT_EQ(preview({"set"}, scratch.path()).outcome(), "0 |  | ");
    XmlElement const page = read_xml(scratch.file("set/preview.html"));
    EXPECT_EQ(page.all("title").value(0).text, "set: Tester 2.5");
    EXPECT_EQ(page.all("a").value(0).attribute("href"), "#f1"); // from the overview
    EXPECT_EQ(page.find("section", "id", "overview").all("p").value(0).text,
              "Fields with nothing to place them by: 1"); // the bare field
    XmlElement const panel = page.find("div", "id", "f1");

    // The lines of every path, and the centres of the circles of every
    // group, by class and title (the first child of what it names).
    QMap<QString, std::vector<Polyline>> shapes;
    for (XmlElement const& path : panel.all("path"))
        for (Polyline const& line : polylines(path.attribute("d")))
            shapes[path.attribute("class") + ": " + path.children.value(0).text].push_back(line);
    QStringList labels;
    for (XmlElement const& group : panel.all("g"))
        for (XmlElement const& child : group.children)
            if (child.tag == "circle")
                shapes[child.attribute("class") + ": " + group.children.value(0).text].push_back(
                    {{child.attribute("cx").toDouble(), child.attribute("cy").toDouble()}});
            else if (child.tag == "text")
                labels << group.children.value(0).text + ": " + child.text;

    // The field's centre is the middle of its positions, latitude 0 and
    // longitude 0. The pond, a polygon of an interior ring alone, is cut out
    // of the outer boundary that holds it; the project lines stand end to end
    // in one line string, a part from each A to its B.
    expect_lines({plane(outer), plane(inner), plane(pond)},
                 shapes["pln t1: Outer · field boundary · 4.80 ha"]);
    expect_lines({plane(rock)}, shapes["pln t6: Rock · obstacle"]);
    expect_lines({plane({project[0], project[1]}), plane({project[2], project[3]})},
                 shapes["curve: Project"]);
    EXPECT_FALSE(shapes.contains("pln t1: Pond · field boundary · hole"));
    // The AB line runs across the whole panel, from its left to its right edge.
    QStringList const view = panel.all("svg").value(0).attribute("viewBox").split(' ');
    double const left = view.value(0).toDouble();
    expect_lines({{{left, 0.5 * north}, {left + view.value(2).toDouble(), 0.5 * north}}},
                 shapes["ab: AB 1"]);
    // The pivot's circle of 50 m about its centre, and the flag's marker and
    // name.
    expect_lines({{{0, 0}}}, shapes["pivot: Pivot"]);
    EXPECT_EQ(panel.find("circle", "class", "pivot").attribute("r"), "50");
    expect_lines({plane({{0.5, -0.5}})}, shapes["point: Stone"]);
    EXPECT_TRUE(labels.contains("Stone: Stone")) << labels.join(", ").toStdString();

    EXPECT_EQ(panel.all("p").size(), 1);
    EXPECT_EQ(panel.all("p").value(0).text, "Not drawn: 1 polygon ring with fewer than three "
                                            "points, 1 guidance pattern without points");
}

TEST(PreviewErrors, EndWithAMessageAndStatus1) {
    ScratchDir scratch;
    write_file(scratch.file("broken/TASKDATA.XML"), "<ISO11783_TaskData");
    char const* const usage = "usage: taskdata-preview SETDIR [-o FILE]\n";
    // What standard error begins with.
    std::pair<QStringList, char const*> const cases[] = {
        {{"missing"}, "E: no task data set in missing\n"},
        {{"broken"}, "E: could not load taskdata from broken/TASKDATA.XML: "},
        {{"broken", "-o"}, usage},
        {{}, usage}};
    for (auto const& [arguments, message] : cases) {
        ToolRun const run = preview(arguments, scratch.path());
        EXPECT_TRUE(run.exit_code == 1 && run.err.startsWith(message)) << run.outcome().constData();
    }
    EXPECT_FALSE(file_exists(scratch.file("broken/preview.html")));
}

// Chromium draws the boundaries where the page says they lie.
TEST_F(PreviewPage, RendersEveryBoundaryInChromium) {
    QString const chromium = QStandardPaths::findExecutable("chromium");
    if (chromium.isEmpty())
        GTEST_SKIP() << "chromium is not installed (scripts/install-deps.sh installs it); skipping";
    QString const page_path = scratch.file("page.html");
    ASSERT_EQ(preview({"set", "-o", page_path}, scratch.path()).exit_code, 0);
    XmlElement const panel = read_xml(page_path).find("div", "id", "f1");

    // One column of panels, 640 pixels wide beside the page's padding of 16.
    int const left = 16;
    QString const png = scratch.file("page.png");
    run_program({chromium, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                 "--force-device-scale-factor=1", "--screenshot=" + png, "--window-size=672,2000",
                 "file://" + page_path});
    QImage const image(png);
    ASSERT_FALSE(image.isNull()) << "chromium wrote no screenshot";

    // The maps are the only tall things on the page: runs of colour down the
    // column just inside their left edge, the overview's and the panel's.
    std::vector<int> tops;
    for (int y = 0, run = 0; y <= image.height(); ++y)
        if (y < image.height() && image.pixel(left + 1, y) != qRgb(255, 255, 255))
            ++run;
        else if (int const length = std::exchange(run, 0); length >= 400)
            tops.push_back(y - length);
    ASSERT_EQ(tops.size(), 2u);

    // Drawn: a pixel within two of where the point lies stands out from the
    // map's ground, #f6f4ee.
    QStringList const view = panel.all("svg").value(0).attribute("viewBox").split(' ');
    double const scale = 640 / view.value(2).toDouble(); // pixels per metre
    auto drawn_near = [&](QPointF const& p) {
        int const x = left + static_cast<int>((p.x() - view.value(0).toDouble()) * scale);
        int const y = tops[1] + static_cast<int>((p.y() - view.value(1).toDouble()) * scale);
        for (int i = 0; i < 25; ++i) {
            QColor const c = image.pixelColor(x + i % 5 - 2, y + i / 5 - 2);
            if (std::abs(c.red() - 0xf6) + std::abs(c.green() - 0xf4) + std::abs(c.blue() - 0xee) >
                30)
                return true;
        }
        return false;
    };
    EXPECT_EQ(image.pixel(left + 3, tops[1] + 3), qRgb(0xf6, 0xf4, 0xee));
    // The thirteen vertices of the outer boundary with both rings, and of the
    // rock.
    for (Polyline const& ring : {plane(outer), plane(inner), plane(pond), plane(rock)})
        for (QPointF const& p : ring)
            EXPECT_TRUE(drawn_near(p)) << "at " << p.x() << " " << p.y();
}

} // namespace
