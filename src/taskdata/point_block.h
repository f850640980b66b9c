#pragma once
// Compact storage of the points of one line string (LSG): every point's
// attributes as name/value texts in one byte arena, with an offset per point.
// A line string of a million points thus costs about its text size, not a
// million tree nodes.

#include <QByteArray>
#include <QString>
#include <QXmlStreamAttributes>

#include <utility>
#include <vector>

namespace TC::Task_data::detail {

// An attribute whose name and value are plain ASCII, as bytes held elsewhere.
struct PlainAttribute {
    QLatin1String name;
    QLatin1String value;
};

class PointBlock {
public:
    int count() const { return static_cast<int>(starts_.size()); }

    // Appends a point with the given attributes, in their order.
    void append(QXmlStreamAttributes const& attributes);
    // The same for attributes whose names and values are plain ASCII.
    void append(PlainAttribute const* attributes, int count);
    // Appends a point without attributes and returns its index.
    int append_empty();
    // Takes the last point out and returns its attributes.
    std::vector<std::pair<QByteArray, QString>> take_last();

    // Stores one attribute of point `index`; a new name goes in schema order.
    void set(int index, QByteArray const& name, QString const& value);
    // The same for a value of plain ASCII, such as a number's text.
    void set(int index, QByteArray const& name, QLatin1String value);
    QString get(int index, QByteArray const& name) const;

    // Calls f(name, value) for each attribute of point `index`, in order.
    template <class F> void for_each(int index, F&& f) const;
    // The same with each value as its stored UTF-8 bytes, without a copy.
    template <class F> void for_each_bytes(int index, F&& f) const;

private:
    // Whether the record of point `index` ends the arena, and `name` is not
    // among its attributes and would go behind all of them.
    bool extends_at_end(int index, QByteArray const& name) const;
    // Adds `size` bytes at the end of the arena; gives where they start.
    char* grow(qsizetype size);
    using Entries = std::vector<std::pair<QByteArray, QByteArray>>;
    Entries decode(int index) const;
    qsizetype record_size(int index) const;
    void replace(int index, Entries const& entries);
    void encode_into(QByteArray& out, Entries const& entries) const;
    void compact();

    // Per point: (name '\0' value '\0')* '\0', names ASCII, values UTF-8.
    QByteArray arena_;
    std::vector<quint32> starts_;
    qsizetype garbage_ = 0;
};

template <class F> void PointBlock::for_each_bytes(int index, F&& f) const {
    char const* p = arena_.constData() + starts_[static_cast<size_t>(index)];
    while (*p != '\0') {
        char const* name = p;
        while (*p != '\0')
            ++p;
        int const name_size = static_cast<int>(p - name);
        char const* value = ++p;
        while (*p != '\0')
            ++p;
        f(QLatin1String(name, name_size), QLatin1String(value, static_cast<int>(p - value)));
        ++p;
    }
}

template <class F> void PointBlock::for_each(int index, F&& f) const {
    for_each_bytes(index, [&f](QLatin1String name, QLatin1String value) {
        f(name, QString::fromUtf8(value.data(), value.size()));
    });
}

} // namespace TC::Task_data::detail
