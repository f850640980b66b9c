#pragma once
// Shapefiles and dBASE tables written by shapelib's own writer (SHPCreate,
// DBFCreate).
#include "test_support/test_support.h"

#include <QFile>
#include <QVariant>

#include <shapefil.h>

#include <algorithm>
#include <tuple>

using Vertex = std::pair<double, double>; // x, y
using Part = std::vector<Vertex>;
using Shape = std::vector<Part>; // no parts at all makes a null shape

// Writes <base>.shp and <base>.shx with one record per shape, all of `type`.
inline void write_shapes(QString const& base, int type, std::vector<Shape> const& shapes) {
    test_support::make_dirs(base.left(base.lastIndexOf('/')));
    // shapelib cuts the last suffix off the name it is given.
    SHPHandle file = SHPCreate(QFile::encodeName(base + ".shp").constData(), type);
    ASSERT_NE(file, nullptr) << base.toStdString();
    for (Shape const& shape : shapes) {
        std::vector<int> starts;
        std::vector<double> x, y;
        for (Part const& part : shape) {
            starts.push_back(static_cast<int>(x.size()));
            for (auto const& [east, north] : part)
                x.push_back(east), y.push_back(north);
        }
        std::vector<double> z(x.size(), 7.0);
        SHPObject* object = SHPCreateObject(
            shape.empty() ? SHPT_NULL : type, -1, static_cast<int>(starts.size()), starts.data(),
            nullptr, static_cast<int>(x.size()), x.data(), y.data(), z.data(), z.data());
        SHPWriteObject(file, -1, object);
        SHPDestroyObject(object);
    }
    SHPClose(file);
}

using Column = std::tuple<char const*, DBFFieldType, int, int>; // name, type, width, decimals

// Writes a dBASE table; a cell is a QString, an int, a double or a bool for
// the column's kind, or an invalid QVariant for an empty value.
inline void write_table(QString const& path, std::vector<Column> const& columns,
                        std::vector<std::vector<QVariant>> const& rows) {
    test_support::make_dirs(path.left(path.lastIndexOf('/')));
    DBFHandle table = DBFCreate(QFile::encodeName(path).constData());
    ASSERT_NE(table, nullptr) << path.toStdString();
    for (auto const& [name, type, width, decimals] : columns)
        DBFAddField(table, name, type, width, decimals);
    for (int row = 0; row < static_cast<int>(rows.size()); ++row)
        for (int column = 0; column < static_cast<int>(rows[row].size()); ++column) {
            QVariant const& cell = rows[row][column];
            int const type = cell.userType();
            // Text and flags go in as they stand (shapelib would format a
            // date as a number); numbers as shapelib formats them.
            QByteArray text =
                type == QMetaType::Bool ? (cell.toBool() ? "T" : "F") : cell.toString().toUtf8();
            if (!cell.isValid())
                DBFWriteNULLAttribute(table, row, column);
            else if (type == QMetaType::Int || type == QMetaType::Double)
                DBFWriteDoubleAttribute(table, row, column, cell.toDouble());
            else
                DBFWriteAttributeDirectly(table, row, column, text.data());
        }
    DBFClose(table);
}

// The columns a boundary table has: Type, Name, Headland, Treatment.
inline std::vector<Column> boundary_columns() {
    return {{"Type", FTString, 20, 0},
            {"Name", FTString, 40, 0},
            {"Headland", FTInteger, 4, 0},
            {"Treatment", FTInteger, 4, 0}};
}

// A rectangle of `width` by `height` degrees with its south-west corner at
// (x, y), counter-clockwise or, when `clockwise`, the other way round.
inline Part rectangle(double x, double y, double width, double height, bool clockwise = false) {
    Part ring = {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}, {x, y}};
    if (clockwise)
        std::reverse(ring.begin(), ring.end());
    return ring;
}

// Squares of 0.001 degrees, 0.01 degrees apart eastward from (x, 52), as a
// boundary shapefile with a table of `rows`: `count` squares, or one a row.
inline void write_rings(QString const& base, double x,
                        std::vector<std::vector<QVariant>> const& rows, int count = -1) {
    std::vector<Shape> shapes;
    for (int i = 0; i < (count < 0 ? static_cast<int>(rows.size()) : count); ++i)
        shapes.push_back({rectangle(x + 0.01 * i, 52.0, 0.001, 0.001)});
    write_shapes(base, SHPT_POLYGON, shapes);
    write_table(base + ".dbf", boundary_columns(), rows);
}
