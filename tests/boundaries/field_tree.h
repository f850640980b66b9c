#pragma once
// One field in a display tree (data/Clients/Client/Farm/Field), the tool run
// on it, and what it wrote for the field read back.
#include "shape_writer.h"
#include "test_support/test_support.h"

#include <QStringList>

#include <string>
#include <vector>

using Lines = std::vector<std::string>;

class FieldTree : public test_support::DisplayTree {
protected:
    using DisplayTree::saved;

    // The direct children with that tag of the last saved field of that name.
    QList<test_support::XmlElement> saved(QString const& tag,
                                          QString const& name = QStringLiteral("Field")) const {
        QList<test_support::XmlElement> const fields = saved("PFD", "C", name);
        EXPECT_FALSE(fields.isEmpty()) << "no field " << name.toStdString();
        QList<test_support::XmlElement> found;
        for (test_support::XmlElement const& child : fields.value(fields.size() - 1).children)
            if (child.tag == tag)
                found << child;
        return found;
    }
};

// "<tag> name=value ..." in the order given, for readable comparisons.
inline std::string summary(test_support::XmlElement const& element, QStringList const& names) {
    QStringList parts = {element.tag};
    for (QString const& name : names)
        parts << (element.has_attribute(name) ? name + QLatin1Char('=') + element.attribute(name)
                                              : name + QStringLiteral("-"));
    return parts.join(QLatin1Char(' ')).toStdString();
}
