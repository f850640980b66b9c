#ifndef PATTERNS_SEGMENT_H
#define PATTERNS_SEGMENT_H

#include "coordinates/points.h"

// A directed straight piece from start() to end() in the plane of LocalPoint, with its geometry
// against points and other segments in single precision. With dx and dy the differences end -
// start, everything below is computed from those two. A zero-length segment is legal; each
// operation says what it gives for one.
//
// Headings are degrees clockwise from the +y axis: (0, 0)->(1, 0) has heading 90.
class TSegment {
public:
    TSegment() = default;
    TSegment(float x0, float y0, float x1, float y1) : start_{x0, y0}, end_{x1, y1} {}
    TSegment(LocalPoint start, LocalPoint end) : start_(start), end_(end) {}
    // Zero length at the point.
    explicit TSegment(LocalPoint point) : start_(point), end_(point) {}
    TSegment(TSegment const&) = default;
    TSegment& operator=(TSegment const&) = default;
    virtual ~TSegment() = default;

    void set(LocalPoint start, LocalPoint end);
    // Keeps start and puts end `length` away at `heading` degrees (sine and cosine from one
    // sincosf of heading * 0.017453292).
    void setByHeading(LocalPoint start, float heading, float length);

    LocalPoint start() const { return start_; }
    LocalPoint end() const { return end_; }
    LocalPoint midpoint() const;
    LocalPoint center() const { return midpoint(); }

    // Both ends equal within the point tolerance of the plane geometry (1e-6 per axis).
    bool operator==(TSegment const& other) const;
    bool operator!=(TSegment const& other) const;

    void reverse();
    // Swaps the ends where needed so that start has the greater y.
    void orderByY();

    float length() const;
    // In [0, 360), computed as 1 / ((1 / a) * 0.017453292) from a = atan2f(dx, dy), so that a of
    // 0 passes through the two reciprocals to 0; rounding can give 360 for a hair left of north.
    float heading() const;
    // Unit vector along the segment, and the unit right normal (dy, -dx) / length; both (0, 1)
    // where the length is not above 0.
    LocalPoint direction() const;
    LocalPoint normal() const;

    // Both ends moved by distance * normal(): a positive distance moves to the right.
    void shift(float distance);
    TSegment shifted(float distance) const;
    TSegment& operator+=(LocalPoint v);
    TSegment& operator-=(LocalPoint v);
    TSegment translated(LocalPoint v) const;

    // The foot of p on the infinite line; start for a zero-length segment.
    LocalPoint footPoint(LocalPoint p) const;
    float lineDistance(LocalPoint p) const;
    float lineDistanceSquared(LocalPoint p) const;
    // lineDistance, negative where `direction` runs against the segment, and negative where p
    // lies on the left of it (in a plane with y up); both together cancel.
    float signedLineDistance(LocalPoint p, LocalPoint direction) const;
    // Where a point known to lie on the line lies: -1 before start, 1 behind end, 0 within, ends
    // included. The x axis decides first, the y axis only where x says nothing.
    int positionOf(LocalPoint p) const;
    // The nearest point of the segment: the foot, or the end that the foot lies beyond.
    LocalPoint closestPoint(LocalPoint p) const;
    float segmentDistance(LocalPoint p) const;
    float segmentDistanceSquared(LocalPoint p) const;
    // As closestPoint with the segment running on without limit beyond end (forward) or beyond
    // start (not forward).
    LocalPoint closestOnRay(LocalPoint p, bool forward) const;
    float rayDistanceSquared(LocalPoint p, bool forward) const;
    // The x of the segment at height y: false for a horizontal segment and for a y outside the
    // closed range of the ends (not-a-number included); `x` is written only on true.
    bool xAtY(float y, float& x) const;

    // Crossings with `other`. All three count lines as parallel, return false and leave `out`
    // alone where the determinant of the two differences is not above 0.0001 in magnitude.
    // intersectLine: the infinite lines.
    bool intersectLine(TSegment const& other, LocalPoint& out) const;
    // `other` as an infinite line against this segment: `out` is always written past the
    // parallel test, and the result says whether it lies in the closed box of this segment.
    bool intersectLineOnThis(TSegment const& other, LocalPoint& out) const;
    // Both as segments, each half open: a start counts as on its segment, an end does not, so
    // segments meeting exactly at the end of one do not cross. Once both parameters pass, `out`
    // is written, and the result is false if rounding put it outside the y range of this
    // segment. A segment with a not-a-number or infinite coordinate crosses nothing.
    bool intersectSegment(TSegment const& other, LocalPoint& out) const;

    // Parallel tracks `spacing` apart on both sides of this line's segment: the track nearest to
    // p (`index`, counted from this line as 0) and p's signed distance from it (`offset`), for a
    // machine driving along `direction`. Driving against the line (direction . (dx, dy) < 0), p is
    // first moved by 2 * width along normal() and the result is -1, otherwise 1. The signs of
    // offset and index follow the side of the moved point (negative on the left). A spacing not
    // above 0 (or not a number) means no tracks: offset 0, index 0, result 1. Half a spacing
    // from a track counts toward the farther one; indices beyond the int range are held to it.
    int trackOffset(LocalPoint p, LocalPoint direction, float spacing, float width, float& offset,
                    int& index) const;
    // The same without the moved point and with the other sign convention: offset is signed by
    // the driving direction alone, and index is positive on the left of the line.
    int trackIndex(LocalPoint p, LocalPoint direction, float spacing, float& offset,
                   int& index) const;

private:
    float dx() const { return end_.x - start_.x; }
    float dy() const { return end_.y - start_.y; }
    // dy * (p.x - x0) - dx * (p.y - y0) < 0: p lies on the left, in a plane with y up.
    bool onLeft(LocalPoint p) const;

    LocalPoint start_;
    LocalPoint end_;
};

#endif
