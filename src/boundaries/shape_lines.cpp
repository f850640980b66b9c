#include "boundaries/shape_lines.h"

#include "driver/data_tree.h"
#include "taskdata/element_man.h"

#include <QDebug>

#include <algorithm>
#include <cmath>

using namespace TC::Task_data::Elements::Client;

namespace {

// The shapefile type code of a PolyLine.
int const polyline_shape = 3;

// GPN C, GuidancePatternType: curve.
unsigned char const curve_pattern = 3;
// GPN E, GuidancePatternPropagationDirection, and F, GuidancePatternExtension.
unsigned char const both_directions = 1;
unsigned char const no_propagation = 4;
unsigned char const both_extensions = 1;
unsigned char const no_extensions = 4;
// LSG A, LineStringType: guidance pattern.
unsigned char const guidance_linestring = 5;
// PNT A, PointType: guidance reference A, reference B, guidance point.
unsigned char const reference_a = 6;
unsigned char const reference_b = 7;
unsigned char const guidance_point = 9;

using ShapefileImporter = void (*)(QString const&, GuidanceGroup);

// A new group for every directory of `set_directory` below the field.
void read_line_sets(QDir const& field_directory, Partfield const& partfield,
                    QString const& set_directory, ShapefileImporter import) {
    for (QDir const& set : list_dirs(field_directory.absoluteFilePath(set_directory))) {
        GuidanceGroup group = partfield.create_guidance_paths(true);
        group.id().set(group.get_element_man().get_free_uid(QStringLiteral("GGP"), false), true);
        group.designator().set(item_name(set), true);
        import(child_path(set.absolutePath(), set.dirName() + data_tree::shp_suffix), group);
    }
}

bool open_shapefile(EsriShapeFile& file, QString const& path) {
    if (file.Open(path, true))
        return true;
    qWarning() << "W: could not open" << path;
    return false;
}

Guidance_pattern new_pattern(GuidanceGroup const& group, unsigned char propagation,
                             unsigned char extension) {
    Guidance_pattern pattern = group.create_patterns(true);
    pattern.id().set(pattern.get_element_man().get_free_uid(QStringLiteral("GPN"), false), true);
    pattern.type().set(curve_pattern, true);
    pattern.propagation().set(propagation, true);
    pattern.extension().set(extension, true);
    return pattern;
}

// Calls `use` with every PolyLine shape of the file, in record order.
template <class Use> void for_each_line(EsriShapeFile const& file, Use use) {
    for (unsigned record = 0; record < file.GetNumberOfRecords(); ++record) {
        EsriRecord const* shapes = file.GetRecord(record);
        for (unsigned index = 0; index < shapes->GetNumberOfShapes(); ++index) {
            EsriShape const* shape = shapes->GetShape(index);
            if (shape->shapeType() != polyline_shape)
                continue;
            if (auto const* line = dynamic_cast<EsriPolygonShape const*>(shape))
                use(*line);
        }
    }
}

// The type of point i of a part of `count` points; a point alone is A.
unsigned char point_type(unsigned i, unsigned count) {
    if (i == 0)
        return reference_a;
    return i + 1 == count ? reference_b : guidance_point;
}

bool has_position(EsriPoint const& point) {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

} // namespace

void read_project_lines(QDir const& field_directory, Partfield partfield) {
    read_line_sets(field_directory, partfield, data_tree::project_lines, import_project_shapefile);
}

void read_optimal_lines(QDir const& field_directory, Partfield partfield) {
    read_line_sets(field_directory, partfield, data_tree::optimal_lines, import_optimal_shapefile);
}

void import_project_shapefile(QString const& path, GuidanceGroup group) {
    EsriShapeFile file;
    if (!open_shapefile(file, path))
        return;
    Guidance_pattern const pattern = new_pattern(group, no_propagation, no_extensions);
    for_each_line(file, [&](EsriPolygonShape const& line) { add_shape_to_pattern(line, pattern); });
}

void import_optimal_shapefile(QString const& path, GuidanceGroup group) {
    EsriShapeFile file;
    if (!open_shapefile(file, path))
        return;
    for_each_line(file, [&](EsriPolygonShape const& line) {
        add_shape_to_pattern(line, new_pattern(group, both_directions, both_extensions));
    });
}

void add_shape_to_pattern(EsriPolygonShape const& shape, Guidance_pattern pattern) {
    for (unsigned part = 0; part < shape.GetNumberOfParts(); ++part) {
        EsriPoint const* points = nullptr;
        unsigned count = 0;
        if (!shape.getPartPoints(part, points, count))
            continue;
        unsigned const usable =
            static_cast<unsigned>(std::count_if(points, points + count, has_position));
        if (usable == 0)
            continue;

        Linestring linestring = pattern.get_linestring(0);
        if (!linestring.valid()) {
            linestring = pattern.create_linestring(true);
            linestring.type().set(guidance_linestring, true);
        }
        linestring.set_binary(true);
        unsigned const base = linestring.get_num_points();
        unsigned i = 0;
        for (EsriPoint const* point = points; point != points + count; ++point) {
            if (!has_position(*point))
                continue;
            unsigned const index = base + i;
            linestring.create_new_point();
            linestring.set_type(index, point_type(i, usable));
            linestring.set_north(index, point->y);
            linestring.set_east(index, point->x);
            ++i;
        }
    }
}
