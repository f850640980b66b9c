#include "patterns/point_history.h"

#include <algorithm>
#include <cmath>

namespace {

// Points closer than this in both coordinates are the same position.
float const repeatTolerance = 1e-6f;

bool differ(LocalPoint a, LocalPoint b) {
    return std::fabs(a.x - b.x) > repeatTolerance || std::fabs(a.y - b.y) > repeatTolerance;
}

} // namespace

bool TPointHistory::addPoint(LocalPoint point) {
    if (!enabled_)
        return true;
    if (count_ >= capacity)
        return false;
    if (count_ != 0 && !differ(point, points_[count_ - 1]))
        return true;
    points_[count_] = point;
    ++count_;
    return true;
}

bool TPointHistory::addBreak() {
    return addPoint(breakMark);
}

int TPointHistory::copyPoints(LocalPoint* out) {
    for (int i = 0; i < count_; ++i) {
        points_[i].x -= origin_.x;
        points_[i].y -= origin_.y;
    }
    std::copy(points_, points_ + count_, out);
    return count_;
}
