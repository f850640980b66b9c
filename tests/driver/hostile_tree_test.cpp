// Trees that a broken display, a full card or a malicious hand could leave:
// names full of markup, control characters and foreign bytes, link loops,
// files where directories belong and the reverse, empty, gigantic and
// unreadable files. The tool ends normally with a well-formed set, keeps
// what it could read, and writes nothing outside OUTPUT.
#include "test_support/test_support.h"
#include "tool_process.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

using namespace test_support;
using namespace tool_process;

namespace {

QByteArray const ab_line = "State=2\n[APoint]\nLatitude=52.1\nLongitude=13.2\n"
                           "[BPoint]\nLatitude=52.2\nLongitude=13.3\n";

// A .crv or .bdy file of `points` points in a zigzag.
QByteArray point_file(int points) {
    std::vector<std::pair<float, float>> zigzag;
    for (int i = 0; i < points; ++i)
        zigzag.emplace_back(static_cast<float>(10 * i), static_cast<float>(i % 2 ? 10 : -10));
    return test_support::point_file(52.5, 13.25, 0.0, zigzag);
}

void symlink_or_fail(char const* target, QString const& link) {
    ASSERT_EQ(::symlink(target, QFile::encodeName(link).constData()), 0) << link.toStdString();
}

// What a field holds, one line per element below it: tag, designator and
// number of points.
QStringList summary(XmlElement const& field) {
    QStringList lines;
    for (char const* tag : {"PLN", "GGP", "GPN", "LSG"})
        for (XmlElement const& element : field.all(QLatin1String(tag)))
            lines << QStringLiteral("%1 %2 %3")
                         .arg(QLatin1String(tag), element.attribute(QStringLiteral("B")))
                         .arg(element.all(QStringLiteral("PNT")).size());
    lines << QStringLiteral("flags %1").arg(field.all(QStringLiteral("PNT")).size());
    return lines;
}

// The names (`attribute`) of the elements `tag` in `set`, in document order.
QStringList designators(XmlElement const& set, char const* tag, char const* attribute) {
    QStringList names;
    for (XmlElement const& element : set.all(QLatin1String(tag)))
        names << element.attribute(QLatin1String(attribute));
    return names;
}

XmlElement field_named(XmlElement const& set, QString const& name) {
    for (XmlElement const& field : set.all(QStringLiteral("PFD")))
        if (field.attribute(QStringLiteral("C")) == name)
            return field;
    ADD_FAILURE() << "no field " << name.toStdString();
    return XmlElement();
}

class HostileTree : public ::testing::Test {
protected:
    ScratchDir scratch;
    QString data() const { return scratch.file(QStringLiteral("data")); }
    QString out() const { return scratch.file(QStringLiteral("out")); }
    QString clients() const { return data() + QStringLiteral("/Clients"); }

    // A field that every tree holds beside the hostile ones: a boundary, a
    // flag, an AB line and a curve.
    void make_good_field(QString const& root) const {
        QString const field = root + QStringLiteral("/Clients/Good/Farm/Good field");
        write_file(field + QStringLiteral("/Boundaries/edge.bdy"), point_file(4));
        write_file(field + QStringLiteral("/flagpoints.ini"), "7\n1\n52.5\n13.25\n4\nStone\n");
        write_file(field + QStringLiteral("/ABLines/AB/AB.ini"), ab_line);
        write_file(field + QStringLiteral("/Curves/Curve/Curve.ini"), "");
        write_file(field + QStringLiteral("/Curves/Curve/Curve.crv"), point_file(3));
    }

    // The good field as a tree of its own makes it.
    QStringList good_field_alone() const {
        QString const root = scratch.file(QStringLiteral("alone"));
        make_good_field(root + QStringLiteral("/data"));
        EXPECT_EQ(run_tool({"-O", "out", "data"}, root).exit_code, 0);
        return summary(field_named(read_xml(root + QStringLiteral("/out/TASKDATA.XML")),
                                   QStringLiteral("Good field")));
    }

    enum class Schema { check, skip };

    // Runs the tool (with `shell_prefix`) and checks what every hostile run
    // must give: status 0, a well-formed set (valid too, unless the tree
    // holds what the schema forbids) holding the good field whole, and
    // nothing changed outside OUTPUT. Returns standard error.
    QByteArray run_and_check(Schema schema, QString const& shell_prefix = QString()) {
        QStringList const expected_good = good_field_alone();
        make_good_field(data());
        make_dirs(out());
        QMap<QString, QString> const before = snapshot(scratch.path(), {out()});
        ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path(), shell_prefix);
        EXPECT_EQ(run.exit_code, 0) << run.err.constData();
        EXPECT_EQ(snapshot(scratch.path(), {out()}), before) << "written outside OUTPUT";
        XmlElement const set = read_xml(out() + QStringLiteral("/TASKDATA.XML"));
        EXPECT_EQ(summary(field_named(set, QStringLiteral("Good field"))), expected_good);
        if (schema == Schema::check && !shared_dir().isEmpty()) {
            bool valid = false;
            QString const report = validate_set(out(), valid);
            EXPECT_TRUE(valid) << report.toStdString();
        }
        return run.err;
    }
};

} // namespace

TEST_F(HostileTree, NamesOfMarkupControlCharactersAndFullLength) {
    QString const markup = QStringLiteral("<Field & \"Co\"> 'x'");
    QString const control = QStringLiteral("ctl\x01\x1b\tname");
    QString const longest = QString(127, QChar(0xE9)) + QLatin1Char('x'); // 255 bytes in UTF-8
    QString const field = clients() + QLatin1Char('/') + markup + QLatin1Char('/') + control +
                          QLatin1Char('/') + longest;
    write_file(field + QStringLiteral("/ABLines/") + markup + QLatin1Char('/') + markup +
                   QStringLiteral(".ini"),
               ab_line + "CorrectionSource=5\n[BasePoint]\nPosition=\"" + QByteArray(4000, 'p') +
                   "\"\n");
    write_file(field + QStringLiteral("/Curves/") + control + QLatin1Char('/') + control +
                   QStringLiteral(".ini"),
               "");
    write_file(field + QStringLiteral("/Curves/") + control + QLatin1Char('/') + control +
                   QStringLiteral(".crv"),
               point_file(2));
    write_file(field + QStringLiteral("/Pivots/") + longest + QStringLiteral("/x"), "");
    write_file(field + QStringLiteral("/flagpoints.ini"),
               "7\n3\n52.5\n13.25\n4\n<b>&amp;\"'\x01\x1b\n52.6\n13.26\n5\n" +
                   QByteArray(4000, 'n') + "\n52.7\n13.27\n6\n\xff\xfe\xc3(\n");
    // Names go into designators unchanged, and the schema allows 32
    // characters.
    QByteArray const err = run_and_check(Schema::skip);
    EXPECT_TRUE(err.isEmpty()) << err.constData();
    XmlElement const set = read_xml(out() + QStringLiteral("/TASKDATA.XML"));
    QStringList customers;
    for (XmlElement const& customer : set.all(QStringLiteral("CTR")))
        customers << customer.attribute(QStringLiteral("B"));
    EXPECT_TRUE(customers.contains(markup)) << customers.join(QLatin1Char('|')).toStdString();
    EXPECT_EQ(field_named(set, longest).all(QStringLiteral("GPN")).size(), 2);
}

// Names in Latin-1 or Windows-1252, as a display without a UTF-8 locale or a
// FAT stick with a Windows code page leaves them: everything is read through
// the names' own bytes, and the names arrive decoded as Windows-1252, with a
// warning each. The second run, with -m, finds the client, farm and field
// again by their decoded names.
TEST_F(HostileTree, NamesThatAreNotUtf8ArriveDecodedAsWindows1252) {
    QByteArray const data_dir = QFile::encodeName(data());
    QByteArray const field = data_dir + "/Clients/M\xfcller/Gro\xdfhof/\xc4"
                                        "cker";
    write_raw_file(field + "/Boundaries/R\xe4nder.bdy", point_file(4));
    write_raw_file(field + "/ABLines/Sp\xfcr/Sp\xfcr.ini", ab_line);
    write_raw_file(field + "/Curves/B\xf6gen/B\xf6gen.ini", "");
    write_raw_file(field + "/Curves/B\xf6gen/B\xf6gen.crv", point_file(3));
    write_raw_file(data_dir + "/Products/D\xfcnger/D\xfcnger.ini", "[Default]\nType=0\n");
    write_raw_file(data_dir + "/ProductMixtures/Mischung \x80/Mischung \x80.ini", "");
    // By its bytes it would come first; by the decoded names, ü before ą.
    make_dirs(clients() + QStringLiteral("/M\u0105dry"));

    QStringList const names = {QStringLiteral("M\u00fcller"),    QStringLiteral("Gro\u00dfhof"),
                               QStringLiteral("\u00c4cker"),     QStringLiteral("Sp\u00fcr"),
                               QStringLiteral("B\u00f6gen"),     QStringLiteral("D\u00fcnger"),
                               QStringLiteral("Mischung \u20ac")};
    QByteArray warnings;
    for (QString const& name : names)
        warnings += "W: name is not UTF-8, read as Windows-1252: \"" + name.toUtf8() + "\"\n";
    QStringList products;
    for (QStringList const& options : {QStringList(), QStringList{"-m"}}) {
        ToolRun const run =
            run_tool(options + QStringList{"-O", "data/taskdata", "data"}, scratch.path());
        EXPECT_EQ(run.exit_code, 0);
        EXPECT_EQ(run.err, warnings);
        XmlElement const set = read_xml(data() + QStringLiteral("/taskdata/TASKDATA.XML"));
        EXPECT_EQ(designators(set, "CTR", "B") + designators(set, "FRM", "B") +
                      designators(set, "PFD", "C"),
                  QStringList({names[0], QStringLiteral("M\u0105dry"), names[1], names[2]}));
        XmlElement const arable = field_named(set, names[2]);
        ASSERT_EQ(arable.all(QStringLiteral("PLN")).size(), 1);
        // The four vertices of the .bdy, closed.
        EXPECT_EQ(arable.all(QStringLiteral("PLN"))[0].all(QStringLiteral("PNT")).size(), 5);
        QStringList patterns;
        for (XmlElement const& pattern : arable.all(QStringLiteral("GPN")))
            patterns << QStringLiteral("%1 %2")
                            .arg(pattern.attribute(QStringLiteral("B")))
                            .arg(pattern.all(QStringLiteral("PNT")).size());
        EXPECT_EQ(patterns,
                  QStringList({names[3] + QStringLiteral(" 2"), names[4] + QStringLiteral(" 3")}));
        // Products and mixtures are made anew in every run.
        products << names[5] << names[6];
        EXPECT_EQ(designators(set, "PDT", "B"), products);
    }
}

TEST_F(HostileTree, LinkLoopsBelowBoundariesAndZones) {
    QString const field = clients() + QStringLiteral("/Loops/Farm/Field");
    write_file(field + QStringLiteral("/Boundaries/ring.bdy"), point_file(5));
    make_dirs(field + QStringLiteral("/Zones"));
    symlink_or_fail("..", field + QStringLiteral("/Boundaries/parent"));
    symlink_or_fail(".", field + QStringLiteral("/Boundaries/self"));
    symlink_or_fail("b", field + QStringLiteral("/Boundaries/a"));
    symlink_or_fail("a", field + QStringLiteral("/Boundaries/b"));
    symlink_or_fail("..", field + QStringLiteral("/Zones/up"));
    symlink_or_fail("../Zones", field + QStringLiteral("/Zones/again"));

    QByteArray const err = run_and_check(Schema::check);
    EXPECT_TRUE(err.isEmpty()) << err.constData();
    // The ring is read once, however many ways lead to it.
    XmlElement const set = read_xml(out() + QStringLiteral("/TASKDATA.XML"));
    EXPECT_EQ(field_named(set, QStringLiteral("Field")).all(QStringLiteral("PLN")).size(), 1);
}

TEST_F(HostileTree, FilesWhereDirectoriesBelongAndTheReverse) {
    write_file(clients() + QStringLiteral("/A file as client"), "x");
    write_file(clients() + QStringLiteral("/C/A file as farm"), "x");
    QString const field = clients() + QStringLiteral("/C/F/Field");
    write_file(field + QStringLiteral("/Boundaries"), "x");
    write_file(field + QStringLiteral("/Zones"), "x");
    write_file(field + QStringLiteral("/ABLines"), "x");
    make_dirs(field + QStringLiteral("/flagpoints.ini"));
    make_dirs(field + QStringLiteral("/Curves/C/C.crv"));
    write_file(field + QStringLiteral("/Curves/C/C.ini"), "");
    make_dirs(field + QStringLiteral("/Curves/D/D.ini"));
    write_file(field + QStringLiteral("/Curves/D/D.crv"), point_file(3));
    QString const other = clients() + QStringLiteral("/C/F/Other");
    make_dirs(other + QStringLiteral("/Boundaries/dir.bdy"));
    write_file(other + QStringLiteral("/Boundaries/empty.bdy"), "");
    write_file(other + QStringLiteral("/Curves/E/E.ini"), "");
    write_file(other + QStringLiteral("/Curves/E/E.crv"), "");
    make_dirs(data() + QStringLiteral("/Products/P/P.ini"));
    write_file(data() + QStringLiteral("/ProductMixtures"), "x");

    // An empty .bdy makes a ring without points, which the schema forbids.
    QByteArray const err = run_and_check(Schema::skip);
    EXPECT_TRUE(err.isEmpty()) << err.constData();
    XmlElement const set = read_xml(out() + QStringLiteral("/TASKDATA.XML"));
    // An .ini that is a directory exists and reads as empty; a .crv that is
    // one gives no points.
    QStringList patterns;
    for (XmlElement const& pattern : field_named(set, QStringLiteral("Field")).all("GPN"))
        patterns << pattern.attribute(QStringLiteral("B"));
    EXPECT_EQ(patterns, QStringList({"D"}));
    // The empty .bdy is a ring without points; the directory is no file.
    EXPECT_EQ(field_named(set, QStringLiteral("Other")).all(QStringLiteral("PLN")).size(), 1);
}

TEST_F(HostileTree, GiganticPointFilesAreLeftOutWithAWarning) {
    QString const field = clients() + QStringLiteral("/Big/Farm/Field");
    QString const crv = field + QStringLiteral("/Curves/Huge/Huge.crv");
    QString const bdy = field + QStringLiteral("/Boundaries/huge.bdy");
    write_file(field + QStringLiteral("/Curves/Huge/Huge.ini"), "");
    qint64 const gigabyte = qint64(1) << 30;
    for (QString const& path : {crv, bdy}) {
        write_file(path, point_file(0));
        ASSERT_TRUE(QFile(path).resize(gigabyte)); // sparse: zeros, no disk
    }
    // The oversized .bdy still makes a ring without points.
    QByteArray const err = run_and_check(Schema::skip);
    EXPECT_EQ(err, QStringLiteral("W: skipping oversized file \"%1\" of 1073741824 bytes\n"
                                  "W: skipping oversized file \"%2\" of 1073741824 bytes\n")
                       .arg(QFileInfo(bdy).absoluteFilePath(), crv)
                       .toUtf8());
    XmlElement const set = read_xml(out() + QStringLiteral("/TASKDATA.XML"));
    XmlElement const big = field_named(set, QStringLiteral("Field"));
    EXPECT_TRUE(big.all(QStringLiteral("GPN")).isEmpty());
    QList<XmlElement> const rings = big.all(QStringLiteral("LSG"));
    ASSERT_EQ(rings.size(), 1);
    EXPECT_TRUE(rings[0].all(QStringLiteral("PNT")).isEmpty());
}

TEST_F(HostileTree, UnreadableFilesAndDirectories) {
    QString const setpriv = QStandardPaths::findExecutable(QStringLiteral("setpriv"));
    bool const root = ::geteuid() == 0;
    if (root && setpriv.isEmpty())
        GTEST_SKIP() << "running as root, and without setpriv there is no unprivileged user "
                        "for whom chmod 000 means anything";
    QString const field = clients() + QStringLiteral("/Locked/Farm/Field");
    write_file(field + QStringLiteral("/flagpoints.ini"), "7\n1\n52.5\n13.25\n4\nStone\n");
    write_file(field + QStringLiteral("/Boundaries/ring.bdy"), point_file(4));
    write_file(field + QStringLiteral("/Curves/C/C.ini"), "");
    write_file(field + QStringLiteral("/Curves/C/C.crv"), point_file(3));
    write_file(field + QStringLiteral("/ABLines/L/L.ini"), ab_line);
    write_file(clients() + QStringLiteral("/Locked/Farm/Closed/ABLines/L/L.ini"), ab_line);
    write_file(data() + QStringLiteral("/Products/P/P.ini"), "[Default]\nType=0\n");
    for (QString const& path :
         {field + QStringLiteral("/flagpoints.ini"), field + QStringLiteral("/Boundaries"),
          field + QStringLiteral("/Curves/C/C.crv"), field + QStringLiteral("/ABLines/L/L.ini"),
          clients() + QStringLiteral("/Locked/Farm/Closed"),
          data() + QStringLiteral("/Products/P/P.ini")})
        ASSERT_TRUE(QFile::setPermissions(path, {})) << path.toStdString();
    // As root, the scratch directory is opened to nobody, who runs the tool.
    QString const prefix =
        root ? QStringLiteral("chmod a+rx . && chmod a+rwx out && exec %1 --reuid=65534 "
                              "--regid=65534 --clear-groups -- \"$0\" \"$@\"")
                   .arg(setpriv)
             : QString();
    QByteArray const err = run_and_check(Schema::check, prefix);
    // An unreadable product .ini reads as one without keys.
    EXPECT_TRUE(err.isEmpty()) << err.constData();
    XmlElement const set = read_xml(out() + QStringLiteral("/TASKDATA.XML"));
    XmlElement const readable = field_named(set, QStringLiteral("Field"));
    EXPECT_TRUE(readable.all(QStringLiteral("PLN")).isEmpty());
    EXPECT_TRUE(readable.all(QStringLiteral("GPN")).isEmpty());
    EXPECT_EQ(field_named(set, QStringLiteral("Closed")).all(QStringLiteral("GPN")).size(), 0);
}
