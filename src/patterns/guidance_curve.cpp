#include "patterns/guidance_curve.h"

#include "patterns/lock_guide_curve.h"
#include "polygons/lines.h"

#include <algorithm>
#include <cmath>

namespace {

// A recorded point closer than this to the last one is refused.
double const shortestPiece = 2.0;
// A point closer than this to the line of the last piece continues it straight on.
double const straightOn = 0.1;
// The chord reaches at least this far from the first point before the deviation counts.
double const shortestChord = 10.0;

float distanceBetween(LocalPoint a, LocalPoint b) {
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

float squaredDistanceBetween(LocalPoint a, LocalPoint b) {
    return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

LocalPoint plus(LocalPoint a, LocalPoint b) {
    return {a.x + b.x, a.y + b.y};
}

LocalPoint scaled(LocalPoint v, float factor) {
    return {factor * v.x, factor * v.y};
}

// Positive and negative, neither being 0.
bool sameSign(float a, float b) {
    return (a > 0.0f && b > 0.0f) || (a < 0.0f && b < 0.0f);
}

// Ascending squared distance; events without a number go last, where no distance reaches them.
bool collapsesEarlier(OffsetEvent const& a, OffsetEvent const& b) {
    return a.distanceSquared < b.distanceSquared ||
           (!std::isnan(a.distanceSquared) && std::isnan(b.distanceSquared));
}

} // namespace

bool TGuidanceCurve::add(LocalPoint point, bool keepAll) {
    std::size_t const n = points_.size();
    if (n == 1) {
        lastSegment_ = TSegment(points_.front(), point);
        chord_ = lastSegment_;
    } else if (n >= 2 && !keepAll) {
        LocalPoint const last = points_.back();
        if (static_cast<double>(distanceBetween(point, last)) < shortestPiece)
            return false;
        if (static_cast<double>(lastSegment_.lineDistance(point)) < straightOn) {
            points_.back() = point;
            updateChord(point);
            return false;
        }
        lastSegment_ = TSegment(last, point);
    }
    points_.push_back(point);
    updateChord(point);
    return true;
}

void TGuidanceCurve::updateChord(LocalPoint point) {
    if (static_cast<double>(chord_.length()) < shortestChord) {
        if (static_cast<double>(distanceBetween(points_.front(), point)) <= shortestChord)
            return;
        chord_ = TSegment(points_.front(), point);
        recomputeDeviation();
        return;
    }
    float const deviation = chord_.lineDistance(point);
    if (deviation > maxDeviation_) {
        maxDeviation_ = deviation;
        maxDeviationSquared_ = deviation * deviation;
    }
}

void TGuidanceCurve::recomputeDeviation() {
    maxDeviation_ = 0.0f;
    for (LocalPoint const p : points_)
        maxDeviation_ = std::max(maxDeviation_, chord_.lineDistance(p));
    maxDeviationSquared_ = maxDeviation_ * maxDeviation_;
}

void TGuidanceCurve::finish() {
    maxDeviation_ = 0.0f;
    maxDeviationSquared_ = 0.0f;
    if (points_.empty())
        return;
    chord_ = TSegment(points_.front(), points_.back());
    recomputeDeviation();
}

void TGuidanceCurve::clearPoints() {
    points_.clear();
}

void TGuidanceCurve::clear() {
    clearPoints();
    maxDeviation_ = 0.0f;
    maxDeviationSquared_ = 0.0f;
    offsetDistance_ = FLT_MAX;
}

bool TGuidanceCurve::nearChord(LocalPoint point, float margin) const {
    return chord_.lineDistanceSquared(point) - 2.0f * maxDeviation_ * margin <
           maxDeviationSquared_ + margin * margin;
}

int TGuidanceCurve::nearestSegment(LocalPoint point, TSegment& segment) const {
    int nearest = -1;
    float best = FLT_MAX;
    for (std::size_t i = 1; i < points_.size(); ++i) {
        TSegment const piece(points_[i - 1], points_[i]);
        float const distance = piece.segmentDistanceSquared(point);
        if (distance < best) {
            best = distance;
            nearest = static_cast<int>(i);
            segment = piece;
        }
    }
    return nearest;
}

bool TGuidanceCurve::squaredDistance(LocalPoint point, float& distance) const {
    if (points_.size() < 2)
        return false;
    distance = FLT_MAX;
    for (std::size_t i = 1; i < points_.size(); ++i)
        distance =
            std::min(distance, TSegment(points_[i - 1], points_[i]).segmentDistanceSquared(point));
    return true;
}

void TGuidanceCurve::appendRange(Path const& source, int first, int last) {
    int const size = static_cast<int>(source.size());
    first = std::clamp(first, 0, size);
    last = std::clamp(last, first, size);
    points_.insert(points_.end(), source.begin() + first, source.begin() + last);
}

bool TGuidanceCurve::startOffset(float distance) {
    if (distance == offsetDistance_)
        return false;
    offsetDistance_ = distance;
    offsetPoints_.clear();
    return true;
}

bool TGuidanceCurve::offsetShortLine() {
    if (points_.size() > 2)
        return false;
    if (points_.size() == 2) {
        TSegment const shifted = TSegment(points_[0], points_[1]).shifted(offsetDistance_);
        offsetPoints_ = {shifted.start(), shifted.end()};
    }
    return true;
}

void TGuidanceCurve::offsetByEvents(bool force, float distance) {
    if (!startOffset(distance))
        return;
    if (distance == 0.0f && !force) {
        offsetPoints_ = points_;
        return;
    }
    if (offsetShortLine())
        return;
    vertices_.clear();
    prepareOffset();
    while (applyEvents()) {
    }
    buildOffsetLine();
    TLockGuideCurve raw(&points_, distance);
    for (LocalPoint const p : offsetPoints_)
        raw.add(p.x, p.y);
    cleanUp(raw);
}

void TGuidanceCurve::offsetByVertices(float distance) {
    if (!startOffset(distance))
        return;
    if (distance == 0.0f) {
        offsetPoints_ = points_;
        return;
    }
    if (offsetShortLine())
        return;
    TLockGuideCurve raw(&points_, distance);
    int const last = count() - 1;
    for (int i = 0; i <= last; ++i) {
        LocalPoint point;
        TSegment segment;
        if (raw.step(i, point, segment))
            raw.add(point.x, point.y);
        if (i == 0 || i == last) {
            TSegment const piece =
                i == 0 ? TSegment(points_[0], points_[1]) : TSegment(points_[i - 1], points_[i]);
            TSegment cap;
            cap.setByHeading(points_[i], piece.heading() + 90.0f, distance);
            raw.add(cap.end().x, cap.end().y);
        }
    }
    cleanUp(raw);
}

void TGuidanceCurve::cleanUp(TLockGuideCurve& raw) {
    raw.removeLoops();
    raw.removeSharpTurns();
    raw.removeSpikes();
    offsetPoints_ = raw.result();
}

bool TGuidanceCurve::hasNeighbours(int index) const {
    int const size = static_cast<int>(vertices_.size());
    OffsetVertex const& vertex = vertices_[index];
    return vertex.previous >= 0 && vertex.previous < size && vertex.next >= 0 && vertex.next < size;
}

LocalPoint TGuidanceCurve::bisectorTipOf(OffsetVertex const& vertex) const {
    LocalPoint const p = vertex.point;
    return plus(plus(p, directionOf(p, vertices_[vertex.previous].point)),
                directionOf(p, vertices_[vertex.next].point));
}

void TGuidanceCurve::prepareOffset() {
    if (vertices_.empty()) {
        working_ = points_;
    } else {
        working_.clear();
        for (OffsetVertex const& vertex : vertices_)
            if (vertex.state == OffsetState::turned || vertex.state == OffsetState::plain)
                working_.push_back(vertex.point);
    }
    vertices_.clear();
    events_.clear();
    int const n = static_cast<int>(working_.size());
    if (n < 3)
        return;
    vertices_.reserve(working_.size());
    for (int i = 0; i < n; ++i)
        vertices_.push_back({false, working_[i], LocalPoint{}, i - 1, i + 1, OffsetState::plain});
    for (int i = 1; i + 1 < n; ++i) {
        OffsetVertex& vertex = vertices_[i];
        vertex.bisectorTip = bisectorTipOf(vertex);
        LocalPoint const p = working_[i - 1];
        LocalPoint const next = working_[i + 1];
        LocalPoint const toNext{next.x - vertex.point.x, next.y - vertex.point.y};
        LocalPoint const normal = rightNormal(p, next);
        if (sameSign(offsetDistance_, toNext.x * normal.x + toNext.y * normal.y))
            vertex.state = OffsetState::turned;
    }
    for (int i = 1; i < n - 2;) {
        OffsetEvent event;
        if (!findEvent(i, event)) {
            ++i;
            continue;
        }
        events_.push_back(event);
        i += event.second > i ? 2 : 1;
    }
    std::sort(events_.begin(), events_.end(), collapsesEarlier);
}

bool TGuidanceCurve::findEvent(int index, OffsetEvent& event) const {
    if (index < 0 || index >= static_cast<int>(vertices_.size()) || !hasNeighbours(index))
        return false;
    OffsetVertex const& vertex = vertices_[index];
    OffsetVertex const& previous = vertices_[vertex.previous];
    OffsetVertex const& next = vertices_[vertex.next];
    LocalPoint withPrevious;
    LocalPoint withNext;
    bool const metPrevious = intersectLines(withPrevious, vertex.point, vertex.bisectorTip,
                                            previous.point, previous.bisectorTip);
    bool const metNext =
        intersectLines(withNext, vertex.point, vertex.bisectorTip, next.point, next.bisectorTip);
    if (!metPrevious && !metNext)
        return false;
    // The nearer crossing decides which edge collapses first; a missing one is the farthest.
    bool usePrevious = !metNext;
    if (metPrevious && metNext)
        usePrevious = squaredDistanceBetween(withNext, vertex.point) >
                      squaredDistanceBetween(withPrevious, vertex.point);
    LocalPoint const crossing = usePrevious ? withPrevious : withNext;
    int const first = usePrevious ? vertex.previous : index;
    int const second = usePrevious ? index : vertex.next;
    LocalPoint const from = vertices_[first].point;
    LocalPoint const to = vertices_[second].point;
    LocalPoint const m = rightNormal(from, to);
    float const side = (crossing.x - vertex.point.x) * m.x + (crossing.y - vertex.point.y) * m.y;
    if (!sameSign(offsetDistance_, side))
        return false;
    event = {crossing, first, second, TSegment(from, to).lineDistanceSquared(crossing)};
    return true;
}

bool TGuidanceCurve::applyEvents() {
    float const reach = offsetDistance_ * offsetDistance_;
    std::size_t const count = events_.size();
    bool changed = false;
    for (std::size_t k = 0; k < count; ++k) {
        OffsetEvent const event = events_[k];
        OffsetVertex& first = vertices_[event.first];
        OffsetVertex& second = vertices_[event.second];
        if (first.merged && second.merged) {
            // A vertex at the meeting point takes the place of the pair. Nothing marks vertices
            // merged, so the offset never comes here.
            int const made = static_cast<int>(vertices_.size());
            OffsetVertex vertex{false,          event.point, LocalPoint{},
                                first.previous, second.next, OffsetState::fromMerge};
            vertices_.push_back(vertex);
            if (hasNeighbours(made)) {
                vertices_[vertex.previous].next = made;
                vertices_[vertex.next].previous = made;
                vertices_[made].bisectorTip = bisectorTipOf(vertices_[made]);
            }
            OffsetEvent next;
            if (findEvent(made, next))
                events_.push_back(next);
        } else if (event.distanceSquared <= reach) {
            first.state = OffsetState::dropped;
            second.state = OffsetState::dropped;
            changed = true;
        }
    }
    if (!changed) {
        events_.clear();
        return false;
    }
    events_.erase(events_.begin(), events_.begin() + static_cast<std::ptrdiff_t>(count));
    std::sort(events_.begin(), events_.end(), collapsesEarlier);
    return true;
}

void TGuidanceCurve::buildOffsetLine() {
    std::size_t const n = working_.size();
    float const distance = offsetDistance_;
    auto shiftedPiece = [&](std::size_t from, std::size_t to) {
        LocalPoint const shift = scaled(unitRightNormal(working_[from], working_[to]), distance);
        return TSegment(plus(working_[from], shift), plus(working_[to], shift));
    };
    offsetPoints_.push_back(shiftedPiece(0, 1).start());
    for (std::size_t i = 1; i + 1 < n; ++i) {
        if (vertices_[i - 1].state == OffsetState::dropped &&
            vertices_[i].state == OffsetState::dropped)
            continue;
        TSegment const before = shiftedPiece(i - 1, i);
        TSegment const after = shiftedPiece(i, i + 1);
        LocalPoint crossing;
        if (intersectLines(crossing, before.start(), before.end(), after.start(), after.end()))
            offsetPoints_.push_back(crossing);
    }
    offsetPoints_.push_back(shiftedPiece(n - 2, n - 1).end());
}
