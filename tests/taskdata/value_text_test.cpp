// The text forms of values: the one place where numbers become attribute
// text, and the guards against characters and names XML cannot hold.
#include "taskdata/value_text.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <random>

using namespace TC::Task_data::detail;

TEST(ValueText, DegreesKeepAtMostNineFractionDigits) {
    EXPECT_EQ(format_degrees(52.5), QStringLiteral("52.5"));
    EXPECT_EQ(format_degrees(7.0), QStringLiteral("7"));
    EXPECT_EQ(format_degrees(0.0), QStringLiteral("0"));
    EXPECT_EQ(format_degrees(-0.0), QStringLiteral("0"));
    EXPECT_EQ(format_degrees(-0.0000000004), QStringLiteral("0"));
    EXPECT_EQ(format_degrees(-0.000000001), QStringLiteral("-0.000000001"));
    EXPECT_EQ(format_degrees(48.1234567891234), QStringLiteral("48.123456789"));
    EXPECT_EQ(format_degrees(-179.9999999996), QStringLiteral("-180"));
    EXPECT_EQ(format_degrees(10.0000000005), QStringLiteral("10.000000001"));
}

TEST(ValueText, DdisAreFourHexDigitsBothWays) {
    EXPECT_EQ(format_ddi(1), QStringLiteral("0001"));
    EXPECT_EQ(format_ddi(0xDFFF), QStringLiteral("DFFF"));
    unsigned short ddi = 0;
    EXPECT_TRUE(parse_ddi(QStringLiteral("00fe"), ddi));
    EXPECT_EQ(ddi, 0xFE);
    EXPECT_FALSE(parse_ddi(QStringLiteral("1"), ddi));
    EXPECT_FALSE(parse_ddi(QStringLiteral("XYZW"), ddi));
}

TEST(ValueText, OnlyCharactersXmlCannotHoldAreReplaced) {
    QString const fine =
        QStringLiteral("Feld \"Nord\" <1> & Süd\t\r\n") + QChar(0xD83D) + QChar(0xDE9C);
    EXPECT_EQ(xml_safe(fine), fine);
    EXPECT_EQ(xml_safe(QStringLiteral("a") + QChar(0x00) + QChar(0x0B) + QStringLiteral("b")),
              QStringLiteral("a\uFFFD\uFFFDb"));
    EXPECT_EQ(xml_safe(QString(QChar(0xDC00)) + QChar(0xD800)), QStringLiteral("\uFFFD\uFFFD"));
    EXPECT_EQ(xml_safe(QString(QChar(0xFFFE))), QStringLiteral("\uFFFD"));
}

TEST(ValueText, XmlNamesFollowXml10AndHoldOneInnerColonAtMost) {
    for (QString const& name :
         {QStringLiteral("A"), QStringLiteral("P231_x"), QStringLiteral("a:b-c.d"),
          QStringLiteral("_1"), QStringLiteral("Süd·\u0301"),
          QString(QChar(0xD800)) + QChar(0xDC00)})
        EXPECT_TRUE(is_xml_name(name)) << name.toStdString();
    for (QString const& name :
         {QString(), QStringLiteral("1a"), QStringLiteral("-a"), QStringLiteral("\u00B7a"),
          QStringLiteral("a b"), QStringLiteral("a\u037E"), QStringLiteral("a\u00D7"),
          QString::fromLatin1("E\0", 2), QStringLiteral("a\x7F"),
          QStringLiteral("a") + QChar(0xDC00), QStringLiteral("a:b:c"), QStringLiteral(":a"),
          QStringLiteral("a:")})
        EXPECT_FALSE(is_xml_name(name)) << name.toStdString();
}

namespace {

// The exact rounding of std::to_chars, as the text of degrees has it.
QString exactly_rounded_degrees(double degrees) {
    char text[degrees_text_size];
    char* end =
        std::to_chars(text, text + degrees_text_size, degrees, std::chars_format::fixed, 9).ptr;
    QString result = QString::fromLatin1(text, static_cast<int>(end - text));
    while (result.endsWith(QLatin1Char('0')))
        result.chop(1);
    if (result.endsWith(QLatin1Char('.')))
        result.chop(1);
    return result == QLatin1String("-0") ? QStringLiteral("0") : result;
}

} // namespace

TEST(ValueText, DegreesAreRoundedExactlyEverywhere) {
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
