#ifndef PATTERNS_CURVE_PATTERN_H
#define PATTERNS_CURVE_PATTERN_H

#include "coordinates/points.h"
#include "patterns/guidance_curve.h"
#include "patterns/point_history.h"
#include "patterns/segment.h"
#include "polygons/path.h"

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QString>

#include <vector>

// The curves of one guidance line in a working local frame, loaded from its .crv file and the
// settings file beside it. The last curve is always the open one that receives new points; the
// file stays open for appending once loaded. Distances are metres, angles radians, everything in
// single precision.
//
// clear(), deleteFile() and hasCurrentCurve() are virtual, and the class calls them as such.
class TCurvePattern {
public:
    TCurvePattern();
    TCurvePattern(TCurvePattern const&) = delete;
    TCurvePattern& operator=(TCurvePattern const&) = delete;
    virtual ~TCurvePattern() = default;

    // Forgets the history and all curves but for one empty open curve; no current curve.
    virtual void clear();
    // Removes the file from the disk and clears; always false.
    virtual bool deleteFile();
    virtual bool hasCurrentCurve() const { return currentCurve_ != -1; }

    // Reads the .crv file at `path` into curves around `center` (degrees): each record goes from
    // the file's reference to `center`, and each run of points between separators becomes a
    // finished curve, joined to the one before where they meet (see curvesJoin), with the empty
    // open curve behind them. keepAllPoints passes every point to the curves unthinned. The
    // correction settings come from `path` with ".crv" (case as written) replaced by ".ini",
    // even when the .crv file is missing; a missing settings file reads as no settings. True
    // when the file held a point: then it is open for appending (writePoint), otherwise closed.
    bool loadFile(QString const& path, GeoPoint center, bool keepAllPoints);
    // One record of a .crv file; false unless it came whole.
    static bool readPoint(QIODevice& device, LocalPoint& point);
    // Appends a record to the loaded file; false when it is not open or the write fell short.
    bool writePoint(LocalPoint point);
    // Whether a record is a point rather than a separator.
    static bool isValidPoint(LocalPoint point);

    // The points of a curve; those of an empty curve for an index outside the list.
    Path const& curvePoints(int index) const;
    Path const& firstCurvePoints() const;
    Path const& lastCurvePoints() const;
    // The open curve.
    TGuidanceCurve& lastCurve();
    // The current curve, or an empty curve when there is none.
    TGuidanceCurve const& activeCurve() const;
    // The finished curve `step` places from the current one, or an empty curve where there is
    // none; with no current curve, steps count from -1.
    TGuidanceCurve const& neighbourCurve(int step) const;
    int curveCount() const { return static_cast<int>(curves_.size()); }
    void setCurrentCurve(int index) { currentCurve_ = index; }

    bool basePositionValue(QByteArray& out) const;
    int correctionSourceValue() const { return correctionSource_; }
    int modeValue() const { return mode_; }
    void setMode(int mode) { mode_ = mode; }
    float valueValue() const { return value_; }
    void setValue(float value) { value_ = value; }
    bool changedValue() const { return changed_; }
    void setChanged(bool changed) { changed_ = changed; }
    TPointHistory& history() { return history_; }
    // The largest gap between two curves that still joins them; never more than 10 m counts.
    // Leaves no current curve.
    void setJoinDistance(float distance);

    // The index of the point nearest to `point`, the first of equals; -1 for an empty list.
    static int nearestPointIndex(Path const& points, LocalPoint point);
    // Walking from `start` by `step` (1 forward, any other value backward by one), the first
    // index whose point lies more than `distance` in a straight line from the point at start, or
    // the end of the walk where none does. -1 for fewer than two points or a start outside.
    static int indexAtDistance(Path const& points, int start, int step, float distance);
    // indexAtDistance, and `start` moved back against the walk while the two points lie less
    // than `distance` apart, so that the pair spans the distance where the list allows.
    static int widenToDistance(Path const& points, int& start, int step, float distance);
    // Both angles into one turn from 0, then `b` by a turn toward `a` where they lie more than
    // half a turn apart.
    static void wrapAngles(float& a, float& b);
    // The angle between a direction and a segment as undirected lines: 0 to a quarter turn.
    static float lineAngle(LocalPoint direction, TSegment const& segment);
    // Whether the foot of a point of the walk of indexAtDistance from `start` on the segment's
    // line lies beyond the segment's end.
    static bool projectionPassesEnd(TSegment const& segment, Path const& points, int start,
                                    int step);
    // The piece of the list nearest to `point`, the first of equals, with the index of its later
    // point in *index; a zero segment and index 0 for fewer than two points.
    static TSegment nearestSegment(Path const& points, LocalPoint point, int* index);

    // The finished curve nearest to `point` within `limit` (any distance for a negative limit);
    // a later curve wins a tie. -1 when none is that near.
    int nearestCurve(LocalPoint point, float limit) const;
    // Whether the end of curve `first` lies within the join distance of the start of `second`.
    bool curvesJoin(int first, int second) const;
    // Marks the last two curves as joined or not, as curvesJoin says.
    void linkLastCurves();
    // Appends an empty open curve.
    void addCurve();

private:
    bool readCurves(bool keepAllPoints);
    void addToLastCurve(Path& records, bool keepAllPoints);
    void closeLastCurve();
    bool hasCurve(int index) const;

    float joinDistance_ = 10.0f;
    std::vector<TGuidanceCurve> curves_;
    int currentCurve_ = -1;
    TGuidanceCurve emptyCurve_;
    bool changed_ = false;
    TPointHistory history_;
    QFile file_;
    int mode_ = 0;
    int correctionSource_ = 0;
    QByteArray basePosition_;
    // The reference of the file's head, and the centre of the working frame.
    GeoPoint reference_;
    GeoPoint center_;
    float value_ = 0.0f;
};

#endif
