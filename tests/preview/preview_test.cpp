// taskdata-preview run on sets the tests write or migrate: the page read back
// as XML, and rendered by Chromium where it is installed.

#include "test_support/test_support.h"

#include <QImage>
#include <QPointF>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace test_support;

namespace {

using Polyline = std::vector<QPointF>;

// At latitude 0, longitude 0 the field's plane is the equator's tangent plane:
// 0.001 degrees are a * (pi / 180000) = 111.3195 m east and a * (1 - e^2) *
// (pi / 180000) = 110.5743 m north (a = 6378137 m, e^2 = 0.00669437999).
double const east = 111.3195;  // x of 0.001 degrees of longitude
double const north = 110.5743; // -y of 0.001 degrees of latitude

QPointF at(double latitude_thousandths, double longitude_thousandths) {
    return {longitude_thousandths * east, -latitude_thousandths * north};
}

QByteArray pnt(int type, double latitude_thousandths, double longitude_thousandths) {
    return QStringLiteral("<PNT A=\"%1\" C=\"%2\" D=\"%3\"/>")
        .arg(type)
        .arg(latitude_thousandths / 1000, 0, 'f', 7)
        .arg(longitude_thousandths / 1000, 0, 'f', 7)
        .toUtf8();
}

// One field around latitude 0, longitude 0 with an element of each kind, and
// two that cannot be drawn: a ring of two points and a pattern without any.
QByteArray const one_field =
    "<PFD A=\"PFD1\" C=\"Field\" E=\"CTR1\" F=\"FRM1\">"
    "<PLN A=\"1\" B=\"Outer\" C=\"48000\"><LSG A=\"1\">" +
    pnt(2, 1, -1) + pnt(2, 1, 1) + pnt(2, -1, 1) + pnt(2, -1, -1) + "</LSG><LSG A=\"2\">" +
    pnt(2, 0.2, -0.2) + pnt(2, 0.2, 0.2) + pnt(2, -0.2, 0.2) + "</LSG></PLN>" +
    "<PLN A=\"1\" B=\"Pond\"><LSG A=\"2\">" + pnt(2, 0.5, 0.5) + pnt(2, 0.7, 0.5) +
    pnt(2, 0.5, 0.7) + "</LSG></PLN>" + "<PLN A=\"6\" B=\"Rock\"><LSG A=\"1\">" +
    pnt(2, -0.5, -0.5) + pnt(2, -0.7, -0.5) + pnt(2, -0.5, -0.7) + "</LSG></PLN>" +
    "<PLN A=\"1\" B=\"Stub\"><LSG A=\"1\">" + pnt(2, 0, 0) + pnt(2, 0.1, 0) + "</LSG></PLN>" +
    "<PNT A=\"1\" B=\"Stone\" C=\"0.0005\" D=\"-0.0005\"/>"
    "<GGP A=\"GGP1\" B=\"Lines\">"
    "<GPN A=\"GPN1\" B=\"AB 1\" C=\"1\"><LSG A=\"5\">" +
    pnt(6, -0.5, -0.5) + pnt(7, -0.5, 0.5) + "</LSG></GPN>" +
    "<GPN A=\"GPN2\" B=\"Pivot\" C=\"4\" H=\"50000\"><LSG A=\"5\">" + pnt(8, 0, 0) +
    "</LSG></GPN><GPN A=\"GPN3\" B=\"Empty\" C=\"3\"/></GGP>"
    "<GGP A=\"GGP2\" B=\"Project\"><GPN A=\"GPN4\" C=\"3\"><LSG A=\"5\">" +
    pnt(6, -0.8, -0.8) + pnt(7, -0.8, 0.8) + pnt(6, 0.8, -0.8) + pnt(7, 0.8, 0.8) +
    "</LSG></GPN></GGP></PFD>";

QByteArray const head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                        "<ISO11783_TaskData VersionMajor=\"4\" VersionMinor=\"3\" "
                        "ManagementSoftwareManufacturer=\"Tester\" "
                        "ManagementSoftwareVersion=\"2.5\" DataTransferOrigin=\"1\">"
                        "<CTR A=\"CTR1\" B=\"Client\"/><FRM A=\"FRM1\" B=\"Farm\" I=\"CTR1\"/>";

ToolRun preview(QStringList const& arguments, QString const& working_dir) {
    return run_program(command_of(QStringLiteral(TDM_PREVIEW)) + arguments, working_dir);
}

// The polylines of SVG path data "Mx y x y ...Z Mx y ...".
std::vector<Polyline> polylines(QString data) {
    std::vector<Polyline> result;
    for (QString const& part :
         data.remove(QLatin1Char('Z')).split(QLatin1Char('M'), Qt::SkipEmptyParts)) {
        QStringList const numbers = part.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        Polyline line;
        for (int i = 0; i + 1 < numbers.size(); i += 2)
            line.push_back({numbers[i].toDouble(), numbers[i + 1].toDouble()});
        result.push_back(line);
    }
    return result;
}

QString titleOf(XmlElement const& element) {
    for (XmlElement const& child : element.children)
        if (child.tag == QLatin1String("title"))
            return child.text;
    return QString();
}

XmlElement withId(XmlElement const& page, QString const& id) {
    for (XmlElement const& element : page.all(QStringLiteral("div")))
        if (element.attribute(QStringLiteral("id")) == id)
            return element;
    ADD_FAILURE() << "no panel " << id.toStdString();
    return XmlElement();
}

// The elements of that tag and class whose title is `title`.
QList<XmlElement> drawn(XmlElement const& panel, char const* tag, char const* css,
                        QString const& title) {
    QList<XmlElement> found;
    for (XmlElement const& element : panel.all(QLatin1String(tag)))
        if (element.attribute(QStringLiteral("class")) == QLatin1String(css) &&
            titleOf(element) == title)
            found << element;
    return found;
}

// Coordinates are written to a tenth of a pixel, here a few centimetres.
double const close = 0.02;

void expect_lines(std::vector<Polyline> const& expected, std::vector<Polyline> const& actual,
                  QString const& what) {
    ASSERT_EQ(actual.size(), expected.size()) << what.toStdString();
    for (std::size_t l = 0; l < expected.size(); ++l) {
        ASSERT_EQ(actual[l].size(), expected[l].size()) << what.toStdString() << " line " << l;
        for (std::size_t p = 0; p < expected[l].size(); ++p) {
            EXPECT_NEAR(actual[l][p].x(), expected[l][p].x(), close) << what.toStdString();
            EXPECT_NEAR(actual[l][p].y(), expected[l][p].y(), close) << what.toStdString();
        }
    }
}

TEST(PreviewPage, DrawsEachElementInThePlaneOfItsField) {
    ScratchDir scratch;
    write_file(scratch.file(QStringLiteral("set/TASKDATA.XML")),
               head + one_field + "</ISO11783_TaskData>");
    ToolRun const run = preview({QStringLiteral("set")}, scratch.path());
    ASSERT_EQ(run.exit_code, 0) << run.err.constData();
    XmlElement const page = read_xml(scratch.file(QStringLiteral("set/preview.html")));
    EXPECT_EQ(page.all(QStringLiteral("title")).first().text, QStringLiteral("set: Tester 2.5"));
    XmlElement const panel = withId(page, QStringLiteral("f1"));
    EXPECT_EQ(page.all(QStringLiteral("a")).first().attribute(QStringLiteral("href")),
              QStringLiteral("#f1")); // from the overview

    // The field's centre is the middle of its positions, latitude 0 and
    // longitude 0. The pond, a polygon of an interior ring alone, is cut out of
    // the outer boundary that holds it; the project lines stand end to end in
    // one line string, a part from each A to its B.
    struct Case {
        char const* css;
        char const* title;
        std::vector<Polyline> lines; // of all paths of that class and title
    };
    std::vector<Case> const cases = {
        {"pln t1",
         "Outer · field boundary · 4.80 ha",
         {{at(1, -1), at(1, 1), at(-1, 1), at(-1, -1)},
          {at(0.2, -0.2), at(0.2, 0.2), at(-0.2, 0.2)},
          {at(0.5, 0.5), at(0.7, 0.5), at(0.5, 0.7)}}},
        {"pln t6", "Rock · obstacle", {{at(-0.5, -0.5), at(-0.7, -0.5), at(-0.5, -0.7)}}},
        {"curve", "Project", {{at(-0.8, -0.8), at(-0.8, 0.8)}, {at(0.8, -0.8), at(0.8, 0.8)}}},
    };
    for (Case const& c : cases) {
        std::vector<Polyline> lines;
        for (XmlElement const& path : drawn(panel, "path", c.css, QString::fromUtf8(c.title))) {
            std::vector<Polyline> const more = polylines(path.attribute(QStringLiteral("d")));
            lines.insert(lines.end(), more.begin(), more.end());
        }
        expect_lines(c.lines, lines, QString::fromUtf8(c.title));
    }
    EXPECT_TRUE(
        drawn(panel, "path", "pln t1", QStringLiteral("Pond · field boundary · hole")).isEmpty());

    // The AB line runs across the whole panel, from its left to its right edge.
    XmlElement const map = panel.all(QStringLiteral("svg")).first();
    QStringList const view = map.attribute(QStringLiteral("viewBox")).split(QLatin1Char(' '));
    double const left = view[0].toDouble();
    double const right = left + view[2].toDouble();
    QList<XmlElement> const ab = drawn(panel, "path", "ab", QStringLiteral("AB 1"));
    ASSERT_EQ(ab.size(), 1);
    expect_lines({{{left, 0.5 * north}, {right, 0.5 * north}}},
                 polylines(ab[0].attribute(QStringLiteral("d"))), QStringLiteral("AB 1"));

    // The pivot's circle of 50 m about its centre, and the flag's marker and
    // name.
    struct Circle {
        char const* title;
        char const* css;
        QPointF centre;
    };
    for (Circle const& c :
         {Circle{"Pivot", "pivot", at(0, 0)}, Circle{"Stone", "point", at(0.5, -0.5)}}) {
        QList<XmlElement> const groups = drawn(panel, "g", "", QString::fromLatin1(c.title));
        ASSERT_EQ(groups.size(), 1) << c.title;
        XmlElement const circle = groups[0].children.at(1);
        EXPECT_EQ(circle.attribute(QStringLiteral("class")), QLatin1String(c.css));
        EXPECT_NEAR(circle.attribute(QStringLiteral("cx")).toDouble(), c.centre.x(), close);
        EXPECT_NEAR(circle.attribute(QStringLiteral("cy")).toDouble(), c.centre.y(), close);
        if (c.css == std::string("pivot"))
            EXPECT_EQ(circle.attribute(QStringLiteral("r")), QStringLiteral("50"));
        else
            EXPECT_EQ(groups[0].children.at(2).text, QStringLiteral("Stone"));
    }

    QStringList notes;
    for (XmlElement const& note : panel.all(QStringLiteral("p")))
        notes << note.text;
    EXPECT_EQ(notes, QStringList{QStringLiteral("Not drawn: 1 polygon ring with fewer than three "
                                                "points, 1 guidance pattern without points")});
}

TEST(PreviewErrors, EndWithAMessageAndStatus1) {
    ScratchDir scratch;
    write_file(scratch.file(QStringLiteral("broken/TASKDATA.XML")), "<ISO11783_TaskData");
    struct Case {
        QStringList arguments;
        QByteArray message; // what standard error begins with
    } const cases[] = {
        {{QStringLiteral("missing")}, "E: no task data set in missing\n"},
        {{QStringLiteral("broken")}, "E: could not load taskdata from broken/TASKDATA.XML: "},
        {{QStringLiteral("broken"), QStringLiteral("-o")},
         "usage: taskdata-preview SETDIR [-o FILE]\n"},
        {{}, "usage: taskdata-preview SETDIR [-o FILE]\n"},
    };
    for (Case const& c : cases) {
        ToolRun const run = preview(c.arguments, scratch.path());
        EXPECT_EQ(run.exit_code, 1) << c.message.constData();
        EXPECT_TRUE(run.err.startsWith(c.message)) << run.err.constData();
    }
    EXPECT_FALSE(file_exists(scratch.file(QStringLiteral("broken/preview.html"))));
}

// The vertices of the panel's polygons.
std::vector<QPointF> boundary_vertices(XmlElement const& panel) {
    std::vector<QPointF> vertices;
    for (XmlElement const& path : panel.all(QStringLiteral("path")))
        if (path.attribute(QStringLiteral("class")).startsWith(QLatin1String("pln")))
            for (Polyline const& ring : polylines(path.attribute(QStringLiteral("d"))))
                vertices.insert(vertices.end(), ring.begin(), ring.end());
    return vertices;
}

// Chromium draws each panel's boundaries where the page says they lie.
// The demo's set: Chromium draws each panel's boundaries where the page says
// they lie.
TEST(PreviewDemo, RendersEveryBoundaryInChromium) {
    QString const chromium = QStandardPaths::findExecutable(QStringLiteral("chromium"));
    if (chromium.isEmpty())
        GTEST_SKIP() << "chromium is not installed (scripts/install-deps.sh installs it); skipping";
    ScratchDir scratch;
    QString const page_path = scratch.file(QStringLiteral("page.html"));
    ASSERT_EQ(
        run_tool({QStringLiteral("-O"), QStringLiteral("set"), QStringLiteral(TDM_EXAMPLE_TREE)},
                 scratch.path())
            .exit_code,
        0);
    ASSERT_EQ(
        preview({QStringLiteral("set"), QStringLiteral("-o"), page_path}, scratch.path()).exit_code,
        0);
    XmlElement const page = read_xml(page_path);
    int const fields = read_xml(scratch.file(QStringLiteral("set/TASKDATA.XML")))
                           .all(QStringLiteral("PFD"))
                           .size();

    // One column of panels, 640 pixels wide beside the page's padding of 16.
    int const left = 16;
    QString const png = scratch.file(QStringLiteral("page.png"));
    run_program({chromium, QStringLiteral("--headless"), QStringLiteral("--no-sandbox"),
                 QStringLiteral("--disable-gpu"), QStringLiteral("--hide-scrollbars"),
                 QStringLiteral("--force-device-scale-factor=1"),
                 QStringLiteral("--screenshot=") + png,
                 QStringLiteral("--window-size=672,%1").arg(1200 + 700 * fields),
                 QStringLiteral("file://") + page_path});
    QImage const image(png);
    ASSERT_FALSE(image.isNull()) << "chromium wrote no screenshot";

    // The maps are the only tall things on the page: runs of colour down the
    // column just inside their left edge, the overview first.
    std::vector<int> tops;
    for (int y = 0, run = 0; y <= image.height(); ++y) {
        if (y < image.height() && image.pixel(left + 1, y) != qRgb(255, 255, 255)) {
            ++run;
        } else {
            if (run >= 400)
                tops.push_back(y - run);
            run = 0;
        }
    }
    ASSERT_EQ(static_cast<int>(tops.size()), fields + 1);

    // Drawn: a pixel within two of (x, y) stands out from the map's ground.
    QRgb const ground = qRgb(0xf6, 0xf4, 0xee);
    auto drawn_near = [&](int x, int y) {
        for (int dy = -2; dy <= 2; ++dy)
            for (int dx = -2; dx <= 2; ++dx) {
                QRgb const c = image.pixel(x + dx, y + dy);
                if (std::abs(qRed(c) - qRed(ground)) + std::abs(qGreen(c) - qGreen(ground)) +
                        std::abs(qBlue(c) - qBlue(ground)) >
                    30)
                    return true;
            }
        return false;
    };
    int drawn = 0;
    for (int f = 1; f <= fields; ++f) {
        XmlElement const panel = withId(page, QStringLiteral("f%1").arg(f));
        QStringList const view = panel.all(QStringLiteral("svg"))
                                     .first()
                                     .attribute(QStringLiteral("viewBox"))
                                     .split(QLatin1Char(' '));
        double const scale = 640 / view[2].toDouble(); // pixels per metre
        int const top = tops[static_cast<std::size_t>(f)];
        EXPECT_EQ(image.pixel(left + 3, top + 3), ground) << "panel f" << f;
        std::vector<QPointF> const vertices = boundary_vertices(panel);
        drawn += static_cast<int>(vertices.size());
        for (QPointF const& p : vertices)
            EXPECT_TRUE(drawn_near(left + static_cast<int>((p.x() - view[0].toDouble()) * scale),
                                   top + static_cast<int>((p.y() - view[1].toDouble()) * scale)))
                << "panel f" << f << " at " << p.x() << " " << p.y();
    }
    EXPECT_GT(drawn, 0);
}

} // namespace
