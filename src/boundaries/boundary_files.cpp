#include "boundaries/boundary_files.h"

#include "boundaries/esri_shape_file.h"
#include "coordinates/geodetic.h"
#include "coordinates/numbers.h"
#include "driver/data_tree.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {

// The suffix a file must have to be of a kind: the table's entry without its
// dot, "shp" for ".shp".
QString wanted_suffix(QString const& suffix_entry) {
    return suffix_entry.mid(suffix_entry.lastIndexOf(QLatin1Char('.')) + 1);
}

bool has_suffix(QFileInfo const& file, QString const& suffix_entry) {
    return file.completeSuffix() == wanted_suffix(suffix_entry);
}

void collect(QFileInfo const& entry, QList<QFileInfo>& files, QSet<QString>& entered) {
    if (entry.isDir()) {
        QString const canonical = entry.canonicalFilePath();
        if (entered.contains(canonical))
            return;
        entered.insert(canonical);
        QDir const dir(entry.absoluteFilePath());
        for (QFileInfo const& child :
             list_entries(dir, QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot))
            collect(child, files, entered);
    } else if (entry.exists()) {
        files.append(entry);
    }
}

// Where the table has them; -1 for a column it lacks. Of two columns of one
// name the later counts.
struct Columns {
    int type = -1;
    int name = -1;
    int headland = -1;
    int treatment = -1;
};

Columns find_columns(EsriDbfFile const& table) {
    Columns columns;
    for (unsigned i = 0; i < table.GetNumberOfFieldDescriptors(); ++i) {
        char const* name = table.GetFieldDescriptor(i)->name;
        int const index = static_cast<int>(i);
        if (qstrcmp(name, "Type") == 0)
            columns.type = index;
        else if (qstrcmp(name, "Name") == 0)
            columns.name = index;
        else if (qstrcmp(name, "Headland") == 0)
            columns.headland = index;
        else if (qstrcmp(name, "Treatment") == 0)
            columns.treatment = index;
    }
    return columns;
}

EsriDbfField const* field_at(EsriDbfRecord const& row, int column) {
    if (column < 0 || static_cast<unsigned>(column) >= row.GetNumberOfFields())
        return nullptr;
    return row.GetField(static_cast<unsigned>(column));
}

QString text_at(EsriDbfRecord const& row, int column) {
    auto const* field = dynamic_cast<EsriDbfCharacterField const*>(field_at(row, column));
    return field ? QString::fromUtf8(field->GetCharacters()) : QString();
}

bool headland_at(EsriDbfRecord const& row, int column) {
    EsriDbfField const* field = field_at(row, column);
    if (auto const* integer = dynamic_cast<EsriDbfIntegerField const*>(field))
        return integer->GetValue() > 0;
    if (auto const* logical = dynamic_cast<EsriDbfLogicalField const*>(field))
        return logical->GetValue();
    return true;
}

int treatment_at(EsriDbfRecord const& row, int column) {
    EsriDbfField const* field = field_at(row, column);
    if (auto const* integer = dynamic_cast<EsriDbfIntegerField const*>(field))
        return integer->GetValue();
    if (auto const* number = dynamic_cast<EsriDbfNumberField const*>(field))
        return truncatedToInt(number->GetValue());
    return 0;
}

// A vertex with a coordinate that isn't a finite number has no place on the
// map; it would leave a point without a position in the output.
bool is_finite(GeoPoint const& point) {
    return std::isfinite(point.latitude) && std::isfinite(point.longitude);
}

std::vector<GeoPoint> ring_points(EsriPolygonReference const& ring) {
    std::vector<GeoPoint> points;
    points.reserve(ring.GetNumberOfPoints());
    EsriPoint const* vertices = ring.GetPoints();
    for (unsigned i = 0; i < ring.GetNumberOfPoints(); ++i) {
        GeoPoint const point{vertices[i].y, vertices[i].x, 0.0};
        if (is_finite(point))
            points.push_back(point);
    }
    return points;
}

// Offsets of a .bdy file.
qint64 const bdy_centre_size = 24;
qint64 const bdy_vertices_start = 64;
int const bdy_vertex_size = 8;

} // namespace

void collect_files(QFileInfo const& entry, QList<QFileInfo>& files) {
    QSet<QString> entered;
    collect(entry, files, entered);
}

BoundaryList read_shape_boundaries(QString const& shp_path) {
    QFileInfo const shp(shp_path);
    // A missing table reads as one without columns and rows.
    EsriDbfFile table;
    table.Open(child_path(shp.absolutePath(), shp.completeBaseName() + data_tree::dbf_suffix),
               true);
    Columns const columns = find_columns(table);

    EsriShapeFile shapes;
    if (!shapes.Open(shp_path, true))
        return {};
    BoundaryList records;
    std::vector<EsriPolygonReference> const& rings = shapes.GetPolygons();
    for (size_t i = 0; i < rings.size(); ++i) {
        BoundaryRecord record;
        record.headland = true;
        if (EsriDbfRecord const* row =
                table.GetRecord(shapes.GetPolygonRecord(static_cast<int>(i)))) {
            record.category = text_at(*row, columns.type);
            record.name = text_at(*row, columns.name);
            record.headland = headland_at(*row, columns.headland);
            record.treatment = treatment_at(*row, columns.treatment);
        }
        // A "UUID" column isn't read: every ring gets a fresh identity when
        // it is written.
        record.points = ring_points(rings[i]);
        if (record.points.size() > 2)
            records.push_back(std::move(record));
    }
    return records;
}

BoundaryRecord read_bdy_file(QString const& bdy_path) {
    BoundaryRecord record;
    QFile file(bdy_path);
    if (!file.open(QIODevice::ReadOnly) || !point_file_size_ok(file))
        return record;
    QByteArray const head = file.read(bdy_centre_size);
    if (head.size() < bdy_centre_size || !file.seek(bdy_vertices_start))
        return record;
    GeoPoint const centre{qFromLittleEndian<double>(head.constData()),
                          qFromLittleEndian<double>(head.constData() + 8),
                          qFromLittleEndian<double>(head.constData() + 16)};

    QByteArray const body = file.readAll();
    std::vector<LocalPoint> vertices;
    vertices.reserve(static_cast<size_t>(body.size() / bdy_vertex_size));
    for (int offset = 0; offset + bdy_vertex_size <= body.size(); offset += bdy_vertex_size)
        vertices.push_back({qFromLittleEndian<float>(body.constData() + offset),
                            qFromLittleEndian<float>(body.constData() + offset + 4)});
    record.points = localToGeo(vertices, centre);
    record.points.erase(std::remove_if(record.points.begin(), record.points.end(),
                                       [](GeoPoint const& point) { return !is_finite(point); }),
                        record.points.end());
    return record;
}

BoundaryList read_boundaries(QString const& field_directory) {
    BoundaryList records;
    QList<QFileInfo> files;
    collect_files(QFileInfo(child_path(field_directory, data_tree::boundaries)), files);
    for (QFileInfo const& file : files)
        if (has_suffix(file, data_tree::shp_suffix)) {
            for (BoundaryRecord& record : read_shape_boundaries(file.absoluteFilePath()))
                records.push_back(std::move(record));
            break;
        }
    for (QFileInfo const& file : files)
        if (has_suffix(file, data_tree::bdy_suffix))
            records.push_back(read_bdy_file(file.absoluteFilePath()));

    QList<QFileInfo> zone_files;
    collect_files(QFileInfo(child_path(field_directory, data_tree::zones)), zone_files);
    for (QFileInfo const& file : zone_files)
        if (has_suffix(file, data_tree::shp_suffix))
            for (BoundaryRecord& record : read_shape_boundaries(file.absoluteFilePath())) {
                record.treatment = 1;
                records.push_back(std::move(record));
            }
    return records;
}
