// Trees that a broken display, a full card or a malicious hand could leave:
// names full of markup, control characters and foreign bytes, link loops,
// files where directories belong and the reverse, empty, gigantic and
// unreadable files. The tool ends normally with a well-formed set, keeps
// what it could read, and writes nothing outside OUTPUT.
#include "test_support/test_support.h"

#include <QFile>
#include <QStandardPaths>

#include <unistd.h>

#include <gtest/gtest.h>

using namespace test_support;

namespace {

QByteArray const ab_line = "State=2\n[APoint]\nLatitude=52.1\nLongitude=13.2\n"
                           "[BPoint]\nLatitude=52.2\nLongitude=13.3\n";
QByteArray const flag = "7\n1\n52.5\n13.25\n4\nStone\n";
// Path, size and modification time of every entry outside OUTPUT.
QStringList const listing = {"find",   ".",  "-path",   "./out",
                             "-prune", "-o", "-printf", "%p %s %T@\n"};

// A .crv or .bdy file of `points` points in a zigzag.
QByteArray points(int count) {
    std::vector<std::pair<float, float>> zigzag;
    for (int i = 0; i < count; ++i)
        zigzag.emplace_back(static_cast<float>(10 * i), static_cast<float>(i % 2 ? 10 : -10));
    return point_file(52.5, 13.25, 0.0, zigzag);
}

class HostileTree : public DisplayTree {
protected:
    QString client(QString const& relative) const { return data("Clients/" + relative); }
    // Runs the tool (with `shell_prefix`) beside a good field, a boundary, a
    // flag, an AB line and a curve, and checks what every hostile run must
    // give: status 0, standard error `warnings`, a well-formed set (valid
    // too, with `validate`) holding the good field whole, and nothing
    // changed outside OUTPUT. Returns the set.
    XmlElement run_and_check(QByteArray const& warnings, bool validate,
                             QString const& shell_prefix = QString()) {
        QString const dir = "Clients/Good/Farm/Good field/";
        write(dir + "Boundaries/edge.bdy", points(4));
        write(dir + "flagpoints.ini", flag);
        write(dir + "ABLines/AB/AB.ini", ab_line);
        write(dir + "Curves/Curve/Curve.ini", "");
        write(dir + "Curves/Curve/Curve.crv", points(3));
        make_dirs(scratch.file("out"));
        QByteArray const before = run_program(listing, scratch.path()).out;
        EXPECT_EQ(run_tool({"-O", "out", "data"}, scratch.path(), shell_prefix).outcome(),
                  "0 |  | " + warnings);
        EXPECT_EQ(run_program(listing, scratch.path()).out, before) << "written outside OUTPUT";
        XmlElement const set = saved();
        XmlElement const good = set.find("PFD", "C", "Good field");
        // The boundary's four vertices closed, the AB line's two points, the
        // curve's three, and the flag: eleven points, three line strings.
        EXPECT_EQ(good.all("PNT").size(), 11);
        EXPECT_EQ(good.all("LSG").size(), 3);
        EXPECT_EQ(good.values("GPN", "B"), QStringList({"AB", "Curve"}));
        if (validate)
            expect_valid_set();
        return set;
    }
};

} // namespace

// Names of markup, control characters and full length; files where
// directories belong and the reverse; empty and gigantic point files.
TEST_F(HostileTree, MarkupNamesMisplacedEntriesAndGiganticFiles) {
    QString const markup = "<Field & \"Co\"> 'x'";
    QString const control = "ctl\x01\x1b\tname";
    QString const longest = QString(127, QChar(0xE9)) + 'x'; // 255 bytes in UTF-8
    QString const named = "Clients/" + markup + '/' + control + '/' + longest;
    write(named + "/ABLines/" + markup + '/' + markup + ".ini",
          ab_line + "CorrectionSource=5\n[BasePoint]\nPosition=\"" + QByteArray(4000, 'p') +
              "\"\n");
    write(named + "/Curves/" + control + '/' + control + ".ini", "");
    write(named + "/Curves/" + control + '/' + control + ".crv", points(2));
    write(named + "/Pivots/" + longest + "/x", "");
    write(named + "/flagpoints.ini", "7\n3\n52.5\n13.25\n4\n<b>&amp;\"'\x01\x1b\n52.6\n13.26\n5\n" +
                                         QByteArray(4000, 'n') +
                                         "\n52.7\n13.27\n6\n\xff\xfe\xc3(\n");

    // Files where directories belong and the reverse, empty files.
    for (QString const file : {"A file as client", "C/A file as farm", "C/F/Field/Boundaries",
                               "C/F/Field/Zones", "C/F/Field/ABLines"})
        write("Clients/" + file, "x");
    for (QString const dir : {"C/F/Field/flagpoints.ini", "C/F/Field/Curves/C/C.crv",
                              "C/F/Field/Curves/D/D.ini", "C/F/Other/Boundaries/dir.bdy"})
        make_dirs(client(dir));
    for (QString const file :
         {"C/F/Field/Curves/C/C.ini", "C/F/Other/Boundaries/empty.bdy", "C/F/Other/Curves/E/E.ini",
          "C/F/Other/Curves/E/E.crv", "Big/Farm/Huge/Curves/Huge/Huge.ini"})
        write("Clients/" + file, "");
    write("Clients/C/F/Field/Curves/D/D.crv", points(3));
    make_dirs(data("Products/P/P.ini"));
    write("ProductMixtures", "x");
    for (char const* file : {"Boundaries/huge.bdy", "Curves/Huge/Huge.crv"}) {
        write(QString("Clients/Big/Farm/Huge/") + file, points(0));
        ASSERT_TRUE(QFile(client("Big/Farm/Huge/") + file).resize(1 << 30)); // sparse: no disk
    }

    // Names go into designators unchanged, and the schema allows 32
    // characters; an empty or oversized .bdy makes a ring without points,
    // which the schema forbids.
    XmlElement const set =
        run_and_check(QString("W: skipping oversized file \"%1\" of 1073741824 bytes\n"
                              "W: skipping oversized file \"%2\" of 1073741824 bytes\n")
                          .arg(client("Big/Farm/Huge/Boundaries/huge.bdy"),
                               client("Big/Farm/Huge/Curves/Huge/Huge.crv"))
                          .toUtf8(),
                      false);
    EXPECT_TRUE(set.values("CTR", "B").contains(markup));
    EXPECT_EQ(set.find("PFD", "C", longest).all("GPN").size(), 2);
    // An .ini that is a directory exists and reads as empty; a .crv that is
    // one gives no points. The directory .bdy is no file.
    EXPECT_EQ(set.find("PFD", "C", "Field").values("GPN", "B"), QStringList{"D"});
    EXPECT_EQ(set.find("PFD", "C", "Other").all("PLN").size(), 1);
    XmlElement const huge = set.find("PFD", "C", "Huge");
    EXPECT_TRUE(huge.all("GPN").isEmpty());
    ASSERT_EQ(huge.all("LSG").size(), 1);
    EXPECT_TRUE(huge.all("PNT").isEmpty());
}

TEST_F(HostileTree, LinkLoopsBelowBoundariesAndZones) {
    write("Clients/Loops/Farm/Field/Boundaries/ring.bdy", points(5));
    make_dirs(client("Loops/Farm/Field/Zones"));
    char const* const links[][2] = {{"..", "Boundaries/parent"}, {".", "Boundaries/self"},
                                    {"b", "Boundaries/a"},       {"a", "Boundaries/b"},
                                    {"..", "Zones/up"},          {"../Zones", "Zones/again"}};
    for (auto const& link : links)
        ASSERT_EQ(::symlink(link[0], QFile::encodeName(client("Loops/Farm/Field/") + link[1])), 0);
    // The ring is read once, however many ways lead to it.
    EXPECT_EQ(run_and_check("", true).find("PFD", "C", "Field").all("PLN").size(), 1);
}

// Names in Latin-1 or Windows-1252, as a display without a UTF-8 locale or a
// FAT stick with a Windows code page leaves them: everything is read through
// the names' own bytes, and the names arrive decoded as Windows-1252, with a
// warning each. The second run, with -m, finds the client, farm and field
// again by their decoded names.
TEST_F(HostileTree, NamesThatAreNotUtf8ArriveDecodedAsWindows1252) {
    QByteArray const root = QFile::encodeName(data());
    QByteArray const field = root + "/Clients/M\xfcller/Gro\xdfhof/\xc4"
                                    "cker";
    write_raw_file(field + "/Boundaries/R\xe4nder.bdy", points(4));
    write_raw_file(field + "/ABLines/Sp\xfcr/Sp\xfcr.ini", ab_line);
    write_raw_file(field + "/Curves/B\xf6gen/B\xf6gen.ini", "");
    write_raw_file(field + "/Curves/B\xf6gen/B\xf6gen.crv", points(3));
    write_raw_file(root + "/Products/D\xfcnger/D\xfcnger.ini", "[Default]\nType=0\n");
    write_raw_file(root + "/ProductMixtures/Mischung \x80/Mischung \x80.ini", "");
    // By its bytes it would come first; by the decoded names, ü before ą.
    make_dirs(client("M\u0105dry"));

    QStringList const names = {"M\u00fcller", "Gro\u00dfhof", "\u00c4cker",     "Sp\u00fcr",
                               "B\u00f6gen",  "D\u00fcnger",  "Mischung \u20ac"};
    QByteArray warnings;
    for (QString const& name : names)
        warnings += "W: name is not UTF-8, read as Windows-1252: \"" + name.toUtf8() + "\"\n";
    QStringList products;
    for (QStringList const& options : {QStringList(), QStringList{"-m"}}) {
        EXPECT_EQ(run_tool(options + QStringList{"-O", "data/taskdata", "data"}, scratch.path())
                      .outcome(),
                  "0 |  | " + warnings);
        XmlElement const set = read_xml(data("taskdata/TASKDATA.XML"));
        EXPECT_EQ(set.values("CTR", "B") + set.values("FRM", "B") + set.values("PFD", "C"),
                  QStringList({names[0], "M\u0105dry", names[1], names[2]}));
        // Every file read: the four vertices of the .bdy closed, the AB line's
        // two points and the curve's three.
        XmlElement const arable = set.find("PFD", "C", names[2]);
        EXPECT_EQ(arable.all("PNT").size(), 10);
        EXPECT_EQ(arable.values("GPN", "B"), names.mid(3, 2));
        // Products and mixtures are made anew in every run.
        products << names[5] << names[6];
        EXPECT_EQ(set.values("PDT", "B"), products);
    }
}

TEST_F(HostileTree, UnreadableFilesAndDirectories) {
    QString const setpriv = QStandardPaths::findExecutable("setpriv");
    bool const root = ::geteuid() == 0;
    if (root && setpriv.isEmpty())
        GTEST_SKIP() << "running as root, and without setpriv there is no unprivileged user "
                        "for whom chmod 000 means anything";
    QString const field = "Clients/Locked/Farm/Field/";
    write(field + "flagpoints.ini", flag);
    write(field + "Boundaries/ring.bdy", points(4));
    write(field + "Curves/C/C.ini", "");
    write(field + "Curves/C/C.crv", points(3));
    write(field + "ABLines/L/L.ini", ab_line);
    write("Clients/Locked/Farm/Closed/ABLines/L/L.ini", ab_line);
    write("Products/P/P.ini", "[Default]\nType=0\n");
    ASSERT_EQ(run_program({"chmod", "000", field + "flagpoints.ini", field + "Boundaries",
                           field + "Curves/C/C.crv", field + "ABLines/L/L.ini",
                           "Clients/Locked/Farm/Closed", "Products/P/P.ini"},
                          data())
                  .exit_code,
              0);
    // As root, the scratch directory is opened to nobody, who runs the tool.
    QString const prefix = root
                               ? QString("chmod a+rx . && chmod a+rwx out && exec %1 --reuid=65534 "
                                         "--regid=65534 --clear-groups -- \"$0\" \"$@\"")
                                     .arg(setpriv)
                               : QString();
    // An unreadable product .ini reads as one without keys.
    XmlElement const set = run_and_check("", true, prefix);
    EXPECT_TRUE(set.find("PFD", "C", "Field").all("PLN").isEmpty());
    EXPECT_TRUE(set.find("PFD", "C", "Field").all("GPN").isEmpty());
    EXPECT_TRUE(set.find("PFD", "C", "Closed").all("GPN").isEmpty());
}
