// The tool as a user meets it: command line, messages, exit status, and what
// it leaves in OUTPUT.
#include "test_support/test_support.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace test_support;

namespace {

QByteArray const template_bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                                  "<ISO11783_TaskData VersionMajor=\"4\" />\n";

QByteArray usage_line() {
    return "usage: " + QByteArray(TDM_TOOL) + " [-p] [-m] [-O OUTPUT] DATADIR\n";
}

// A data tree with one client, one farm and the given number of fields.
void make_fields(QString const& data_dir, int fields) {
    for (int i = 0; i < fields; ++i)
        make_dirs(QStringLiteral("%1/Clients/Client/Farm/Field %2").arg(data_dir).arg(i));
}

// Something to import that adds no customer: one product.
void make_product(QString const& data_dir) {
    write_file(data_dir + QStringLiteral("/Products/Seed/Seed.ini"), "[Default]\nType=0\n");
}

class CommandLine : public ::testing::Test {
protected:
    ScratchDir scratch;
    QString data() const { return scratch.file(QStringLiteral("data")); }
    QString out() const { return scratch.file(QStringLiteral("out")); }
};

} // namespace

TEST_F(CommandLine, BadCommandLinesPrintUsageAndCreateNothing) {
    make_fields(data(), 1);
    QList<QStringList> const bad = {
        {},
        {QStringLiteral("-p")},
        {QStringLiteral("-p"), QStringLiteral("-m")},
        {QStringLiteral("data"), QStringLiteral("-p")},
        {QStringLiteral("data"), QStringLiteral("more")},
        {QStringLiteral("-O")},
        {QStringLiteral("-O"), QStringLiteral("out")},
        {QStringLiteral("-x"), QStringLiteral("data")},
        {QStringLiteral("-"), QStringLiteral("data")},
        {QStringLiteral("--"), QStringLiteral("data")},
        {QStringLiteral("-P"), QStringLiteral("data")},
        {QStringLiteral("-o"), QStringLiteral("out"), QStringLiteral("data")},
    };
    for (QStringList const& arguments : bad) {
        SCOPED_TRACE(arguments.join(QLatin1Char(' ')).toStdString());
        ToolRun const run = run_tool(arguments, scratch.path());
        EXPECT_EQ(run.exit_code, 1);
        EXPECT_EQ(run.err, usage_line());
        EXPECT_TRUE(run.out.isEmpty());
        EXPECT_FALSE(file_exists(scratch.file(QStringLiteral("TASKDATA.XML"))));
        EXPECT_FALSE(file_exists(out()));
    }
}

TEST_F(CommandLine, OptionsComeInAnyOrderRepeatAndOnlyTheirSecondByteCounts) {
    make_fields(data(), 1);
    // "-pxyz" is -p; the replaced -O value is never used; "-Ofoo out" takes
    // "out" and drops "foo".
    ToolRun const run =
        run_tool({"-pxyz", "-m", "-s", "-O", "elsewhere", "-p", "-Ofoo", "out", "-m", "data"},
                 scratch.path());
    EXPECT_EQ(run.exit_code, 0) << run.err.constData();
    EXPECT_EQ(run.out, QByteArray("P: 0%\n\nP: 100%\n\n"));
    EXPECT_TRUE(run.err.isEmpty());
    EXPECT_EQ(read_xml(out() + QStringLiteral("/TASKDATA.XML")).all(QStringLiteral("PFD")).size(),
              1);
    EXPECT_FALSE(file_exists(scratch.file(QStringLiteral("elsewhere"))));
    EXPECT_FALSE(file_exists(scratch.file(QStringLiteral("foo"))));
}

TEST_F(CommandLine, NothingToImportEndsQuietlyAfterTheTemplateCutTheFormerSet) {
    make_dirs(data() + QStringLiteral("/Clients/Client/Farm")); // no field
    make_dirs(data() + QStringLiteral("/Products/.hidden"));
    write_file(data() + QStringLiteral("/Products/not a product"), "x");
    // A set in OUTPUT, the working directory by default: the run ends before
    // the save, with the template, and the former lists cut.
    write_file(scratch.file(QStringLiteral("TASKDATA.XML")),
               "<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR1\" B=\"Old\"/>"
               "</ISO11783_TaskData>");
    write_file(scratch.file(QStringLiteral("LINKLIST.XML")), "old links");
    write_file(scratch.file(QStringLiteral("GUIDLIST.XML")), "old guids");
    ToolRun const run = run_tool({"-p", "data"}, scratch.path());
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_TRUE(run.out.isEmpty());
    EXPECT_TRUE(run.err.isEmpty());
    EXPECT_EQ(read_file(scratch.file(QStringLiteral("TASKDATA.XML"))), template_bytes);
    EXPECT_TRUE(read_file(scratch.file(QStringLiteral("LINKLIST.XML"))).isEmpty());
    EXPECT_TRUE(read_file(scratch.file(QStringLiteral("GUIDLIST.XML"))).isEmpty());

    // A missing DATADIR is no error either.
    ToolRun const missing = run_tool({"-O", "out", "no such dir"}, scratch.path());
    EXPECT_EQ(missing.exit_code, 0);
    EXPECT_TRUE(missing.err.isEmpty());
    EXPECT_EQ(read_file(out() + QStringLiteral("/TASKDATA.XML")), template_bytes);
}

TEST_F(CommandLine, WithoutProgressNothingIsPrinted) {
    make_fields(data(), 3);
    make_product(data());
    ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path());
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_TRUE(run.out.isEmpty());
    EXPECT_TRUE(run.err.isEmpty());
}

TEST_F(CommandLine, OutputThatCannotBeCreatedIsAnError) {
    write_file(scratch.file(QStringLiteral("plain file")), "x");
    make_fields(data(), 1);
    ToolRun const run = run_tool({"-O", "plain file/out", "data"}, scratch.path());
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.err, QByteArray("E: could not create directory plain file/out\n"));
}

TEST_F(CommandLine, ExistingSetInTaskdataIsLoadedUnlessIgnored) {
    make_product(data());
    write_file(data() + QStringLiteral("/taskdata/TASKDATA.XML"),
               "<ISO11783_TaskData VersionMajor=\"4\" VersionMinor=\"3\" "
               "ManagementSoftwareManufacturer=\"x\" ManagementSoftwareVersion=\"1\" "
               "DataTransferOrigin=\"1\"><CTR A=\"CTR1\" B=\"Kept\"/></ISO11783_TaskData>");

    ASSERT_EQ(run_tool({"-O", "out", "data"}, scratch.path()).exit_code, 0);
    XmlElement const loaded = read_xml(out() + QStringLiteral("/TASKDATA.XML"));
    ASSERT_EQ(loaded.all(QStringLiteral("CTR")).size(), 1);
    EXPECT_EQ(loaded.all(QStringLiteral("CTR"))[0].attribute(QStringLiteral("B")),
              QStringLiteral("Kept"));

    ASSERT_EQ(run_tool({"-s", "-O", "fresh", "data"}, scratch.path()).exit_code, 0);
    XmlElement const fresh = read_xml(scratch.file(QStringLiteral("fresh/TASKDATA.XML")));
    EXPECT_TRUE(fresh.all(QStringLiteral("CTR")).isEmpty());
}

TEST_F(CommandLine, LowerCaseSuffixIsTheOnlyFallbackOnTheInputSide) {
    QByteArray const named = "<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR1\" B=\"%1\"/>"
                             "</ISO11783_TaskData>";
    auto customer_in = [&](QString const& output) {
        auto customers =
            read_xml(scratch.file(output + QStringLiteral("/TASKDATA.XML"))).all("CTR");
        return customers.isEmpty() ? QString() : customers[0].attribute(QStringLiteral("B"));
    };
    make_product(data());

    write_file(data() + QStringLiteral("/taskdata/TASKDATA.xml"),
               QByteArray(named).replace("%1", "lower"));
    ASSERT_EQ(run_tool({"-O", "a", "data"}, scratch.path()).exit_code, 0);
    EXPECT_EQ(customer_in(QStringLiteral("a")), QStringLiteral("lower"));
    EXPECT_FALSE(file_exists(scratch.file(QStringLiteral("a/TASKDATA.xml"))));

    write_file(data() + QStringLiteral("/taskdata/TASKDATA.XML"),
               QByteArray(named).replace("%1", "upper"));
    ASSERT_EQ(run_tool({"-O", "b", "data"}, scratch.path()).exit_code, 0);
    EXPECT_EQ(customer_in(QStringLiteral("b")), QStringLiteral("upper"));

    QDir(data() + QStringLiteral("/taskdata")).removeRecursively();
    write_file(data() + QStringLiteral("/taskdata/TaskData.XML"),
               QByteArray(named).replace("%1", "mixed"));
    ASSERT_EQ(run_tool({"-O", "c", "data"}, scratch.path()).exit_code, 0);
    EXPECT_EQ(customer_in(QStringLiteral("c")), QString());
}

TEST_F(CommandLine, InputAndOutputMayBeOneDirectory) {
    make_product(data());
    write_file(data() + QStringLiteral("/taskdata/TASKDATA.XML"),
               "<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR7\" B=\"Same\"/>"
               "</ISO11783_TaskData>");
    write_file(data() + QStringLiteral("/taskdata/TEST0001.BIN"), "binary");
    ToolRun const run = run_tool({"-O", "data/taskdata", "data"}, scratch.path());
    EXPECT_EQ(run.exit_code, 0) << run.err.constData();
    XmlElement const saved = read_xml(data() + QStringLiteral("/taskdata/TASKDATA.XML"));
    ASSERT_EQ(saved.all(QStringLiteral("CTR")).size(), 1);
    EXPECT_EQ(saved.all(QStringLiteral("CTR"))[0].attribute(QStringLiteral("A")),
              QStringLiteral("CTR7"));
    EXPECT_EQ(read_file(data() + QStringLiteral("/taskdata/TEST0001.BIN")), "binary");
    EXPECT_EQ(
        QDir(data() + QStringLiteral("/taskdata")).entryList(QDir::Files | QDir::Hidden).size(), 4);
}

TEST_F(CommandLine, SetThatCannotBeReadEndsWithTheLoadError) {
    make_fields(data(), 1);
    QString const input = data() + QStringLiteral("/taskdata/TASKDATA.XML");
    struct Case {
        char const* what;
        QByteArray content;
    };
    // The reasons of the store's refusals are its suite's; here, the message
    // of the tool around them.
    for (Case const& bad :
         {Case{"not well-formed", "<ISO11783_TaskData><CTR A=\"CTR1\">"}, Case{"empty", ""},
          Case{"external file outside the set", "<ISO11783_TaskData><XFR A=\"../x\" B=\"1\"/>"
                                                "</ISO11783_TaskData>"}}) {
        SCOPED_TRACE(bad.what);
        write_file(input, bad.content);
        ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path());
        EXPECT_EQ(run.exit_code, 1);
        EXPECT_TRUE(
            run.err.endsWith("E: could not load taskdata from data/taskdata/TASKDATA.XML\n"))
            << run.err.constData();
        // The reader's explanation precedes the error line.
        EXPECT_GT(run.err.count('\n'), 1);
        EXPECT_FALSE(file_exists(out() + QStringLiteral("/TASKDATA.XML")));
    }
}
