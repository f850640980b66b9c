// Clients, farms and fields as the tool writes them: one element per
// directory of the three levels, linked to its parents, numbered in listing
// order, and with -m found again by name under the same parents.
#include "test_support/test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace test_support;

namespace {

using Lines = std::vector<std::string>;

class ClientImport : public DisplayTree {
protected:
    // Directories below data/Clients, given as "client/farm/field" paths.
    void make_tree(QStringList const& paths) const {
        for (QString const& path : paths)
            make_dirs(data("Clients/" + path));
    }

    // The saved customers, farms and fields in document order, one line each:
    // "CTR1 name", "FRM1 CTR1 name", "PFD1 CTR1 FRM1 name".
    Lines levels() const {
        Lines lines;
        for (XmlElement const& element : DisplayTree::saved().children) {
            QStringList line = {element.attribute("A")};
            if (element.tag == "CTR")
                line << element.attribute("B");
            else if (element.tag == "FRM")
                line << element.attribute("I") << element.attribute("B");
            else if (element.tag == "PFD")
                line << element.attribute("E") << element.attribute("F") << element.attribute("C");
            if (line.size() > 1)
                lines.push_back(line.join(' ').toStdString());
        }
        return lines;
    }
};

} // namespace

TEST_F(ClientImport, ThreeLevelsBecomeLinkedElementsInListingOrder) {
    make_tree({"meyer/Home/South", "meyer/Home/north", "meyer/Away", " Spaced  name /Farm/Field",
               "Agrar/Farm/Field", "No farms"});
    write("Clients/readme.txt", "x");
    write("Clients/meyer/Home/field.txt", "x");
    ToolRun const result = run({"-p"});
    EXPECT_TRUE(result.err.isEmpty());
    // One step per field, none for a client or farm without children.
    EXPECT_EQ(result.out.toStdString(), "P: 0%\n\nP: 25%\n\nP: 50%\n\nP: 75%\n\nP: 100%\n\n");

    EXPECT_EQ(levels(), Lines({"CTR1  Spaced  name ", "FRM1 CTR1 Farm", "PFD1 CTR1 FRM1 Field",
                               "CTR2 Agrar", "FRM2 CTR2 Farm", "PFD2 CTR2 FRM2 Field", "CTR3 meyer",
                               "FRM3 CTR3 Away", "FRM4 CTR3 Home", "PFD3 CTR3 FRM4 north",
                               "PFD4 CTR3 FRM4 South", "CTR4 No farms"}));
}

TEST_F(ClientImport, WithoutMergeALoadedSetGetsEverythingAgain) {
    load("<CTR A=\"CTR1\" B=\"Meyer\"/><FRM A=\"FRM1\" B=\"Home\" I=\"CTR1\"/>"
         "<PFD A=\"PFD1\" C=\"North\" E=\"CTR1\" F=\"FRM1\"/>");
    make_tree({"Meyer/Home/North"});
    run();
    EXPECT_EQ(levels(), Lines({"CTR1 Meyer", "FRM1 CTR1 Home", "PFD1 CTR1 FRM1 North", "CTR2 Meyer",
                               "FRM2 CTR2 Home", "PFD2 CTR2 FRM2 North"}));
}

TEST_F(ClientImport, MergeReusesByExactNameUnderTheSameParents) {
    load("<CTR A=\"CTR1\" B=\"Meyer\"/><CTR A=\"CTR2\" B=\"Other\"/><CTR A=\"CTR3\" B=\"Meyer\"/>"
         "<FRM A=\"FRM1\" B=\"Home\" I=\"CTR1\"/><FRM A=\"FRM2\" B=\"Away\" I=\"CTR2\"/>"
         "<PFD A=\"PFD1\" C=\"North\" E=\"CTR1\" F=\"FRM1\"/>"
         "<PFD A=\"PFD2\" C=\"South\" E=\"CTR2\" F=\"FRM1\"/>");
    make_tree({"Meyer/Home/North", "Meyer/Home/South", "Meyer/Home/north", "Meyer/Away/East",
               "Neu/Home/North"});
    ToolRun const result = run({"-m", "-p"});
    EXPECT_TRUE(result.out.endsWith("P: 80%\n\nP: 100%\n\n")); // reused fields step too

    EXPECT_EQ(levels(), Lines({// Loaded, unchanged; the first "Meyer" is the one reused.
                               "CTR1 Meyer", "CTR2 Other", "CTR3 Meyer", "FRM1 CTR1 Home",
                               "FRM2 CTR2 Away", "PFD1 CTR1 FRM1 North", "PFD2 CTR2 FRM1 South",
                               // "Away" and "South" of another customer are no match, nor
                               // is "North" for "north".
                               "FRM3 CTR1 Away", "PFD3 CTR1 FRM3 East", "PFD4 CTR1 FRM1 north",
                               "PFD5 CTR1 FRM1 South",
                               // Under a new client everything is new.
                               "CTR4 Neu", "FRM4 CTR4 Home", "PFD6 CTR4 FRM4 North"}));
}

TEST_F(ClientImport, MergeFindsAFarmWhoseCustomerIsMadeOnlyNow) {
    // The loaded farm names a customer that is not there; the new customer
    // takes that number, and from then on the farm is its farm.
    load("<CTR A=\"CTR1\" B=\"Old\"/><FRM A=\"FRM1\" B=\"Farm\" I=\"CTR2\"/>");
    make_tree({"New/Farm/Field"});
    run({"-m"});
    EXPECT_EQ(levels(), Lines({"CTR1 Old", "FRM1 CTR2 Farm", "CTR2 New", "PFD1 CTR2 FRM1 Field"}));
}

TEST_F(ClientImport, ExampleTreeGivesAValidSet) {
    REQUIRE_SHARED_DIR();
    ToolRun const result = run_tool({"-O", "out", TDM_EXAMPLE_TREE}, scratch.path());
    ASSERT_EQ(result.exit_code, 0) << result.err.constData();
    EXPECT_TRUE(result.err.isEmpty()) << result.err.constData();
    bool valid = false;
    QString const report = validate_set(scratch.file("out"), valid);
    EXPECT_TRUE(valid) << report.toStdString();
}
