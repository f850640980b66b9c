#include "polygons/lines.h"

#include <cmath>

namespace {

// Segments up to this long (in double) have no direction for closestOnSegment: their start is
// the answer, so that a direction from rounding noise cannot throw the result about.
double const shortestSegment = 1e-5;

float lengthOf(float dx, float dy) {
    return std::sqrt(dx * dx + dy * dy);
}

} // namespace

LocalPoint directionOf(LocalPoint a, LocalPoint b) {
    float const dx = b.x - a.x;
    float const dy = b.y - a.y;
    float const length = lengthOf(dx, dy);
    // A length of 0 also catches differences so small that their squares vanish.
    if (length == 0.0f)
        return {0.0f, 1.0f};
    return {dx / length, dy / length};
}

LocalPoint rightNormal(LocalPoint a, LocalPoint b) {
    return {b.y - a.y, a.x - b.x};
}

LocalPoint unitRightNormal(LocalPoint a, LocalPoint b) {
    LocalPoint const normal = rightNormal(a, b);
    float const length = lengthOf(normal.x, normal.y);
    if (length == 0.0f)
        return {0.0f, 1.0f};
    return {normal.x / length, normal.y / length};
}

bool intersectLines(LocalPoint& out, LocalPoint a1, LocalPoint a2, LocalPoint b1, LocalPoint b2) {
    LocalPoint const da{a2.x - a1.x, a2.y - a1.y};
    LocalPoint const db{b2.x - b1.x, b2.y - b1.y};
    float const denominator = da.x * db.y - db.x * da.y;
    if (denominator == 0.0f)
        return false;
    float const t = ((a1.y - b1.y) * db.x - (a1.x - b1.x) * db.y) / denominator;
    out = {a1.x + t * da.x, a1.y + t * da.y};
    return true;
}

LocalPoint projectOnLine(LocalPoint p, LocalPoint a, LocalPoint b) {
    float const dx = b.x - a.x;
    float const dy = b.y - a.y;
    float const squaredLength = dx * dx + dy * dy;
    if (squaredLength == 0.0f)
        return a;
    float const t = ((p.x - a.x) * dx + (p.y - a.y) * dy) / squaredLength;
    return {a.x + t * dx, a.y + t * dy};
}

LocalPoint closestOnSegment(LocalPoint p, LocalPoint a, LocalPoint b) {
    float const length = lengthOf(b.x - a.x, b.y - a.y);
    if (static_cast<double>(length) <= shortestSegment)
        return a;
    LocalPoint const u = directionOf(a, b);
    float s = (p.x - a.x) * u.x + (p.y - a.y) * u.y;
    if (s < 0.0f)
        s = 0.0f;
    else if (s > length)
        s = length;
    return {a.x + s * u.x, a.y + s * u.y};
}

LocalPoint rotated(LocalPoint v, float angle) {
    float const cosine = static_cast<float>(std::cos(static_cast<double>(angle)));
    float const sine = static_cast<float>(std::sin(static_cast<double>(angle)));
    return {v.x * cosine - v.y * sine, v.x * sine + v.y * cosine};
}

float angleAt(LocalPoint a, LocalPoint b, LocalPoint c) {
    LocalPoint const u{b.x - a.x, b.y - a.y};
    LocalPoint const v{b.x - c.x, b.y - c.y};
    return std::atan2(v.y * u.x - v.x * u.y, v.x * u.x + v.y * u.y);
}
