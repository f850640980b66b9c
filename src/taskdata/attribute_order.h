#pragma once
// Where a new attribute goes among an element's attributes. Standard
// attributes are single capital letters: a new one goes before the first
// later letter or the first other name, so that a created element gets
// schema order and a loaded one keeps its own. Any other name (a proprietary
// one) goes last.

#include <QByteArray>

#include <algorithm>

namespace TC::Task_data::detail {

// `name_of(item)` gives an item's attribute name.
template <class Iterator, class NameOf>
Iterator schema_position(Iterator begin, Iterator end, QByteArray const& name, NameOf name_of) {
    if (name.size() != 1)
        return end;
    return std::find_if(begin, end, [&](auto const& item) {
        QByteArray const& other = name_of(item);
        return other.size() != 1 || other > name;
    });
}

} // namespace TC::Task_data::detail
