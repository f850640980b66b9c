// The tool as a user meets it: command line, messages, exit status, and what
// it leaves in OUTPUT.
#include "test_support/test_support.h"

#include <QDir>

using namespace test_support;

namespace {

QByteArray const template_bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                                  "<ISO11783_TaskData VersionMajor=\"4\" />\n";

// A set of one customer, CTR7, named %1.
QString const set_of =
    "<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR7\" B=\"%1\"/></ISO11783_TaskData>";

struct CommandLine : DisplayTree {
    ToolRun tool(QStringList const& arguments) const { return run_tool(arguments, scratch.path()); }
};

} // namespace

// Bad command lines print the usage and create nothing; options come in any
// order, repeat, and only their second byte counts.
TEST_F(CommandLine, BadCommandLinesPrintUsageAndOptionsAreReadByTheirSecondByte) {
    make_dirs(field(""));
    for (QString const line : {"", "-p", "-p -m", "data -p", "data more", "-O", "-O out", "-x data",
                               "- data", "-- data", "-P data", "-o out data"}) {
        SCOPED_TRACE(line.toStdString());
        EXPECT_EQ(tool(line.split(' ', Qt::SkipEmptyParts)).outcome(),
                  "1 |  | usage: " TDM_TOOL " [-p] [-m] [-O OUTPUT] DATADIR\n");
        EXPECT_EQ(run_program({"ls"}, scratch.path()).out, "data\n");
    }
    // "-pxyz" is -p; the replaced -O value is never used; "-Ofoo out" takes
    // "out" and drops "foo".
    EXPECT_EQ(tool({"-pxyz", "-m", "-s", "-O", "elsewhere", "-p", "-Ofoo", "out", "-m", "data"})
                  .outcome(),
              "0 | P: 0%\n\nP: 100%\n\n | ");
    EXPECT_EQ(saved().all("PFD").size(), 1);
    EXPECT_EQ(run_program({"ls"}, scratch.path()).out, "data\nout\n");
}

TEST_F(CommandLine, NothingToImportEndsQuietlyAfterTheTemplateCutTheFormerSet) {
    make_dirs(data("Clients/Client/Farm")); // no field
    make_dirs(data("Products/.hidden"));
    write("Products/not a product", "x");
    // A set in OUTPUT, the working directory by default: the run ends before
    // the save, with the template, and the former lists cut.
    for (QString const name : {"TASKDATA.XML", "LINKLIST.XML", "GUIDLIST.XML"})
        write_file(scratch.file(name), "former " + name.toUtf8());
    // A missing DATADIR is no error either.
    for (QStringList const& arguments : {QStringList{"-p", "data"}, {"-O", "out", "no such dir"}})
        EXPECT_EQ(tool(arguments).outcome(), "0 |  | ");
    EXPECT_EQ(read_file(scratch.file("TASKDATA.XML")) + read_file(scratch.file("LINKLIST.XML")) +
                  read_file(scratch.file("GUIDLIST.XML")),
              template_bytes);
    EXPECT_EQ(read_file(scratch.file("out/TASKDATA.XML")), template_bytes);
}

// DATADIR/taskdata/TASKDATA.XML is loaded, or TASKDATA.xml where that is
// missing, unless -s; no run prints anything without -p. An OUTPUT that
// cannot be made ends the run with a message (a set that cannot be read is
// the fault suites' concern).
TEST_F(CommandLine, ExistingSetIsLoadedUnlessIgnored) {
    write("Products/Seed/Seed.ini", "[Default]\nType=0\n");
    auto customers_after = [&](QStringList const& options, QString const& out) {
        EXPECT_EQ(tool(options + QStringList{"-O", out, "data"}).outcome(), "0 |  | ");
        return read_xml(scratch.file(out + "/TASKDATA.XML")).values("CTR", "B");
    };
    write("taskdata/TASKDATA.xml", set_of.arg("lower").toUtf8());
    EXPECT_EQ(customers_after({}, "a"), QStringList{"lower"});
    EXPECT_FALSE(file_exists(scratch.file("a/TASKDATA.xml")));
    write("taskdata/TASKDATA.XML", set_of.arg("upper").toUtf8());
    EXPECT_EQ(customers_after({}, "b"), QStringList{"upper"});
    EXPECT_EQ(customers_after({"-s"}, "c"), QStringList());
    QDir(data("taskdata")).removeRecursively();
    write("taskdata/TaskData.XML", set_of.arg("mixed").toUtf8());
    EXPECT_EQ(customers_after({}, "d"), QStringList());

    // Input and output in one directory: the set is replaced, other files
    // stay.
    QDir(data("taskdata")).removeRecursively();
    write("taskdata/TASKDATA.XML", set_of.arg("Same").toUtf8());
    write("taskdata/TEST0001.BIN", "binary");
    EXPECT_EQ(customers_after({}, "data/taskdata"), QStringList{"Same"});
    EXPECT_EQ(read_xml(data("taskdata/TASKDATA.XML")).values("CTR", "A"), QStringList{"CTR7"});
    EXPECT_EQ(read_file(data("taskdata/TEST0001.BIN")), "binary");
    EXPECT_EQ(QDir(data("taskdata")).entryList(QDir::Files | QDir::Hidden),
              QStringList({"GUIDLIST.XML", "LINKLIST.XML", "TASKDATA.XML", "TEST0001.BIN"}));

    write_file(scratch.file("plain file"), "x");
    EXPECT_EQ(tool({"-O", "plain file/out", "data"}).outcome(),
              "1 |  | E: could not create directory plain file/out\n");
}
