#include "preview/field_sketch.h"

#include "coordinates/geodetic.h"

#include <algorithm>
#include <cmath>

using namespace TC::Task_data::Elements::Client;

bool Boundary::hole() const {
    return !rings.empty() && std::all_of(rings.begin(), rings.end(),
                                         [](BoundaryRing const& ring) { return ring.interior; });
}

namespace {

// LSG A, LineStringType: a polygon's interior ring.
unsigned char const interiorRing = 2;
// PNT A, PointType: where a line begins (guidance reference A), and the
// centre of a pivot.
unsigned char const referenceA = 6;
unsigned char const centrePoint = 8;

bool isPosition(double latitude, double longitude) {
    return std::abs(latitude) <= 90.0 && std::abs(longitude) <= 180.0;
}

bool samePlace(GeoPoint a, GeoPoint b) {
    return a.latitude == b.latitude && a.longitude == b.longitude;
}

QString designatorOf(String const& view) {
    QString text;
    view.get(text);
    return text;
}

// The field is read with positions in degrees; each path of the sketch gets
// as many (empty) points as it has positions, and the positions are kept in
// the order of the paths, then of the field's points. Once every position is
// known, and with them the centre, place() puts each path into the plane.
class Reader {
public:
    FieldSketch sketch;

    // The positions of the line string's points, those of `wanted` type only
    // when it is given.
    std::vector<GeoPoint> positionsOf(Linestring const& line,
                                      std::optional<unsigned char> wanted = std::nullopt) const {
        std::vector<GeoPoint> found;
        unsigned int const count = line.get_num_points();
        for (unsigned int i = 0; i < count; ++i) {
            GeoPoint at;
            unsigned char type = 0;
            if (wanted && !(line.get_type(i, type) && type == *wanted))
                continue;
            if (line.get_position(i, at.latitude, at.longitude) &&
                isPosition(at.latitude, at.longitude))
                found.push_back(at);
        }
        return found;
    }

    // The positions of the line string in parts, a new one at each point of
    // type referenceA: the lines of one source can stand end to end in one
    // line string, each from its A to its B.
    std::vector<std::vector<GeoPoint>> partsOf(Linestring const& line) const {
        std::vector<std::vector<GeoPoint>> parts(1);
        unsigned int const count = line.get_num_points();
        for (unsigned int i = 0; i < count; ++i) {
            GeoPoint at;
            unsigned char type = 0;
            if (line.get_type(i, type) && type == referenceA && !parts.back().empty())
                parts.emplace_back();
            if (line.get_position(i, at.latitude, at.longitude) &&
                isPosition(at.latitude, at.longitude))
                parts.back().push_back(at);
        }
        return parts;
    }

    // A path to be placed later, for these positions.
    Path pathFor(std::vector<GeoPoint> const& read) {
        for (GeoPoint const& at : read)
            keep(at);
        return Path(read.size());
    }

    void keep(GeoPoint at) {
        positions_.push_back(at);
        south_ = std::min(south_, at.latitude);
        north_ = std::max(north_, at.latitude);
        west_ = std::min(west_, at.longitude);
        east_ = std::max(east_, at.longitude);
    }

    void count(LeftOut why) { ++sketch.left_out[static_cast<int>(why)]; }

    void place() {
        if (positions_.empty())
            return;
        GeoPoint const centre{(south_ + north_) / 2.0, (west_ + east_) / 2.0, 0.0};
        sketch.centre = centre;
        auto next = positions_.begin();
        auto placeAll = [&](Path& path) {
            for (LocalPoint& point : path)
                point = geoToLocal(*next++, centre);
        };
        for (Boundary& boundary : sketch.boundaries)
            for (BoundaryRing& ring : boundary.rings)
                placeAll(ring.points);
        for (LineGroup& group : sketch.groups)
            for (GuidanceLine& line : group.lines)
                placeAll(line.points);
        for (FieldPoint& point : sketch.points)
            point.at = geoToLocal(*next++, centre);
    }

private:
    std::vector<GeoPoint> positions_;
    double south_ = 90.0, north_ = -90.0, west_ = 180.0, east_ = -180.0;
};

void readBoundaries(Partfield const& field, Reader& reader) {
    for (unsigned int i = 0; i < field.num_polygon(); ++i) {
        Polygon const polygon = field.get_polygon(i);
        Boundary boundary;
        unsigned char type = 0;
        if (polygon.type().get(type))
            boundary.type = type;
        boundary.name = designatorOf(polygon.designator());
        unsigned int area = 0;
        if (polygon.area().get(area))
            boundary.area = area;
        unsigned int const rings = polygon.num_linestring();
        if (rings == 0)
            reader.count(LeftOut::ShortRing);
        for (unsigned int r = 0; r < rings; ++r) {
            Linestring const line = polygon.get_linestring(r);
            std::vector<GeoPoint> const read = reader.positionsOf(line);
            if (read.size() < 3) {
                reader.count(LeftOut::ShortRing);
                continue;
            }
            unsigned char lineType = 0;
            bool const interior = line.type().get(lineType) && lineType == interiorRing;
            boundary.rings.push_back({reader.pathFor(read), interior});
        }
        if (!boundary.rings.empty())
            reader.sketch.boundaries.push_back(std::move(boundary));
    }
}

bool onePlace(std::vector<GeoPoint> const& positions) {
    return std::all_of(positions.begin(), positions.end(),
                       [&](GeoPoint at) { return samePlace(at, positions.front()); });
}

// Adds the lines that draw the pattern to the group, or gives the reason why
// it cannot be drawn.
std::optional<LeftOut> readPattern(Guidance_pattern const& pattern, GuidanceLine line,
                                   LineGroup& group, Reader& reader) {
    unsigned char type = 0;
    pattern.type().get(type);
    if (type < 1 || type > 5)
        return LeftOut::UnknownPattern;
    Linestring const first = pattern.get_linestring(0);
    std::vector<GeoPoint> const read = reader.positionsOf(first);
    if (read.empty())
        return LeftOut::PatternWithoutPoints;
    switch (type) {
    case 1: // AB: through A and B, its first and last points
        if (onePlace(read))
            return LeftOut::LineWithoutDirection;
        line.shape = PatternShape::Line;
        line.points = reader.pathFor({read.front(), read.back()});
        break;
    case 2: { // A+: through A along the heading
        double heading = 0.0;
        if (!pattern.heading().get(heading) || !std::isfinite(heading))
            return LeftOut::LineWithoutDirection;
        line.shape = PatternShape::Line;
        line.heading = static_cast<float>(heading);
        line.points = reader.pathFor({read.front()});
        break;
    }
    case 4: { // pivot: around the point marked as centre, else its first
        unsigned int radius = 0;
        if (!pattern.radius().get(radius) || radius == 0)
            return LeftOut::PivotWithoutRadius;
        std::vector<GeoPoint> const centres = reader.positionsOf(first, centrePoint);
        line.shape = PatternShape::Circle;
        line.radius = static_cast<float>(radius / 1000.0);
        line.points = reader.pathFor({centres.empty() ? read.front() : centres.front()});
        break;
    }
    default: { // curve, spiral: each part that goes somewhere
        line.shape = PatternShape::Curve;
        std::size_t const before = group.lines.size();
        for (std::vector<GeoPoint> const& part : reader.partsOf(first))
            if (!part.empty() && !onePlace(part)) {
                group.lines.push_back(line);
                group.lines.back().points = reader.pathFor(part);
            }
        return group.lines.size() > before ? std::nullopt
                                           : std::optional(LeftOut::LineWithoutDirection);
    }
    }
    group.lines.push_back(std::move(line));
    return std::nullopt;
}

void readGroups(Partfield const& field, Reader& reader) {
    for (unsigned int g = 0; g < field.num_guidance_paths(); ++g) {
        GuidanceGroup const source = field.get_guidance_paths(g);
        LineGroup group;
        group.name = designatorOf(source.designator());
        for (unsigned int p = 0; p < source.num_patterns(); ++p) {
            Guidance_pattern const pattern = source.get_patterns(p);
            GuidanceLine line;
            line.name = designatorOf(pattern.designator());
            if (line.name.isEmpty())
                line.name = group.name;
            if (std::optional<LeftOut> const why = readPattern(pattern, line, group, reader))
                reader.count(*why);
        }
        if (!group.lines.empty())
            reader.sketch.groups.push_back(std::move(group));
    }
}

void readPoints(Partfield const& field, Reader& reader) {
    for (unsigned int i = 0; i < field.num_point(); ++i) {
        Point const point = field.get_point(i);
        GeoPoint at;
        if (!point.north().get(at.latitude) || !point.east().get(at.longitude) ||
            !isPosition(at.latitude, at.longitude)) {
            reader.count(LeftOut::PointWithoutPosition);
            continue;
        }
        reader.keep(at);
        reader.sketch.points.push_back({designatorOf(point.designator()), LocalPoint()});
    }
}

} // namespace

FieldSketch readFieldSketch(Partfield const& field) {
    Reader reader;
    reader.sketch.name = designatorOf(field.designator());
    readBoundaries(field, reader);
    readGroups(field, reader);
    readPoints(field, reader);
    reader.place();
    return std::move(reader.sketch);
}
