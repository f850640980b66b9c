#include "preview/page_writer.h"

#include "coordinates/geodetic.h"
#include "polygons/path_measures.h"
#include "polygons/path_simplify.h"
#include "preview/field_sketch.h"
#include "preview/panel_frame.h"

#include <QHash>
#include <QStringList>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

using namespace TC::Task_data::Elements::Client;

namespace {

// Sizes on the screen, in pixels.
int const panelWidth = 640;
int const panelHeight = 480;
int const panelMargin = 24;
int const overviewWidth = 960;
int const overviewHeight = 540;
int const overviewMargin = 16;
double const labelSize = 11;
double const pointRadius = 3;
double const centreRadius = 2;
double const markerRadius = 4; // a field in the overview, however small it is there
// Drawn lines are simplified to this fraction of a pixel of their panel:
// nothing the eye can see is lost, and a set of thousands of fields with
// millions of points still makes a page of a few megabytes.
float const simplifiedToPixels = 0.25f;

char const* const html = "http://www.w3.org/1999/xhtml";
char const* const svg = "http://www.w3.org/2000/svg";

// No '<', '>' or '&': a browser reads the page as HTML, where a style sheet's
// text is taken as it stands.
char const* const styleSheet = R"(
body { font: 14px sans-serif; color: #222; background: #fff; margin: 0; padding: 0 16px 16px; }
h1 { font-size: 22px; margin: 16px 0 4px; }
h2 { font-size: 19px; margin: 24px 0 8px; border-bottom: 1px solid #ccc; }
h3 { font-size: 16px; margin: 16px 0 8px; }
h4 { font-size: 15px; margin: 0 0 4px; }
.panels { display: flex; flex-wrap: wrap; gap: 16px; }
.panel { width: 640px; }
.panel ul { list-style: none; padding: 0; margin: 4px 0; }
.left-out { color: #a33; margin: 4px 0; }
svg.map { display: block; background: #f6f4ee; }
.map path, .map circle, .map rect { vector-effect: non-scaling-stroke; }
.map text { fill: #222; }
.pln { fill-rule: evenodd; fill-opacity: 0.45; stroke-width: 1.5px; }
.t1 { fill: #8bc34a; stroke: #33691e; }
.t2 { fill: #ffb74d; stroke: #e65100; }
.t3 { fill: #4fc3f7; stroke: #01579b; }
.t4 { fill: #a1887f; stroke: #4e342e; }
.t5 { fill: #bdbdbd; stroke: #424242; }
.t6 { fill: #e57373; stroke: #b71c1c; }
.t7 { fill: #fff176; stroke: #f57f17; }
.t8, .tx { fill: #ce93d8; stroke: #6a1b9a; }
.t9 { fill: #aed581; stroke: #1b5e20; }
.t10 { fill: #ffe082; stroke: #ff6f00; }
.t11 { fill: #80cbc4; stroke: #004d40; }
.t12 { fill: #90a4ae; stroke: #263238; }
.hole { fill: none; stroke: #555; stroke-dasharray: 4 3; }
.ab, .curve, .pivot, .scale { fill: none; stroke-width: 1.5px; }
.ab { stroke: #1565c0; }
.curve { stroke: #6a1b9a; }
.pivot { stroke: #00838f; }
.centre { fill: #00838f; }
.point { fill: #d81b60; stroke: #fff; stroke-width: 1px; }
.scale { stroke: #222; }
.north { fill: #222; }
.field { fill: #8bc34a; fill-opacity: 0.6; stroke: #33691e; stroke-width: 1px; }
.marker { fill: #33691e; }
.swatch { vertical-align: middle; margin-right: 4px; }
)";

QString text(String const& view) {
    QString value;
    view.get(value);
    return value;
}

QString orUnnamed(QString const& name) {
    return name.isEmpty() ? QStringLiteral("(no name)") : name;
}

// PLN A, PolygonType.
QString polygonTypeName(int type) {
    static char const* const names[] = {"field boundary", "treatment zone", "water surface",
                                        "building",       "road",           "obstacle",
                                        "flag",           "other",          "main field",
                                        "headland",       "buffer zone",    "windbreak"};
    if (type >= 1 && type <= 12)
        return QString::fromLatin1(names[type - 1]);
    return QStringLiteral("type %1").arg(type);
}

QString polygonClass(Boundary const& boundary) {
    if (boundary.hole())
        return QStringLiteral("pln hole");
    if (boundary.type >= 1 && boundary.type <= 12)
        return QStringLiteral("pln t%1").arg(boundary.type);
    return QStringLiteral("pln tx");
}

// "name · field boundary · 12.34 ha"
QString describe(Boundary const& boundary) {
    QStringList parts{orUnnamed(boundary.name), polygonTypeName(boundary.type)};
    if (boundary.hole())
        parts << QStringLiteral("hole");
    if (boundary.area)
        parts << QStringLiteral("%1 ha").arg(*boundary.area / 10000.0, 0, 'f', 2);
    return parts.join(QStringLiteral(" · "));
}

QString leftOutText(LeftOut why, int count) {
    static char const* const kinds[leftOutKinds][2] = {
        {"polygon ring with fewer than three points", "polygon rings with fewer than three points"},
        {"guidance pattern without points", "guidance patterns without points"},
        {"guidance line without a direction", "guidance lines without a direction"},
        {"pivot without a radius", "pivots without a radius"},
        {"guidance pattern of an unknown type", "guidance patterns of an unknown type"},
        {"point without a position", "points without a position"}};
    return QStringLiteral("%1 %2").arg(count).arg(
        QString::fromLatin1(kinds[static_cast<int>(why)][count == 1 ? 0 : 1]));
}

// A field ready to be drawn: its lines simplified for its panel.
struct PlacedField {
    QString id; // "f1"
    QString client;
    QString farm;
    FieldSketch sketch;
    PanelFrame frame;
    LocalPoint offset; // of its centre in the overview's plane
};

void simplify(FieldSketch& sketch, float tolerance) {
    for (Boundary& boundary : sketch.boundaries) {
        for (BoundaryRing& ring : boundary.rings)
            ring.points = simplifyPath(ring.points, true, tolerance);
        // What shrank below three points is smaller than the tolerance.
        auto const gone = [](BoundaryRing const& ring) { return ring.points.size() < 3; };
        boundary.rings.erase(std::remove_if(boundary.rings.begin(), boundary.rings.end(), gone),
                             boundary.rings.end());
    }
    for (LineGroup& group : sketch.groups)
        for (GuidanceLine& line : group.lines)
            if (line.shape == PatternShape::Curve)
                line.points = simplifyPath(line.points, false, tolerance);
}

// Fields in page order: by client, then farm, each in the order of its list,
// then by the order of the fields; those without a client or farm last.
std::vector<PlacedField> placeFields(Task_data const& root) {
    QHash<Element, int> clientOrder;
    QHash<Element, int> farmOrder;
    for (Customer const client : root.customers())
        clientOrder.insert(client, clientOrder.size());
    for (Farm const farm : root.farms())
        farmOrder.insert(farm, farmOrder.size());
    int const missing = std::numeric_limits<int>::max();

    struct Entry {
        int client_order, farm_order, order;
        Partfield field;
        Customer client; // the field's, or else its farm's
        Farm farm;
    };
    std::vector<Entry> entries;
    for (Partfield const field : root.partfields()) {
        Farm const farm = field.get_farm();
        Customer const client =
            field.get_customer().valid() ? field.get_customer() : farm.get_customer();
        entries.push_back({clientOrder.value(client, missing), farmOrder.value(farm, missing),
                           static_cast<int>(entries.size()), field, client, farm});
    }
    std::sort(entries.begin(), entries.end(), [](Entry const& a, Entry const& b) {
        return std::tie(a.client_order, a.farm_order, a.order) <
               std::tie(b.client_order, b.farm_order, b.order);
    });

    std::vector<PlacedField> fields;
    for (Entry const& entry : entries) {
        PlacedField placed;
        placed.id = QStringLiteral("f%1").arg(fields.size() + 1);
        placed.client = entry.client.valid() ? orUnnamed(text(entry.client.designator()))
                                             : QStringLiteral("(no client)");
        placed.farm = entry.farm.valid() ? orUnnamed(text(entry.farm.designator()))
                                         : QStringLiteral("(no farm)");
        placed.sketch = readFieldSketch(entry.field);
        placed.frame = frameAround(boundsOf(placed.sketch), panelWidth, panelHeight, panelMargin);
        simplify(placed.sketch,
                 simplifiedToPixels * static_cast<float>(placed.frame.metresPerPixel));
        fields.push_back(std::move(placed));
    }
    return fields;
}

class PageWriter {
public:
    explicit PageWriter(QIODevice* device) : xml_(device) {}

    void write(Task_data const& root, QString const& setName) {
        std::vector<PlacedField> fields = placeFields(root);
        QString const software = attribute(root, "ManagementSoftwareManufacturer");
        QString const version = attribute(root, "ManagementSoftwareVersion");
        QString const writtenBy =
            software.isEmpty() && version.isEmpty()
                ? QStringLiteral("unnamed software")
                : QStringList{software, version}.join(QLatin1Char(' ')).trimmed();

        xml_.writeStartDocument();
        xml_.writeDTD(QStringLiteral("<!DOCTYPE html>"));
        xml_.writeDefaultNamespace(QString::fromLatin1(html));
        xml_.writeStartElement(QString::fromLatin1(html), QStringLiteral("html"));
        xml_.writeStartElement(QStringLiteral("head"));
        xml_.writeEmptyElement(QStringLiteral("meta"));
        xml_.writeAttribute(QStringLiteral("charset"), QStringLiteral("utf-8"));
        xml_.writeTextElement(QStringLiteral("title"),
                              QStringLiteral("%1: %2").arg(setName, writtenBy));
        xml_.writeTextElement(QStringLiteral("style"), QString::fromLatin1(styleSheet));
        xml_.writeEndElement(); // head
        xml_.writeStartElement(QStringLiteral("body"));
        xml_.writeTextElement(QStringLiteral("h1"), setName);
        xml_.writeTextElement(
            QStringLiteral("p"),
            QStringLiteral("Written by %1 · ISO 11783-10 version %2.%3 · %4 fields")
                .arg(writtenBy, attribute(root, "VersionMajor"), attribute(root, "VersionMinor"))
                .arg(fields.size()));
        writeOverview(fields);
        writePanels(fields);
        xml_.writeEndElement(); // body
        xml_.writeEndElement(); // html
        xml_.writeEndDocument();
    }

private:
    static QString attribute(Element const& element, char const* name) {
        QString value;
        String(element.attribute(name)).get(value);
        return value;
    }

    void attributes(std::initializer_list<std::pair<char const*, QString>> values) {
        for (auto const& value : values)
            xml_.writeAttribute(QLatin1String(value.first), value.second);
    }

    // An svg element with the SVG namespace as its default, as HTML reads it.
    void startSvgElement() {
        // Closes the parent's start tag, which would take the declaration
        // otherwise.
        xml_.writeCharacters(QString());
        xml_.writeDefaultNamespace(QString::fromLatin1(svg));
        xml_.writeStartElement(QString::fromLatin1(svg), QStringLiteral("svg"));
    }

    void startSvg(char const* kind, PanelFrame const& frame, int width, int height) {
        startSvgElement();
        attributes({{"class", QString::fromLatin1(kind)},
                    {"width", QString::number(width)},
                    {"height", QString::number(height)},
                    {"viewBox", frame.viewBox()},
                    {"font-size", frame.pixels(labelSize)}});
    }

    void title(QString const& text) { xml_.writeTextElement(QStringLiteral("title"), text); }

    void path(QString const& cssClass, QString const& data) {
        xml_.writeEmptyElement(QStringLiteral("path"));
        attributes({{"class", cssClass}, {"d", data}});
    }

    void circle(QString const& cssClass, LocalPoint at, QString const& radius,
                PanelFrame const& frame) {
        xml_.writeEmptyElement(QStringLiteral("circle"));
        attributes({{"class", cssClass},
                    {"cx", frame.number(at.x)},
                    {"cy", frame.number(at.y)},
                    {"r", radius}});
    }

    void label(LocalPoint at, QString const& text, PanelFrame const& frame) {
        xml_.writeStartElement(QStringLiteral("text"));
        attributes({{"x", frame.number(at.x)}, {"y", frame.number(at.y)}});
        xml_.writeCharacters(text);
        xml_.writeEndElement();
    }

    // All fields at their place: the outline of each, translated from its own
    // plane to the place of its centre in the overview's plane, and a marker
    // that keeps even a small field visible, each a link to its panel.
    void writeOverview(std::vector<PlacedField>& fields) {
        double south = 90, north = -90, west = 180, east = -180;
        for (PlacedField const& field : fields)
            if (field.sketch.centre) {
                south = std::min(south, field.sketch.centre->latitude);
                north = std::max(north, field.sketch.centre->latitude);
                west = std::min(west, field.sketch.centre->longitude);
                east = std::max(east, field.sketch.centre->longitude);
            }
        GeoPoint const centre{(south + north) / 2, (west + east) / 2, 0};
        Bounds bounds;
        int unplaced = 0;
        for (PlacedField& field : fields) {
            if (!field.sketch.centre) {
                ++unplaced;
                continue;
            }
            field.offset = geoToLocal(*field.sketch.centre, centre);
            bounds.add(field.offset);
            bounds.add(boundsOf(field.sketch).shifted(field.offset));
        }

        xml_.writeStartElement(QStringLiteral("section"));
        xml_.writeAttribute(QStringLiteral("id"), QStringLiteral("overview"));
        xml_.writeTextElement(QStringLiteral("h2"), QStringLiteral("Overview"));
        if (unplaced < static_cast<int>(fields.size())) {
            PanelFrame const frame =
                frameAround(bounds, overviewWidth, overviewHeight, overviewMargin);
            float const tolerance = simplifiedToPixels * static_cast<float>(frame.metresPerPixel);
            startSvg("map overview", frame, overviewWidth, overviewHeight);
            for (PlacedField const& field : fields) {
                if (!field.sketch.centre)
                    continue;
                xml_.writeStartElement(QStringLiteral("a"));
                xml_.writeAttribute(QStringLiteral("href"), QLatin1Char('#') + field.id);
                title(QStringList{field.client, field.farm, orUnnamed(field.sketch.name)}.join(
                    QStringLiteral(" / ")));
                QString outline;
                for (Boundary const& boundary : field.sketch.boundaries)
                    for (BoundaryRing const& ring : boundary.rings) {
                        Path const shown = simplifyPath(ring.points, true, tolerance);
                        if (shown.size() >= 3)
                            outline += pathData(shown, true, frame, field.offset);
                    }
                if (!outline.isEmpty())
                    path(QStringLiteral("field"), outline);
                circle(QStringLiteral("marker"), field.offset, frame.pixels(markerRadius), frame);
                xml_.writeEndElement(); // a
            }
            xml_.writeEndElement(); // svg
        }
        if (fields.empty())
            xml_.writeTextElement(QStringLiteral("p"), QStringLiteral("The set holds no fields."));
        else if (unplaced > 0)
            xml_.writeTextElement(
                QStringLiteral("p"),
                QStringLiteral("Fields with nothing to place them by: %1").arg(unplaced));
        xml_.writeEndElement(); // section
    }

    void writePanels(std::vector<PlacedField> const& fields) {
        QString client, farm;
        bool open = false;
        for (PlacedField const& field : fields) {
            bool const newClient = !open || field.client != client;
            if (newClient || field.farm != farm) {
                if (open) {
                    xml_.writeEndElement(); // div panels
                    xml_.writeEndElement(); // section farm
                    if (newClient)
                        xml_.writeEndElement(); // section client
                }
                if (newClient) {
                    xml_.writeStartElement(QStringLiteral("section"));
                    xml_.writeAttribute(QStringLiteral("class"), QStringLiteral("client"));
                    xml_.writeTextElement(QStringLiteral("h2"), field.client);
                }
                xml_.writeStartElement(QStringLiteral("section"));
                xml_.writeAttribute(QStringLiteral("class"), QStringLiteral("farm"));
                xml_.writeTextElement(QStringLiteral("h3"), field.farm);
                xml_.writeStartElement(QStringLiteral("div"));
                xml_.writeAttribute(QStringLiteral("class"), QStringLiteral("panels"));
                client = field.client;
                farm = field.farm;
                open = true;
            }
            writePanel(field);
        }
        if (open) {
            xml_.writeEndElement(); // div panels
            xml_.writeEndElement(); // section farm
            xml_.writeEndElement(); // section client
        }
    }

    void writePanel(PlacedField const& field) {
        FieldSketch const& sketch = field.sketch;
        xml_.writeStartElement(QStringLiteral("div"));
        attributes({{"class", QStringLiteral("panel")}, {"id", field.id}});
        xml_.writeTextElement(QStringLiteral("h4"), orUnnamed(sketch.name));
        if (sketch.centre) {
            startSvg("map", field.frame, panelWidth, panelHeight);
            xml_.writeAttribute(QStringLiteral("id"), field.id + QStringLiteral("-map"));
            writeBoundaries(sketch.boundaries, field.frame);
            for (LineGroup const& group : sketch.groups)
                writeGroup(group, field.frame);
            for (FieldPoint const& point : sketch.points)
                writePoint(point, field.frame);
            writeScaleBar(field.frame);
            writeNorthArrow(field.frame);
            xml_.writeEndElement(); // svg
        } else {
            xml_.writeTextElement(QStringLiteral("p"), QStringLiteral("Nothing to draw."));
        }
        writeBoundaryList(sketch.boundaries);
        QStringList leftOut;
        for (int why = 0; why < leftOutKinds; ++why)
            if (sketch.left_out[why] > 0)
                leftOut << leftOutText(static_cast<LeftOut>(why), sketch.left_out[why]);
        if (!leftOut.isEmpty()) {
            xml_.writeStartElement(QStringLiteral("p"));
            xml_.writeAttribute(QStringLiteral("class"), QStringLiteral("left-out"));
            xml_.writeCharacters(QStringLiteral("Not drawn: ") +
                                 leftOut.join(QStringLiteral(", ")));
            xml_.writeEndElement();
        }
        xml_.writeEndElement(); // div panel
    }

    // Each polygon is one path of all its rings, filled by the even-odd rule,
    // so that its interior rings are holes. A polygon of interior rings alone
    // (a hole kept as a polygon of its own) joins the path of the first
    // polygon of its type that holds it, and is outlined where none does.
    void writeBoundaries(std::vector<Boundary> const& boundaries, PanelFrame const& frame) {
        std::vector<QString> data(boundaries.size());
        std::vector<bool> joined(boundaries.size(), false);
        for (std::size_t i = 0; i < boundaries.size(); ++i)
            for (BoundaryRing const& ring : boundaries[i].rings)
                data[i] += pathData(ring.points, true, frame);
        for (std::size_t h = 0; h < boundaries.size(); ++h) {
            if (!boundaries[h].hole())
                continue;
            LocalPoint const inside = boundaries[h].rings.front().points.front();
            for (std::size_t i = 0; i < boundaries.size() && !joined[h]; ++i) {
                Boundary const& outer = boundaries[i];
                if (outer.hole() || outer.type != boundaries[h].type)
                    continue;
                for (BoundaryRing const& ring : outer.rings)
                    if (!ring.interior && pointInRing(inside, ring.points)) {
                        data[i] += data[h];
                        joined[h] = true;
                        break;
                    }
            }
        }
        for (std::size_t i = 0; i < boundaries.size(); ++i) {
            if (joined[i] || data[i].isEmpty())
                continue;
            xml_.writeStartElement(QStringLiteral("path"));
            attributes({{"class", polygonClass(boundaries[i])}, {"d", data[i]}});
            title(describe(boundaries[i]));
            xml_.writeEndElement();
        }
    }

    void writeGroup(LineGroup const& group, PanelFrame const& frame) {
        xml_.writeStartElement(QStringLiteral("g"));
        xml_.writeAttribute(QStringLiteral("class"), QStringLiteral("group"));
        title(orUnnamed(group.name));
        for (GuidanceLine const& line : group.lines) {
            switch (line.shape) {
            case PatternShape::Line: {
                LocalPoint const a = line.points.front();
                double const heading = line.heading * 3.141592653589793 / 180.0;
                LocalPoint const direction =
                    line.points.size() > 1
                        ? LocalPoint{line.points[1].x - a.x, line.points[1].y - a.y}
                        : LocalPoint{static_cast<float>(std::sin(heading)),
                                     static_cast<float>(-std::cos(heading))};
                if (std::optional<Path> const across = lineAcross(a, direction, frame)) {
                    xml_.writeStartElement(QStringLiteral("path"));
                    attributes(
                        {{"class", QStringLiteral("ab")}, {"d", pathData(*across, false, frame)}});
                    title(orUnnamed(line.name));
                    xml_.writeEndElement();
                }
                break;
            }
            case PatternShape::Curve:
                xml_.writeStartElement(QStringLiteral("path"));
                attributes({{"class", QStringLiteral("curve")},
                            {"d", pathData(line.points, false, frame)}});
                title(orUnnamed(line.name));
                xml_.writeEndElement();
                break;
            case PatternShape::Circle:
                xml_.writeStartElement(QStringLiteral("g"));
                title(orUnnamed(line.name));
                circle(QStringLiteral("pivot"), line.points.front(), frame.number(line.radius),
                       frame);
                circle(QStringLiteral("centre"), line.points.front(), frame.pixels(centreRadius),
                       frame);
                xml_.writeEndElement();
                break;
            }
        }
        xml_.writeEndElement(); // g
    }

    void writePoint(FieldPoint const& point, PanelFrame const& frame) {
        xml_.writeStartElement(QStringLiteral("g"));
        title(orUnnamed(point.name));
        circle(QStringLiteral("point"), point.at, frame.pixels(pointRadius), frame);
        double const gap = (pointRadius + 2) * frame.metresPerPixel;
        label(
            LocalPoint{static_cast<float>(point.at.x + gap), static_cast<float>(point.at.y - gap)},
            point.name, frame);
        xml_.writeEndElement();
    }

    // A bar of 1, 2 or 5 times a power of ten metres, at most a quarter of the
    // panel wide, in its lower left corner.
    void writeScaleBar(PanelFrame const& frame) {
        double const most = frame.width / 4;
        double const power = std::pow(10.0, std::floor(std::log10(most)));
        double const length = 5 * power <= most ? 5 * power : 2 * power <= most ? 2 * power : power;
        double const x = frame.left + 12 * frame.metresPerPixel;
        double const y = frame.top + frame.height - 12 * frame.metresPerPixel;
        double const tick = 5 * frame.metresPerPixel;
        path(QStringLiteral("scale"), QStringLiteral("M%1 %2V%3H%4V%2")
                                          .arg(frame.number(x), frame.number(y - tick),
                                               frame.number(y), frame.number(x + length)));
        label(LocalPoint{static_cast<float>(x),
                         static_cast<float>(y - tick - 3 * frame.metresPerPixel)},
              QStringLiteral("%1 m").arg(length), frame);
    }

    // North is up: the plane's y runs south.
    void writeNorthArrow(PanelFrame const& frame) {
        double const unit = frame.metresPerPixel;
        double const x = frame.left + frame.width - 20 * unit;
        double const y = frame.top + 34 * unit;
        xml_.writeStartElement(QStringLiteral("g"));
        xml_.writeAttribute(QStringLiteral("class"), QStringLiteral("north"));
        path(QStringLiteral("north"),
             QStringLiteral("M%1 %2L%3 %4L%1 %5L%6 %4Z")
                 .arg(frame.number(x), frame.number(y - 18 * unit), frame.number(x + 6 * unit),
                      frame.number(y), frame.number(y - 5 * unit), frame.number(x - 6 * unit)));
        label(LocalPoint{static_cast<float>(x - 4 * unit), static_cast<float>(y - 21 * unit)},
              QStringLiteral("N"), frame);
        xml_.writeEndElement();
    }

    // The legend of the panel: every polygon with its type's colour, name,
    // type and area.
    void writeBoundaryList(std::vector<Boundary> const& boundaries) {
        if (boundaries.empty())
            return;
        xml_.writeStartElement(QStringLiteral("ul"));
        for (Boundary const& boundary : boundaries) {
            xml_.writeStartElement(QStringLiteral("li"));
            startSvgElement();
            attributes({{"class", QStringLiteral("swatch")},
                        {"width", QStringLiteral("14")},
                        {"height", QStringLiteral("14")}});
            xml_.writeEmptyElement(QStringLiteral("rect"));
            attributes({{"class", polygonClass(boundary)},
                        {"x", QStringLiteral("1")},
                        {"y", QStringLiteral("1")},
                        {"width", QStringLiteral("12")},
                        {"height", QStringLiteral("12")}});
            xml_.writeEndElement(); // svg
            xml_.writeCharacters(describe(boundary));
            xml_.writeEndElement(); // li
        }
        xml_.writeEndElement(); // ul
    }

    QXmlStreamWriter xml_;
};

} // namespace

void writePage(QIODevice* device, Task_data const& root, QString const& set_name) {
    PageWriter(device).write(root, set_name);
}
