#ifndef COORDINATES_NUMBERS_H
#define COORDINATES_NUMBERS_H

#include <cmath>
#include <limits>

// A double as an int, truncated toward zero: beyond the range of int the nearest end, not a
// number 0, so that no value read from a file makes the conversion undefined.
inline int truncatedToInt(double value) {
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    if (value >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    return static_cast<int>(value);
}

#endif
