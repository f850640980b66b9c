#include "taskdata/value_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace TC::Task_data::detail {

namespace {

// Nine fraction digits through integers, where the product with 1e9 leaves
// no doubt about the rounding: below 2^40 it is off the exact product by
// less than 2^-13, so a product clear of the midpoint by 1/1000 rounds as
// the exact value does. Gives -1 for the rest.
int format_nanodegrees(double degrees, char* text) {
    double const scaled = degrees * 1e9;
    if (!(std::fabs(scaled) < 0x1p40))
        return -1;
    double const whole = std::nearbyint(scaled);
    if (std::fabs(scaled - whole) > 0.499)
        return -1;
    auto magnitude = static_cast<std::uint64_t>(std::fabs(whole));
    char* out = text;
    if (magnitude != 0 && std::signbit(degrees))
        *out++ = '-';
    out = std::to_chars(out, out + 20, magnitude / 1000000000u).ptr;
    auto fraction = static_cast<unsigned>(magnitude % 1000000000u);
    if (fraction != 0) {
        *out++ = '.';
        int digits = 9;
        while (fraction % 10 == 0) {
            fraction /= 10;
            --digits;
        }
        for (int i = digits - 1; i >= 0; --i, fraction /= 10)
            out[i] = static_cast<char>('0' + fraction % 10);
        out += digits;
    }
    return static_cast<int>(out - text);
}

} // namespace

int format_degrees(double degrees, char* text) {
    // Nearly every coordinate takes the integer path; std::to_chars, which
    // rounds exactly like QString::number, takes the rest. Neither allocates:
    // large line strings format millions of these.
    int const size = format_nanodegrees(degrees, text);
    if (size >= 0)
        return size;
    char* end =
        std::to_chars(text, text + degrees_text_size, degrees, std::chars_format::fixed, 9).ptr;
    if (std::find(text, end, '.') != end) {
        while (end[-1] == '0')
            --end;
        if (end[-1] == '.')
            --end;
    }
    if (end - text == 2 && text[0] == '-' && text[1] == '0') {
        text[0] = '0';
        end = text + 1;
    }
    return static_cast<int>(end - text);
}

QString format_degrees(double degrees) {
    char text[degrees_text_size];
    return QString::fromLatin1(text, format_degrees(degrees, text));
}

QString format_ddi(unsigned short ddi) {
    return QStringLiteral("%1").arg(ddi, 4, 16, QLatin1Char('0')).toUpper();
}

bool parse_ddi(QString const& text, unsigned short& ddi) {
    if (text.size() != 4)
        return false;
    bool ok = false;
    uint const value = text.toUInt(&ok, 16);
    if (!ok)
        return false;
    ddi = static_cast<unsigned short>(value);
    return true;
}

namespace {

bool xml_char(QChar const* chars, int size, int i, int& width) {
    ushort const c = chars[i].unicode();
    width = 1;
    if (c < 0x20)
        return c == 0x09 || c == 0x0A || c == 0x0D;
    if (QChar::isHighSurrogate(c)) {
        if (i + 1 < size && QChar::isLowSurrogate(chars[i + 1].unicode())) {
            width = 2;
            return true;
        }
        return false;
    }
    if (QChar::isLowSurrogate(c))
        return false;
    return c != 0xFFFE && c != 0xFFFF;
}

bool name_start_char(uint c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
           (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xF6) || (c >= 0xF8 && c <= 0x2FF) ||
           (c >= 0x370 && c <= 0x37D) || (c >= 0x37F && c <= 0x1FFF) ||
           (c >= 0x200C && c <= 0x200D) || (c >= 0x2070 && c <= 0x218F) ||
           (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF) ||
           (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0xEFFFF);
}

bool name_char(uint c) {
    return name_start_char(c) || c == '-' || c == '.' || (c >= '0' && c <= '9') || c == 0xB7 ||
           (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}

} // namespace

bool is_xml_name(QStringView name) {
    QChar const* chars = name.data();
    int const size = name.size();
    int colons = 0;
    for (int i = 0; i < size; ++i) {
        bool const first = i == 0;
        // An unpaired surrogate stays in U+D800..U+DFFF, which neither
        // class holds.
        uint c = chars[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < size && chars[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(chars[i], chars[i + 1]);
            ++i;
        }
        if (!(first ? name_start_char(c) : name_char(c)))
            return false;
        colons += c == ':';
    }
    return size > 0 && colons <= 1 && chars[0] != QLatin1Char(':') &&
           chars[size - 1] != QLatin1Char(':');
}

QString xml_safe(QString const& text) {
    QChar const* chars = text.constData();
    int const size = text.size();
    int width = 1;
    int i = 0;
    while (i < size && xml_char(chars, size, i, width))
        i += width;
    if (i == size)
        return text;
    QString safe;
    safe.reserve(size);
    safe.append(chars, i);
    while (i < size) {
        if (xml_char(chars, size, i, width))
            safe.append(chars + i, width);
        else
            safe.append(QChar(QChar::ReplacementCharacter));
        i += width;
    }
    return safe;
}

} // namespace TC::Task_data::detail
