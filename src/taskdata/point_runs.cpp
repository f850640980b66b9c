#include "taskdata/point_runs.h"

#include <array>
#include <cstring>

namespace TC::Task_data::detail {

namespace {

// More attributes than a PNT has (A to J and a few proprietary ones) make
// the element go to the reader, which also finds duplicates among them.
constexpr size_t max_attributes = 24;
constexpr qsizetype longest_awaited_token = 1 << 24;

// Classes of bytes for the scan of points, one table lookup each.
enum ByteClass : unsigned char {
    space = 1,
    // The name of a plain point's attribute. It has no colon: a prefixed
    // name goes to the reader, which checks where its colon stands.
    attribute_start = 2,
    attribute_char = 4,
    // Printable ASCII that the reader gives back as it stands in a value;
    // a value holding either quote goes to the reader.
    plain_value = 8,
    tag_char = 16, // of a tag's name, which the nesting is tracked by
};

constexpr std::array<unsigned char, 256> byte_classes = [] {
    std::array<unsigned char, 256> classes{};
    for (int c = 0; c < 256; ++c) {
        bool const letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
        bool const digit = (c >= '0' && c <= '9') || c == '-' || c == '.';
        unsigned char bits = 0;
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r')
            bits |= space;
        if (letter)
            bits |= attribute_start | attribute_char | tag_char;
        if (digit)
            bits |= attribute_char | tag_char;
        if (c == ':')
            bits |= tag_char;
        if (c >= 0x20 && c <= 0x7e && c != '&' && c != '<' && c != '"' && c != '\'')
            bits |= plain_value;
        classes[static_cast<size_t>(c)] = bits;
    }
    return classes;
}();

bool is(char c, ByteClass byte_class) {
    return byte_classes[static_cast<unsigned char>(c)] & byte_class;
}

bool starts_with(char const* p, char const* end, char const* prefix) {
    size_t const length = std::strlen(prefix);
    return static_cast<size_t>(end - p) >= length && std::memcmp(p, prefix, length) == 0;
}

// Where the text `terminator` ends, searching from `p`; null if not before `end`.
char const* after(char const* p, char const* end, char const* terminator) {
    size_t const length = std::strlen(terminator);
    for (; static_cast<size_t>(end - p) >= length; ++p)
        if (std::memcmp(p, terminator, length) == 0)
            return p + length;
    return nullptr;
}

// The end of the start or end tag at `p`, skipping quoted attribute values,
// which may hold '>'; null if not before `end`.
char const* tag_end(char const* p, char const* end) {
    char quote = 0;
    for (; p < end; ++p) {
        if (quote) {
            if (*p == quote)
                quote = 0;
        } else if (*p == '"' || *p == '\'') {
            quote = *p;
        } else if (*p == '>') {
            return p + 1;
        }
    }
    return nullptr;
}

bool ascii_compatible(QByteArray encoding) {
    encoding = encoding.toLower();
    return encoding == "utf-8" || encoding == "utf8" || encoding == "us-ascii" ||
           encoding == "iso-8859-1" || encoding == "latin1" || encoding == "windows-1252";
}

// The value of `encoding` in an XML declaration, empty when it has none.
QByteArray declared_encoding(QByteArray const& declaration) {
    int const at = declaration.indexOf("encoding");
    if (at < 0)
        return QByteArray();
    int open = at + 8;
    while (open < declaration.size() && declaration[open] != '"' && declaration[open] != '\'')
        ++open;
    if (open >= declaration.size())
        return QByteArray("?");
    int const close = declaration.indexOf(declaration[open], open + 1);
    return close < 0 ? QByteArray("?") : declaration.mid(open + 1, close - open - 1);
}

} // namespace

char const* parse_plain_point(char const* p, char const* end, PlainAttributes& attributes) {
    size_t const first = attributes.size();
    auto refuse = [&] {
        attributes.resize(first);
        return nullptr;
    };
    if (end - p < 4 || std::memcmp(p, "<PNT", 4) != 0)
        return nullptr;
    p += 4;
    while (true) {
        char const* const spaces = p;
        while (p < end && is(*p, space))
            ++p;
        if (end - p >= 2 && p[0] == '/' && p[1] == '>')
            return p + 2;
        if (p == end || p == spaces || !is(*p, attribute_start) ||
            attributes.size() - first == max_attributes)
            return refuse();
        char const* const name = p++;
        while (p < end && is(*p, attribute_char))
            ++p;
        QLatin1String const attribute_name(name, static_cast<int>(p - name));
        while (p < end && is(*p, space))
            ++p;
        if (p == end || *p != '=')
            return refuse();
        ++p;
        while (p < end && is(*p, space))
            ++p;
        if (p == end || (*p != '"' && *p != '\''))
            return refuse();
        char const quote = *p++;
        char const* const value = p;
        while (p < end && is(*p, plain_value))
            ++p;
        if (p == end || *p != quote || p - value > max_attribute_size)
            return refuse();
        for (size_t i = first; i < attributes.size(); ++i)
            if (attributes[i].name == attribute_name)
                return refuse();
        attributes.push_back({attribute_name, QLatin1String(value, static_cast<int>(p - value))});
        ++p;
    }
}

PointRunScanner::Step PointRunScanner::next(QByteArray const& text, qsizetype from, bool final) {
    char const* const begin = text.constData();
    char const* const end = begin + text.size();
    char const* p = begin + from;
    auto ordinary = [&](char const* upto) { return Step{upto - begin}; };

    if (!checked_prolog_) {
        // The encoding decides whether bytes are ASCII characters.
        char const* const q = starts_with(p, end, "\xEF\xBB\xBF") ? p + 3 : p;
        if (starts_with(q, end, "<?xml")) {
            char const* const close = after(q, end, "?>");
            if (!close && !final)
                return ordinary(p);
            QByteArray const encoding =
                close ? declared_encoding(QByteArray(q, close - q)) : QByteArray("?");
            disabled_ = !encoding.isEmpty() && !ascii_compatible(encoding);
        } else if (end - p < 5 && !final) {
            return ordinary(p);
        } else {
            // UTF-16 and UTF-32 texts, with or without a byte order mark.
            disabled_ = p < end && (*p == '\0' || static_cast<unsigned char>(*p) >= 0xFE);
        }
        checked_prolog_ = true;
    }
    if (disabled_)
        return ordinary(end);

    while (p < end) {
        if (*p != '<') {
            char const* const next = static_cast<char const*>(std::memchr(p, '<', end - p));
            p = next ? next : end;
            continue;
        }
        char const* token_end = nullptr;
        bool const in_line_string = !open_.empty() && open_.back() > 0;
        if (in_line_string && starts_with(p, end, "<PNT")) {
            run_.attributes.clear();
            run_.sizes.clear();
            // A run: as many plain points as follow, white space between.
            char const* run_end = nullptr;
            char const* q = p;
            while (true) {
                size_t const before = run_.attributes.size();
                char const* const point = parse_plain_point(q, end, run_.attributes);
                if (!point)
                    break;
                run_.sizes.push_back(static_cast<unsigned char>(run_.attributes.size() - before));
                run_end = q = point;
                while (q < end && xml_space(*q))
                    ++q;
            }
            if (run_end)
                return Step{p - begin, true, run_end - begin, open_.back()};
            token_end = tag_end(p, end);
            if (token_end)
                track(p, token_end);
        } else if (starts_with(p, end, "<!--")) {
            token_end = after(p + 4, end, "-->");
        } else if (starts_with(p, end, "<![CDATA[")) {
            token_end = after(p + 9, end, "]]>");
        } else if (starts_with(p, end, "<?")) {
            token_end = after(p + 2, end, "?>");
        } else if (starts_with(p, end, "<!") || (end - p < 9 && !final)) {
            // A DTD can give attributes defaults and declare entities: the
            // reader alone reads such a document. A short tail might still
            // become one of the openings above.
            if (end - p >= 9 || final) {
                disabled_ = true;
                return ordinary(end);
            }
        } else {
            token_end = tag_end(p, end);
            if (token_end)
                track(p, token_end);
        }
        if (!token_end) {
            // A token that doesn't end within the text yet is looked at again
            // with more; one that grows beyond all reason (a hostile comment
            // or value) goes to the reader with the rest of the document,
            // rather than being scanned again and again.
            if (final || end - p > longest_awaited_token) {
                disabled_ = !final;
                return ordinary(end);
            }
            return ordinary(p);
        }
        p = token_end;
    }
    return ordinary(end);
}

void PointRunScanner::track(char const* begin, char const* end) {
    if (begin[1] == '/') {
        if (!open_.empty())
            open_.pop_back();
        return;
    }
    char const* name_end = begin + 1;
    while (name_end < end && is(*name_end, tag_char))
        ++name_end;
    bool const line_string = name_end - begin == 4 && std::memcmp(begin + 1, "LSG", 3) == 0;
    int const number = line_string ? ++line_strings_ : 0;
    if (end[-2] != '/') // not an empty element
        open_.push_back(number);
}

} // namespace TC::Task_data::detail
