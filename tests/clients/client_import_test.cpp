// Clients, farms and fields as the tool writes them: one element per
// directory of the three levels, linked to its parents, numbered in listing
// order, and with -m found again by name under the same parents; and a
// field's flagpoints.ini: one point per record the count asks for, clamped
// icons, names cut to 32 characters, file order.
#include "../taskdata/xml_summary.h"
#include "test_support/test_support.h"

using namespace test_support;

namespace {

class ClientImport : public DisplayTree {
protected:
    // The saved customers, farms and fields in document order:
    // "CTR1 name; FRM1 CTR1 name; PFD1 CTR1 FRM1 name".
    QString levels() const {
        QHash<QString, QStringList> const shown = {
            {"CTR", {"A", "B"}}, {"FRM", {"A", "I", "B"}}, {"PFD", {"A", "E", "F", "C"}}};
        QStringList lines;
        for (XmlElement const& element : saved().children)
            if (shown.contains(element.tag))
                lines << summary({element}, shown[element.tag]);
        return lines.join("; ");
    }
};

} // namespace

TEST_F(ClientImport, ThreeLevelsBecomeLinkedElementsInListingOrderWithTheirFlags) {
    // Without -m a loaded set gets everything again.
    load("<CTR A=\"CTR1\" B=\"Old\"/><FRM A=\"FRM1\" B=\"Home\" I=\"CTR1\"/>"
         "<PFD A=\"PFD1\" C=\"North\" E=\"CTR1\" F=\"FRM1\"/>");
    for (QString const path :
         {"meyer/Home/South", "meyer/Home/north", "meyer/Away", " Spaced  name /Farm/Field",
          "Agrar/Farm/Field", "No farms", "Old/Home/North"})
        make_dirs(data("Clients/" + path));
    write("Clients/readme.txt", "x");
    write("Clients/meyer/Home/field.txt", "x");
    auto flags = [this](QString const& field, QString const& text) {
        write("Clients/C/F/" + field.toUtf8() + "/flagpoints.ini", text.toUtf8());
    };
    // Two records asked for, three in the file: the third is not read.
    flags("Long", "7\n2\n52.5\n9.25\n4\nWell\n52.6\n9.26\n5\nGate\n52.7\n9.27\n6\nTree\n");
    // Three asked for, one there: the other two lie at 0, 0 without a name.
    flags("Short", "7\n3\n-1.5\n-2.5\n4\nStone\n");
    // A count that isn't a number, or is negative, reads no flag.
    flags("Text", "7\nmany\n52.5\n9.25\n4\nWell\n");
    flags("Negative", "7\n-1\n52.5\n9.25\n4\nWell\n");
    // Icons are clamped and the low ones left out; names are cut; namesakes
    // at one place keep the order of the file.
    QString const name32 = "Ä123456789012345678901234567890X";
    flags("Icons", "0\n8\n1\n1\n-5\nlow\n1\n1\n2\ntwo\n1\n1\n3\nthree\n1\n1\n200\nhigh\n1\n1\nx\n" +
                       name32 + "45678901\n1.5\n2,5\n8\n" + name32 +
                       "\n5\n6\n7\ntwin\n5\n6\n3\ntwin\n");
    ToolRun const result = run({"-p"});
    EXPECT_EQ(result.err, QByteArray());
    // One step per field, none for a client or farm without children.
    EXPECT_EQ(result.out, "P: 0%\n\nP: 10%\n\nP: 20%\n\nP: 30%\n\nP: 40%\n\nP: 50%\n\nP: 60%\n\n"
                          "P: 70%\n\nP: 80%\n\nP: 90%\n\nP: 100%\n\n");

    EXPECT_EQ(levels(), "CTR1 Old; FRM1 CTR1 Home; PFD1 CTR1 FRM1 North; CTR2  Spaced  name ; "
                        "FRM2 CTR2 Farm; PFD2 CTR2 FRM2 Field; CTR3 Agrar; FRM3 CTR3 Farm; "
                        "PFD3 CTR3 FRM3 Field; CTR4 C; FRM4 CTR4 F; PFD4 CTR4 FRM4 Icons; "
                        "PFD5 CTR4 FRM4 Long; PFD6 CTR4 FRM4 Negative; PFD7 CTR4 FRM4 Short; "
                        "PFD8 CTR4 FRM4 Text; CTR5 meyer; FRM5 CTR5 Away; FRM6 CTR5 Home; "
                        "PFD9 CTR5 FRM6 north; PFD10 CTR5 FRM6 South; CTR6 No farms; CTR7 Old; "
                        "FRM7 CTR7 Home; PFD11 CTR7 FRM7 North");
    QStringList points; // "field: A B C D F icon" per point
    for (XmlElement const& field : saved().all("PFD"))
        for (QString const& point :
             summary(field.all("PNT"), {"A", "B", "C", "D", "F", "P231_iconId"}))
            points << field.attribute("C") + ": " + point;
    EXPECT_EQ(points,
              QStringList({"Icons: 1 low 1 1 2 -", "Icons: 1 two 1 1 2 -", "Icons: 1 three 1 1 2 3",
                           "Icons: 1 high 1 1 2 8", "Icons: 1 " + name32 + " 1 1 2 -",
                           "Icons: 1 " + name32 + " 1.5 0 2 8", "Icons: 1 twin 5 6 2 7",
                           "Icons: 1 twin 5 6 2 3", "Long: 1 Well 52.5 9.25 2 4",
                           "Long: 1 Gate 52.6 9.26 2 5", "Short: 1 Stone -1.5 -2.5 2 4",
                           "Short: 1  0 0 2 -", "Short: 1  0 0 2 -"}));
}

TEST_F(ClientImport, MergeReusesByExactNameUnderTheSameParents) {
    // The loaded farm FRM3 names a customer that is not there; the new
    // customer takes that number, and from then on the farm is its farm.
    load("<CTR A=\"CTR1\" B=\"Meyer\"/><CTR A=\"CTR2\" B=\"Other\"/><CTR A=\"CTR3\" B=\"Meyer\"/>"
         "<FRM A=\"FRM1\" B=\"Home\" I=\"CTR1\"/><FRM A=\"FRM2\" B=\"Away\" I=\"CTR2\"/>"
         "<FRM A=\"FRM3\" B=\"Farm\" I=\"CTR4\"/>"
         "<PFD A=\"PFD1\" C=\"North\" E=\"CTR1\" F=\"FRM1\"/>"
         "<PFD A=\"PFD2\" C=\"South\" E=\"CTR2\" F=\"FRM1\"/>");
    for (QString const path : {"Meyer/Home/North", "Meyer/Home/South", "Meyer/Home/north",
                               "Meyer/Away/East", "Neu/Home/North", "Neu/Farm/Field"})
        make_dirs(data("Clients/" + path));
    ToolRun const result = run({"-m", "-p"});
    EXPECT_TRUE(result.out.endsWith("P: 83%\n\nP: 100%\n\n")); // reused fields step too

    // Loaded, unchanged, and the first "Meyer" reused; "Away" and "South" of
    // another customer are no match, nor is "North" for "north"; under a new
    // client everything is new but the farm waiting for it.
    EXPECT_EQ(levels(), "CTR1 Meyer; CTR2 Other; CTR3 Meyer; FRM1 CTR1 Home; FRM2 CTR2 Away; "
                        "FRM3 CTR4 Farm; PFD1 CTR1 FRM1 North; PFD2 CTR2 FRM1 South; "
                        "FRM4 CTR1 Away; PFD3 CTR1 FRM4 East; PFD4 CTR1 FRM1 north; "
                        "PFD5 CTR1 FRM1 South; CTR4 Neu; PFD6 CTR4 FRM3 Field; FRM5 CTR4 Home; "
                        "PFD7 CTR4 FRM5 North");
}

TEST_F(ClientImport, ExampleTreeGivesAValidSet) {
    REQUIRE_SHARED_DIR();
    ToolRun const result = run_tool({"-O", "out", TDM_EXAMPLE_TREE}, scratch.path());
    ASSERT_EQ(QByteArray::number(result.exit_code) + result.err, "0"); // no warning either
    expect_valid_set();
}
