#pragma once
// A display tree of one field with guidance lines, built in a scratch
// directory, and what the tool makes of it in "out".
#include "test_support/test_support.h"

#include "coordinates/points.h"

#include <QByteArray>
#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace guidance_tree {

using Lines = std::vector<std::string>;
using Record = std::pair<float, float>;

// The record that the display writes for a break in a curve.
inline Record const separator{std::numeric_limits<float>::lowest(),
                              std::numeric_limits<float>::lowest()};

// A .crv file of the records around `reference`.
inline QByteArray crv_file(GeoPoint reference, std::vector<Record> const& records) {
    return test_support::point_file(reference.latitude, reference.longitude, reference.height,
                                    records);
}

class GuidanceTree : public test_support::DisplayTree {
protected:
    // A file below the one field of the tree, e.g. "ABLines/L/L.ini".
    void write_field(QString const& relative, QByteArray const& content) const {
        test_support::write_file(field(relative), content);
    }

    // The tool on the tree; its runs warn of nothing.
    test_support::ToolRun run(QStringList const& options = {}) const {
        test_support::ToolRun result = DisplayTree::run(options);
        EXPECT_TRUE(result.err.isEmpty()) << result.err.constData();
        return result;
    }

    // Every saved pattern as one line: its ID, designator, type, radius,
    // base station link and correction, then per line string its type and
    // points (type, designator, north, east).
    Lines patterns() const {
        Lines lines;
        for (test_support::XmlElement const& pattern : saved().all("GPN")) {
            QStringList line = {pattern.attribute("A"), pattern.attribute("B"),
                                "type " + pattern.attribute("C")};
            if (pattern.has_attribute("H"))
                line << "radius " + pattern.attribute("H");
            line << "station " + pattern.attribute("L")
                 << "correction " + pattern.attribute("P231_correction");
            for (test_support::XmlElement const& linestring : pattern.all("LSG")) {
                line << "| LSG " + linestring.attribute("A") + ":";
                for (test_support::XmlElement const& point : linestring.all("PNT"))
                    line << point.attribute("A") + point.attribute("B") + " " +
                                point.attribute("C") + " " + point.attribute("D");
            }
            lines.push_back(line.join(' ').toStdString());
        }
        return lines;
    }

    // Every saved base station as "BSN1 north east up".
    Lines stations() const {
        Lines lines;
        for (test_support::XmlElement const& station : saved().all("BSN"))
            lines.push_back(QStringList{station.attribute("A"), station.attribute("C"),
                                        station.attribute("D"), station.attribute("E")}
                                .join(' ')
                                .toStdString());
        return lines;
    }

    // The one saved pattern of that designator (a failure unless one).
    test_support::XmlElement pattern(QString const& name) const {
        QList<test_support::XmlElement> const found = saved("GPN", "B", name);
        EXPECT_EQ(found.size(), 1) << "patterns named " << name.toStdString();
        return found.value(0);
    }
};

} // namespace guidance_tree
