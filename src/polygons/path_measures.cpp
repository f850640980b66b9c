#include "polygons/path_measures.h"

#include "polygons/lines.h"

#include <cfloat>
#include <cmath>

double distanceToPath(LocalPoint p, Path const& path, bool closed) {
    std::size_t const size = path.size();
    if (size == 0 || (size == 1 && !closed))
        return noDistance;
    std::size_t const segments = closed ? size : size - 1;
    double smallest = DBL_MAX;
    for (std::size_t i = 0; i < segments; ++i) {
        LocalPoint const q = closestOnSegment(p, path[i], path[(i + 1) % size]);
        float const dx = p.x - q.x;
        float const dy = p.y - q.y;
        smallest = std::fmin(smallest, static_cast<double>(dx * dx + dy * dy));
    }
    return std::sqrt(smallest);
}

float signedArea(Path const& ring) {
    if (ring.empty())
        return 0.0f;
    float sum = 0.0f;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i)
        sum += ring[i].x * ring[i + 1].y - ring[i + 1].x * ring[i].y;
    sum += ring.back().x * ring.front().y - ring.front().x * ring.back().y;
    return sum * 0.5f;
}

float totalSignedArea(PathList const& rings) {
    float sum = 0.0f;
    for (Path const& ring : rings)
        sum += signedArea(ring);
    return sum;
}

LocalPoint centroid(Path const& ring) {
    float sum = 0.0f;
    float sumX = 0.0f;
    float sumY = 0.0f;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        LocalPoint const a = ring[i];
        LocalPoint const b = ring[(i + 1) % ring.size()];
        float const c = a.x * b.y - b.x * a.y;
        sum += c;
        sumX += (a.x + b.x) * c;
        sumY += (a.y + b.y) * c;
    }
    float const area = 0.5f * sum;
    return {sumX / (6.0f * area), sumY / (6.0f * area)};
}

bool pointInRing(LocalPoint p, Path const& ring) {
    bool inside = false;
    std::size_t j = ring.size() - 1;
    for (std::size_t i = 0; i < ring.size(); j = i++) {
        LocalPoint const a = ring[i];
        LocalPoint const b = ring[j];
        bool const crossesHeight = (a.y <= p.y && p.y < b.y) || (b.y <= p.y && p.y < a.y);
        if (crossesHeight && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
            inside = !inside;
    }
    return inside;
}

bool pointInRings(LocalPoint p, PathList const& rings) {
    bool outerHit = false;
    bool holeHit = false;
    for (Path const& ring : rings) {
        float const area = signedArea(ring);
        if (!pointInRing(p, ring))
            continue;
        if (area < 0.0f)
            holeHit = true;
        else if (area >= 0.0f)
            outerHit = true;
    }
    return outerHit && !holeHit;
}

namespace {

// The cross product of p1 - p0 and p2 - p1 at each corner of the ring, in ring order, until
// `stop` accepts one; true if none was accepted.
template <typename Stop> bool noCornerWhere(Path const& ring, Stop stop) {
    std::size_t const size = ring.size();
    for (std::size_t i = 0; i < size; ++i) {
        LocalPoint const p0 = ring[i];
        LocalPoint const p1 = ring[(i + 1) % size];
        LocalPoint const p2 = ring[(i + 2) % size];
        if (stop((p1.x - p0.x) * (p2.y - p1.y) - (p1.y - p0.y) * (p2.x - p1.x)))
            return false;
    }
    return true;
}

} // namespace

bool isConvexLeft(Path const& ring) {
    return noCornerWhere(ring, [](float cross) { return cross < 0.0f; });
}

bool isConvexRight(Path const& ring) {
    return noCornerWhere(ring, [](float cross) { return cross > 0.0f; });
}
