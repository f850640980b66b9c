#include "boundaries/esri_shape_file.h"

#include <QByteArray>
#include <QDebug>
#include <QFile>
#include <QFileInfo>

#include <shapefil.h>

#include <cstdio>

namespace {

// shapelib prints its complaints on its own unless told otherwise; they are
// diagnostics, not messages for the user.
void log_reader_error(char const* message) {
    qDebug() << message;
}

// The default hook is atof, which follows the process locale: a German
// locale would read "2.5" as 2.
double parse_number(char const* text) {
    return QByteArray(text).trimmed().toDouble();
}

// Opening a FIFO or a device blocks or never ends; only regular files (or
// links to them) are shapefiles.
SAFile open_regular_file(char const* filename, char const* access) {
    if (!QFileInfo(QFile::decodeName(filename)).isFile())
        return nullptr;
    return reinterpret_cast<SAFile>(std::fopen(filename, access));
}

SAHooks reader_hooks() {
    SAHooks hooks;
    SASetupDefaultHooks(&hooks);
    hooks.FOpen = open_regular_file;
    hooks.Error = log_reader_error;
    hooks.Atof = parse_number;
    return hooks;
}

using ShapeHandle = std::unique_ptr<SHPInfo, decltype(&SHPClose)>;

// shapelib checks the file code of the index only; a .shp of other content
// beside a sound index would give records that all fail to read.
bool has_shapefile_code(SHPInfo const& file) {
    unsigned char code[4] = {};
    return file.sHooks.FSeek(file.fpSHP, 0, SEEK_SET) == 0 &&
           file.sHooks.FRead(code, sizeof code, 1, file.fpSHP) == 1 && code[0] == 0x00 &&
           code[1] == 0x00 && code[2] == 0x27 && code[3] == 0x0a;
}
using ShapeObject = std::unique_ptr<SHPObject, decltype(&SHPDestroyObject)>;
using TableHandle = std::unique_ptr<DBFInfo, decltype(&DBFClose)>;

bool is_point_type(int type) {
    switch (type) {
    case SHPT_POINT:
    case SHPT_POINTZ:
    case SHPT_POINTM:
    case SHPT_MULTIPOINT:
    case SHPT_MULTIPOINTZ:
    case SHPT_MULTIPOINTM:
        return true;
    default:
        return false;
    }
}

bool is_part_type(int type) {
    switch (type) {
    case SHPT_ARC:
    case SHPT_ARCZ:
    case SHPT_ARCM:
    case SHPT_POLYGON:
    case SHPT_POLYGONZ:
    case SHPT_POLYGONM:
    case SHPT_MULTIPATCH:
        return true;
    default:
        return false;
    }
}

bool is_ring_type(int type) {
    return type == SHPT_POLYGON || type == SHPT_POLYGONZ || type == SHPT_POLYGONM;
}

std::vector<EsriPoint> points_of(SHPObject const& object) {
    std::vector<EsriPoint> points;
    if (object.nVertices <= 0 || !object.padfX || !object.padfY)
        return points;
    points.reserve(static_cast<size_t>(object.nVertices));
    for (int i = 0; i < object.nVertices; ++i)
        points.push_back({object.padfX[i], object.padfY[i]});
    return points;
}

// Part starts as shapelib gives them, kept only while they ascend within the
// vertices, so that every part is a valid run.
std::vector<unsigned> part_starts_of(SHPObject const& object, size_t vertex_count) {
    std::vector<unsigned> starts;
    if (object.nParts <= 0 || !object.panPartStart)
        return starts;
    for (int i = 0; i < object.nParts; ++i) {
        int const start = object.panPartStart[i];
        if (start < 0 || static_cast<size_t>(start) > vertex_count ||
            (!starts.empty() && static_cast<unsigned>(start) < starts.back()))
            break;
        starts.push_back(static_cast<unsigned>(start));
    }
    return starts;
}

// The shape of one record; null for a null shape, one that can't be read,
// and a type code that isn't a shape.
std::unique_ptr<EsriShape> shape_of(SHPObject const* object) {
    if (!object)
        return nullptr;
    int const type = object->nSHPType;
    if (is_point_type(type))
        return std::make_unique<EsriPointShape>(type, points_of(*object));
    if (is_part_type(type)) {
        std::vector<EsriPoint> points = points_of(*object);
        std::vector<unsigned> starts = part_starts_of(*object, points.size());
        return std::make_unique<EsriPolygonShape>(type, std::move(points), std::move(starts));
    }
    return nullptr;
}

enum class ColumnKind { character, integer, number, logical };

ColumnKind column_kind(DBFFieldType type) {
    switch (type) {
    case FTInteger:
        return ColumnKind::integer;
    case FTDouble:
        return ColumnKind::number;
    case FTLogical:
        return ColumnKind::logical;
    default:
        return ColumnKind::character;
    }
}

// The value of one cell of the row that DBFReadTuple loaded last; null when
// it is empty.
std::unique_ptr<EsriDbfField> field_of(DBFHandle table, int row, int column, ColumnKind kind) {
    if (DBFIsAttributeNULL(table, row, column))
        return nullptr;
    switch (kind) {
    case ColumnKind::integer:
        return std::make_unique<EsriDbfIntegerField>(DBFReadIntegerAttribute(table, row, column));
    case ColumnKind::number:
        return std::make_unique<EsriDbfNumberField>(DBFReadDoubleAttribute(table, row, column));
    case ColumnKind::logical: {
        char const* value = DBFReadLogicalAttribute(table, row, column);
        switch (value ? value[0] : '?') {
        case 'T':
        case 't':
        case 'Y':
        case 'y':
            return std::make_unique<EsriDbfLogicalField>(true);
        case 'F':
        case 'f':
        case 'N':
        case 'n':
            return std::make_unique<EsriDbfLogicalField>(false);
        default:
            return nullptr;
        }
    }
    case ColumnKind::character:
        break;
    }
    char const* text = DBFReadStringAttribute(table, row, column);
    return text ? std::make_unique<EsriDbfCharacterField>(QByteArray(text)) : nullptr;
}

} // namespace

bool EsriPolygonShape::getPartPoints(unsigned part, EsriPoint const*& points,
                                     unsigned& count) const {
    if (part >= part_starts_.size())
        return false;
    size_t const begin = part_starts_[part];
    size_t const end = part + 1 < part_starts_.size() ? part_starts_[part + 1] : points_.size();
    if (end <= begin)
        return false;
    points = points_.data() + begin;
    count = static_cast<unsigned>(end - begin);
    return true;
}

EsriRecord::EsriRecord(std::unique_ptr<EsriShape> shape) : shape_(std::move(shape)) {}

EsriShape const* EsriRecord::GetShape(unsigned index) const {
    return index < GetNumberOfShapes() ? shape_.get() : nullptr;
}

bool EsriShapeFile::Open(QString const& path, bool) {
    records_.clear();
    polygons_.clear();
    SAHooks hooks = reader_hooks();
    ShapeHandle const file(SHPOpenLL(QFile::encodeName(path).constData(), "rb", &hooks), &SHPClose);
    if (!file || !has_shapefile_code(*file))
        return false;

    // shapelib has read the whole index by now, so the count is backed by it.
    int count = 0;
    SHPGetInfo(file.get(), &count, nullptr, nullptr, nullptr);
    records_.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        ShapeObject const object(SHPReadObject(file.get(), i), &SHPDestroyObject);
        records_.emplace_back(shape_of(object.get()));
    }

    for (unsigned record = 0; record < records_.size(); ++record) {
        auto const* shape = dynamic_cast<EsriPolygonShape const*>(records_[record].GetShape(0));
        if (!shape || !is_ring_type(shape->shapeType()))
            continue;
        for (unsigned part = 0; part < shape->GetNumberOfParts(); ++part) {
            EsriPoint const* points = nullptr;
            unsigned points_count = 0;
            shape->getPartPoints(part, points, points_count);
            polygons_.emplace_back(record, points, points_count);
        }
    }
    return true;
}

unsigned EsriShapeFile::GetPolygonRecord(int ring) const {
    if (ring < 0 || static_cast<size_t>(ring) >= polygons_.size())
        return static_cast<unsigned>(-1);
    return polygons_[static_cast<size_t>(ring)].record();
}

EsriRecord const* EsriShapeFile::GetRecord(unsigned index) const {
    return index < records_.size() ? &records_[index] : nullptr;
}

EsriDbfField const* EsriDbfRecord::GetField(unsigned index) const {
    return index < fields_.size() ? fields_[index].get() : nullptr;
}

bool EsriDbfFile::Open(QString const& path, bool) {
    descriptors_.clear();
    records_.clear();
    SAHooks hooks = reader_hooks();
    TableHandle const table(DBFOpenLL(QFile::encodeName(path).constData(), "rb", &hooks),
                            &DBFClose);
    if (!table)
        return false;

    int const columns = DBFGetFieldCount(table.get());
    std::vector<ColumnKind> kinds;
    for (int column = 0; column < columns; ++column) {
        EsriDbfFieldDescriptor descriptor;
        DBFFieldType const type = DBFGetFieldInfo(table.get(), column, descriptor.name,
                                                  &descriptor.width, &descriptor.decimals);
        descriptor.type = DBFGetNativeFieldType(table.get(), column);
        descriptors_.push_back(descriptor);
        kinds.push_back(column_kind(type));
    }

    // The header's row count is a claim; a row is taken only once it is read.
    int const rows = DBFGetRecordCount(table.get());
    for (int row = 0; row < rows && DBFReadTuple(table.get(), row); ++row) {
        std::vector<std::unique_ptr<EsriDbfField>> fields;
        fields.reserve(kinds.size());
        for (int column = 0; column < columns; ++column)
            fields.push_back(
                field_of(table.get(), row, column, kinds[static_cast<size_t>(column)]));
        records_.emplace_back(std::move(fields));
    }
    return true;
}

EsriDbfFieldDescriptor const* EsriDbfFile::GetFieldDescriptor(unsigned index) const {
    return index < descriptors_.size() ? &descriptors_[index] : nullptr;
}

EsriDbfRecord const* EsriDbfFile::GetRecord(unsigned index) const {
    return index < records_.size() ? &records_[index] : nullptr;
}
