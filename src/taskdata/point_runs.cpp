#include "taskdata/point_runs.h"

#include <cstring>

namespace TC::Task_data::detail {

namespace {

// More attributes than a PNT has (A to J and a few proprietary ones) make
// the element go to the reader, which also finds duplicates among them.
constexpr size_t max_attributes = 24;
constexpr qsizetype longest_awaited_token = 1 << 24;

bool name_start(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':';
}

bool name_char(char c) {
    return name_start(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// Printable ASCII that the reader gives back as it stands in a value.
bool plain_value_char(char c, char quote) {
    return c >= 0x20 && c <= 0x7e && c != '&' && c != '<' && c != quote;
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
    attributes.clear();
    if (!starts_with(p, end, "<PNT"))
        return nullptr;
    p += 4;
    while (true) {
        bool const spaced = p < end && xml_space(*p);
        while (p < end && xml_space(*p))
            ++p;
        if (p + 1 < end && p[0] == '/' && p[1] == '>')
            return p + 2;
        if (p >= end || !spaced || !name_start(*p) || attributes.size() == max_attributes)
            return nullptr;
        char const* name = p;
        while (p < end && name_char(*p))
            ++p;
        QLatin1String const attribute_name(name, static_cast<int>(p - name));
        while (p < end && xml_space(*p))
            ++p;
        if (p >= end || *p != '=')
            return nullptr;
        ++p;
        while (p < end && xml_space(*p))
            ++p;
        if (p >= end || (*p != '"' && *p != '\''))
            return nullptr;
        char const quote = *p++;
        char const* value = p;
        while (p < end && plain_value_char(*p, quote))
            ++p;
        if (p >= end || *p != quote)
            return nullptr;
        for (PlainAttribute const& seen : attributes)
            if (seen.name == attribute_name)
                return nullptr;
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

    PlainAttributes attributes;
    while (p < end) {
        if (*p != '<') {
            char const* const next = static_cast<char const*>(std::memchr(p, '<', end - p));
            p = next ? next : end;
            continue;
        }
        char const* token_end = nullptr;
        bool const in_line_string = !open_.empty() && open_.back() > 0;
        if (in_line_string && starts_with(p, end, "<PNT")) {
            char const* const first = parse_plain_point(p, end, attributes);
            if (first) {
                // A run: as many plain points as follow, white space between.
                char const* run_end = first;
                char const* q = first;
                while (true) {
                    while (q < end && xml_space(*q))
                        ++q;
                    char const* const point = parse_plain_point(q, end, attributes);
                    if (!point)
                        break;
                    run_end = q = point;
                }
                return Step{p - begin, true, run_end - begin, open_.back()};
            }
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
    while (name_end < end && name_char(*name_end))
        ++name_end;
    bool const line_string = name_end - begin == 4 && std::memcmp(begin + 1, "LSG", 3) == 0;
    int const number = line_string ? ++line_strings_ : 0;
    if (end[-2] != '/') // not an empty element
        open_.push_back(number);
}

} // namespace TC::Task_data::detail
