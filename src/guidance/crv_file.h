#pragma once
// The display's curve file (".crv"): binary, little-endian, IEEE 754. A head
// of 64 bytes (reference latitude and longitude in degrees and height in
// metres, three doubles; then 40 reserved bytes) and point records of two
// floats up to the end of the file: x metres east and y metres south of the
// reference. A record that is no point separates the segments of the curve.

#include "coordinates/points.h"

#include <QString>

#include <vector>

using CrvSegment = std::vector<LocalPoint>;

// A point when both x and y are greater than -9999999.0; anything else, NaN
// included, is a separator.
bool is_valid_crv_point(LocalPoint point);

// The reference of the head. False, leaving the three numbers alone, when the
// file does not open or is shorter than the three doubles.
bool read_crv_reference(QString const& path, double& latitude, double& longitude, double& height);

// The segments of the file in order, each of at least one point: separators
// at the start, at the end or in a row make no empty segment, and an
// incomplete last record is dropped. Empty for a missing or unreadable file,
// for one without point records, and for one larger than max_point_file_size
// (with a warning).
std::vector<CrvSegment> read_crv_segments(QString const& path);
