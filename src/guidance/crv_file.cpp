#include "guidance/crv_file.h"

#include "driver/data_tree.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <array>

namespace {

constexpr qint64 reference_size = 3 * sizeof(double);
constexpr qint64 head_size = 64;
constexpr qint64 record_size = 2 * sizeof(float);
constexpr qint64 block_size = 8192 * record_size;

constexpr float separator_bound = -9999999.0f;

} // namespace

bool is_valid_crv_point(LocalPoint point) {
    return point.x > separator_bound && point.y > separator_bound;
}

bool read_crv_reference(QString const& path, double& latitude, double& longitude, double& height) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QByteArray const reference = file.read(reference_size);
    if (reference.size() != reference_size)
        return false;
    char const* bytes = reference.constData();
    latitude = qFromLittleEndian<double>(bytes);
    longitude = qFromLittleEndian<double>(bytes + sizeof(double));
    height = qFromLittleEndian<double>(bytes + 2 * sizeof(double));
    return true;
}

std::vector<CrvSegment> read_crv_segments(QString const& path) {
    std::vector<CrvSegment> segments;
    QFile file(path);
    if (!QFileInfo::exists(path) || !file.open(QIODevice::ReadOnly) || !point_file_size_ok(file) ||
        !file.seek(head_size))
        return segments;
    CrvSegment segment;
    // Blocks of whole records; a read that ends inside a record keeps the
    // part for the next, and a part-record at the end of the file is none.
    std::array<char, block_size> block;
    qint64 filled = 0;
    qint64 read = 0;
    while ((read = file.read(block.data() + filled, block_size - filled)) > 0) {
        filled += read;
        qint64 const whole = filled - filled % record_size;
        for (qint64 offset = 0; offset < whole; offset += record_size) {
            char const* record = block.data() + offset;
            LocalPoint const point{qFromLittleEndian<float>(record),
                                   qFromLittleEndian<float>(record + sizeof(float))};
            if (is_valid_crv_point(point)) {
                segment.push_back(point);
            } else if (!segment.empty()) {
                segments.push_back(std::move(segment));
                segment.clear();
            }
        }
        std::copy(block.data() + whole, block.data() + filled, block.data());
        filled -= whole;
    }
    if (!segment.empty())
        segments.push_back(std::move(segment));
    return segments;
}
