#include "polygons/path_offset.h"

#include "polygons/path_clip.h"
#include "polygons/path_grid.h"
#include "polygons/path_simplify.h"

#include <clipper.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Edges up to this long (compared in double) give no direction from rounding noise.
double const shortestDirectedEdge = 1e-6;

// The unit vector from `from` to `to`, or (0, 1) where they are no more than
// shortestDirectedEdge apart.
LocalPoint directionOrUp(LocalPoint from, LocalPoint to) {
    float const dx = to.x - from.x;
    float const dy = to.y - from.y;
    float const length = std::sqrt(dx * dx + dy * dy);
    if (static_cast<double>(length) <= shortestDirectedEdge)
        return {0.0f, 1.0f};
    return {dx / length, dy / length};
}

LocalPoint movedBy(LocalPoint point, float distance, LocalPoint direction) {
    return {point.x + distance * direction.x, point.y + distance * direction.y};
}

// The number of points of a round join: trunc(|distance| * angle / arc_step), the product taken
// in double. A quotient that is not a positive number gives none, and a huge or infinite one
// (a tiny or zero arc_step) mostJoinPoints.
int joinSteps(float distance, float angle, float arc_step) {
    float const arc =
        static_cast<float>(static_cast<double>(std::fabs(distance)) * static_cast<double>(angle));
    float const steps = arc / arc_step;
    if (!(steps > 0.0f))
        return 0;
    return steps < static_cast<float>(mostJoinPoints) ? static_cast<int>(steps) : mostJoinPoints;
}

} // namespace

Path offsetRing(Path const& ring, std::vector<int>* source_index, float distance, float arc_step) {
    Path result;
    std::size_t const size = ring.size();
    // A positive distance offsets to the left, where a right turn makes the outer corner.
    float const side = distance > 0.0f ? -1.0f : 1.0f;
    for (std::size_t i = 0; i < size; ++i) {
        LocalPoint const prev = ring[(i + size - 1) % size];
        LocalPoint const cur = ring[i];
        LocalPoint const next = ring[(i + 1) % size];
        LocalPoint const d1 = directionOrUp(prev, cur);
        LocalPoint const d2 = directionOrUp(cur, next);
        LocalPoint const n1{-d1.y, d1.x};
        LocalPoint const n2{-d2.y, d2.x};
        std::size_t const first = result.size();

        result.push_back(movedBy(cur, distance, n1));
        float const turn = side * (d1.x * d2.y - d1.y * d2.x);
        if (turn >= 0.0f) {
            float const angle = std::acos(std::clamp(d1.x * d2.x + d1.y * d2.y, -1.0f, 1.0f));
            int const steps = joinSteps(distance, angle, arc_step);
            float const stepAngle = angle / static_cast<float>(steps + 1);
            for (int k = 1; k <= steps; ++k) {
                float const a = static_cast<float>(k) * stepAngle * side;
                float sine = 0.0f;
                float cosine = 0.0f;
                sincosf(a, &sine, &cosine);
                result.push_back(movedBy(
                    cur, distance, {n1.x * cosine - n1.y * sine, n1.x * sine + n1.y * cosine}));
            }
        }
        // Not an else: a turn that is not a number (from coordinates that are not) is neither.
        if (turn < 0.0f)
            result.push_back(cur);
        result.push_back(movedBy(cur, distance, n2));

        if (source_index)
            source_index->insert(source_index->end(), result.size() - first, static_cast<int>(i));
    }
    return result;
}

PathList offsetAndUnite(Path const& ring, float distance, float arc_step) {
    return clipPaths({offsetRing(ring, nullptr, distance, arc_step)}, true, {}, ClipperLib::ctUnion,
                     nullptr, false);
}

PathList offsetAllAndUnite(PathList const& rings, float distance, float arc_step) {
    PathList offsets;
    offsets.reserve(rings.size());
    for (Path const& ring : rings)
        offsets.push_back(offsetRing(ring, nullptr, distance, arc_step));
    return clipPaths(offsets, true, {}, ClipperLib::ctUnion, nullptr, false);
}

namespace {

// The constants of parallelPath, in the plane's unit.
float const firstSimplification = 0.01f;  // removes recording noise before the offset
float const resultSimplification = 0.02f; // removes the grid's steps from each line
float const longestResultStep = 5.0f;
double const smallestArcStep = 0.1;
double const shortestExtension = 0.1; // an extension must be longer to move an end
float const hookLength = 0.1f;
float const hookSideStep = 1e-4f;   // bends a hook so that it is never collinear with the path
double const smallestOffset = 1e-4; // a smaller distance is no offset at all

// Tags on the points of the union: which of them belong to the wanted line.
enum : ClipperLib::cInt {
    notOnLine = 0,   // the way back, the ends and hooks, crossings of their edges
    lineVertex = 1,  // made by an inner vertex of the forward run
    lineCrossing = 2 // a crossing on an edge between two line vertices
};

// The ZFillFunction: tags each crossing that ClipperLib makes.
void tagCrossing(ClipperLib::IntPoint& e1bot, ClipperLib::IntPoint& e1top,
                 ClipperLib::IntPoint& e2bot, ClipperLib::IntPoint& e2top,
                 ClipperLib::IntPoint& crossing) {
    bool const onLine = (e1bot.Z == lineVertex && e1top.Z == lineVertex) ||
                        (e2bot.Z == lineVertex && e2top.Z == lineVertex);
    crossing.Z = onLine ? lineCrossing : notOnLine;
}

// The end point plus hookLength along `direction`, plus hookSideStep to its right.
LocalPoint hookAt(LocalPoint end, LocalPoint direction) {
    return {end.x + hookLength * direction.x + hookSideStep * direction.y,
            end.y + hookLength * direction.y + hookSideStep * -direction.x};
}

Path cleanLine(Path const& line) {
    return resamplePath(simplifyPath(line, false, resultSimplification), longestResultStep);
}

// The tagged points of a ring of the union, starting after its first untagged point, if any;
// a ring tagged all round is closed by its first point.
Path lineOf(ClipperLib::Path const& ring) {
    std::size_t const size = ring.size();
    auto const untagged = std::find_if(ring.begin(), ring.end(),
                                       [](auto const& point) { return point.Z == notOnLine; });
    std::size_t const start =
        untagged == ring.end() ? 0 : static_cast<std::size_t>(untagged - ring.begin());
    Path line;
    for (std::size_t k = 0; k < size; ++k) {
        ClipperLib::IntPoint const& point = ring[(start + k) % size];
        if (point.Z >= lineVertex)
            line.push_back(fromGrid(point));
    }
    if (size > 0 && line.size() == size)
        line.push_back(line.front());
    return line;
}

} // namespace

PathList parallelPath(Path const& path, float extension, float distance, float arc_step) {
    if (path.size() < 2 || extension < 0.0f || static_cast<double>(arc_step) < smallestArcStep)
        return {};
    Path p = simplifyPath(path, false, firstSimplification);
    bool const extend = static_cast<double>(extension) > shortestExtension;

    LocalPoint const u = directionOrUp(p[p.size() - 2], p.back());
    if (extend)
        p.back() = movedBy(p[p.size() - 2], extension, u);
    p.push_back(hookAt(p.back(), u));

    LocalPoint const v = directionOrUp(p[1], p[0]);
    if (extend)
        p.insert(p.begin(), movedBy(p[0], extension, v));
    p.insert(p.begin(), hookAt(p[0], v));

    if (std::fabs(static_cast<double>(distance)) < smallestOffset)
        return {cleanLine(p)};

    // Forward and back over the same points: a ring whose two sides are the two sides of p.
    Path ring = p;
    ring.insert(ring.end(), p.rbegin() + 1, p.rend() - 1);
    std::vector<int> source;
    Path offset = offsetRing(ring, &source, distance, arc_step);
    // A positive offset runs clockwise round the path; the positive fill needs it the other way.
    if (distance > 0.0f) {
        std::reverse(offset.begin(), offset.end());
        std::reverse(source.begin(), source.end());
    }

    int const lastLineVertex = static_cast<int>(p.size()) - 2;
    ClipperLib::Path subject;
    subject.reserve(offset.size());
    for (std::size_t k = 0; k < offset.size(); ++k) {
        ClipperLib::IntPoint point = toGrid(offset[k]);
        point.Z = source[k] >= 1 && source[k] <= lastLineVertex ? lineVertex : notOnLine;
        subject.push_back(point);
    }
    ClipperLib::Clipper clipper;
    clipper.AddPath(subject, ClipperLib::ptSubject, true);
    clipper.ZFillFunction(tagCrossing);
    ClipperLib::Paths solution;
    clipper.Execute(ClipperLib::ctUnion, solution, ClipperLib::pftPositive,
                    ClipperLib::pftPositive);

    PathList result;
    result.reserve(solution.size());
    for (ClipperLib::Path const& solutionRing : solution) {
        Path line = cleanLine(lineOf(solutionRing));
        if (distance < 0.0f)
            std::reverse(line.begin(), line.end());
        result.push_back(std::move(line));
    }
    return result;
}
