// The text forms of values: the one place where numbers become attribute
// text, and the guards against characters and names XML cannot hold.
#include "taskdata/value_text.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <random>

using namespace TC::Task_data::detail;

namespace {

// The exact rounding of std::to_chars, as the text of degrees has it.
QString exactly_rounded_degrees(double degrees) {
    char text[degrees_text_size];
    char* end = std::to_chars(text, std::end(text), degrees, std::chars_format::fixed, 9).ptr;
    // Trailing zeros go, and the point with them.
    QString const result =
        QString::fromLatin1(text, int(end - text)).remove(QRegularExpression("\\.?0+$"));
    return result == "-0" ? "0" : result;
}

} // namespace

TEST(ValueText, DegreesKeepAtMostNineFractionDigitsRoundedExactly) {
    // Each row: degrees, then their text.
    for (QString const row :
         {"52.5 52.5", "7 7", "0 0", "-0 0", "-0.0000000004 0", "-0.000000001 -0.000000001",
          "48.1234567891234 48.123456789", "-179.9999999996 -180", "10.0000000005 10.000000001"})
        EXPECT_EQ(format_degrees(row.section(' ', 0, 0).toDouble()), row.section(' ', 1))
            << row.toStdString();
    // Midpoints between two nanodegrees, their neighbours, and values far
    // beyond any coordinate take the exact path.
    for (double const degrees :
         {0.0000000005, -0.0000000005, 0.0000000015, 0.5e-9 + 1e-24, 1.0000000005,
          std::nextafter(2.5e-9, 0.0), std::nextafter(2.5e-9, 1.0), 1099.9999999995, 1e12, -1e300,
          5e-324})
        EXPECT_EQ(format_degrees(degrees), exactly_rounded_degrees(degrees)) << degrees;
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> coordinate(-180.0, 180.0);
    std::uniform_int_distribution<int> exponent(-12, 3);
    for (int i = 0; i < 200000; ++i) {
        double const degrees =
            i % 2 ? coordinate(random) : std::ldexp(coordinate(random), exponent(random));
        ASSERT_EQ(format_degrees(degrees), exactly_rounded_degrees(degrees)) << degrees;
    }
}

TEST(ValueText, DdisAreFourHexDigitsBothWays) {
    unsigned short ddi = 0;
    EXPECT_EQ(format_ddi(1) + ' ' + format_ddi(0xDFFF), "0001 DFFF");
    EXPECT_TRUE(parse_ddi("00fe", ddi) && ddi == 0xFE);
    EXPECT_FALSE(parse_ddi("1", ddi) || parse_ddi("XYZW", ddi));
}

TEST(ValueText, OnlyWhatXmlCannotHoldIsReplacedAndNamesFollowXml10) {
    QString const fine = QString("Feld \"Nord\" <1> & Süd\t\r\n") + QChar(0xD83D) + QChar(0xDE9C);
    EXPECT_EQ(xml_safe(fine), fine);
    EXPECT_EQ(xml_safe(QString("a") + QChar(0x00) + QChar(0x0B) + "b"), "a\uFFFD\uFFFDb");
    EXPECT_EQ(xml_safe(QString(QChar(0xDC00)) + QChar(0xD800)), "\uFFFD\uFFFD");
    EXPECT_EQ(xml_safe(QString(QChar(0xFFFE))), "\uFFFD");
    // At most one inner colon.
    for (QString const name : {"A", "P231_x", "a:b-c.d", "_1", "Süd·\u0301", "\U00010000"})
        EXPECT_TRUE(is_xml_name(name)) << name.toStdString();
    for (QString const& name : QStringList{"", "1a", "-a", "\u00B7a", "a b", "a\u037E", "a\u00D7",
                                           QString::fromLatin1("E\0", 2), "a\x7F",
                                           QString("a") + QChar(0xDC00), "a:b:c", ":a", "a:"})
        EXPECT_FALSE(is_xml_name(name)) << name.toStdString();
}
