#include "patterns/segment.h"

#include "polygons/point_compare.h"

#include <cmath>
#include <utility>

namespace {

float const degreesToRadians = 0.017453292f;
// Determinants up to this magnitude (in double) make two segments parallel for the crossings.
double const parallelDeterminant = 0.0001;
// A segment up to this long (in double) has no normal for the moved point of trackOffset.
double const shortestNormalSegment = 0.000001;

bool inClosedRange(float value, float a, float b) {
    return a <= b ? a <= value && value <= b : b <= value && value <= a;
}

// Which axis-aligned side of the range [a, b] a value lies on, with -1 before a and 1 beyond b
// in the segment's own direction; 0 inside.
int sideOfRange(float value, float a, float b) {
    if (a < b)
        return value < a ? -1 : value > b ? 1 : 0;
    return value > a ? -1 : value < b ? 1 : 0;
}

// Both values strictly beyond both ends of [a, b] on the same side.
bool bothBeyond(float v0, float v1, float a, float b) {
    return (v0 > a && v0 > b && v1 > a && v1 > b) || (v0 < a && v0 < b && v1 < a && v1 < b);
}

float squaredDistance(LocalPoint a, LocalPoint b) {
    float const dx = a.x - b.x;
    float const dy = a.y - b.y;
    return dx * dx + dy * dy;
}

// floor(distance / spacing + 0.5), the nearest track, held to the int range; distances are not
// negative, and not-a-number gives track 0.
int nearestTrack(float distance, float spacing) {
    float const track = std::floor(distance / spacing + 0.5f);
    if (!(track >= 0.0f))
        return 0;
    return track < 2147483648.0f ? static_cast<int>(track) : 2147483647;
}

} // namespace

void TSegment::set(LocalPoint start, LocalPoint end) {
    start_ = start;
    end_ = end;
}

void TSegment::setByHeading(LocalPoint start, float heading, float length) {
    float sine = 0.0f;
    float cosine = 0.0f;
    sincosf(heading * degreesToRadians, &sine, &cosine);
    start_ = start;
    end_ = {start.x + sine * length, start.y + cosine * length};
}

LocalPoint TSegment::midpoint() const {
    return {(start_.x + end_.x) * 0.5f, (start_.y + end_.y) * 0.5f};
}

bool TSegment::operator==(TSegment const& other) const {
    return pointsEqual(start_, other.start_) && pointsEqual(end_, other.end_);
}

bool TSegment::operator!=(TSegment const& other) const {
    return pointsDiffer(start_, other.start_) || pointsDiffer(end_, other.end_);
}

void TSegment::reverse() {
    std::swap(start_, end_);
}

void TSegment::orderByY() {
    if (end_.y > start_.y)
        reverse();
}

float TSegment::length() const {
    return std::sqrt(dx() * dx() + dy() * dy());
}

float TSegment::heading() const {
    float const a = std::atan2(dx(), dy());
    float const degrees = 1.0f / ((1.0f / a) * degreesToRadians);
    return degrees < 0.0f ? degrees + 360.0f : degrees;
}

LocalPoint TSegment::direction() const {
    float const l = length();
    if (!(l > 0.0f))
        return {0.0f, 1.0f};
    return {dx() / l, dy() / l};
}

LocalPoint TSegment::normal() const {
    float const l = length();
    if (!(l > 0.0f))
        return {0.0f, 1.0f};
    return {dy() / l, -dx() / l};
}

void TSegment::shift(float distance) {
    LocalPoint const n = normal();
    *this += LocalPoint{n.x * distance, n.y * distance};
}

TSegment TSegment::shifted(float distance) const {
    TSegment moved = *this;
    moved.shift(distance);
    return moved;
}

TSegment& TSegment::operator+=(LocalPoint v) {
    start_ = {start_.x + v.x, start_.y + v.y};
    end_ = {end_.x + v.x, end_.y + v.y};
    return *this;
}

TSegment& TSegment::operator-=(LocalPoint v) {
    start_ = {start_.x - v.x, start_.y - v.y};
    end_ = {end_.x - v.x, end_.y - v.y};
    return *this;
}

TSegment TSegment::translated(LocalPoint v) const {
    TSegment moved = *this;
    moved += v;
    return moved;
}

LocalPoint TSegment::footPoint(LocalPoint p) const {
    float const squaredLength = dy() * dy() + dx() * dx();
    // Also where the differences are so small that their squares vanish.
    if (squaredLength == 0.0f)
        return start_;
    float const t = ((p.y - start_.y) * dy() + (p.x - start_.x) * dx()) / squaredLength;
    return {start_.x + dx() * t, start_.y + dy() * t};
}

float TSegment::lineDistance(LocalPoint p) const {
    return std::sqrt(lineDistanceSquared(p));
}

float TSegment::lineDistanceSquared(LocalPoint p) const {
    return squaredDistance(p, footPoint(p));
}

bool TSegment::onLeft(LocalPoint p) const {
    return dy() * (p.x - start_.x) - dx() * (p.y - start_.y) < 0.0f;
}

float TSegment::signedLineDistance(LocalPoint p, LocalPoint direction) const {
    float distance = lineDistance(p);
    if (dy() * direction.y + dx() * direction.x < 0.0f)
        distance = -distance;
    if (onLeft(p))
        distance = -distance;
    return distance;
}

int TSegment::positionOf(LocalPoint p) const {
    if (int const side = sideOfRange(p.x, start_.x, end_.x))
        return side;
    return sideOfRange(p.y, start_.y, end_.y);
}

LocalPoint TSegment::closestPoint(LocalPoint p) const {
    LocalPoint const foot = footPoint(p);
    int const position = positionOf(foot);
    return position == 0 ? foot : position > 0 ? end_ : start_;
}

float TSegment::segmentDistance(LocalPoint p) const {
    return std::sqrt(segmentDistanceSquared(p));
}

float TSegment::segmentDistanceSquared(LocalPoint p) const {
    return squaredDistance(p, closestPoint(p));
}

LocalPoint TSegment::closestOnRay(LocalPoint p, bool forward) const {
    LocalPoint const foot = footPoint(p);
    int const position = positionOf(foot);
    if (forward)
        return position < 0 ? start_ : foot;
    return position > 0 ? end_ : foot;
}

float TSegment::rayDistanceSquared(LocalPoint p, bool forward) const {
    return squaredDistance(p, closestOnRay(p, forward));
}

bool TSegment::xAtY(float y, float& x) const {
    if (start_.y == end_.y || !inClosedRange(y, start_.y, end_.y))
        return false;
    x = start_.x + ((end_.x - start_.x) / (end_.y - start_.y)) * (y - start_.y);
    return true;
}

bool TSegment::intersectLine(TSegment const& other, LocalPoint& out) const {
    LocalPoint const a{dx(), dy()};
    LocalPoint const b{other.dx(), other.dy()};
    float const d = b.y * a.x - b.x * a.y;
    if (!(static_cast<double>(std::fabs(d)) > parallelDeterminant))
        return false;
    float const u = (start_.y - other.start_.y) * b.x - (start_.x - other.start_.x) * b.y;
    out = {a.x * u / d + start_.x, a.y * u / d + start_.y};
    return true;
}

bool TSegment::intersectLineOnThis(TSegment const& other, LocalPoint& out) const {
    return intersectLine(other, out) && inClosedRange(out.y, start_.y, end_.y) &&
           inClosedRange(out.x, start_.x, end_.x);
}

bool TSegment::intersectSegment(TSegment const& other, LocalPoint& out) const {
    if (bothBeyond(other.start_.x, other.end_.x, start_.x, end_.x) ||
        bothBeyond(other.start_.y, other.end_.y, start_.y, end_.y))
        return false;
    LocalPoint const a{dx(), dy()};
    LocalPoint const b{other.dx(), other.dy()};
    float const d = b.y * a.x - b.x * a.y;
    if (!(static_cast<double>(std::fabs(d)) > parallelDeterminant))
        return false;
    float const ey = start_.y - other.start_.y;
    float const ex = start_.x - other.start_.x;
    float const t = (ey * b.x - ex * b.y) / d;
    if (!(t >= 0.0f && t < 1.0f))
        return false;
    float const s = (ey * a.x - ex * a.y) / d;
    if (!(s >= 0.0f && s < 1.0f))
        return false;
    out = {start_.x + a.x * t, start_.y + a.y * t};
    return inClosedRange(out.y, start_.y, end_.y);
}

int TSegment::trackOffset(LocalPoint p, LocalPoint direction, float spacing, float width,
                          float& offset, int& index) const {
    if (!(spacing > 0.0f)) {
        offset = 0.0f;
        index = 0;
        return 1;
    }
    float const dot = dy() * direction.y + dx() * direction.x;
    int sign = 1;
    if (dot < 0.0f) {
        float const l = std::sqrt(dx() * dx() + dy() * dy());
        LocalPoint const n = static_cast<double>(l) > shortestNormalSegment
                                 ? LocalPoint{dy() / l, -dx() / l}
                                 : LocalPoint{0.0f, 1.0f};
        p = {p.x + 2.0f * width * n.x, p.y + 2.0f * width * n.y};
        sign = -1;
    }
    int const side = onLeft(p) ? -1 : 1;
    float const distance = lineDistance(p);
    int const track = nearestTrack(distance, spacing);
    offset = (distance - static_cast<float>(track) * spacing) * static_cast<float>(sign) *
             static_cast<float>(side);
    index = track * side;
    return sign;
}

int TSegment::trackIndex(LocalPoint p, LocalPoint direction, float spacing, float& offset,
                         int& index) const {
    if (!(spacing > 0.0f)) {
        offset = 0.0f;
        index = 0;
        return 1;
    }
    float const distance = lineDistance(p);
    int const track = nearestTrack(distance, spacing);
    int const sign = dy() * direction.y + dx() * direction.x < 0.0f ? -1 : 1;
    offset = (distance - static_cast<float>(track) * spacing) * static_cast<float>(sign);
    index = onLeft(p) ? track : -track;
    return sign;
}
