#pragma once
// Written elements as lines of text, so that whole lists compare at once.
#include "test_support/test_support.h"

// Per element, its attributes `names` joined by spaces; "<" gives the tag,
// and an absent attribute is "-".
inline QStringList summary(QList<test_support::XmlElement> const& elements,
                           QStringList const& names) {
    QStringList lines;
    for (test_support::XmlElement const& element : elements) {
        QStringList line;
        for (QString const& name : names)
            line << (name == "<"                   ? element.tag
                     : element.has_attribute(name) ? element.attribute(name)
                                                   : "-");
        lines << line.join(' ');
    }
    return lines;
}
