#include "guidance/crv_file.h"

#include "driver/data_tree.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <cstring>

namespace {

constexpr qint64 reference_size = 3 * sizeof(double);
constexpr std::size_t record_size = 2 * sizeof(float);
constexpr std::size_t block_size = 8192 * record_size;

constexpr float separator_bound = -9999999.0f;

LocalPoint record_at(char const* bytes) {
    return {qFromLittleEndian<float>(bytes), qFromLittleEndian<float>(bytes + sizeof(float))};
}

} // namespace

bool is_valid_crv_point(LocalPoint point) {
    return point.x > separator_bound && point.y > separator_bound;
}

bool read_crv_head(QIODevice& device, GeoPoint& reference) {
    char bytes[reference_size];
    if (device.read(bytes, reference_size) != reference_size)
        return false;
    reference.latitude = qFromLittleEndian<double>(bytes);
    reference.longitude = qFromLittleEndian<double>(bytes + sizeof(double));
    reference.height = qFromLittleEndian<double>(bytes + 2 * sizeof(double));
    return true;
}

bool read_crv_record(QIODevice& device, LocalPoint& record) {
    char bytes[record_size];
    if (device.read(bytes, sizeof(float)) != sizeof(float) ||
        device.read(bytes + sizeof(float), sizeof(float)) != sizeof(float))
        return false;
    record = record_at(bytes);
    return true;
}

bool write_crv_record(QIODevice& device, LocalPoint record) {
    char bytes[record_size];
    qToLittleEndian(record.x, bytes);
    qToLittleEndian(record.y, bytes + sizeof(float));
    return device.write(bytes, sizeof(float)) == sizeof(float) &&
           device.write(bytes + sizeof(float), sizeof(float)) == sizeof(float);
}

CrvRecordReader::CrvRecordReader(QIODevice& source) : device(source), block(block_size) {}

bool CrvRecordReader::next(LocalPoint& record) {
    if (position == whole && !refill())
        return false;
    record = record_at(block.data() + position);
    position += record_size;
    return true;
}

bool CrvRecordReader::refill() {
    // Keep the start of a record that the last read cut, and read on behind it.
    std::size_t const part = filled - whole;
    std::memmove(block.data(), block.data() + whole, part);
    filled = part;
    position = 0;
    whole = 0;
    qint64 read = 0;
    while (whole == 0 && (read = device.read(block.data() + filled,
                                             static_cast<qint64>(block.size() - filled))) > 0) {
        filled += static_cast<std::size_t>(read);
        whole = filled - filled % record_size;
    }
    return whole > 0;
}

bool read_crv_reference(QString const& path, double& latitude, double& longitude, double& height) {
    QFile file(path);
    GeoPoint reference;
    if (!file.open(QIODevice::ReadOnly) || !read_crv_head(file, reference))
        return false;
    latitude = reference.latitude;
    longitude = reference.longitude;
    height = reference.height;
    return true;
}

std::vector<CrvSegment> read_crv_segments(QString const& path) {
    std::vector<CrvSegment> segments;
    QFile file(path);
    if (!QFileInfo::exists(path) || !file.open(QIODevice::ReadOnly) || !point_file_size_ok(file) ||
        !file.seek(crv_records_offset))
        return segments;
    CrvSegment segment;
    CrvRecordReader records(file);
    LocalPoint record;
    while (records.next(record)) {
        if (is_valid_crv_point(record)) {
            segment.push_back(record);
        } else if (!segment.empty()) {
            segments.push_back(std::move(segment));
            segment.clear();
        }
    }
    if (!segment.empty())
        segments.push_back(std::move(segment));
    return segments;
}
