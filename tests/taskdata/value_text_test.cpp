// The text forms of values: the one place where numbers become attribute
// text, and the guard against characters XML cannot hold.
#include "taskdata/value_text.h"

#include <gtest/gtest.h>

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
