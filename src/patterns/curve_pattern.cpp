#include "patterns/curve_pattern.h"

#include "coordinates/geodetic.h"
#include "guidance/crv_file.h"
#include "guidance/line_correction.h"

#include <QSettings>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace {

// Two curves farther apart than this never join, whatever the join distance says.
float const longestJoin = 10.0f;
float const fullTurn = 6.2831855f;
float const halfTurn = 3.1415927f;
float const quarterTurn = 1.5707964f;
// Beyond this many radians steps of a turn would take long or vanish in rounding; the remainder
// of a division stands in for them.
float const widestSteppedAngle = 64.0f * fullTurn;
// Records converted together: the conversion is quicker for many points around one reference,
// and the batch stays small whatever the file's size.
std::size_t const conversionBatch = 4096;

float distanceBetween(LocalPoint a, LocalPoint b) {
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

float squaredDistanceBetween(LocalPoint a, LocalPoint b) {
    return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

// The angle moved into 0 to a full turn by whole turns; not-a-number and infinities stay.
float wrapped(float angle) {
    if (!std::isfinite(angle))
        return angle;
    if (std::fabs(angle) > widestSteppedAngle)
        angle = std::fmod(angle, fullTurn);
    while (angle < 0.0f)
        angle += fullTurn;
    while (angle > fullTurn)
        angle -= fullTurn;
    return angle;
}

// A walk along a list of points: the direction and the index where it ends.
struct Walk {
    int direction;
    int end;
};

Walk walkOf(Path const& points, int step) {
    if (step == 1)
        return {1, static_cast<int>(points.size()) - 1};
    return {-1, 0};
}

bool inside(Path const& points, int index) {
    return index >= 0 && index < static_cast<int>(points.size());
}

} // namespace

TCurvePattern::TCurvePattern() {
    clear();
}

void TCurvePattern::clear() {
    history_.clear();
    curves_.clear();
    addCurve();
    currentCurve_ = -1;
    changed_ = false;
    value_ = 0.0f;
}

bool TCurvePattern::deleteFile() {
    file_.remove();
    clear();
    return false;
}

bool TCurvePattern::loadFile(QString const& path, GeoPoint center, bool keepAllPoints) {
    clear();
    history_.setEnabled(false);
    QString const settingsPath =
        QString(path).replace(QStringLiteral(".crv"), QStringLiteral(".ini"), Qt::CaseSensitive);
    LineCorrection const correction =
        read_line_correction(QSettings(settingsPath, QSettings::IniFormat));
    correctionSource_ = correction.source;
    basePosition_ = correction.position_text;

    // A file of an earlier load is still open for appending.
    file_.close();
    file_.setFileName(path);
    center_ = center;
    bool const loaded = file_.open(QIODevice::ReadOnly) && readCurves(keepAllPoints);
    file_.close();
    if (loaded)
        file_.open(QIODevice::WriteOnly | QIODevice::Append);

    history_.clear();
    history_.setEnabled(true);
    changed_ = false;
    return loaded;
}

bool TCurvePattern::readCurves(bool keepAllPoints) {
    GeoPoint reference;
    if (!read_crv_head(file_, reference) || !file_.seek(crv_records_offset))
        return false;
    reference_ = reference;
    bool anyPoint = false;
    CrvRecordReader records(file_);
    Path run;
    LocalPoint record;
    bool more = true;
    while (more) {
        more = records.next(record);
        if (more && is_valid_crv_point(record)) {
            anyPoint = true;
            run.push_back(record);
            if (run.size() == conversionBatch)
                addToLastCurve(run, keepAllPoints);
            continue;
        }
        addToLastCurve(run, keepAllPoints);
        closeLastCurve();
    }
    return anyPoint;
}

void TCurvePattern::addToLastCurve(Path& records, bool keepAllPoints) {
    if (records.empty())
        return;
    TGuidanceCurve& curve = lastCurve();
    for (GeoPoint const& point : localToGeo(records, reference_))
        curve.add(geoToLocal(point, center_), keepAllPoints);
    records.clear();
}

void TCurvePattern::closeLastCurve() {
    TGuidanceCurve& curve = lastCurve();
    if (curve.count() == 0)
        return;
    curve.finish();
    linkLastCurves();
    addCurve();
}

bool TCurvePattern::readPoint(QIODevice& device, LocalPoint& point) {
    return read_crv_record(device, point);
}

bool TCurvePattern::writePoint(LocalPoint point) {
    // Qt would complain of a closed file; a false result says enough.
    return file_.isWritable() && write_crv_record(file_, point);
}

bool TCurvePattern::isValidPoint(LocalPoint point) {
    return is_valid_crv_point(point);
}

bool TCurvePattern::hasCurve(int index) const {
    return index >= 0 && index < curveCount();
}

Path const& TCurvePattern::curvePoints(int index) const {
    return hasCurve(index) ? curves_[index].points() : emptyCurve_.points();
}

Path const& TCurvePattern::firstCurvePoints() const {
    return curvePoints(0);
}

Path const& TCurvePattern::lastCurvePoints() const {
    return curvePoints(curveCount() - 1);
}

TGuidanceCurve& TCurvePattern::lastCurve() {
    return curves_.empty() ? emptyCurve_ : curves_.back();
}

TGuidanceCurve const& TCurvePattern::activeCurve() const {
    return hasCurrentCurve() && hasCurve(currentCurve_) ? curves_[currentCurve_] : emptyCurve_;
}

TGuidanceCurve const& TCurvePattern::neighbourCurve(int step) const {
    int const index = currentCurve_ + step;
    // The open curve is no neighbour.
    return hasCurve(index) && index < curveCount() - 1 ? curves_[index] : emptyCurve_;
}

bool TCurvePattern::basePositionValue(QByteArray& out) const {
    out = basePosition_;
    return !basePosition_.isEmpty();
}

void TCurvePattern::setJoinDistance(float distance) {
    joinDistance_ = distance;
    currentCurve_ = -1;
}

int TCurvePattern::nearestPointIndex(Path const& points, LocalPoint point) {
    int nearest = -1;
    float best = FLT_MAX;
    for (std::size_t i = 0; i < points.size(); ++i) {
        float const squared = squaredDistanceBetween(points[i], point);
        if (squared < best) {
            best = squared;
            nearest = static_cast<int>(i);
        }
    }
    return nearest;
}

int TCurvePattern::indexAtDistance(Path const& points, int start, int step, float distance) {
    if (points.size() < 2 || !inside(points, start))
        return -1;
    Walk const walk = walkOf(points, step);
    for (int i = start; i != walk.end;) {
        i += walk.direction;
        if (distanceBetween(points[i], points[start]) > distance)
            return i;
    }
    return walk.end;
}

int TCurvePattern::widenToDistance(Path const& points, int& start, int step, float distance) {
    int const reached = indexAtDistance(points, start, step, distance);
    if (reached == -1)
        return reached;
    Walk const walk = walkOf(points, step);
    int const farEnd = walk.direction == 1 ? 0 : static_cast<int>(points.size()) - 1;
    while (start != farEnd && distanceBetween(points[start], points[reached]) < distance)
        start -= walk.direction;
    return reached;
}

void TCurvePattern::wrapAngles(float& a, float& b) {
    a = wrapped(a);
    b = wrapped(b);
    if (std::fabs(a - b) > halfTurn) {
        if (a > b)
            b += fullTurn;
        else
            b -= fullTurn;
    }
}

float TCurvePattern::lineAngle(LocalPoint direction, TSegment const& segment) {
    // Bearings from the y axis.
    float a = std::atan2(direction.x, direction.y);
    float b = std::atan2(segment.end().x - segment.start().x, segment.end().y - segment.start().y);
    wrapAngles(a, b);
    float const difference = std::fabs(a - b);
    return difference > quarterTurn ? halfTurn - difference : difference;
}

bool TCurvePattern::projectionPassesEnd(TSegment const& segment, Path const& points, int start,
                                        int step) {
    if (!inside(points, start))
        return false;
    Walk const walk = walkOf(points, step);
    for (int i = start;; i += walk.direction) {
        if (segment.positionOf(segment.footPoint(points[i])) > 0)
            return true;
        if (i == walk.end)
            return false;
    }
}

TSegment TCurvePattern::nearestSegment(Path const& points, LocalPoint point, int* index) {
    TSegment nearest;
    if (index != nullptr)
        *index = 0;
    float best = FLT_MAX;
    for (std::size_t i = 1; i < points.size(); ++i) {
        TSegment const piece(points[i - 1], points[i]);
        float const squared = std::fabs(piece.segmentDistanceSquared(point));
        if (squared < best) {
            best = squared;
            nearest = piece;
            if (index != nullptr)
                *index = static_cast<int>(i);
        }
    }
    return nearest;
}

int TCurvePattern::nearestCurve(LocalPoint point, float limit) const {
    int nearest = -1;
    // The open curve, last in the list, takes no part.
    for (int i = curveCount() - 2; i >= 0; --i) {
        float squared = 0.0f;
        if (!curves_[i].squaredDistance(point, squared))
            continue;
        if (limit < 0.0f || limit * limit > squared) {
            nearest = i;
            limit = std::sqrt(squared);
        }
    }
    return nearest;
}

bool TCurvePattern::curvesJoin(int first, int second) const {
    if (!hasCurve(first) || !hasCurve(second) || curves_[first].count() == 0 ||
        curves_[second].count() == 0)
        return false;
    float const limit = std::min(joinDistance_, longestJoin);
    return limit >
           distanceBetween(curves_[first].points().back(), curves_[second].points().front());
}

void TCurvePattern::linkLastCurves() {
    int const last = curveCount() - 1;
    if (last < 1)
        return;
    bool const joined = curvesJoin(last - 1, last);
    curves_[last - 1].setJoinedToNext(joined);
    curves_[last].setJoinedToPrevious(joined);
}

void TCurvePattern::addCurve() {
    curves_.push_back(TGuidanceCurve());
}
