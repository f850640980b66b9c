#pragma once
// One field in a display tree built in a scratch directory
// (data/Clients/Client/Farm/Field), the tool run on it, and what it wrote for
// the field read back.
#include "shape_writer.h"
#include "test_support/test_support.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Lines = std::vector<std::string>;

class FieldTree : public ::testing::Test {
protected:
    // A path below the directory of a field of the one farm.
    QString field(QString const& relative, QString const& name = QStringLiteral("Field")) const {
        return scratch.file(QStringLiteral("data/Clients/Client/Farm/%1/%2").arg(name, relative));
    }

    test_support::ToolRun run(QStringList const& options = {}) const {
        test_support::ToolRun result =
            test_support::run_tool(options + QStringList{"-O", "out", "data"}, scratch.path());
        EXPECT_EQ(result.exit_code, 0) << result.err.constData();
        return result;
    }

    // The last saved field of that name.
    test_support::XmlElement saved_field(QString const& name = QStringLiteral("Field")) const {
        test_support::XmlElement found;
        for (test_support::XmlElement const& field :
             test_support::read_xml(scratch.file(QStringLiteral("out/TASKDATA.XML")))
                 .all(QStringLiteral("PFD")))
            if (field.attribute(QStringLiteral("C")) == name)
                found = field;
        EXPECT_EQ(found.tag, QStringLiteral("PFD")) << "no field " << name.toStdString();
        return found;
    }

    // The direct children with that tag of the saved field of that name.
    QList<test_support::XmlElement> saved(QString const& tag,
                                          QString const& name = QStringLiteral("Field")) const {
        QList<test_support::XmlElement> found;
        for (test_support::XmlElement const& child : saved_field(name).children)
            if (child.tag == tag)
                found << child;
        return found;
    }

    // The set the tool wrote, checked against the schemas.
    void expect_valid_set() const {
        if (test_support::shared_dir().isEmpty())
            return;
        bool valid = false;
        QString const output =
            test_support::validate_set(scratch.file(QStringLiteral("out")), valid);
        EXPECT_TRUE(valid) << output.toStdString();
    }

    test_support::ScratchDir scratch;
};

// "<tag> name=value ..." in the order given, for readable comparisons.
inline std::string summary(test_support::XmlElement const& element, QStringList const& names) {
    QStringList parts = {element.tag};
    for (QString const& name : names)
        parts << (element.has_attribute(name) ? name + QLatin1Char('=') + element.attribute(name)
                                              : name + QStringLiteral("-"));
    return parts.join(QLatin1Char(' ')).toStdString();
}
