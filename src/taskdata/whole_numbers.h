#pragma once
// Numbers that the task data keeps as integers (areas, densities, quantities,
// millimetres) from the doubles the importers compute.

#include <cmath>
#include <limits>

namespace TC::Task_data {

// `value` truncated toward zero and held to the type's range, so that a
// negative value is 0 for an unsigned type and infinity the type's maximum;
// not-a-number gives 0.
template <class Integer> Integer truncate_to(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (value >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<Integer>(value);
}

} // namespace TC::Task_data
