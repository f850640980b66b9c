#ifndef PATTERNS_POINT_HISTORY_H
#define PATTERNS_POINT_HISTORY_H

#include "coordinates/points.h"

#include <cfloat>

// A small buffer of the latest recorded positions: repeats are dropped, breaks are kept as a
// marker point, and the content is handed out shifted to an origin.
class TPointHistory {
public:
    // The most the buffer holds: one slot less than it has.
    static constexpr int capacity = 63;
    // The point that stands for a break, and that separates the runs of a .crv file.
    static constexpr LocalPoint breakMark{-FLT_MAX, -FLT_MAX};

    virtual ~TPointHistory() = default;

    // Stores the point unless it repeats the last one (no coordinate more than 1e-6 off it),
    // which still counts as success. False, storing nothing, when the buffer is full. While
    // disabled, every point succeeds and nothing is stored.
    bool addPoint(LocalPoint point);
    // addPoint of breakMark, so that two breaks in a row store one.
    bool addBreak();
    void setOrigin(LocalPoint point) { origin_ = point; }
    void setEnabled(bool enable) { enabled_ = enable; }
    // Empties the buffer; origin and enabled stay.
    void clear() { count_ = 0; }
    // Subtracts the origin from every stored point, in place, so that each call shifts them once
    // more; then copies them to `out`, which has room for `capacity` points. Returns how many.
    int copyPoints(LocalPoint* out);

private:
    int count_ = 0;
    LocalPoint points_[capacity + 1];
    LocalPoint origin_;
    bool enabled_ = true;
};

#endif
