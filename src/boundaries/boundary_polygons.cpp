#include "boundaries/boundary_polygons.h"

#include "coordinates/local_frame.h"
#include "polygons/path_measures.h"
#include "taskdata/proprietary.h"
#include "taskdata/whole_numbers.h"

#include <QHash>
#include <QPointF>
#include <QSet>
#include <QUuid>
#include <QVariant>

#include <cmath>

using namespace TC::Task_data;
using namespace TC::Task_data::Elements::Client;

namespace {

// PLN A, PolygonType: partfield boundary.
unsigned char const boundary_polygon_type = 1;
// PLN D, PolygonColour, of every boundary.
unsigned char const boundary_colour = 9;
// LSG A, LineStringType.
unsigned char const exterior_ring = 1;
unsigned char const interior_ring = 2;

// What an earlier run left: its line strings by identity, and the boundary
// polygons without any line string.
struct FormerBoundaries {
    QHash<QUuid, Linestring> linestrings;
    QSet<Polygon> empty_polygons;
};

FormerBoundaries take_inventory(Partfield const& partfield) {
    FormerBoundaries former;
    unsigned int const polygons = partfield.num_polygon();
    for (unsigned int i = 0; i < polygons; ++i) {
        Polygon const polygon = partfield.get_polygon(i);
        unsigned char type = 0;
        if (!polygon.type().get(type) || type != boundary_polygon_type)
            continue;
        unsigned int const linestrings = polygon.num_linestring();
        if (linestrings == 0)
            former.empty_polygons.insert(polygon);
        for (unsigned int j = 0; j < linestrings; ++j) {
            Linestring const linestring = polygon.get_linestring(j);
            QUuid const uuid = linestring.get_uuid();
            // A later line string of the same identity takes the place of
            // the earlier, which then stays.
            if (!uuid.isNull())
                former.linestrings.insert(uuid, linestring);
        }
    }
    return former;
}

void set_treatment(Linestring linestring, int treatment) {
    switch (treatment) {
    case 1:
        linestring.type().set(interior_ring, true);
        linestring.enabled().set(1, true);
        break;
    case 2:
        linestring.enabled().set(0, true);
        break;
    default:
        linestring.type().set(exterior_ring, true);
        linestring.enabled().set(1, true);
        break;
    }
}

void add_polygon(Partfield const& partfield, BoundaryRecord const& record) {
    Polygon polygon = partfield.create_polygon(true);
    polygon.type().set(boundary_polygon_type, true);
    Linestring linestring = polygon.create_linestring(true);
    linestring.set_uuid(QUuid::createUuid());
    add_boundary_points(linestring, record.points);
    set_proprietary(linestring, QStringLiteral("category"), QVariant(record.category));
    set_treatment(linestring, record.treatment);
    polygon.area().set(truncate_to<unsigned int>(boundary_area(record)), true);
    polygon.designator().set(record.name, true);
    linestring.designator().set(record.name, true);
    polygon.colour().set(boundary_colour, true);
}

} // namespace

bool write_boundaries(Partfield partfield, BoundaryList const& records) {
    // Taken before anything is made, so that the new polygons can't count
    // among the former ones.
    FormerBoundaries const former = take_inventory(partfield);

    for (BoundaryRecord const& record : records)
        add_polygon(partfield, record);

    for (Linestring const& linestring : former.linestrings) {
        Polygon const polygon(linestring.get_parent());
        polygon.remove_linestring(linestring);
        if (polygon.num_linestring() == 0)
            partfield.remove_polygon(polygon);
    }
    for (Polygon const& polygon : former.empty_polygons)
        partfield.remove_polygon(polygon);
    return true;
}

void add_boundary_points(Linestring linestring, std::vector<GeoPoint> const& points) {
    if (points.empty())
        return;
    QPointF const origin(points.front().longitude, points.front().latitude);
    Polyline polyline(origin);
    polyline.reserve(static_cast<int>(points.size()) + 1);
    for (GeoPoint const& point : points)
        polyline.append(QPointF(point.longitude - origin.x(), point.latitude - origin.y()));
    polyline.close();
    linestring.add_points(polyline, false, false);
}

double boundary_area(BoundaryRecord const& record) {
    std::vector<GeoPoint> const& points = record.points;
    if (points.size() < 3)
        return 0.0;
    LocalFrame const frame(points.front());
    Path local;
    local.reserve(points.size());
    for (GeoPoint const& point : points)
        local.push_back(frame.toLocal(point));
    // Summed in single precision, as the display sums it: that decides the
    // last digits of large areas.
    return static_cast<double>(std::fabs(signedArea(local)));
}
