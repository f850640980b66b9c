#pragma once
// The display's curve file (".crv"): binary, little-endian, IEEE 754. A head
// of 64 bytes (reference latitude and longitude in degrees and height in
// metres, three doubles; then 40 reserved bytes) and point records of two
// floats up to the end of the file: x metres east and y metres south of the
// reference. A record that is no point separates the segments of the curve.
//
// The importer and the pattern library read and check the file through these
// functions alone.

#include "coordinates/points.h"

#include <QIODevice>
#include <QString>

#include <vector>

using CrvSegment = std::vector<LocalPoint>;

// Where the first record starts.
inline constexpr qint64 crv_records_offset = 64;

// A point when both x and y are greater than -9999999.0; anything else, NaN
// included, is a separator.
bool is_valid_crv_point(LocalPoint point);

// The reference of the head, read from the device's current position (its
// start). False, leaving `reference` alone, unless all three doubles came.
bool read_crv_head(QIODevice& device, GeoPoint& reference);

// One record from the device's current position: x, then y. False unless
// both came whole.
bool read_crv_record(QIODevice& device, LocalPoint& record);
// One record at the device's current position; false unless both numbers
// were written whole.
bool write_crv_record(QIODevice& device, LocalPoint record);

// The records of a device one after another from its current position,
// read in blocks; a part-record at the end is none. Point or separator is
// for the caller to tell with is_valid_crv_point.
class CrvRecordReader {
public:
    explicit CrvRecordReader(QIODevice& device);

    // The next record; false at the end.
    bool next(LocalPoint& record);

private:
    bool refill();

    QIODevice& device;
    std::vector<char> block;
    // The unread whole records are block[position, whole); the bytes from
    // whole to filled are the start of the record after them.
    std::size_t position = 0;
    std::size_t whole = 0;
    std::size_t filled = 0;
};

// The reference of the head. False, leaving the three numbers alone, when the
// file does not open or is shorter than the three doubles.
bool read_crv_reference(QString const& path, double& latitude, double& longitude, double& height);

// The segments of the file in order, each of at least one point: separators
// at the start, at the end or in a row make no empty segment, and an
// incomplete last record is dropped. Empty for a missing or unreadable file,
// for one without point records, and for one larger than max_point_file_size
// (with a warning).
std::vector<CrvSegment> read_crv_segments(QString const& path);
