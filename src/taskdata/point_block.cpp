#include "taskdata/point_block.h"

#include "taskdata/attribute_order.h"
#include "taskdata/value_text.h"

#include <algorithm>
#include <cstring>

namespace TC::Task_data::detail {

namespace {

// Appends the UTF-8 form of a value without a temporary for plain ASCII,
// which is what nearly every point attribute is.
void append_utf8(QByteArray& out, QStringRef const& text) {
    QChar const* chars = text.constData();
    int const size = text.size();
    bool ascii = true;
    for (int i = 0; i < size && ascii; ++i)
        ascii = chars[i].unicode() < 0x80 && chars[i].unicode() != 0;
    if (!ascii) {
        out += text.toUtf8().replace('\0', "\xEF\xBF\xBD");
        return;
    }
    qsizetype const start = out.size();
    out.resize(start + size);
    char* target = out.data() + start;
    for (int i = 0; i < size; ++i)
        target[i] = static_cast<char>(chars[i].unicode());
}

// Copies `text` to `out` with its terminating byte; gives where it ends.
char* put_entry(char* out, QLatin1String text) {
    std::memcpy(out, text.data(), static_cast<size_t>(text.size()));
    out += text.size();
    *out = '\0';
    return out + 1;
}

} // namespace

char* PointBlock::grow(qsizetype size) {
    // One resize for a whole entry or record: millions of points arrive
    // this way.
    qsizetype const start = arena_.size();
    arena_.resize(static_cast<int>(start + size));
    return arena_.data() + start;
}

void PointBlock::append(QXmlStreamAttributes const& attributes) {
    starts_.push_back(static_cast<quint32>(arena_.size()));
    for (QXmlStreamAttribute const& attribute : attributes) {
        append_utf8(arena_, attribute.qualifiedName());
        arena_ += '\0';
        append_utf8(arena_, attribute.value());
        arena_ += '\0';
    }
    arena_ += '\0';
}

void PointBlock::append(PlainAttribute const* attributes, int count) {
    PlainAttribute const* const last = attributes + count;
    qsizetype size = 1;
    for (PlainAttribute const* attribute = attributes; attribute != last; ++attribute)
        size += attribute->name.size() + attribute->value.size() + 2;
    starts_.push_back(static_cast<quint32>(arena_.size()));
    char* out = grow(size);
    for (PlainAttribute const* attribute = attributes; attribute != last; ++attribute)
        out = put_entry(put_entry(out, attribute->name), attribute->value);
    *out = '\0';
}

int PointBlock::append_empty() {
    starts_.push_back(static_cast<quint32>(arena_.size()));
    arena_ += '\0';
    return count() - 1;
}

std::vector<std::pair<QByteArray, QString>> PointBlock::take_last() {
    std::vector<std::pair<QByteArray, QString>> result;
    for (auto& entry : decode(count() - 1))
        result.emplace_back(entry.first, QString::fromUtf8(entry.second));
    arena_.truncate(static_cast<int>(starts_.back()));
    starts_.pop_back();
    return result;
}

bool PointBlock::extends_at_end(int index, QByteArray const& name) const {
    char const* p = arena_.constData() + starts_[static_cast<size_t>(index)];
    while (*p != '\0') {
        size_t const length = qstrlen(p);
        if (name == p || (name.size() == 1 && (length != 1 || *p > name[0])))
            return false;
        p += length + 1;
        p += qstrlen(p) + 1; // value
    }
    return p + 1 == arena_.constData() + arena_.size();
}

void PointBlock::set(int index, QByteArray const& name, QLatin1String value) {
    if (!extends_at_end(index, name)) {
        set(index, name, QString(value));
        return;
    }
    // The record's closing byte becomes the first of the new entry.
    arena_.chop(1);
    char* const out = grow(name.size() + value.size() + 3);
    *put_entry(put_entry(out, QLatin1String(name)), value) = '\0';
}

void PointBlock::set(int index, QByteArray const& name, QString const& value) {
    if (extends_at_end(index, name)) {
        // The common case while a line string is built, point by point and
        // attribute by attribute: extend the last record in place.
        arena_.chop(1);
        arena_ += name;
        arena_ += '\0';
        QString const safe = xml_safe(value);
        append_utf8(arena_, QStringRef(&safe));
        arena_ += '\0';
        arena_ += '\0';
        return;
    }
    Entries entries = decode(index);
    // Made safe here, since a lone surrogate would not survive UTF-8.
    QByteArray const utf8 = xml_safe(value).toUtf8();
    auto same = std::find_if(entries.begin(), entries.end(),
                             [&name](auto const& entry) { return entry.first == name; });
    if (same != entries.end()) {
        same->second = utf8;
    } else {
        auto const position =
            schema_position(entries.begin(), entries.end(), name,
                            [](auto const& entry) -> QByteArray const& { return entry.first; });
        entries.insert(position, {name, utf8});
    }
    replace(index, entries);
}

QString PointBlock::get(int index, QByteArray const& name) const {
    QString result;
    for_each(index, [&](QLatin1String entry_name, QString const& value) {
        if (entry_name == QLatin1String(name))
            result = value;
    });
    return result;
}

PointBlock::Entries PointBlock::decode(int index) const {
    Entries entries;
    char const* p = arena_.constData() + starts_[static_cast<size_t>(index)];
    while (*p != '\0') {
        QByteArray name(p);
        p += name.size() + 1;
        QByteArray value(p);
        p += value.size() + 1;
        entries.emplace_back(std::move(name), std::move(value));
    }
    return entries;
}

qsizetype PointBlock::record_size(int index) const {
    char const* const start = arena_.constData() + starts_[static_cast<size_t>(index)];
    char const* p = start;
    while (*p != '\0') {
        p += qstrlen(p) + 1; // name
        p += qstrlen(p) + 1; // value
    }
    return p + 1 - start;
}

void PointBlock::encode_into(QByteArray& out, Entries const& entries) const {
    for (auto const& entry : entries) {
        out += entry.first;
        out += '\0';
        out += entry.second;
        out += '\0';
    }
    out += '\0';
}

void PointBlock::replace(int index, Entries const& entries) {
    auto const position = static_cast<size_t>(index);
    qsizetype const old_size = record_size(index);
    if (starts_[position] + old_size == arena_.size()) {
        // The common case while a line string is built: rewrite in place.
        arena_.truncate(static_cast<int>(starts_[position]));
    } else {
        garbage_ += old_size;
        starts_[position] = static_cast<quint32>(arena_.size());
    }
    encode_into(arena_, entries);
    if (garbage_ > arena_.size() / 2 && garbage_ > 4096)
        compact();
}

void PointBlock::compact() {
    QByteArray fresh;
    fresh.reserve(arena_.size() - static_cast<int>(garbage_));
    for (size_t i = 0; i < starts_.size(); ++i) {
        Entries const entries = decode(static_cast<int>(i));
        starts_[i] = static_cast<quint32>(fresh.size());
        encode_into(fresh, entries);
    }
    arena_ = fresh;
    garbage_ = 0;
}

} // namespace TC::Task_data::detail
