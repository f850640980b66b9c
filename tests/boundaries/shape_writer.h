#pragma once
// Shapefiles and dBASE tables for the tests, written by shapelib's own writer
// (SHPCreate, DBFCreate).

#include "test_support/test_support.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QVariant>

#include <gtest/gtest.h>
#include <shapefil.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace shape_writer {

// x, y
using Vertex = std::pair<double, double>;
using Part = std::vector<Vertex>;
// A shape as parts of vertices; no parts at all makes a null shape.
using Shape = std::vector<Part>;

// Writes <base>.shp and <base>.shx with one record per shape, all of `type`.
inline void write_shapes(QString const& base, int type, std::vector<Shape> const& shapes) {
    test_support::make_dirs(base.left(base.lastIndexOf(QLatin1Char('/'))));
    // shapelib cuts the last suffix off the name it is given.
    SHPHandle file = SHPCreate(QFile::encodeName(base + QStringLiteral(".shp")).constData(), type);
    ASSERT_NE(file, nullptr) << base.toStdString();
    for (Shape const& shape : shapes) {
        SHPObject* object = nullptr;
        if (shape.empty()) {
            object = SHPCreateSimpleObject(SHPT_NULL, 0, nullptr, nullptr, nullptr);
        } else {
            std::vector<int> starts;
            std::vector<double> x;
            std::vector<double> y;
            std::vector<double> z;
            for (Part const& part : shape) {
                starts.push_back(static_cast<int>(x.size()));
                for (Vertex const& vertex : part) {
                    x.push_back(vertex.first);
                    y.push_back(vertex.second);
                    z.push_back(7.0);
                }
            }
            object =
                SHPCreateObject(type, -1, static_cast<int>(starts.size()), starts.data(), nullptr,
                                static_cast<int>(x.size()), x.data(), y.data(), z.data(), z.data());
        }
        SHPWriteObject(file, -1, object);
        SHPDestroyObject(object);
    }
    SHPClose(file);
}

struct Column {
    char const* name;
    DBFFieldType type;
    int width;
    int decimals;
};

// Writes a dBASE table; a cell is a QString, an int, a double or a bool for
// the column's kind, or an invalid QVariant for an empty value.
inline void write_table(QString const& path, std::vector<Column> const& columns,
                        std::vector<std::vector<QVariant>> const& rows) {
    test_support::make_dirs(path.left(path.lastIndexOf(QLatin1Char('/'))));
    DBFHandle table = DBFCreate(QFile::encodeName(path).constData());
    ASSERT_NE(table, nullptr) << path.toStdString();
    for (Column const& column : columns)
        DBFAddField(table, column.name, column.type, column.width, column.decimals);
    for (int row = 0; row < static_cast<int>(rows.size()); ++row)
        for (int column = 0; column < static_cast<int>(rows[row].size()); ++column) {
            QVariant const& cell = rows[row][column];
            switch (cell.userType()) {
            case QMetaType::UnknownType:
                DBFWriteNULLAttribute(table, row, column);
                break;
            case QMetaType::Bool:
                DBFWriteLogicalAttribute(table, row, column, cell.toBool() ? 'T' : 'F');
                break;
            case QMetaType::Int:
                DBFWriteIntegerAttribute(table, row, column, cell.toInt());
                break;
            case QMetaType::Double:
                DBFWriteDoubleAttribute(table, row, column, cell.toDouble());
                break;
            default: {
                QByteArray text = cell.toString().toUtf8();
                // shapelib formats a date as a number; a date's text is stored as it is.
                if (columns[column].type == FTDate)
                    DBFWriteAttributeDirectly(table, row, column, text.data());
                else
                    DBFWriteStringAttribute(table, row, column, text.constData());
                break;
            }
            }
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

} // namespace shape_writer
