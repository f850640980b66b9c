#include "taskdata/value_text.h"

#include <algorithm>
#include <charconv>

namespace TC::Task_data::detail {

int format_degrees(double degrees, char* text) {
    // std::to_chars rounds exactly, like QString::number, and allocates
    // nothing: large line strings format millions of these.
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

} // namespace

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
