#include "patterns/lock_guide_curve.h"

#include "patterns/piece_index.h"
#include "polygons/point_compare.h"

#include <cmath>
#include <utility>

namespace {

// Unit directions whose tips lie up to this far apart (in double) make no miter: the corner
// turns back on itself.
double const hairpinTipDistance = 0.1;
// The factor on the miter length: the miter lies on the side of a negative length.
float const miterSide = -1.0f;
// Headings of a gentle turn differ by at most this many degrees either way.
double const gentleTurn = 90.0;

bool isMissing(LocalPoint p) {
    return pointsEqual(p, LocalPoint{});
}

LocalPoint sum(LocalPoint a, LocalPoint b) {
    return {a.x + b.x, a.y + b.y};
}

} // namespace

TLockGuideCurve::TLockGuideCurve(Path const* source, float distance)
    : source_(source), distance_(distance) {}

void TLockGuideCurve::add(float x, float y) {
    result_.push_back({x, y});
}

bool TLockGuideCurve::miter(LocalPoint& out, LocalPoint a, LocalPoint b, LocalPoint c) const {
    TSegment const toA(b, a);
    TSegment const toC(b, c);
    LocalPoint const u = toA.direction();
    LocalPoint const v = toC.direction();
    float const headingA = toA.heading();
    float const headingC = toC.heading();
    float const tips = std::sqrt((u.x - v.x) * (u.x - v.x) + (u.y - v.y) * (u.y - v.y));
    if (!(static_cast<double>(tips) > hairpinTipDistance))
        return false;
    float const length = miterSide * (2.0f * distance_ / tips);
    float const bisector = ((headingA > headingC ? headingC + 360.0f : headingC) + headingA) * 0.5f;
    TSegment ray;
    ray.setByHeading(b, bisector, length);
    out = ray.end();
    return true;
}

bool TLockGuideCurve::step(int index, LocalPoint& point, TSegment& segment) {
    LocalPoint const p = source_->at(static_cast<std::size_t>(index));
    if (isMissing(p))
        return false;
    for (int i = 0; i < 3; ++i) {
        window_[i] = window_[i + 1];
        miters_[i] = miters_[i + 1];
    }
    window_[3] = p;
    if (isMissing(window_[1]) || isMissing(window_[2]) || isMissing(window_[3]))
        return false;
    LocalPoint const a = window_[1];
    if (miter(miters_[2], a, window_[2], window_[3])) {
        if (isMissing(window_[0]))
            return false;
        LocalPoint const along =
            sum(TSegment(a, window_[2]).direction(), TSegment(miters_[1], miters_[2]).direction());
        if (std::sqrt(along.x * along.x + along.y * along.y) > 1.0f) {
            point = miters_[1];
            segment = TSegment(LocalPoint{}, TSegment(a, point).direction());
            return true;
        }
    }
    window_[0] = LocalPoint{};
    window_[1] = LocalPoint{};
    return false;
}

bool TLockGuideCurve::turnIsGentle(float x, float y) const {
    if (previous_.x == 0.0f || current_.x == 0.0f)
        return true;
    double turn = static_cast<double>(TSegment(current_, {x, y}).heading()) -
                  static_cast<double>(TSegment(previous_, current_).heading());
    if (turn > 180.0)
        turn -= 360.0;
    else if (turn < -180.0)
        turn += 360.0;
    return turn >= -gentleTurn && turn <= gentleTurn;
}

// The clean-ups below walk the curve as two parts: `kept`, the points up to the one being looked
// at, and the points not yet reached, read from the former curve in order. A cut shortens
// `kept`, so no point is moved twice, and the pieces index finds crossings without walking back.

bool TLockGuideCurve::removeLoops() {
    if (result_.size() < 2)
        return false;
    PieceIndex pieces(result_, PieceIndex::cellSizeFor(result_, 0.0));
    Path ahead = std::move(result_);
    Path& kept = result_;
    kept.assign(ahead.begin(), ahead.begin() + 2);
    std::size_t next = 2;
    bool cut = false;
    // kept holds the points 0 to i; the pieces index the older pieces j, from (kept[j], kept[j-1])
    // for j = 2 up to i - 2. A loop counts while i - j is below half the curve's size.
    int i = 1;
    for (;;) {
        int const size = static_cast<int>(kept.size() + (ahead.size() - next));
        LocalPoint crossing;
        int const j = pieces.lastCrossing(TSegment(kept[i - 1], kept[i]),
                                          std::max(2, i - size / 2 + 1), crossing);
        if (j >= 0) {
            // The points j to i - 1 give way to the crossing. Nothing before j changed, and
            // with the curve shorter no loop there can count now, so the walk goes on at j.
            LocalPoint const behind = kept[i];
            pieces.removeFrom(j - 1);
            kept.resize(static_cast<std::size_t>(j));
            kept.push_back(crossing);
            ahead[--next] = behind;
            previous_ = crossing;
            current_ = behind;
            i = j;
            cut = true;
            continue;
        }
        if (next == ahead.size())
            return cut;
        kept.push_back(ahead[next++]);
        ++i;
        if (i - 2 >= 2)
            pieces.add(i - 2, TSegment(kept[i - 2], kept[i - 3]));
    }
}

int TLockGuideCurve::cutBackIn(Path& kept, LocalPoint next, PieceIndex& pieces) {
    int const index = static_cast<int>(kept.size()) - 1;
    LocalPoint const corner = kept.back();
    TSegment probe;
    probe.setByHeading(corner, TSegment(next, corner).heading() - 180.0f, distance_);
    probe.set(next, probe.end());
    if (index < 2)
        return index;
    LocalPoint crossing;
    int const j = pieces.lastCrossing(probe, 1, crossing);
    if (j < 0)
        return index;
    pieces.removeFrom(j);
    kept.resize(static_cast<std::size_t>(j));
    kept.push_back(crossing);
    kept.push_back(corner);
    pieces.add(j, TSegment(crossing, kept[j - 1]));
    previous_ = crossing;
    current_ = corner;
    return j + 1;
}

int TLockGuideCurve::cutBack(int index) {
    if (index < 0 || static_cast<std::size_t>(index) + 1 >= result_.size())
        return index;
    Path kept(result_.begin(), result_.begin() + index + 1);
    PieceIndex pieces(kept, PieceIndex::cellSizeFor(kept, std::fabs(distance_) / 8.0));
    for (int j = 1; j < index; ++j)
        pieces.add(j, TSegment(kept[j], kept[j - 1]));
    int const resumeAt = cutBackIn(kept, result_[index + 1], pieces);
    kept.insert(kept.end(), result_.begin() + index + 1, result_.end());
    result_ = std::move(kept);
    return resumeAt;
}

void TLockGuideCurve::removeSharpTurns() {
    if (result_.size() < 4)
        return;
    // The probes of cutBack reach `distance` past a corner: cells of an eighth of that keep
    // the cells a probe's box spans few.
    PieceIndex pieces(result_, PieceIndex::cellSizeFor(result_, std::fabs(distance_) / 8.0));
    Path ahead = std::move(result_);
    Path& kept = result_;
    kept.assign(ahead.begin(), ahead.begin() + 2);
    previous_ = kept[0];
    current_ = kept[1];
    // The pieces index holds the pieces j, from (kept[j], kept[j-1]), for j = 1 up to the
    // point before the one looked at.
    pieces.add(1, TSegment(kept[1], kept[0]));
    for (std::size_t next = 2; next < ahead.size();) {
        LocalPoint const p = ahead[next++];
        kept.push_back(p);
        if (turnIsGentle(p.x, p.y)) {
            previous_ = current_;
        } else {
            if (next < ahead.size())
                cutBackIn(kept, ahead[next], pieces);
            previous_ = LocalPoint{};
        }
        current_ = p;
        std::size_t const last = kept.size() - 1;
        pieces.add(static_cast<int>(last), TSegment(kept[last], kept[last - 1]));
    }
}

void TLockGuideCurve::removeSpikes() {
    if (result_.size() < 4)
        return;
    Path ahead = std::move(result_);
    Path& kept = result_;
    kept.assign(ahead.begin(), ahead.begin() + 2);
    previous_ = kept[0];
    current_ = kept[1];
    std::size_t next = 2;
    while (next < ahead.size()) {
        LocalPoint const p = ahead[next];
        if (turnIsGentle(p.x, p.y)) {
            previous_ = current_;
            current_ = p;
            kept.push_back(p);
            ++next;
            continue;
        }
        if (next + 1 == ahead.size())
            break;
        LocalPoint const q = ahead[next + 1];
        previous_ = current_;
        current_ = p;
        if (turnIsGentle(q.x, q.y)) {
            previous_ = kept[kept.size() - 2];
            current_ = kept.back();
            kept.push_back(p);
            ++next;
            continue;
        }
        // Two sharp turns in a row: the point before p and p itself go. The walk then steps
        // over the two points that move into their places.
        kept.pop_back();
        ++next;
        previous_ = LocalPoint{};
        current_ = p;
        for (int skipped = 0; skipped < 2 && next < ahead.size(); ++skipped)
            kept.push_back(ahead[next++]);
    }
    kept.insert(kept.end(), ahead.begin() + static_cast<std::ptrdiff_t>(next), ahead.end());
}
