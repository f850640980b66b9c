#pragma once
// Lengths that ISO 11783-10 keeps in whole millimetres.

#include <cmath>
#include <limits>

// Metres as millimetres of an integer type: times 1000.0, truncated toward
// zero and held to the type's range (so a negative length is 0 for an
// unsigned type); not-a-number gives 0.
template <class Integer> Integer metres_to_millimetres(double metres) {
    using Limits = std::numeric_limits<Integer>;
    double const millimetres = metres * 1000.0;
    if (std::isnan(millimetres))
        return 0;
    if (millimetres <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (millimetres >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<Integer>(millimetres);
}
