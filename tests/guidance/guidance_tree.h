#pragma once
// The display's .crv files, for the suites of the guidance imports and of the
// curve patterns.
#include "test_support/test_support.h"

#include "coordinates/points.h"

#include <limits>

namespace guidance_tree {

using Record = std::pair<float, float>;

// The record that the display writes for a break in a curve.
inline Record const separator{std::numeric_limits<float>::lowest(),
                              std::numeric_limits<float>::lowest()};

// A .crv file of the records around `reference`.
inline QByteArray crv_file(GeoPoint reference, std::vector<Record> const& records) {
    return test_support::point_file(reference.latitude, reference.longitude, reference.height,
                                    records);
}

} // namespace guidance_tree
