#include "guidance/guidance_patterns.h"

#include "taskdata/element_man.h"
#include "taskdata/whole_numbers.h"

#include <cstdint>

using namespace TC::Task_data::Elements::Client;

namespace {

// LSG A, LineStringType: guidance pattern.
unsigned char const guidance_line_type = 5;

// PNT A, PointType, of the points of a guidance line.
unsigned char const reference_a_type = 6;
unsigned char const reference_b_type = 7;
unsigned char const reference_centre_type = 8;
unsigned char const guidance_point_type = 9;

bool matches(Guidance_pattern const& pattern, QString const& name, unsigned char type) {
    unsigned char pattern_type = 0;
    pattern.type().get(pattern_type);
    if (pattern_type != type)
        return false;
    QString designator;
    pattern.designator().get(designator);
    return designator == name;
}

Guidance_pattern find_pattern(Partfield const& partfield, QString const& name, unsigned char type) {
    unsigned int const groups = partfield.num_guidance_paths();
    for (unsigned int g = 0; g < groups; ++g) {
        GuidanceGroup const group = partfield.get_guidance_paths(g);
        unsigned int const patterns = group.num_patterns();
        for (unsigned int p = 0; p < patterns; ++p) {
            Guidance_pattern const candidate = group.get_patterns(p);
            if (matches(candidate, name, type))
                return candidate;
        }
    }
    return Guidance_pattern();
}

// All line strings of a former import go; they are collected first, since
// each removal shifts the indices of those behind it.
void remove_linestrings(Guidance_pattern const& pattern) {
    std::vector<Linestring> old_lines;
    unsigned int const count = pattern.num_linestring();
    old_lines.reserve(count);
    for (unsigned int i = 0; i < count; ++i)
        old_lines.push_back(pattern.get_linestring(i));
    for (Linestring const& line : old_lines)
        pattern.remove_linestring(line);
}

Linestring new_guidance_line(Guidance_pattern const& pattern) {
    Linestring line = pattern.create_linestring(true);
    line.type().set(guidance_line_type, true);
    return line;
}

void add_point(Linestring& line, unsigned char type, GeoPoint const& position,
               QString const& designator = QString()) {
    unsigned int const index = line.create_new_point();
    line.set_type(index, type);
    if (!designator.isEmpty())
        line.set_designator(index, designator);
    line.set_north(index, position.latitude);
    line.set_east(index, position.longitude);
}

} // namespace

Guidance_pattern find_or_create_pattern(Partfield partfield, QString const& name,
                                        unsigned char type) {
    Guidance_pattern const found = find_pattern(partfield, name, type);
    if (found.valid())
        return found;

    GuidanceGroup group = partfield.create_guidance_paths(true);
    group.id().set(group.get_element_man().get_free_uid(QStringLiteral("GGP"), false), true);
    group.designator().set(name, true);

    Guidance_pattern pattern = group.create_patterns(true);
    pattern.id().set(pattern.get_element_man().get_free_uid(QStringLiteral("GPN"), false), true);
    pattern.type().set(type, true);
    pattern.designator().set(name, true);
    pattern.designator().set_flag_included(true);
    return pattern;
}

Guidance_pattern build_ab_pattern(Partfield partfield, QString const& name, GeoPoint a, GeoPoint b,
                                  Base_station station) {
    if (!partfield.valid())
        return Guidance_pattern();
    Guidance_pattern pattern = find_or_create_pattern(partfield, name, ab_pattern_type);
    remove_linestrings(pattern);
    Linestring line = new_guidance_line(pattern);
    add_point(line, reference_a_type, a, QStringLiteral("A"));
    add_point(line, reference_b_type, b, QStringLiteral("B"));
    pattern.base_station().set(station);
    return pattern;
}

Guidance_pattern build_curve_pattern(Partfield partfield, QString const& name,
                                     std::vector<GeoPoint> const& points, Base_station station) {
    if (!partfield.valid())
        return Guidance_pattern();
    Guidance_pattern pattern = find_or_create_pattern(partfield, name, curve_pattern_type);
    remove_linestrings(pattern);
    Linestring line = new_guidance_line(pattern);
    for (std::size_t i = 0; i < points.size(); ++i) {
        unsigned char const type = i == 0                   ? reference_a_type
                                   : i + 1 == points.size() ? reference_b_type
                                                            : guidance_point_type;
        add_point(line, type, points[i]);
    }
    pattern.base_station().set(station);
    return pattern;
}

// No check of the partfield here: on an invalid one every step does nothing.
Guidance_pattern build_pivot_pattern(Partfield partfield, QString const& name, GeoPoint centre,
                                     Base_station station, double radius_metres) {
    Guidance_pattern pattern = find_or_create_pattern(partfield, name, pivot_pattern_type);
    remove_linestrings(pattern);
    pattern.radius().set(TC::Task_data::truncate_to<std::uint32_t>(radius_metres * 1000.0), true);
    pattern.radius().set_flag_included(true);
    Linestring line = new_guidance_line(pattern);
    add_point(line, reference_centre_type, centre);
    pattern.base_station().set(station);
    return pattern;
}
