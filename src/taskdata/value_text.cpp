#include "taskdata/value_text.h"

namespace TC::Task_data::detail {

QString format_degrees(double degrees) {
    QString text = QString::number(degrees, 'f', 9);
    if (text.contains(QLatin1Char('.'))) {
        int end = text.size();
        while (text.at(end - 1) == QLatin1Char('0'))
            --end;
        if (text.at(end - 1) == QLatin1Char('.'))
            --end;
        text.truncate(end);
    }
    if (text == QLatin1String("-0"))
        return QStringLiteral("0");
    return text;
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
