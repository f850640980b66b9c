#ifndef PATTERNS_GUIDANCE_CURVE_H
#define PATTERNS_GUIDANCE_CURVE_H

#include "patterns/segment.h"
#include "polygons/path.h"

#include <cfloat>
#include <cstdint>
#include <vector>

class TLockGuideCurve;

// What became of a vertex in the offset computation.
enum class OffsetState : std::int32_t {
    // The corner turns toward the offset side.
    turned = 1,
    plain = 2,
    // An edge at the vertex collapses before the offset distance.
    dropped = 3,
    // Made where two merged vertices met.
    fromMerge = 4,
};

// One vertex of the working list of the offset computation. Indices refer to that list; the two
// ends have neighbour indices outside it.
struct OffsetVertex {
    // Nothing sets it: a merge of two vertices never happens.
    bool merged = false;
    LocalPoint point;
    // A second point on the vertex's bisector; (0, 0) at the two ends.
    LocalPoint bisectorTip;
    std::int32_t previous = 0;
    std::int32_t next = 0;
    OffsetState state = OffsetState::plain;
};

// Where the bisectors of two neighbouring vertices meet: the edge between them collapses at an
// offset of sqrt(distanceSquared).
struct OffsetEvent {
    LocalPoint point;
    std::int32_t first = 0;
    std::int32_t second = 0;
    float distanceSquared = 0.0f;
};

// One recorded line of a guidance pattern: thinned while it grows, with a chord from its first
// point and the greatest deviation of its points from the chord's line as a cheap bound for
// distance queries, and its parallel curve at a distance.
//
// Offsets: a positive distance lies on the right of the direction of travel in a plane with y up
// (right normals throughout). Asking again for the distance of the last parallel curve does
// nothing, even if the points have changed since; clear() forgets it.
class TGuidanceCurve {
public:
    TGuidanceCurve() = default;
    TGuidanceCurve(TGuidanceCurve const&) = default;
    TGuidanceCurve& operator=(TGuidanceCurve const&) = default;
    // Moves, so that a growing list of curves does not copy every point.
    TGuidanceCurve(TGuidanceCurve&&) = default;
    TGuidanceCurve& operator=(TGuidanceCurve&&) = default;
    virtual ~TGuidanceCurve() = default;

    // Appends a recorded point; true if it was appended. Unless keepAll, from the third point
    // on a point less than 2.0 from the last one is refused, and one less than 0.1 off the line of
    // the last piece replaces the last point (the line went straight on; false). The chord runs
    // from the first point to the first point more than 10.0 away from it; until then the
    // deviation is 0.
    bool add(LocalPoint point, bool keepAll = false);
    // The chord from the first to the last point, and the deviation over all points.
    void finish();
    void clearPoints();
    // clearPoints, no deviation, and no parallel curve.
    void clear();

    Path const& points() const { return points_; }
    int count() const { return static_cast<int>(points_.size()); }
    TSegment const& chord() const { return chord_; }
    float maxDeviation() const { return maxDeviation_; }
    // The last parallel curve and its distance; FLT_MAX for none yet.
    Path const& offsetPoints() const { return offsetPoints_; }
    float offsetDistance() const { return offsetDistance_; }

    // Joined to the neighbouring curve of a pattern.
    bool joinedToPrevious() const { return joinedToPrevious_; }
    bool joinedToNext() const { return joinedToNext_; }
    void setJoinedToPrevious(bool joined) { joinedToPrevious_ = joined; }
    void setJoinedToNext(bool joined) { joinedToNext_ = joined; }

    // Whether the point may lie within maxDeviation + margin of the chord's line: it rules
    // curves out, and says nothing about how near the point really is.
    bool nearChord(LocalPoint point, float margin) const;
    // The piece nearest to the point (the first of equals) in `segment`, and the index of its
    // later point; -1, `segment` untouched, with fewer than two points or where no piece has a
    // squared distance below the largest float.
    int nearestSegment(LocalPoint point, TSegment& segment) const;
    // The smallest squared distance from the point to a piece of the line (at most the largest
    // float); false with fewer than two points.
    bool squaredDistance(LocalPoint point, float& distance) const;
    // Appends source[first] up to source[last - 1], the range held to the source's size.
    void appendRange(Path const& source, int first, int last);

    // The parallel curve at `distance`, into offsetPoints(), cleaned of loops, sharp turns and
    // spikes. offsetByEvents shifts every piece and joins neighbours at their crossings, leaving
    // out the joints of edges that collapse before the distance; at distance 0 it gives the line
    // itself unless `force`. offsetByVertices miters vertex by vertex over a sliding window and
    // caps the ends square; at distance 0 it gives the line itself. A line of two points gives
    // its one piece shifted; fewer points give nothing.
    void offsetByEvents(bool force, float distance);
    void offsetByVertices(float distance);

private:
    void updateChord(LocalPoint point);
    void recomputeDeviation();
    // Starts an offset at `distance`: false where it is the distance of the last one.
    bool startOffset(float distance);
    // The offset of a line of fewer than three points; false for longer lines.
    bool offsetShortLine();
    void prepareOffset();
    LocalPoint bisectorTipOf(OffsetVertex const& vertex) const;
    bool hasNeighbours(int index) const;
    bool findEvent(int index, OffsetEvent& event) const;
    bool applyEvents();
    void buildOffsetLine();
    // Runs the clean-ups on a raw parallel curve and keeps what is left.
    void cleanUp(TLockGuideCurve& raw);

    Path points_;
    Path working_;
    Path offsetPoints_;
    float offsetDistance_ = FLT_MAX;
    std::vector<OffsetVertex> vertices_;
    std::vector<OffsetEvent> events_;
    TSegment lastSegment_;
    TSegment chord_;
    float maxDeviation_ = 0.0f;
    float maxDeviationSquared_ = 0.0f;
    bool joinedToPrevious_ = false;
    bool joinedToNext_ = false;
};

#endif
