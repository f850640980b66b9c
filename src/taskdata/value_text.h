#pragma once
// The text forms of attribute values as ISO 11783-10 writes them, one
// function per kind, and the guards that keep written text and names
// well-formed.

#include <QString>
#include <QStringView>

namespace TC::Task_data::detail {

// Degrees (PNT C/D, BSN C/D): fixed notation, at most nine fraction digits,
// no trailing zeros ("52.5", "7", "-0.000000001"); minus zero is "0".
QString format_degrees(double degrees);
// The widest text of degrees: 309 digits, a sign, the point and nine more.
constexpr int degrees_text_size = 320;
// The same text into `text`, which holds degrees_text_size characters;
// gives its length. Nothing is allocated.
int format_degrees(double degrees, char* text);

// A data dictionary identifier as hexBinary of two octets: "0001", "FFFF".
QString format_ddi(unsigned short ddi);
// Four hex digits to a DDI; false on any other text.
bool parse_ddi(QString const& text, unsigned short& ddi);

// Whether `name` is a name that an element or attribute can have: an XML 1.0
// Name, with at most one colon, neither first nor last, so that readers that
// process namespaces take it as well.
bool is_xml_name(QStringView name);

// The text with every character that XML 1.0 cannot hold (C0 controls other
// than tab, line feed and carriage return, U+FFFE, U+FFFF, unpaired
// surrogates) replaced by U+FFFD.
QString xml_safe(QString const& text);

} // namespace TC::Task_data::detail
