#ifndef PATTERNS_LOCK_GUIDE_CURVE_H
#define PATTERNS_LOCK_GUIDE_CURVE_H

#include "patterns/segment.h"
#include "polygons/path.h"

class PieceIndex;

// The cleaner of a raw parallel curve: it takes the points of a line shifted by `distance` and
// cuts out the loops that tight inner bends make and the spikes of sharp corners. It also makes
// such a raw curve vertex by vertex (step) from a sliding window over the source line.
//
// A point at exactly (0, 0) counts as missing, in the window as well as in the turn check: a real
// point at the frame's origin is passed over. One object serves one computation and keeps a
// pointer to the source line, which must not change meanwhile.
class TLockGuideCurve {
public:
    TLockGuideCurve(Path const* source, float distance);
    TLockGuideCurve(TLockGuideCurve const&) = default;
    TLockGuideCurve& operator=(TLockGuideCurve const&) = default;
    virtual ~TLockGuideCurve() = default;

    // Appends a point to the curve being cleaned.
    void add(float x, float y);
    Path result() const { return result_; }

    // Slides the window one source point on and, once it holds four points, gives the offset
    // point of the corner before the newest one (`point`), with `segment` running from (0, 0)
    // to the unit direction toward it, where the offset piece runs the same way as its source
    // piece (their unit directions sum to more than 1). Otherwise false, and after a full window
    // its two oldest places are cleared. A source point at (0, 0) (within 1e-6) stops the window
    // for that call. An index outside the source throws std::out_of_range.
    bool step(int index, LocalPoint& point, TSegment& segment);
    // The offset point at corner b between a and c: `distance` / sin(half the angle) from b along
    // the bisector, on the side of a negative length. False, `out` untouched, where the two unit
    // directions from b lie no more than 0.1 apart (a hairpin).
    bool miter(LocalPoint& out, LocalPoint a, LocalPoint b, LocalPoint c) const;

    // Cuts each loop where a piece crosses an older one: the points in between give way to the
    // crossing. Loops that span half the curve or more stay, and the first piece is never tried.
    // True if anything was cut.
    bool removeLoops();
    // Walks the curve and, at each corner that is not gentle, cuts back to where a probe from
    // the next point, `distance` past the corner toward it, crosses an older piece.
    void removeSharpTurns();
    // Removes both points of two sharp turns in a row; a single sharp bend stays.
    void removeSpikes();

    // Whether the turn from the last two points of the turn check on to (x, y) lies within 90
    // degrees either way, inclusive, by headings in double precision; always true while either of
    // the two has x exactly 0.
    bool turnIsGentle(float x, float y) const;
    // The cut of removeSharpTurns at one index; returns the index at which the walk goes on. An
    // index below 0 or without a next point is returned as it is.
    int cutBack(int index);

private:
    // cutBack on a curve held as `kept`, whose last point is the corner, and the point after it;
    // `pieces` holds the pieces of `kept` before the corner and is kept up to date.
    int cutBackIn(Path& kept, LocalPoint next, PieceIndex& pieces);

    Path const* source_;
    float distance_;
    Path result_;
    LocalPoint window_[4];
    LocalPoint miters_[4];
    LocalPoint previous_;
    LocalPoint current_;
};

#endif
