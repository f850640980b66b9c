// A field's flagpoints.ini as the tool writes it: one point per record the
// count asks for, clamped icons, names cut to 32 characters, file order.
#include "test_support/test_support.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace test_support;

namespace {

using Lines = std::vector<std::string>;

class FlagPoints : public DisplayTree {
protected:
    void write_flags(QString const& field, QByteArray const& text) const {
        write(QStringLiteral("Clients/C/F/%1/flagpoints.ini").arg(field), text);
    }

    // The points of each saved field, "field: A B C D F icon" per point.
    Lines saved_points() const {
        Lines lines;
        for (XmlElement const& field : saved().all(QStringLiteral("PFD")))
            for (XmlElement const& point : field.all(QStringLiteral("PNT"))) {
                QStringList line = {field.attribute(QStringLiteral("C")) + QLatin1Char(':')};
                for (char const* name : {"A", "B", "C", "D", "F", "P231_iconId"})
                    line << (point.has_attribute(name) ? point.attribute(name)
                                                       : QStringLiteral("-"));
                lines.push_back(line.join(QLatin1Char(' ')).toStdString());
            }
        return lines;
    }
};

} // namespace

TEST_F(FlagPoints, TheCountDecidesHowManyRecordsAreRead) {
    // Two records asked for, three in the file: the third is not read.
    write_flags("Long", "7\n2\n52.5\n9.25\n4\nWell\n52.6\n9.26\n5\nGate\n52.7\n9.27\n6\nTree\n");
    // Three asked for, one there: the other two lie at 0, 0 without a name.
    write_flags("Short", "7\n3\n-1.5\n-2.5\n4\nStone\n");
    // A count that isn't a number, or is negative, reads no flag.
    write_flags("Text", "7\nmany\n52.5\n9.25\n4\nWell\n");
    write_flags("Negative", "7\n-1\n52.5\n9.25\n4\nWell\n");
    EXPECT_TRUE(run().err.isEmpty());

    EXPECT_EQ(saved_points(),
              Lines({"Long: 1 Well 52.5 9.25 2 4", "Long: 1 Gate 52.6 9.26 2 5",
                     "Short: 1 Stone -1.5 -2.5 2 4", "Short: 1  0 0 2 -", "Short: 1  0 0 2 -"}));
}

TEST_F(FlagPoints, IconsAreClampedAndTheLowOnesLeftOutNamesCut) {
    QString const name32 = QStringLiteral("Ä123456789012345678901234567890X");
    QString const name40 = name32 + QStringLiteral("45678901");
    write_flags("Field", (QStringLiteral("0\n8\n") +
                          "1\n1\n-5\nlow\n"
                          "1\n1\n2\ntwo\n"
                          "1\n1\n3\nthree\n"
                          "1\n1\n200\nhigh\n"
                          "1\n1\nx\n" +
                          name40 +
                          "\n"
                          "1.5\n2,5\n8\n" +
                          name32 +
                          "\n"
                          // Namesakes at one place keep the order of the file.
                          "5\n6\n7\ntwin\n"
                          "5\n6\n3\ntwin\n")
                             .toUtf8());
    EXPECT_TRUE(run().err.isEmpty());

    Lines const expected = {"Field: 1 low 1 1 2 -",
                            "Field: 1 two 1 1 2 -",
                            "Field: 1 three 1 1 2 3",
                            "Field: 1 high 1 1 2 8",
                            ("Field: 1 " + name32 + " 1 1 2 -").toStdString(),
                            ("Field: 1 " + name32 + " 1.5 0 2 8").toStdString(),
                            "Field: 1 twin 5 6 2 7",
                            "Field: 1 twin 5 6 2 3"};
    EXPECT_EQ(saved_points(), expected);
}
